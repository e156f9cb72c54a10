// How much a stream may ask its camera for again: a quarter of the packets it receives, a little more as
// time passes, and a burst at once. In tokens: a packet received brings one, a packet asked for costs four.
// Owned by the resend bookkeeping; its thread only.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>

namespace VX3 {

class GvspResendBudget {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    // The last packet id of every block: two blocks may be asked for at once. Starts full.
    void SetMaxPid(std::uint32_t maxPid) {
        capacity_ = std::max<std::uint64_t>(MinPackets, 2ULL * maxPid) * PerPacket;
        tokens_ = capacity_;
    }
    // `received` packets came since the last call.
    void Refill(std::uint32_t received, TimePoint now) {
        tokens_ += received;
        if (refilled_ != TimePoint{} && now > refilled_)
            tokens_ += static_cast<std::uint64_t>((now - refilled_) / TokenTime);
        refilled_ = now;
        tokens_ = std::min(tokens_, capacity_);
    }
    // False, and nothing taken, while so many packets may not be asked for.
    [[nodiscard]] bool Take(std::uint64_t packets) {
        const std::uint64_t cost = std::min(packets * PerPacket, capacity_);
        if (cost > tokens_)
            return false;
        tokens_ -= cost;
        return true;
    }

private:
    static constexpr std::uint64_t PerPacket = 4;
    static constexpr std::uint64_t MinPackets = 2048; // a burst that may always be asked for
    static constexpr std::chrono::microseconds TokenTime{12};

    std::uint64_t capacity_ = MinPackets * PerPacket;
    std::uint64_t tokens_ = MinPackets * PerPacket;
    TimePoint refilled_{};
};

} // namespace VX3
