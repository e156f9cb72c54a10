#include "simulated/camera/ControlPrivilege.h"

#include "gev/protocol/Bootstrap.h"
#include "gev/protocol/Gvcp.h"

namespace VX3 {
namespace Simulated {

std::uint16_t ControlPrivilege::Request(const NET_ENDPOINT& sender, std::uint32_t value, TimePoint now) {
    MutexLock lock(mutex_);
    if (exclusive_ && controller_.port != 0 && !Holds(sender))
        return Gvcp::AckStatus::AccessDenied;
    controller_ = value != 0 ? sender : NET_ENDPOINT{};
    readsAlone_ = (value & Bootstrap::ExclusiveAccess) != 0;
    lastHeard_ = now;
    return Gvcp::AckStatus::Success;
}

bool ControlPrivilege::IsHeld() const {
    MutexLock lock(mutex_);
    return controller_.port != 0;
}

bool ControlPrivilege::IsHeldBy(const NET_ENDPOINT& sender) const {
    MutexLock lock(mutex_);
    return Holds(sender);
}

void ControlPrivilege::Heard(const NET_ENDPOINT& sender, TimePoint now) {
    MutexLock lock(mutex_);
    if (Holds(sender))
        lastHeard_ = now;
}

bool ControlPrivilege::MayWrite(const NET_ENDPOINT& sender) const {
    MutexLock lock(mutex_);
    return !exclusive_ || Holds(sender);
}

bool ControlPrivilege::MayRead(const NET_ENDPOINT& sender) const {
    MutexLock lock(mutex_);
    return !readsAlone_ || controller_.port == 0 || Holds(sender);
}

bool ControlPrivilege::Expire(TimePoint now, std::chrono::milliseconds timeout) {
    MutexLock lock(mutex_);
    if (controller_.port == 0 || now - lastHeard_ < timeout)
        return false;
    controller_ = {};
    return true;
}

void ControlPrivilege::Reset() {
    MutexLock lock(mutex_);
    controller_ = {};
}

} // namespace Simulated
} // namespace VX3
