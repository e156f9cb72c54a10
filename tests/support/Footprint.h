// What this process holds: descriptors, threads, memory. For tests that do the same again and again.
#pragma once

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <unistd.h>

namespace VX3::Test {

struct Footprint {
    std::size_t descriptors = 0;
    std::size_t threads = 0;
    double residentMiB = 0;

    static Footprint Now() {
        namespace fs = std::filesystem;
        const auto count = [](const char* directory) {
            return static_cast<std::size_t>(
                std::distance(fs::directory_iterator(directory), fs::directory_iterator()));
        };
        long pages = 0;
        long resident = 0;
        std::ifstream("/proc/self/statm") >> pages >> resident;
        return {count("/proc/self/fd"), count("/proc/self/task"),
                static_cast<double>(resident) * static_cast<double>(sysconf(_SC_PAGESIZE)) / (1 << 20)};
    }
};

// Sanitizers keep freed memory for a while.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr double AllowedGrowthMiB = 1000;
#else
constexpr double AllowedGrowthMiB = 2;
#endif

} // namespace VX3::Test
