#include "vx3/core/Utilities.h"

#include <chrono>

namespace VX3 {

std::uint64_t GetTimeStampLinux() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::nanoseconds>(now).count()) >>
           10;
}

} // namespace VX3
