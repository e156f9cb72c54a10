#include "gev/GevHeartBeat.h"

#include <algorithm>
#include <utility>

namespace VX3 {

namespace {
// A beat that was missed is made up for soon.
constexpr std::chrono::milliseconds Retry{500};
} // namespace

GevHeartBeat::GevHeartBeat(std::function<Beat()> beat, std::function<void()> lost)
    : beat_(std::move(beat)),
      lost_(std::move(lost)),
      thread_([this](const std::atomic<bool>& running) { HeartBeatThread(running); }) {}

void GevHeartBeat::HeartBeatThread(const std::atomic<bool>& running) {
    Clock::time_point heard = Clock::now();
    Clock::duration wait = period_.load();
    while (Sleep(running, wait)) {
        const Clock::time_point asked = Clock::now();
        const Beat beat = beat_();
        if (!running)
            return;
        if (beat == Beat::Lost || (beat == Beat::Missed && Clock::now() - heard >= timeout_.load())) {
            lost_();
            return;
        }
        if (beat == Beat::Alive)
            heard = asked;
        wait = beat == Beat::Alive ? period_.load() : std::min(period_.load(), Retry);
    }
}

// False as soon as the heart is to stop.
bool GevHeartBeat::Sleep(const std::atomic<bool>& running, Clock::duration wait) {
    const auto due = Clock::now() + wait;
    MutexLock lock(wakeMutex_);
    while (running && Clock::now() < due)
        (void)wake_.WaitUntil(wakeMutex_, due);
    return running;
}

void GevHeartBeat::Stop() {
    thread_.RequestStop();
    {
        MutexLock lock(wakeMutex_); // the thread is either before its test of the flag or asleep
        wake_.NotifyAll();
    }
    thread_.Stop();
}

} // namespace VX3
