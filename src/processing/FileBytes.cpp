#include "processing/FileBytes.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace VX3 {

namespace {

bool IsRegular(int fd, struct stat& status) {
    return ::fstat(fd, &status) == 0 && S_ISREG(status.st_mode);
}

bool WriteAll(int fd, const unsigned char* data, std::size_t size) {
    while (size != 0) {
        const ssize_t n = ::write(fd, data, size);
        if (n < 0 && errno == EINTR)
            continue;
        if (n == 0)
            errno = EIO;
        if (n <= 0)
            return false;
        data += n;
        size -= static_cast<std::size_t>(n);
    }
    return true;
}

} // namespace

UniqueFd OpenForReading(const std::string& path, std::size_t& length) {
    // Not blocking, so that the name of a pipe without a writer does not hang the caller.
    UniqueFd fd(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    if (!fd || !IsRegular(fd.Get(), status))
        return {};
    length = static_cast<std::size_t>(status.st_size);
    return fd;
}

std::size_t ReadUpTo(int fd, unsigned char* data, std::size_t size) {
    std::size_t done = 0;
    while (done < size) {
        const ssize_t n = ::read(fd, data + done, size - done);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            break;
        done += static_cast<std::size_t>(n);
    }
    return done;
}

bool WriteWholeFile(const std::string& path, const unsigned char* data, std::size_t size) {
    UniqueFd fd(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
    if (!fd)
        return false;
    struct stat status {};
    const bool regular = IsRegular(fd.Get(), status);
    const bool written = WriteAll(fd.Get(), data, size);
    int error = written ? 0 : errno;
    // Some file systems report a full disk only here.
    if (::close(fd.Release()) != 0 && error == 0)
        error = errno;
    if (error == 0)
        return true;
    if (regular)
        ::unlink(path.c_str());
    errno = error;
    return false;
}

} // namespace VX3
