#include "simulated/camera/GvcpAnswers.h"

#include "gev/protocol/Bootstrap.h"
#include "gev/protocol/DiscoveryInfo.h"

#include <algorithm>

namespace VX3 {
namespace Simulated {

namespace {

using Gvcp::Command;
using Gvcp::CommandPacket;
namespace AckStatus = Gvcp::AckStatus;

constexpr std::size_t ReadRegSize = 4; // one register a command
constexpr std::size_t WriteRegSize = 8;

// An acknowledgement without payload.
std::size_t Bare(const CommandPacket& command, std::uint16_t status, WireRoom room) {
    // An acknowledgement's code is its command's, plus one.
    const auto code = static_cast<Gvcp::Ack>(static_cast<std::uint16_t>(command.header.command) + 1);
    return Gvcp::EncodeAckHeader(room, {status, code, 0, command.header.reqId});
}

bool WantsAnswer(const CommandPacket& command) {
    return (command.header.flags & Gvcp::Flag::AckRequired) != 0;
}

} // namespace

std::size_t GvcpAnswers::Answer(const CommandPacket& command, const NET_ENDPOINT& sender, TimePoint now,
                                std::uint16_t refusal, WireRoom room) {
    control_.Heard(sender, now);
    if (command.header.command == Command::PacketResend) {
        Gvcp::ResendRequest request;
        if (command.header.length == command.payload.size && Gvcp::DecodePacketResend(command, request))
            target_.Resend(request, sender, now);
        return 0;
    }
    std::size_t size = 0;
    if (refusal != AckStatus::Success)
        size = Bare(command, refusal, room);
    else if (command.header.length != command.payload.size)
        size = Bare(command, AckStatus::InvalidHeader, room);
    else
        size = Carry(command, sender, now, room);
    return WantsAnswer(command) ? size : 0;
}

std::size_t GvcpAnswers::Carry(const CommandPacket& command, const NET_ENDPOINT& sender, TimePoint now,
                               WireRoom room) {
    switch (command.header.command) {
    case Command::Discovery:
        return Discovery(command, sender, room);
    case Command::ForceIp:
        return ForceIp(command, room);
    case Command::ReadReg:
        return control_.MayRead(sender) ? ReadReg(command, room)
                                        : Bare(command, AckStatus::AccessDenied, room);
    case Command::WriteReg:
        return WriteReg(command, sender, now, room);
    case Command::ReadMem:
    case Command::ReadMemEx:
        return control_.MayRead(sender) ? ReadMem(command, command.header.command == Command::ReadMemEx, room)
                                        : Bare(command, AckStatus::AccessDenied, room);
    case Command::WriteMem:
        return WriteMem(command, false, sender, room);
    case Command::WriteMemEx:
        return WriteMem(command, true, sender, room);
    default:
        return Bare(command, AckStatus::NotImplemented, room);
    }
}

// The acknowledgement is the first bootstrap registers as they stand.
std::size_t GvcpAnswers::Discovery(const CommandPacket& command, const NET_ENDPOINT& sender, WireRoom room) {
    constexpr std::size_t Payload = Gvcp::DiscoveryAckSize - Gvcp::HeaderSize;
    const std::size_t header = Gvcp::EncodeAckHeader(
        room, {AckStatus::Success, Gvcp::Ack::Discovery, Payload, command.header.reqId});
    const bool fits = header != 0 && room.size >= header + Payload;
    if (!fits || target_.Identify(sender, {room.data + header, Payload}) != AckStatus::Success)
        return 0;
    return header + Payload;
}

std::size_t GvcpAnswers::ForceIp(const CommandPacket& command, WireRoom room) {
    Gvcp::ForceIpRequest request;
    if (!Gvcp::DecodeForceIp(command.payload, request) ||
        (request.macHigh & 0xFFFF) != Value(Bootstrap::MacHigh) || request.macLow != Value(Bootstrap::MacLow))
        return 0; // meant for somebody else
    return Bare(command, target_.ForceIp(request), room);
}

std::uint32_t GvcpAnswers::Value(std::uint32_t address) {
    std::uint32_t value = 0;
    return target_.ReadRegister(address, value) == AckStatus::Success ? value : 0;
}

std::size_t GvcpAnswers::ReadReg(const CommandPacket& command, WireRoom room) {
    std::uint32_t address = 0;
    std::uint32_t value = 0;
    if (command.payload.size != ReadRegSize || !Gvcp::DecodeReadReg(command.payload, address))
        return Bare(command, AckStatus::InvalidParameter, room);
    if (address % 4 != 0)
        return Bare(command, AckStatus::BadAlignment, room);
    if (const std::uint16_t status = target_.ReadRegister(address, value))
        return Bare(command, status, room);
    return Gvcp::EncodeReadRegAck(room, command.header.reqId, value);
}

std::size_t GvcpAnswers::WriteReg(const CommandPacket& command, const NET_ENDPOINT& sender, TimePoint now,
                                  WireRoom room) {
    std::uint32_t address = 0;
    std::uint32_t value = 0;
    if (command.payload.size != WriteRegSize || !Gvcp::DecodeWriteReg(command.payload, address, value))
        return Bare(command, AckStatus::InvalidParameter, room);
    std::uint16_t status = AckStatus::Success;
    if (address == Bootstrap::ControlChannelPrivilege)
        status = WriteControl(sender, value, now);
    else if (!control_.MayWrite(sender))
        status = AckStatus::AccessDenied;
    else if (address % 4 != 0)
        status = AckStatus::BadAlignment;
    else
        status = target_.WriteRegister(address, value);
    // The acknowledgement carries its index whatever became of the write.
    const std::size_t size = Gvcp::EncodeWriteRegAck(room, command.header.reqId, 1);
    if (size != 0)
        Wire::Store(room.data, status);
    return size;
}

std::uint16_t GvcpAnswers::WriteControl(const NET_ENDPOINT& sender, std::uint32_t value, TimePoint now) {
    std::uint16_t status = control_.Request(sender, value, now);
    if (status != AckStatus::Success)
        return status;
    status = target_.ControlChanged(value, value != 0 ? sender : NET_ENDPOINT{});
    if (status != AckStatus::Success)
        control_.Reset();
    return status;
}

std::size_t GvcpAnswers::ReadMem(const CommandPacket& command, bool extended, WireRoom room) {
    Gvcp::MemoryRequest request;
    if (!Gvcp::DecodeReadMem(command.payload, extended, request) || request.count > MostMemory)
        return Bare(command, AckStatus::InvalidParameter, room);
    std::array<std::uint8_t, MostMemory> bytes;
    const std::size_t padded = Gvcp::RoundUp4(request.count);
    if (const std::uint16_t status = target_.Read(request.address, {bytes.data(), request.count}))
        return Bare(command, status, room);
    std::fill(bytes.begin() + request.count, bytes.begin() + static_cast<std::ptrdiff_t>(padded),
              std::uint8_t{0});
    return Gvcp::EncodeReadMemAck(room, extended, command.header.reqId,
                                  {request.address, {bytes.data(), padded}});
}

std::size_t GvcpAnswers::WriteMem(const CommandPacket& command, bool extended, const NET_ENDPOINT& sender,
                                  WireRoom room) {
    Gvcp::MemoryData write;
    if (!Gvcp::DecodeWriteMem(command.payload, extended, write) || write.data.size > MostMemory)
        return Bare(command, AckStatus::InvalidParameter, room);
    const std::uint16_t status =
        control_.MayWrite(sender) ? target_.Write(write.address, write.data) : AckStatus::AccessDenied;
    const std::size_t written = status == AckStatus::Success ? write.data.size : 0;
    const std::size_t size =
        Gvcp::EncodeWriteMemAck(room, extended, command.header.reqId, static_cast<std::uint16_t>(written));
    if (size != 0)
        Wire::Store(room.data, status);
    return size;
}

void GvcpAnswers::CheckHeartbeat(TimePoint now) {
    if (control_.Expire(now, std::chrono::milliseconds(Value(Bootstrap::HeartbeatTimeout))))
        (void)target_.ControlChanged(Bootstrap::ReleaseControl, {}); // letting go is never refused
}

} // namespace Simulated
} // namespace VX3
