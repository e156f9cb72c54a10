// Says when the next packets may leave, so that a stream keeps its rate and its packet delay.
#pragma once

#include "simulated/camera/StopSignal.h"

#include <chrono>
#include <cstddef>

namespace VX3 {
namespace Simulated {

struct Pace {
    double bytesPerSecond = 0; // 0: flat out
    std::chrono::nanoseconds packetDelay{0};
    bool busy = false; // wait in loops
};

class Pacer {
public:
    Pacer(const Pace& pace, StopSignal& stop);

    // From the next packets on.
    void SetRate(double bytesPerSecond) { pace_.bytesPerSecond = bytesPerSecond; }
    // Bytes and packets that may leave together without making the stream too bursty.
    std::size_t LargestTrain() const { return largestTrain_; }
    std::size_t MostPackets() const { return pace_.packetDelay.count() != 0 ? 1 : 64; }
    // Waits until it is these packets' turn, or until stopped.
    void Await(std::size_t bytes, std::size_t packets);

private:
    using Clock = std::chrono::steady_clock;

    Pace pace_;
    StopSignal& stop_;
    std::size_t largestTrain_;
    Clock::time_point due_;
};

} // namespace Simulated
} // namespace VX3
