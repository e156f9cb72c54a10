// Which address of this host each asker reaches: what discovery tells him. Remembers answers for a second, so
// that a flood of questions does not become one of system calls. Used by one thread.
#pragma once

#include "vx3/gev/NetParam.h"

#include <chrono>
#include <cstdint>
#include <map>

namespace VX3 {

class HostRoutes {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    // ip 0 where there is no way to the asker.
    NET_PARAM Toward(std::uint32_t asker, TimePoint now);

private:
    static constexpr std::size_t MostKnown = 64;

    TimePoint forgetAt_{};
    std::map<std::uint32_t, NET_PARAM> known_;
};

} // namespace VX3
