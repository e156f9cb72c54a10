// How far packets of one stream overtake each other, in packets: what is missing may still come by itself so
// long. Learnt from packets that came late on their own. Owned by the resend bookkeeping; its thread only.
#pragma once

#include <algorithm>
#include <cstdint>

namespace VX3 {

class GvspReorderWindow {
public:
    static constexpr std::uint64_t Shortest = 32;
    static constexpr std::uint64_t Longest = 4096;

    std::uint64_t Packets() const { return packets_; }
    // A packet came so many packets after those behind it. `taken`: packets of the stream so far.
    void Learn(std::uint64_t distance, std::uint64_t taken) {
        const std::uint64_t wanted = distance + distance / 4 + 1;
        if (wanted >= packets_ / 2)
            learnt_ = taken;
        if (wanted > packets_)
            packets_ = std::min(wanted, Longest);
    }
    // Forgets what has not been seen for a while.
    void Relax(std::uint64_t taken) {
        if (packets_ == Shortest || taken - learnt_ < Memory)
            return;
        learnt_ = taken;
        packets_ = std::max(packets_ - packets_ / 4, Shortest);
    }

private:
    static constexpr std::uint64_t Memory = 65536; // packets

    std::uint64_t packets_ = Shortest;
    std::uint64_t learnt_ = 0;
};

} // namespace VX3
