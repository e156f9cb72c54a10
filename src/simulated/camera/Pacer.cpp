#include "simulated/camera/Pacer.h"

#include <algorithm>

namespace VX3 {
namespace Simulated {

namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;

constexpr double MostTrainBytes = 65000; // of one datagram as long as the system takes
constexpr double LeastTrainBytes = 9000;
constexpr double TrainsPerSecond = 1000; // at least
// Sleeping shorter than this takes longer than this.
constexpr microseconds ShortestSleep(80);
// Time lost is not made good in longer bursts than this.
constexpr milliseconds LongestDebt(2);
constexpr milliseconds LongestBusyDebt(1);
constexpr double Slowest = 1; // bytes a second

} // namespace

Pacer::Pacer(const Pace& pace, StopSignal& stop)
    : pace_(pace),
      stop_(stop),
      largestTrain_(static_cast<std::size_t>(
          pace.bytesPerSecond > 0
              ? std::clamp(pace.bytesPerSecond / TrainsPerSecond, LeastTrainBytes, MostTrainBytes)
              : MostTrainBytes)),
      due_(Clock::now()) {}

void Pacer::Await(std::size_t bytes, std::size_t packets) {
    if (pace_.bytesPerSecond <= 0 && pace_.packetDelay.count() == 0)
        return;
    auto now = Clock::now();
    if (pace_.busy)
        while (now < due_ && !stop_.Raised())
            now = Clock::now();
    else if (due_ - now > ShortestSleep)
        stop_.SleepUntil(due_);
    due_ = std::max(due_, now - (pace_.busy ? LongestBusyDebt : LongestDebt));
    if (pace_.bytesPerSecond > 0)
        due_ += std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(
            static_cast<double>(bytes) / std::max(pace_.bytesPerSecond, Slowest)));
    due_ += pace_.packetDelay * packets;
}

} // namespace Simulated
} // namespace VX3
