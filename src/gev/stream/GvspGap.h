// One range of packets missing from a block, as the resend bookkeeping keeps it.
#pragma once

#include <chrono>
#include <cstdint>

namespace VX3 {

struct GvspGap {
    using TimePoint = std::chrono::steady_clock::time_point;
    enum class State : std::uint8_t {
        Fresh, // may still come by itself
        Due,   // to be asked for
        Asked, // on its way, as far as is known
        Late,  // asked for in vain, to be asked for again
    };
    // As the last packet of a range: to the end of the block, whatever its length.
    static constexpr std::uint32_t ToBlockEnd = 0xFFFFFFFFU;

    std::uint32_t first = 0;
    std::uint32_t last = 0;
    std::uint64_t createdAt = 0; // packets the stream had taken by then
    TimePoint created{};
    TimePoint firstAsked{};
    TimePoint asked{}; // of the latest request, or of its latest answer
    std::uint16_t attempts = 0;
    State state = State::Fresh;

    std::uint32_t Length() const { return last - first + 1; }
    bool Holds(std::uint32_t packetId) const { return first <= packetId && packetId <= last; }
    bool MayBeAsked() const { return state == State::Due || state == State::Late; }
};

} // namespace VX3
