// The INI reader over arbitrary bytes: it either fills the map or throws std::invalid_argument, and what it
// has read it can write and read again.
#include "core/IniFile.h"

#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <stdexcept>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::istringstream stream(std::string(reinterpret_cast<const char*>(data), size));
    ini::File file;
    try {
        file.read(stream);
    } catch (const std::invalid_argument&) {
    }
    for (const auto& [name, section] : file)
        for (const auto& [key, value] : section) {
            const bool stripped =
                key.front() != ' ' && key.back() != ' ' && key.find_first_of("\n=:") == key.npos;
            const bool found = file.Find(name) == &section && section.Find(key) == &value;
            if (!stripped || !found || value.find('\n') != value.npos)
                std::abort();
        }
    return 0;
}
