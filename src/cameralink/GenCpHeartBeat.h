// Asks a camera again and again, on a thread of its own, whether it is still there. Owned by the camera's
// device.
#pragma once

#include "device/ThreadEx.h"
#include "vx3/core/Mutex.h"

#include <atomic>
#include <chrono>
#include <functional>

namespace VX3 {

class GenCpHeartBeat {
public:
    // `beat` asks; false ends the thread, and nothing of this object is touched afterwards: the beat may have
    // destroyed it.
    explicit GenCpHeartBeat(std::function<bool()> beat);

    void Start(std::chrono::milliseconds period);
    // Ends a wait at once, and waits for a beat. On the thread itself it does not wait.
    void Stop() VX3_EXCLUDES(wakeMutex_);

private:
    bool Sleep(const std::atomic<bool>& running) VX3_EXCLUDES(wakeMutex_);

    std::atomic<std::chrono::milliseconds> period_{std::chrono::milliseconds(1000)};
    Mutex wakeMutex_;
    CondVar wake_;
    ThreadEx<> thread_;
};

} // namespace VX3
