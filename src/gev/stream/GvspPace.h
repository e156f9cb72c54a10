// How long the camera itself pauses inside a block: a slow one is not to be taken for a silent one. Owned by
// the parser; its thread only.
#pragma once

#include "gev/stream/GvspPacketAddr.h"

#include <algorithm>
#include <chrono>

namespace VX3 {

class GvspPace {
public:
    using TimePoint = std::chrono::steady_clock::time_point;
    static constexpr std::chrono::milliseconds Quiet{20}; // of silence make a tail count as lost
    // A slow camera's silence is judged by its own pace, up to this.
    static constexpr std::chrono::milliseconds LongestQuiet{1000};
    // A camera that resends nothing is given longer: what its silence holds back is lost for good once given
    // up.
    static constexpr std::chrono::milliseconds QuietWithoutResend{200};

    // An accepted packet.
    void Learn(const GvspPacketAddr& addr, TimePoint now) {
        if (now != last_) {
            // No block has the id 0 that the first packet is compared with.
            if (addr.blockId == lastAddr_.blockId && addr.packetId == lastAddr_.packetId + 1)
                LearnPause(now - last_);
            last_ = now;
        }
        lastAddr_ = addr;
    }
    // Of the latest accepted packet; the clock's epoch before the first.
    TimePoint Last() const { return last_; }
    bool IsQuiet(TimePoint now, bool resendSupported) const {
        const std::chrono::milliseconds shortest = resendSupported ? Quiet : QuietWithoutResend;
        const auto limit = std::clamp<std::chrono::microseconds>(longest_ * 4, shortest, LongestQuiet);
        return last_ != TimePoint{} && now - last_ >= limit;
    }

private:
    void LearnPause(TimePoint::duration pause) {
        const auto waited = std::chrono::duration_cast<std::chrono::microseconds>(pause);
        longest_ = std::max(waited, longest_ - longest_ / 64);
    }

    GvspPacketAddr lastAddr_;
    TimePoint last_{};
    std::chrono::microseconds longest_{0}; // recent wait between neighbours of one block
};

} // namespace VX3
