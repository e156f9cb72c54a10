#include "platform/clprotocol/PortList.h"

#include <glob.h>
#include <set>
#include <sys/stat.h>

namespace CLProtocol {

namespace {
constexpr const char* Separators = ",; \t\r\n";
}

std::vector<std::string> PortList::Split(const std::string& text) {
    std::vector<std::string> pieces;
    for (std::size_t at = text.find_first_not_of(Separators); at != std::string::npos;) {
        const std::size_t end = text.find_first_of(Separators, at);
        pieces.push_back(text.substr(at, end - at));
        at = text.find_first_not_of(Separators, end);
    }
    return pieces;
}

std::vector<std::string> PortList::Expand(const std::string& text) {
    std::vector<std::string> ports;
    std::set<dev_t> seen;
    for (const std::string& pattern : Split(text)) {
        glob_t found{};
        // NOLINTNEXTLINE(concurrency-mt-unsafe): only a tilde makes it so, which is not expanded
        if (::glob(pattern.c_str(), 0, nullptr, &found) == 0)
            for (std::size_t i = 0; i < found.gl_pathc && ports.size() < MostPorts; ++i) {
                struct stat info {};
                const char* path = found.gl_pathv[i];
                if (::stat(path, &info) == 0 && S_ISCHR(info.st_mode) && seen.insert(info.st_rdev).second)
                    ports.emplace_back(path);
            }
        ::globfree(&found);
    }
    return ports;
}

bool PortList::IsSame(const std::string& port, const std::string& other) {
    struct stat one {};
    struct stat two {};
    return port == other || (::stat(port.c_str(), &one) == 0 && ::stat(other.c_str(), &two) == 0 &&
                             S_ISCHR(one.st_mode) && S_ISCHR(two.st_mode) && one.st_rdev == two.st_rdev);
}

} // namespace CLProtocol
