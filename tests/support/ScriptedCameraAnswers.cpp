// How a scripted camera answers each command, and what its registers set in motion.
#include "support/ScriptedCamera.h"

#include <algorithm>
#include <array>

namespace VX3 {
namespace Test {

namespace {

using Gvcp::Command;
using Gvcp::CommandPacket;
namespace AckStatus = Gvcp::AckStatus;

constexpr std::uint16_t mostMemory = 536;

std::size_t Refuse(const CommandPacket& command, std::uint16_t status, WireRoom room) {
    // An acknowledgement's code is its command's, plus one.
    const auto code = static_cast<Gvcp::Ack>(static_cast<std::uint16_t>(command.header.command) + 1);
    return Gvcp::EncodeAckHeader(room, {status, code, 0, command.header.reqId});
}

bool IsStreamRegister(std::uint64_t address) {
    return address >= Bootstrap::StreamPort &&
           address < Bootstrap::StreamPort + 4 * Bootstrap::StreamChannelStride;
}

// Everything a host may write.
bool IsWritable(std::uint64_t address) {
    using namespace Bootstrap;
    constexpr std::array<std::uint32_t, 6> writable = {NetworkConfiguration, PersistentIp,
                                                       PersistentMask,       PersistentGateway,
                                                       HeartbeatTimeout,     GvcpConfiguration};
    return address >= ManufacturerSpace || IsStreamRegister(address) ||
           (address >= UserDefinedName && address < UserDefinedName + 16) ||
           std::find(writable.begin(), writable.end(), address) != writable.end();
}

bool IsLockable(std::uint64_t address) {
    return address == ScriptedAddress::Width || address == ScriptedAddress::Height ||
           address == ScriptedAddress::PixelFormat;
}

} // namespace

std::size_t ScriptedCamera::Answer(const CommandPacket& command, const NET_ENDPOINT& sender,
                                   std::uint16_t refusal, WireRoom room) {
    if (refusal != AckStatus::Success)
        return Refuse(command, refusal, room);
    switch (command.header.command) {
    case Command::Discovery:
        return EncodeDiscoveryAck(room, command.header.reqId, registers_.DiscoveryInfo());
    case Command::ForceIp:
        return AnswerForceIp(command, room);
    case Command::ReadReg:
        return AnswerReadReg(command, room);
    case Command::WriteReg:
        return AnswerWriteReg(command, sender, room);
    case Command::ReadMem:
        return AnswerReadMem(command, false, room);
    case Command::ReadMemEx:
        return AnswerReadMem(command, true, room);
    case Command::WriteMem:
        return AnswerWriteMem(command, false, sender, room);
    case Command::WriteMemEx:
        return AnswerWriteMem(command, true, sender, room);
    default:
        return 0; // as many a camera, no answer at all
    }
}

std::size_t ScriptedCamera::AnswerForceIp(const CommandPacket& command, WireRoom room) {
    Gvcp::ForceIpRequest request;
    if (!Gvcp::DecodeForceIp(command.payload, request) ||
        request.macHigh != registers_.Value(Bootstrap::MacHigh) ||
        request.macLow != registers_.Value(Bootstrap::MacLow))
        return 0;
    (void)registers_.SetValue(Bootstrap::CurrentIp, request.ip);
    (void)registers_.SetValue(Bootstrap::CurrentMask, request.mask);
    (void)registers_.SetValue(Bootstrap::CurrentGateway, request.gateway);
    return Refuse(command, AckStatus::Success, room);
}

std::size_t ScriptedCamera::AnswerReadReg(const CommandPacket& command, WireRoom room) {
    std::uint32_t address = 0;
    if (!Gvcp::DecodeReadReg(command.payload, address))
        return Refuse(command, AckStatus::InvalidParameter, room);
    if (address % 4 != 0)
        return Refuse(command, AckStatus::BadAlignment, room);
    if (address + std::size_t{4} > registers_.Size())
        return Refuse(command, AckStatus::InvalidAddress, room);
    return Gvcp::EncodeReadRegAck(room, command.header.reqId, registers_.Value(address));
}

std::size_t ScriptedCamera::AnswerWriteReg(const CommandPacket& command, const NET_ENDPOINT& sender,
                                           WireRoom room) {
    std::uint32_t address = 0;
    std::uint32_t value = 0;
    if (!Gvcp::DecodeWriteReg(command.payload, address, value))
        return Refuse(command, AckStatus::InvalidParameter, room);
    const std::uint16_t status = WriteRegisterFrom(sender, address, value);
    if (status != AckStatus::Success)
        return Refuse(command, status, room);
    return Gvcp::EncodeWriteRegAck(room, command.header.reqId, 1);
}

std::size_t ScriptedCamera::AnswerReadMem(const CommandPacket& command, bool extended, WireRoom room) {
    Gvcp::MemoryRequest request;
    if (!Gvcp::DecodeReadMem(command.payload, extended, request) || request.count > mostMemory)
        return Refuse(command, AckStatus::InvalidParameter, room);
    std::array<std::uint8_t, mostMemory> bytes{};
    const std::size_t padded = Gvcp::RoundUp4(request.count);
    if (!registers_.Read(request.address, bytes.data(), padded))
        return Refuse(command, AckStatus::InvalidAddress, room);
    return Gvcp::EncodeReadMemAck(room, extended, command.header.reqId,
                                  {request.address, {bytes.data(), padded}});
}

std::size_t ScriptedCamera::AnswerWriteMem(const CommandPacket& command, bool extended,
                                           const NET_ENDPOINT& sender, WireRoom room) {
    Gvcp::MemoryData write;
    if (!Gvcp::DecodeWriteMem(command.payload, extended, write) || write.data.size > mostMemory)
        return Refuse(command, AckStatus::InvalidParameter, room);
    const std::uint16_t status = MayWrite(sender, write.address);
    if (status != AckStatus::Success)
        return Refuse(command, status, room);
    if (!registers_.Write(write.address, write.data.data, write.data.size))
        return Refuse(command, AckStatus::InvalidAddress, room);
    return Gvcp::EncodeWriteMemAck(room, extended, command.header.reqId,
                                   static_cast<std::uint16_t>(write.data.size));
}

// Access --------------------------------------------------------------------------------------------------

std::uint16_t ScriptedCamera::MayWrite(const NET_ENDPOINT& sender, std::uint64_t address) const {
    if (!IsWritable(address))
        return AckStatus::WriteProtect;
    if (IsLockable(address) && registers_.Value(ScriptedAddress::ParamsLocked) != 0)
        return AckStatus::AccessDenied;
    MutexLock lock(mutex_);
    const bool holds = controller_.ip == sender.ip && controller_.port == sender.port;
    return holds || !config_.requiresControl ? AckStatus::Success : AckStatus::AccessDenied;
}

std::uint16_t ScriptedCamera::WriteRegisterFrom(const NET_ENDPOINT& sender, std::uint32_t address,
                                                std::uint32_t value) {
    if (address == Bootstrap::ControlChannelPrivilege)
        return WriteControl(sender, value);
    const std::uint16_t status = MayWrite(sender, address);
    if (status != AckStatus::Success)
        return status;
    if (address % 4 != 0)
        return AckStatus::BadAlignment;
    if (!registers_.SetValue(address, value))
        return AckStatus::InvalidAddress;
    AfterWrite(address, value);
    return AckStatus::Success;
}

std::uint16_t ScriptedCamera::WriteControl(const NET_ENDPOINT& sender, std::uint32_t value) {
    {
        MutexLock lock(mutex_);
        const bool held = controller_.port != 0;
        if (held && (controller_.ip != sender.ip || controller_.port != sender.port) &&
            config_.requiresControl)
            return AckStatus::AccessDenied;
        controller_ = value != 0 ? sender : NET_ENDPOINT{};
        lastHeard_ = std::chrono::steady_clock::now();
    }
    (void)registers_.SetValue(Bootstrap::ControlChannelPrivilege, value);
    if (value == 0)
        StopChannels();
    return AckStatus::Success;
}

// What writes set in motion -------------------------------------------------------------------------------

void ScriptedCamera::AfterWrite(std::uint32_t address, std::uint32_t value) {
    if (IsStreamRegister(address)) {
        const unsigned channel = (address - Bootstrap::StreamPort) / Bootstrap::StreamChannelStride;
        AfterStreamWrite(channel, address - channel * Bootstrap::StreamChannelStride, value);
    } else if (address == ScriptedAddress::AcquisitionStart) {
        acquiring_ = true;
        for (unsigned channel = 0; channel < maxChannels; ++channel)
            StartChannel(channel);
    } else if (address == ScriptedAddress::AcquisitionStop) {
        StopChannels();
    }
}

void ScriptedCamera::AfterStreamWrite(unsigned channel, std::uint32_t reg, std::uint32_t value) {
    const auto at = [&](std::uint32_t base) { return Bootstrap::StreamRegister(base, channel); };
    if (reg == Bootstrap::StreamPort) {
        if (value == 0)
            streams_[channel]->Stop();
        else if (acquiring_)
            StartChannel(channel);
    } else if (reg == Bootstrap::StreamPacketSize && (value & Bootstrap::FireTestPacket) != 0) {
        (void)registers_.SetValue(at(reg), value & ~Bootstrap::FireTestPacket);
        const std::uint32_t size = value & Bootstrap::PacketSizeMask;
        if (config_.sendsTestPackets && size <= config_.largestTestPacket)
            streams_[channel]->SendTestPacket({registers_.Value(at(Bootstrap::StreamDestination)),
                                               registers_.Value(at(Bootstrap::StreamPort))},
                                              size);
    }
}

void ScriptedCamera::StartChannel(unsigned channel) {
    const auto value = [&](std::uint32_t base) {
        return registers_.Value(Bootstrap::StreamRegister(base, channel));
    };
    const NET_ENDPOINT destination{value(Bootstrap::StreamDestination), value(Bootstrap::StreamPort)};
    if (destination.port == 0 || vanished_)
        return;
    StreamScript script;
    {
        MutexLock lock(mutex_);
        script = scripts_.at(channel);
    }
    streams_[channel]->Start(destination,
                             {registers_.Value(ScriptedAddress::Width),
                              registers_.Value(ScriptedAddress::Height),
                              registers_.Value(ScriptedAddress::PixelFormat),
                              value(Bootstrap::StreamPacketSize) & Bootstrap::PacketSizeMask},
                             script);
}

void ScriptedCamera::StopChannels() {
    acquiring_ = false;
    for (const auto& stream : streams_)
        stream->Stop();
}

} // namespace Test
} // namespace VX3
