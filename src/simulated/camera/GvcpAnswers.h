// Answers GVCP commands: any bytes in, an acknowledgement out. No socket, no clock; every length is checked
// against the datagram at hand.
#pragma once

#include "simulated/camera/ControlPrivilege.h"
#include "simulated/camera/IGvcpTarget.h"

#include <array>

namespace VX3 {
namespace Simulated {

class GvcpAnswers {
public:
    using TimePoint = IGvcpTarget::TimePoint;

    // Data bytes of one memory command: what fits a datagram of 576 bytes.
    static constexpr std::uint16_t MostMemory = 536;

    // Both outlive it.
    GvcpAnswers(IGvcpTarget& target, ControlPrivilege& control) : target_(target), control_(control) {}

    // The acknowledgement's size, 0 for none. A refusal other than Success is answered instead of carrying
    // the command out. `room` holds at least Gvcp::MaxPacket bytes.
    std::size_t Answer(const Gvcp::CommandPacket& command, const NET_ENDPOINT& sender, TimePoint now,
                       std::uint16_t refusal, WireRoom room);
    // Ends the control of a host that fell silent.
    void CheckHeartbeat(TimePoint now);

private:
    std::size_t Carry(const Gvcp::CommandPacket& command, const NET_ENDPOINT& sender, TimePoint now,
                      WireRoom room);
    std::size_t Discovery(const Gvcp::CommandPacket& command, const NET_ENDPOINT& sender, WireRoom room);
    std::size_t ForceIp(const Gvcp::CommandPacket& command, WireRoom room);
    std::size_t ReadReg(const Gvcp::CommandPacket& command, WireRoom room);
    std::size_t WriteReg(const Gvcp::CommandPacket& command, const NET_ENDPOINT& sender, TimePoint now,
                         WireRoom room);
    std::size_t ReadMem(const Gvcp::CommandPacket& command, bool extended, WireRoom room);
    std::size_t WriteMem(const Gvcp::CommandPacket& command, bool extended, const NET_ENDPOINT& sender,
                         WireRoom room);
    std::uint16_t WriteControl(const NET_ENDPOINT& sender, std::uint32_t value, TimePoint now);
    std::uint32_t Value(std::uint32_t address);

    IGvcpTarget& target_;
    ControlPrivilege& control_;
};

} // namespace Simulated
} // namespace VX3
