// Triggers every frame by software at a steady rate (SFNC: TriggerSelector FrameStart, TriggerMode On,
// TriggerSource Software, the command TriggerSoftware). Owned by the verb; gives the camera its trigger
// settings back on destruction.
#pragma once

#include "vx3/core/Mutex.h"
#include "vx3/genicam/IConfigurer.h"

#include <cstdint>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace VX3::Tool {

class SoftwareTrigger {
public:
    // Prepares the camera; throws ToolError when it takes no software trigger.
    SoftwareTrigger(IConfigurer& camera, double rate);
    ~SoftwareTrigger();
    SoftwareTrigger(const SoftwareTrigger&) = delete;
    SoftwareTrigger& operator=(const SoftwareTrigger&) = delete;

    double Rate() const { return rate_; }
    // Triggers, on a thread of its own, from now on; at the latest until destruction.
    void Begin();
    void End() VX3_EXCLUDES(mutex_);
    std::uint64_t Count() const VX3_EXCLUDES(mutex_);
    // Triggers a second from the first to the last; 0 for fewer than two.
    double Attained() const VX3_EXCLUDES(mutex_);
    // Why triggering ended by itself; empty while it goes well.
    std::string FailureText() const VX3_EXCLUDES(mutex_);

private:
    void Choose(const char* feature, const char* entry, bool optional);
    void Restore();
    void Work() VX3_EXCLUDES(mutex_);
    bool Wait(std::chrono::steady_clock::time_point until) VX3_EXCLUDES(mutex_);

    IConfigurer& camera_;
    const double rate_;
    std::vector<std::pair<const char*, long>> before_; // what features had been set to
    mutable Mutex mutex_;
    CondVar ended_;
    bool ending_ VX3_GUARDED_BY(mutex_) = false;
    std::uint64_t count_ VX3_GUARDED_BY(mutex_) = 0;
    std::chrono::steady_clock::time_point first_ VX3_GUARDED_BY(mutex_);
    std::chrono::steady_clock::time_point last_ VX3_GUARDED_BY(mutex_);
    std::string failure_ VX3_GUARDED_BY(mutex_);
    std::thread worker_;
};

} // namespace VX3::Tool
