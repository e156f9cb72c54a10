#include "gev/protocol/Gvcp.h"

namespace VX3 {
namespace Gvcp {

namespace {

bool WriteCommandHeader(WireWriter& writer, std::uint8_t flags, Command command, std::size_t length,
                        std::uint16_t reqId) {
    return writer.U8(Key) && writer.U8(flags) && writer.U16(static_cast<std::uint16_t>(command)) &&
           writer.U16(static_cast<std::uint16_t>(length)) && writer.U16(reqId);
}

bool WriteAckHeader(WireWriter& writer, const AckHeader& header) {
    return writer.U16(header.status) && writer.U16(static_cast<std::uint16_t>(header.code)) &&
           writer.U16(header.length) && writer.U16(header.ackId);
}

bool WriteAckHeader(WireWriter& writer, Ack code, std::size_t length, std::uint16_t ackId) {
    return WriteAckHeader(writer, {AckStatus::Success, code, static_cast<std::uint16_t>(length), ackId});
}

std::size_t SizeIf(bool ok, const WireWriter& writer) {
    return ok ? writer.Written() : 0;
}

bool WriteAddress(WireWriter& writer, bool extended, std::uint64_t address) {
    return extended ? writer.U64(address) : writer.U32(static_cast<std::uint32_t>(address));
}

bool ReadAddress(WireReader& reader, bool extended, std::uint64_t& address) {
    if (extended)
        return reader.U64(address);
    std::uint32_t low = 0;
    if (!reader.U32(low))
        return false;
    address = low;
    return true;
}

constexpr std::size_t AddressSize(bool extended) {
    return extended ? 8 : 4;
}

bool WritePadded(WireWriter& writer, WireBytes data) {
    return writer.Copy(data) && writer.Zeros(RoundUp4(data.size) - data.size);
}

// A payload that the 16-bit length field can name.
bool LengthFits(std::size_t length) {
    return length <= 0xFFFF;
}

} // namespace

bool DecodeCommand(WireBytes datagram, CommandPacket& packet) {
    WireReader reader(datagram);
    std::uint8_t key = 0;
    CommandHeader header;
    std::uint16_t command = 0;
    if (!reader.U8(key) || key != Key || !reader.U8(header.flags) || !reader.U16(command) ||
        !reader.U16(header.length) || !reader.U16(header.reqId))
        return false;
    header.command = static_cast<Command>(command);
    packet.header = header;
    packet.payload = reader.Rest();
    return true;
}

bool DecodeAck(WireBytes datagram, AckPacket& packet) {
    WireReader reader(datagram);
    AckHeader header;
    std::uint16_t code = 0;
    if (!reader.U16(header.status) || !reader.U16(code) || !reader.U16(header.length) ||
        !reader.U16(header.ackId))
        return false;
    header.code = static_cast<Ack>(code);
    packet.header = header;
    packet.payload = reader.Rest();
    return true;
}

// Commands ------------------------------------------------------------------------------------------------

std::size_t EncodeDiscovery(WireRoom room) {
    WireWriter writer(room);
    return SizeIf(WriteCommandHeader(writer, Flag::AckRequired | Flag::BroadcastAck, Command::Discovery, 0,
                                     BroadcastReqId),
                  writer);
}

std::size_t EncodeForceIp(WireRoom room, const ForceIpRequest& request) {
    WireWriter writer(room);
    const bool ok = WriteCommandHeader(writer, Flag::AckRequired | Flag::BroadcastAck, Command::ForceIp,
                                       ForceIpSize - HeaderSize, BroadcastReqId) &&
                    writer.U32(request.macHigh) && writer.U32(request.macLow) && writer.Zeros(12) &&
                    writer.U32(request.ip) && writer.Zeros(12) && writer.U32(request.mask) &&
                    writer.Zeros(12) && writer.U32(request.gateway);
    return SizeIf(ok, writer);
}

std::size_t EncodeReadReg(WireRoom room, std::uint16_t reqId, std::uint32_t address) {
    WireWriter writer(room);
    return SizeIf(WriteCommandHeader(writer, Flag::AckRequired, Command::ReadReg, 4, reqId) &&
                      writer.U32(address),
                  writer);
}

std::size_t EncodeWriteReg(WireRoom room, std::uint16_t reqId, std::uint32_t address, std::uint32_t value) {
    WireWriter writer(room);
    return SizeIf(WriteCommandHeader(writer, Flag::AckRequired, Command::WriteReg, 8, reqId) &&
                      writer.U32(address) && writer.U32(value),
                  writer);
}

std::size_t EncodeReadMem(WireRoom room, bool extended, std::uint16_t reqId, const MemoryRequest& request) {
    WireWriter writer(room);
    const Command command = extended ? Command::ReadMemEx : Command::ReadMem;
    const bool ok =
        WriteCommandHeader(writer, Flag::AckRequired, command, AddressSize(extended) + 4, reqId) &&
        WriteAddress(writer, extended, request.address) && writer.U16(0) && writer.U16(request.count);
    return SizeIf(ok, writer);
}

std::size_t EncodeWriteMem(WireRoom room, bool extended, std::uint16_t reqId, const MemoryData& write) {
    WireWriter writer(room);
    const Command command = extended ? Command::WriteMemEx : Command::WriteMem;
    const std::size_t length = AddressSize(extended) + RoundUp4(write.data.size);
    const bool ok = LengthFits(length) &&
                    WriteCommandHeader(writer, Flag::AckRequired, command, length, reqId) &&
                    WriteAddress(writer, extended, write.address) && WritePadded(writer, write.data);
    return SizeIf(ok, writer);
}

std::size_t EncodePacketResend(WireRoom room, std::uint16_t reqId, const ResendRequest& request) {
    WireWriter writer(room);
    bool ok = false;
    if (request.extended) {
        ok = WriteCommandHeader(writer, Flag::ExtendedIds, Command::PacketResend, 20, reqId) &&
             writer.U16(request.channel) && writer.U16(0) && writer.U32(request.firstPacket) &&
             writer.U32(request.lastPacket) && writer.U64(request.blockId);
    } else {
        ok = WriteCommandHeader(writer, 0, Command::PacketResend, 12, reqId) && writer.U16(request.channel) &&
             writer.U16(static_cast<std::uint16_t>(request.blockId)) && writer.U32(request.firstPacket) &&
             writer.U32(request.lastPacket & 0x00FFFFFFU);
    }
    return SizeIf(ok, writer);
}

bool DecodeForceIp(WireBytes payload, ForceIpRequest& request) {
    WireReader reader(payload);
    return reader.U32(request.macHigh) && reader.U32(request.macLow) && reader.Skip(12) &&
           reader.U32(request.ip) && reader.Skip(12) && reader.U32(request.mask) && reader.Skip(12) &&
           reader.U32(request.gateway);
}

bool DecodeReadReg(WireBytes payload, std::uint32_t& address) {
    return WireReader(payload).U32(address);
}

bool DecodeWriteReg(WireBytes payload, std::uint32_t& address, std::uint32_t& value) {
    WireReader reader(payload);
    return reader.U32(address) && reader.U32(value);
}

bool DecodeReadMem(WireBytes payload, bool extended, MemoryRequest& request) {
    WireReader reader(payload);
    return ReadAddress(reader, extended, request.address) && reader.Skip(2) && reader.U16(request.count);
}

bool DecodeWriteMem(WireBytes payload, bool extended, MemoryData& write) {
    WireReader reader(payload);
    if (!ReadAddress(reader, extended, write.address))
        return false;
    write.data = reader.Rest();
    return true;
}

bool DecodePacketResend(const CommandPacket& packet, ResendRequest& request) {
    WireReader reader(packet.payload);
    const bool extended = (packet.header.flags & Flag::ExtendedIds) != 0;
    std::uint16_t shortBlockId = 0;
    if (!reader.U16(request.channel) || !reader.U16(shortBlockId) || !reader.U32(request.firstPacket) ||
        !reader.U32(request.lastPacket))
        return false;
    request.extended = extended;
    request.blockId = shortBlockId;
    return !extended || reader.U64(request.blockId);
}

// Acknowledgements ----------------------------------------------------------------------------------------

std::size_t EncodeAckHeader(WireRoom room, const AckHeader& header) {
    WireWriter writer(room);
    return SizeIf(WriteAckHeader(writer, header), writer);
}

std::size_t EncodeReadRegAck(WireRoom room, std::uint16_t ackId, std::uint32_t value) {
    WireWriter writer(room);
    return SizeIf(WriteAckHeader(writer, Ack::ReadReg, 4, ackId) && writer.U32(value), writer);
}

std::size_t EncodeWriteRegAck(WireRoom room, std::uint16_t ackId, std::uint16_t index) {
    WireWriter writer(room);
    return SizeIf(WriteAckHeader(writer, Ack::WriteReg, 4, ackId) && writer.U16(0) && writer.U16(index),
                  writer);
}

std::size_t EncodeReadMemAck(WireRoom room, bool extended, std::uint16_t ackId, const MemoryData& read) {
    WireWriter writer(room);
    const std::size_t length = AddressSize(extended) + RoundUp4(read.data.size);
    const bool ok = LengthFits(length) &&
                    WriteAckHeader(writer, extended ? Ack::ReadMemEx : Ack::ReadMem, length, ackId) &&
                    WriteAddress(writer, extended, read.address) && WritePadded(writer, read.data);
    return SizeIf(ok, writer);
}

std::size_t EncodeWriteMemAck(WireRoom room, bool extended, std::uint16_t ackId, std::uint16_t index) {
    WireWriter writer(room);
    return SizeIf(WriteAckHeader(writer, extended ? Ack::WriteMemEx : Ack::WriteMem, 4, ackId) &&
                      writer.U16(0) && writer.U16(index),
                  writer);
}

std::size_t EncodePendingAck(WireRoom room, std::uint16_t ackId, std::uint16_t timeToCompletionMs) {
    WireWriter writer(room);
    return SizeIf(WriteAckHeader(writer, Ack::Pending, 4, ackId) && writer.U16(0) &&
                      writer.U16(timeToCompletionMs),
                  writer);
}

bool DecodeReadRegAck(WireBytes payload, std::uint32_t& value) {
    return WireReader(payload).U32(value);
}

bool DecodeWriteRegAck(WireBytes payload, std::uint32_t& index) {
    return WireReader(payload).U32(index);
}

bool DecodeReadMemAck(WireBytes payload, bool extended, MemoryData& read) {
    return DecodeWriteMem(payload, extended, read); // the same layout: address, then data
}

bool DecodeWriteMemAck(WireBytes payload, std::uint16_t& index) {
    WireReader reader(payload);
    return reader.Skip(2) && reader.U16(index);
}

bool DecodePendingAck(WireBytes payload, std::uint16_t& timeToCompletionMs) {
    return DecodeWriteMemAck(payload, timeToCompletionMs); // the same place
}

} // namespace Gvcp
} // namespace VX3
