#include "vx3/core/ReplaceFile.h"

#include "core/UniqueFd.h"
#include "vx3/core/Logger.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace VX3 {

namespace {

// The file itself where `path` names it over symbolic links; empty where nothing has that name.
std::string Followed(const std::string& path) {
    char* const real = ::realpath(path.c_str(), nullptr);
    if (real == nullptr)
        return {};
    std::string followed = real;
    std::free(real);
    return followed;
}

int WriteAll(int fd, const std::string& content) {
    std::size_t done = 0;
    while (done < content.size()) {
        const ssize_t n = ::write(fd, content.data() + done, content.size() - done);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return n < 0 ? errno : EIO;
        done += static_cast<std::size_t>(n);
    }
    return 0;
}

int WriteAndSync(int fd, const std::string& content) {
    const int error = WriteAll(fd, content);
    if (error != 0)
        return error;
    return ::fsync(fd) == 0 ? 0 : errno;
}

// Gives the new file the mode and, where that is allowed, the owner of the one it replaces.
int TakeOverMode(int fd, const std::string& target) {
    struct stat old {};
    if (::stat(target.c_str(), &old) != 0)
        return ::fchmod(fd, 0644) == 0 ? 0 : errno;
    if (::fchown(fd, old.st_uid, old.st_gid) != 0)
        errno = 0; // another user's file in our folder: ours from now on
    return ::fchmod(fd, old.st_mode & 07777U) == 0 ? 0 : errno;
}

void SyncFolderOf(const std::string& target) {
    const std::size_t slash = target.rfind('/');
    const std::string folder = slash == std::string::npos ? "." : target.substr(0, slash + 1);
    const UniqueFd fd(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (fd)
        ::fsync(fd.Get());
}

int WriteInPlace(const std::string& target, const std::string& content, int reason) {
    UniqueFd fd(::open(target.c_str(), O_WRONLY | O_CLOEXEC | O_TRUNC));
    if (!fd)
        return errno;
    VxLoggerLog(LogLevel::Warning, "SDK",
                "%s is overwritten in place: no file can be made beside it (%s), so a failure in the midst "
                "of writing would lose it",
                target.c_str(), std::system_category().message(reason).c_str());
    const int error = WriteAndSync(fd.Get(), content);
    return ::close(fd.Release()) != 0 && error == 0 ? errno : error;
}

// A device, a pipe, or a file that has no name (any more) but its open descriptor's, `target` then being
// empty: nothing can be put in its place.
bool IsNoOrdinaryFile(const std::string& path, const std::string& target) {
    struct stat file {};
    return ::stat(path.c_str(), &file) == 0 && (!S_ISREG(file.st_mode) || target.empty());
}

// A folder refuses.
int WriteTo(const std::string& path, const std::string& content) {
    UniqueFd fd(::open(path.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC));
    if (!fd)
        return errno;
    const int error = WriteAll(fd.Get(), content);
    return ::close(fd.Release()) != 0 && error == 0 ? errno : error;
}

bool IsReadOnlyFolder(int error) {
    return error == EACCES || error == EPERM || error == EROFS;
}

} // namespace

int ReplaceFile(const std::string& path, const std::string& content) {
    std::string target = Followed(path);
    if (IsNoOrdinaryFile(path, target))
        return WriteTo(path, content);
    if (target.empty())
        target = path;
    if (::access(target.c_str(), F_OK) == 0 && ::access(target.c_str(), W_OK) != 0)
        return errno; // a file that must not be written is not replaced either
    std::string beside = target + ".XXXXXX";
    UniqueFd fd(::mkostemp(beside.data(), O_CLOEXEC));
    if (!fd)
        return IsReadOnlyFolder(errno) ? WriteInPlace(target, content, errno) : errno;
    int error = TakeOverMode(fd.Get(), target);
    if (error == 0)
        error = WriteAndSync(fd.Get(), content);
    if (::close(fd.Release()) != 0 && error == 0)
        error = errno;
    if (error == 0 && ::rename(beside.c_str(), target.c_str()) != 0)
        error = errno;
    if (error != 0)
        ::unlink(beside.c_str());
    else
        SyncFolderOf(target);
    return error;
}

} // namespace VX3
