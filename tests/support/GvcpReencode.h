// Reads a GVCP command and writes it again: what was read is what was meant when the bytes come out the same.
#pragma once

#include "gev/protocol/Gvcp.h"

namespace VX3::Test {

// The size written; 0 for what no camera would take.
inline std::size_t ReencodeCommand(WireBytes datagram, WireRoom room) {
    using namespace Gvcp;
    CommandPacket packet;
    if (!DecodeCommand(datagram, packet))
        return 0;
    const std::uint16_t id = packet.header.reqId;
    const bool extended = static_cast<unsigned>(packet.header.command) >= 0x8000;
    std::uint32_t address = 0;
    std::uint32_t value = 0;
    ForceIpRequest force;
    MemoryRequest read;
    MemoryData write;
    ResendRequest resend;
    switch (packet.header.command) {
    case Command::Discovery:
        return EncodeDiscovery(room);
    case Command::ForceIp:
        return DecodeForceIp(packet.payload, force) ? EncodeForceIp(room, force) : 0;
    case Command::PacketResend:
        return DecodePacketResend(packet, resend) ? EncodePacketResend(room, id, resend) : 0;
    case Command::ReadReg:
        return DecodeReadReg(packet.payload, address) ? EncodeReadReg(room, id, address) : 0;
    case Command::WriteReg:
        return DecodeWriteReg(packet.payload, address, value) ? EncodeWriteReg(room, id, address, value) : 0;
    case Command::ReadMem:
    case Command::ReadMemEx:
        return DecodeReadMem(packet.payload, extended, read) ? EncodeReadMem(room, extended, id, read) : 0;
    case Command::WriteMem:
    case Command::WriteMemEx:
        return DecodeWriteMem(packet.payload, extended, write) ? EncodeWriteMem(room, extended, id, write)
                                                               : 0;
    }
    return 0;
}

} // namespace VX3::Test
