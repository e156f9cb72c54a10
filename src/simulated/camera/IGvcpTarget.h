// What stands behind a GVCP server: registers, and what they set in motion. Called on the server's thread.
#pragma once

#include "gev/protocol/Bootstrap.h"
#include "gev/protocol/Gvcp.h"
#include "vx3/gev/NetParam.h"

#include <chrono>
#include <cstdint>

namespace VX3 {
namespace Simulated {

class IGvcpTarget {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    virtual ~IGvcpTarget() = default;
    // Both give a GigE Vision status and do all or nothing. Access is settled already.
    virtual std::uint16_t Read(std::uint64_t address, WireRoom room) = 0;
    virtual std::uint16_t Write(std::uint64_t address, WireBytes bytes) = 0;
    // The register commands: the same bytes, unless the target tells registers from memory.
    virtual std::uint16_t ReadRegister(std::uint32_t address, std::uint32_t& value) {
        std::uint8_t bytes[4] = {};
        const std::uint16_t status = Read(address, {bytes, sizeof(bytes)});
        if (status == Gvcp::AckStatus::Success)
            value = Wire::Load<std::uint32_t>(bytes);
        return status;
    }
    virtual std::uint16_t WriteRegister(std::uint32_t address, std::uint32_t value) {
        std::uint8_t bytes[4];
        Wire::Store(bytes, value);
        return Write(address, {bytes, sizeof(bytes)});
    }
    // The first bootstrap registers, as that host is told of them by discovery.
    virtual std::uint16_t Identify(const NET_ENDPOINT& /*asker*/, WireRoom room) {
        return Read(Bootstrap::Version, room);
    }
    // The control channel privilege changed hands; 0: nobody holds it any more, and the holder is empty. Any
    // status but Success refuses it to the new holder: nobody has it then.
    virtual std::uint16_t ControlChanged(std::uint32_t privilege, const NET_ENDPOINT& holder) = 0;
    // The request names this camera. A GigE Vision status.
    virtual std::uint16_t ForceIp(const Gvcp::ForceIpRequest& request) = 0;
    virtual void Resend(const Gvcp::ResendRequest& request, const NET_ENDPOINT& sender, TimePoint now) = 0;
    // Called every few milliseconds. True when it wants to be called again as soon as possible.
    virtual bool Tick(TimePoint now) = 0;
};

} // namespace Simulated
} // namespace VX3
