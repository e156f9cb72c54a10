// Calls a camera's heartbeat again and again on a thread of its own. Owned by a device.
#pragma once

#include "device/ThreadEx.h"
#include "vx3/core/Mutex.h"

#include <atomic>
#include <chrono>
#include <functional>

namespace VX3 {

class GevHeartBeat {
public:
    using Clock = std::chrono::steady_clock;
    enum class Beat {
        Alive,
        Missed, // no answer: the link may come back before the camera gives us up
        Lost,
    };

    // `beat` asks the camera. `lost` is called, and the thread ends, once it is lost or no beat was answered
    // for the camera's time-out. Neither is called once Stop has returned; `lost` may stop the heart itself.
    GevHeartBeat(std::function<Beat()> beat, std::function<void()> lost);

    void SetPeriod(std::chrono::milliseconds period) { period_ = period; }
    // Of the camera: as long without a command, and it gives its host up.
    void SetTimeout(std::chrono::milliseconds timeout) { timeout_ = timeout; }
    void Start() { (void)thread_.Start(); } // false says that it beats already
    // Ends a wait at once.
    void Stop() VX3_EXCLUDES(wakeMutex_);

private:
    void HeartBeatThread(const std::atomic<bool>& running);
    bool Sleep(const std::atomic<bool>& running, Clock::duration wait) VX3_EXCLUDES(wakeMutex_);

    const std::function<Beat()> beat_;
    const std::function<void()> lost_;
    std::atomic<std::chrono::milliseconds> period_{std::chrono::milliseconds(1000)};
    std::atomic<std::chrono::milliseconds> timeout_{std::chrono::milliseconds(3000)};
    Mutex wakeMutex_;
    CondVar wake_;
    ThreadEx<> thread_;
};

} // namespace VX3
