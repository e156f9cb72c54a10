// Who controls the camera: one host at a time, until it lets go or its heartbeat stops. No clock of its own.
#pragma once

#include "vx3/core/Mutex.h"
#include "vx3/gev/NetParam.h"

#include <chrono>
#include <cstdint>

namespace VX3 {
namespace Simulated {

// Safe to use from any thread.
class ControlPrivilege {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    // `exclusive` false: nobody is refused.
    explicit ControlPrivilege(bool exclusive) : exclusive_(exclusive) {}

    // A write of the control channel privilege register: GigE Vision status.
    std::uint16_t Request(const NET_ENDPOINT& sender, std::uint32_t value, TimePoint now);
    bool IsHeld() const;
    bool IsHeldBy(const NET_ENDPOINT& sender) const;
    // Any command of a host keeps its control alive.
    void Heard(const NET_ENDPOINT& sender, TimePoint now);
    bool MayWrite(const NET_ENDPOINT& sender) const;
    // False for all others while a host has exclusive access.
    bool MayRead(const NET_ENDPOINT& sender) const;
    // True once, when the controlling host was silent for so long: nobody controls any more.
    bool Expire(TimePoint now, std::chrono::milliseconds timeout);
    void Reset();

private:
    bool Holds(const NET_ENDPOINT& sender) const VX3_REQUIRES(mutex_) {
        return controller_.port != 0 && controller_.ip == sender.ip && controller_.port == sender.port;
    }

    const bool exclusive_;
    mutable Mutex mutex_;
    NET_ENDPOINT controller_ VX3_GUARDED_BY(mutex_); // port 0: nobody
    bool readsAlone_ VX3_GUARDED_BY(mutex_) = false;
    TimePoint lastHeard_ VX3_GUARDED_BY(mutex_);
};

} // namespace Simulated
} // namespace VX3
