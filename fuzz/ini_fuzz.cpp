// The INI reader over arbitrary bytes: it either fills the map or throws std::invalid_argument, and what it
// has read it can write and read again.
#include "FuzzInput.h"
#include "core/IniFile.h"

#include <fstream>
#include <sstream>
#include <stdexcept>
#include <sys/mman.h>

using namespace VX3::Fuzz;

namespace {

void CheckKeys(const ini::File& file) {
    for (const auto& [name, section] : file)
        for (const auto& [key, value] : section) {
            Require(key.front() != ' ' && key.back() != ' ' && key.find_first_of("\n=:") == key.npos);
            Require(file.Find(name) == &section && section.Find(key) == &value);
            Require(value.find('\n') == value.npos);
        }
}

// Through a file in memory.
void CheckRoundTrip(const ini::File& file) {
    static const std::string path = "/proc/self/fd/" + std::to_string(::memfd_create("ini", MFD_CLOEXEC));
    file.write(path);
    ini::File again;
    std::ifstream stream(path);
    again.read(stream);
    Require(again.size() == file.size());
    for (const auto& [name, section] : file) {
        const ini::Section* found = again.Find(name);
        Require(found != nullptr && found->size() == section.size());
        for (const auto& [key, value] : section)
            Require(found->Find(key) != nullptr && *found->Find(key) == value);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::istringstream stream(FuzzInput(data, size).Rest());
    ini::File file;
    try {
        file.read(stream);
    } catch (const std::invalid_argument&) {
    }
    CheckKeys(file);
    CheckRoundTrip(file);
    return 0;
}
