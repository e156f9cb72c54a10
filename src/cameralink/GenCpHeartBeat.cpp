#include "cameralink/GenCpHeartBeat.h"

#include <utility>

namespace VX3 {

GenCpHeartBeat::GenCpHeartBeat(std::function<bool()> beat)
    : thread_([this, beat = std::move(beat)](const std::atomic<bool>& running) {
          while (Sleep(running))
              if (!beat())
                  return;
      }) {}

void GenCpHeartBeat::Start(std::chrono::milliseconds period) {
    period_ = period;
    (void)thread_.Start(); // false says that it beats already
}

// False as soon as the heart is to stop.
bool GenCpHeartBeat::Sleep(const std::atomic<bool>& running) {
    const auto due = std::chrono::steady_clock::now() + period_.load();
    MutexLock lock(wakeMutex_);
    while (running && std::chrono::steady_clock::now() < due)
        (void)wake_.WaitUntil(wakeMutex_, due);
    return running;
}

void GenCpHeartBeat::Stop() {
    thread_.RequestStop();
    {
        MutexLock lock(wakeMutex_); // the thread is either before its test of the flag or asleep
        wake_.NotifyAll();
    }
    thread_.Stop();
}

} // namespace VX3
