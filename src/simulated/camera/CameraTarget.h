// What the commands of hosts do to a simulated camera: registers change, streams start and stop.
#pragma once

#include "simulated/camera/IGvcpTarget.h"
#include "simulated/camera/StreamChannels.h"

namespace VX3 {
namespace Simulated {

class CameraTarget : public IGvcpTarget {
public:
    // Both outlive it. `tellsPrimary`: the registers of the primary application name who holds control.
    CameraTarget(RegisterFile& registers, StreamChannels& streams, bool tellsPrimary = true)
        : registers_(registers), streams_(streams), tellsPrimary_(tellsPrimary) {}

    std::uint16_t Read(std::uint64_t address, WireRoom room) override;
    std::uint16_t Write(std::uint64_t address, WireBytes bytes) override;
    std::uint16_t ControlChanged(std::uint32_t privilege, const NET_ENDPOINT& holder) override;
    std::uint16_t ForceIp(const Gvcp::ForceIpRequest& request) override;
    void Resend(const Gvcp::ResendRequest& request, const NET_ENDPOINT& sender, TimePoint now) override {
        streams_.Resend(request, sender, now);
    }
    bool Tick(TimePoint now) override { return streams_.ServeLateResends(now); }

private:
    bool IsLocked(std::uint64_t address, std::size_t size) const;

    RegisterFile& registers_;
    StreamChannels& streams_;
    const bool tellsPrimary_;
};

} // namespace Simulated
} // namespace VX3
