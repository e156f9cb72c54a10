#include "grab/SoftwareTrigger.h"

#include "base/ToolError.h"

#include <algorithm>
#include <chrono>

namespace VX3::Tool {

using Clock = std::chrono::steady_clock;
using GenICam::NodeValue;

SoftwareTrigger::SoftwareTrigger(IConfigurer& camera, double rate) : camera_(camera), rate_(rate) {
    try {
        Choose("TriggerSelector", "FrameStart", true); // cameras with one kind of trigger lack it
        Choose("TriggerSource", "Software", false);
        Choose("TriggerMode", "On", false);
    } catch (...) {
        Restore();
        throw;
    }
}

SoftwareTrigger::~SoftwareTrigger() {
    End();
    Restore();
}

void SoftwareTrigger::Choose(const char* feature, const char* entry, bool optional) {
    NodeValue value;
    StatusCode code = camera_.ReadNodeValue(feature, value);
    if (code == Status::NotFound && optional)
        return;
    if (!Failed(code))
        code = camera_.SetNodeValue(feature, entry);
    if (Failed(code))
        throw ToolError(std::string("the camera takes no software trigger: ") + feature, code);
    before_.emplace_back(feature, value.AsInteger());
}

// Mode and source belong to the selector's value, so that comes last. A camera that is lost takes nothing.
void SoftwareTrigger::Restore() {
    for (auto setting = before_.rbegin(); setting != before_.rend(); ++setting)
        (void)camera_.SetNodeValue(setting->first, NodeValue(setting->second));
    before_.clear();
}

void SoftwareTrigger::Begin() {
    worker_ = std::thread([this] { Work(); });
}

void SoftwareTrigger::End() {
    {
        MutexLock lock(mutex_);
        ending_ = true;
        ended_.NotifyOne();
    }
    if (worker_.joinable())
        worker_.join();
}

std::uint64_t SoftwareTrigger::Count() const {
    MutexLock lock(mutex_);
    return count_;
}

double SoftwareTrigger::Attained() const {
    MutexLock lock(mutex_);
    const double seconds = std::chrono::duration<double>(last_ - first_).count();
    return count_ > 1 && seconds > 0.0 ? static_cast<double>(count_ - 1) / seconds : 0.0;
}

std::string SoftwareTrigger::FailureText() const {
    MutexLock lock(mutex_);
    return failure_;
}

// False once triggering is to end.
bool SoftwareTrigger::Wait(Clock::time_point until) {
    MutexLock lock(mutex_);
    while (!ending_ && Clock::now() < until)
        ended_.WaitUntil(mutex_, until);
    return !ending_;
}

// One period after another from the first trigger on; what comes late is not made up for by a burst.
void SoftwareTrigger::Work() {
    const auto period =
        std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(1.0 / rate_));
    Clock::time_point next = Clock::now();
    while (Wait(next)) {
        const StatusCode code = camera_.SetNodeValue("TriggerSoftware", GenICam::CommandValue());
        const Clock::time_point now = Clock::now();
        MutexLock lock(mutex_);
        if (Failed(code)) {
            failure_ = "TriggerSoftware: " + StatusWords(code) + ReasonWords(code);
            return;
        }
        if (count_++ == 0)
            first_ = now;
        last_ = now;
        next = std::max(next + period, now - period);
    }
}

} // namespace VX3::Tool
