#include "core/LoggerProperties.h"

#include "core/UniqueFd.h"
#include "vx3/core/Mutex.h"
#include "vx3/core/Utilities.h"

#include <fstream>
#include <iterator>
#include <log4cpp/Configurator.hh>
#include <log4cpp/PropertyConfigurator.hh>
#include <sstream>
#include <sys/mman.h>
#include <unistd.h>

namespace VX3 {

namespace {

constexpr const char* Blanks = " \t\r";

std::string Trim(const std::string& text) {
    const std::size_t first = text.find_first_not_of(Blanks);
    if (first == std::string::npos)
        return {};
    return text.substr(first, text.find_last_not_of(Blanks) - first + 1);
}

bool NamesAppenderFile(const std::string& key) {
    static const std::string tail = ".fileName";
    return key.find("appender.") != std::string::npos && key.size() > tail.size() &&
           key.compare(key.size() - tail.size(), tail.size(), tail) == 0;
}

bool WriteAll(int fd, const std::string& text) {
    std::size_t done = 0;
    while (done < text.size()) {
        const ssize_t n = ::write(fd, text.data() + done, text.size() - done);
        if (n <= 0)
            return false;
        done += static_cast<std::size_t>(n);
    }
    return true;
}

} // namespace

std::string ResolveAppenderFiles(const std::string& properties) {
    std::istringstream in(properties);
    std::string out;
    std::string line;
    while (std::getline(in, line)) {
        const std::size_t equals = line.find('=');
        if (equals != std::string::npos && NamesAppenderFile(Trim(line.substr(0, equals)))) {
            const std::string name = Trim(line.substr(equals + 1));
            if (!name.empty() && name.compare(0, 2, "${") != 0)
                line = line.substr(0, equals + 1) + GetModuleFilePath(name);
        }
        out += line + '\n';
    }
    return out;
}

// log4cpp reads from a named file only, so the resolved text goes through an anonymous one. Configuring twice
// would open every appender's file again and never close the first ones.
void ConfigureLog4cpp(const std::string& path) {
    static Mutex mutex;
    static std::string configured;
    MutexLock lock(mutex);
    if (path == configured)
        return;
    std::ifstream file(path);
    if (!file)
        throw log4cpp::ConfigureFailure("File " + path + " does not exist");
    const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    const UniqueFd memory(::memfd_create("log4cpp.cfg", MFD_CLOEXEC));
    if (!memory || !WriteAll(memory.Get(), ResolveAppenderFiles(text)))
        throw log4cpp::ConfigureFailure("no memory to configure logging from " + path);
    log4cpp::PropertyConfigurator::configure("/proc/self/fd/" + std::to_string(memory.Get()));
    configured = path;
}

} // namespace VX3
