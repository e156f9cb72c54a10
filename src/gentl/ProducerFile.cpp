#include "gentl/ProducerFile.h"

#include "core/DefaultConfig.h"
#include "vx3/core/Utilities.h"

#include <array>
#include <cstdint>
#include <cstdlib>
#include <elf.h>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace VX3 {

namespace fs = std::filesystem;

namespace {

#if defined(__aarch64__)
constexpr std::uint16_t OwnMachine = EM_AARCH64;
#elif defined(__x86_64__)
constexpr std::uint16_t OwnMachine = EM_X86_64;
#else
#error "which machine number do libraries of this processor have?"
#endif

std::string MachineName(unsigned int machine) {
    switch (machine) {
    case EM_X86_64:
        return "x86-64";
    case EM_386:
        return "32-bit x86";
    case EM_AARCH64:
        return "aarch64";
    case EM_ARM:
        return "32-bit Arm";
    default:
        return StringFormat("another processor (%u)", machine);
    }
}

} // namespace

std::vector<std::string> ProducerFilesIn(const std::string& directory) {
    std::vector<std::string> files;
    std::error_code error;
    if (!fs::is_directory(directory, error))
        return files;
    for (fs::directory_iterator entry(directory, error), end; !error && entry != end; entry.increment(error))
        if (entry->path().extension() == ".cti")
            files.push_back(entry->path().string());
    return files;
}

std::vector<std::string> ProducerFilesOfPath(const std::string& searchPath) {
    std::vector<std::string> files;
    for (const std::string& entry : SplitString(searchPath, ':')) {
        if (entry.empty() || entry.front() != '/')
            continue;
        std::error_code error;
        if (fs::is_directory(entry, error))
            for (std::string& file : ProducerFilesIn(entry))
                files.push_back(std::move(file));
        else if (fs::path(entry).extension() == ".cti")
            files.push_back(entry);
    }
    return files;
}

std::vector<std::string> ProducerFilesOfEnvironment() {
    if (!ConfigBool(ConfigKeys::GenTLEnvironmentPath, nullptr, true))
        return {};
    // NOLINTNEXTLINE(concurrency-mt-unsafe): nothing in the library changes the environment
    const char* searchPath = std::getenv("GENICAM_GENTL64_PATH");
    return searchPath != nullptr ? ProducerFilesOfPath(searchPath) : std::vector<std::string>();
}

std::string WhyNotLoadable(const std::string& path) {
    std::error_code error;
    if (!fs::is_regular_file(path, error))
        return error ? "it cannot be read: " + error.message() : std::string("it is no file");
    std::array<unsigned char, sizeof(Elf64_Ehdr)> bytes{};
    std::ifstream file(path, std::ios::binary);
    file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (!file && !file.eof())
        return "it cannot be read";
    return WhyNoLibrary(bytes.data(), static_cast<std::size_t>(file.gcount()));
}

std::string WhyNoLibrary(const unsigned char* bytes, std::size_t size) {
    constexpr std::size_t TypeAt = 16;
    constexpr std::size_t MachineAt = 18;
    const auto half = [bytes](std::size_t at) {
        return static_cast<unsigned int>(bytes[at] | bytes[at + 1] << 8);
    };
    if (size < MachineAt + 2 || bytes[0] != ELFMAG0 || bytes[1] != ELFMAG1 || bytes[2] != ELFMAG2 ||
        bytes[3] != ELFMAG3)
        return "it is no shared library";
    const unsigned int machine = half(MachineAt);
    if (bytes[EI_CLASS] != ELFCLASS64 || bytes[EI_DATA] != ELFDATA2LSB || machine != OwnMachine)
        return "it is made for " + MachineName(machine) + ", this program for " + MachineName(OwnMachine);
    return half(TypeAt) == ET_DYN ? std::string()
                                  : std::string("it is a program or an object, no shared library");
}

} // namespace VX3
