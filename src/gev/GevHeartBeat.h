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
    // `beat` asks the camera; false when it is lost, which ends the thread after `lost` was called. Neither
    // is called once Stop has returned; `lost` may stop the heart itself.
    GevHeartBeat(std::function<bool()> beat, std::function<void()> lost);

    void SetPeriod(std::chrono::milliseconds period) { period_ = period; }
    void Start() { (void)thread_.Start(); } // false says that it beats already
    // Ends a wait at once.
    void Stop() VX3_EXCLUDES(wakeMutex_);

private:
    void HeartBeatThread(const std::atomic<bool>& running);
    bool Sleep(const std::atomic<bool>& running) VX3_EXCLUDES(wakeMutex_);

    const std::function<bool()> beat_;
    const std::function<void()> lost_;
    std::atomic<std::chrono::milliseconds> period_{std::chrono::milliseconds(1000)};
    Mutex wakeMutex_;
    CondVar wake_;
    ThreadEx<> thread_;
};

} // namespace VX3
