// Ends the waits of one thread at once when its owner wants it to stop.
#pragma once

#include "vx3/core/Mutex.h"

#include <atomic>
#include <chrono>

namespace VX3 {
namespace Simulated {

class StopSignal {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    void Raise() VX3_EXCLUDES(mutex_) {
        MutexLock lock(mutex_);
        raised_ = true;
        wake_.NotifyAll();
    }
    void Lower() { raised_ = false; }
    bool Raised() const { return raised_.load(std::memory_order_relaxed); }
    // Until then, or until raised.
    void SleepUntil(TimePoint due) VX3_EXCLUDES(mutex_) {
        MutexLock lock(mutex_);
        while (!raised_ && std::chrono::steady_clock::now() < due)
            (void)wake_.WaitUntil(mutex_, due);
    }

private:
    Mutex mutex_;
    CondVar wake_;
    std::atomic<bool> raised_{false};
};

} // namespace Simulated
} // namespace VX3
