#include "simulated/camera/Pacer.h"

#include <algorithm>

namespace VX3 {
namespace Simulated {

namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;

constexpr double mostTrainBytes = 65000; // of one datagram as long as the system takes
constexpr double leastTrainBytes = 9000;
constexpr double trainsPerSecond = 1000; // at least
// Sleeping shorter than this takes longer than this.
constexpr microseconds shortestSleep(80);
// Time lost is not made good in longer bursts than this.
constexpr milliseconds longestDebt(2);
constexpr milliseconds longestBusyDebt(1);
constexpr double slowest = 1; // bytes a second

} // namespace

Pacer::Pacer(const Pace& pace, StopSignal& stop)
    : pace_(pace),
      stop_(stop),
      largestTrain_(static_cast<std::size_t>(
          pace.bytesPerSecond > 0
              ? std::clamp(pace.bytesPerSecond / trainsPerSecond, leastTrainBytes, mostTrainBytes)
              : mostTrainBytes)),
      due_(Clock::now()) {}

void Pacer::Await(std::size_t bytes, std::size_t packets) {
    if (pace_.bytesPerSecond <= 0 && pace_.packetDelay.count() == 0)
        return;
    auto now = Clock::now();
    if (pace_.busy)
        while (now < due_ && !stop_.Raised())
            now = Clock::now();
    else if (due_ - now > shortestSleep)
        stop_.SleepUntil(due_);
    due_ = std::max(due_, now - (pace_.busy ? longestBusyDebt : longestDebt));
    if (pace_.bytesPerSecond > 0)
        due_ += std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(
            static_cast<double>(bytes) / std::max(pace_.bytesPerSecond, slowest)));
    due_ += pace_.packetDelay * packets;
}

} // namespace Simulated
} // namespace VX3
