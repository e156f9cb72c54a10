#include "gev/GevControl.h"

#include "gev/protocol/Bootstrap.h"
#include "vx3/core/Status.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace VX3 {

namespace {

using std::chrono::milliseconds;
using Beat = GevHeartBeat::Beat;

constexpr std::uint32_t WantedTimeoutMs = 9000;
// Cameras that keep a time-out of their own: none is believed to be shorter or longer than this.
constexpr milliseconds ShortestTimeout{500};
constexpr milliseconds LongestTimeout{30000};
constexpr milliseconds LongestPeriod{3000};
constexpr StatusCode AccessDenied = Status::FromGvcp(Gvcp::AckStatus::AccessDenied);

} // namespace

GevControl::GevControl(std::function<void()> lost)
    : heartBeat_([this] { return AskCamera(); }, std::move(lost)) {}

GevControl::Hold GevControl::Held() const {
    MutexLock lock(mutex_);
    return hold_;
}

StatusCode GevControl::Take(std::shared_ptr<GevCmdHelper> helper) {
    std::uint32_t timeout = 0;
    StatusCode result = helper->ReadRegister(Bootstrap::HeartbeatTimeout, timeout);
    if (Failed(result))
        return result;
    result = helper->WriteRegister(Bootstrap::ControlChannelPrivilege, Bootstrap::ControlAccess);
    if (Failed(result))
        return result;
    SetTimes(*helper, timeout);
    bool tellsPrimary = false;
    (void)AskPrimary(*helper, tellsPrimary); // registers that not every camera has
    MutexLock lock(mutex_);
    hold_ = {std::move(helper), true, tellsPrimary};
    return Status::Ok;
}

StatusCode GevControl::Watch(std::shared_ptr<GevCmdHelper> helper) {
    std::uint32_t privilege = 0;
    const StatusCode result = helper->ReadRegister(Bootstrap::ControlChannelPrivilege, privilege);
    if (Failed(result))
        return result;
    heartBeat_.SetPeriod(LongestPeriod);
    heartBeat_.SetTimeout(milliseconds(WantedTimeoutMs));
    MutexLock lock(mutex_);
    hold_ = {std::move(helper), false, false};
    return Status::Ok;
}

// Some cameras keep their own time-out whatever is written: what holds is what they say afterwards.
void GevControl::SetTimes(GevCmdHelper& helper, std::uint32_t reportedTimeoutMs) {
    (void)helper.WriteRegister(Bootstrap::HeartbeatTimeout, WantedTimeoutMs);
    std::uint32_t kept = 0;
    if (Failed(helper.ReadRegister(Bootstrap::HeartbeatTimeout, kept)))
        kept = reportedTimeoutMs;
    const milliseconds timeout = std::clamp(milliseconds(kept), ShortestTimeout, LongestTimeout);
    heartBeat_.SetTimeout(timeout);
    heartBeat_.SetPeriod(std::min(LongestPeriod, timeout / 3));
}

StatusCode GevControl::Release(bool tell) {
    Hold held;
    {
        MutexLock lock(mutex_);
        std::swap(held, hold_);
    }
    if (!held.controls || !tell)
        return Status::Ok;
    return held.helper->WriteRegister(Bootstrap::ControlChannelPrivilege, Bootstrap::ReleaseControl);
}

// The heart -----------------------------------------------------------------------------------------------

Beat GevControl::AskCamera() const {
    const Hold held = Held();
    if (!held.helper)
        return Beat::Alive; // released meanwhile: the heart is about to be stopped
    std::uint32_t privilege = 0;
    const StatusCode result = held.helper->ReadRegister(Bootstrap::ControlChannelPrivilege, privilege);
    if (result == AccessDenied)
        return held.controls ? Beat::Lost : Beat::Alive; // somebody has exclusive access
    if (Failed(result))
        return Beat::Missed;
    if (!held.controls)
        return Beat::Alive;
    if (privilege != Bootstrap::ControlAccess)
        return Beat::Lost;
    if (!held.tellsPrimary)
        return Renew(*held.helper);
    // Another host that took control with the same privilege shows in whom the camera obeys.
    bool isPrimary = false;
    const StatusCode told = AskPrimary(*held.helper, isPrimary);
    if (Failed(told))
        return Status::IsGvcp(told) ? Renew(*held.helper) : Beat::Missed;
    return isPrimary ? Beat::Alive : Beat::Lost;
}

StatusCode GevControl::AskPrimary(GevCmdHelper& helper, bool& isPrimary) {
    std::uint32_t ip = 0;
    std::uint32_t port = 0;
    StatusCode result = helper.ReadRegister(Bootstrap::PrimaryApplicationIp, ip);
    if (!Failed(result))
        result = helper.ReadRegister(Bootstrap::PrimaryApplicationPort, port);
    const NET_ENDPOINT own = helper.LocalEndPoint();
    isPrimary = !Failed(result) && ip == own.ip && (port & 0xFFFFU) == own.port;
    return result;
}

// A camera that does not tell refuses the privilege to whoever does not hold it.
Beat GevControl::Renew(GevCmdHelper& helper) {
    const StatusCode result =
        helper.WriteRegister(Bootstrap::ControlChannelPrivilege, Bootstrap::ControlAccess);
    if (!Failed(result))
        return Beat::Alive;
    return Status::IsGvcp(result) ? Beat::Lost : Beat::Missed;
}

} // namespace VX3
