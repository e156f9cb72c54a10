#include "gev/GevHeartBeat.h"

#include <utility>

namespace VX3 {

GevHeartBeat::GevHeartBeat(std::function<bool()> beat, std::function<void()> lost)
    : beat_(std::move(beat)),
      lost_(std::move(lost)),
      thread_([this](const std::atomic<bool>& running) { HeartBeatThread(running); }) {}

void GevHeartBeat::HeartBeatThread(const std::atomic<bool>& running) {
    while (Sleep(running)) {
        const bool alive = beat_();
        if (!running)
            return;
        if (!alive) {
            lost_();
            return;
        }
    }
}

// False as soon as the heart is to stop.
bool GevHeartBeat::Sleep(const std::atomic<bool>& running) {
    const auto due = std::chrono::steady_clock::now() + period_.load();
    MutexLock lock(wakeMutex_);
    while (running && std::chrono::steady_clock::now() < due)
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
