// GigE Vision Control Protocol: command and acknowledgement packets, both directions. The same codecs serve
// the client, the simulated camera, tests and fuzzers. No sockets, no allocation.
//
// Encoders write one whole packet and return its size, 0 when it does not fit the room. Decoders take the
// payload of a packet whose header DecodeCommand or DecodeAck has read; they return false for a payload that
// is too short and read nothing past it. Values are in host order.
#pragma once

#include "vx3/gev/GvcpCommand.h"
#include "wire/WireCursor.h"

#include <cstddef>
#include <cstdint>

namespace VX3 {
namespace Gvcp {

constexpr std::uint16_t Port = 3956;
constexpr std::uint8_t Key = 0x42;
constexpr std::size_t HeaderSize = 8;
// READMEM and WRITEMEM carry at most this many data bytes a transaction.
constexpr std::size_t MaxChunk = 512;
// Holds every command and acknowledgement except discovery's.
constexpr std::size_t MaxPacket = 580;
constexpr std::size_t DiscoveryAckSize = 256;
constexpr std::size_t ForceIpSize = 64;
// Request id of discovery and force-IP, which no request counter ever takes part in.
constexpr std::uint16_t BroadcastReqId = 0xFFFF;

namespace Flag {
constexpr std::uint8_t AckRequired = 0x01;
// Discovery and force-IP: the acknowledgement may be broadcast. PACKETRESEND: the ids are extended.
constexpr std::uint8_t BroadcastAck = 0x10;
constexpr std::uint8_t ExtendedIds = 0x10;
} // namespace Flag

enum class Ack : std::uint16_t {
    Discovery = 0x0003,
    ForceIp = 0x0005,
    ReadReg = 0x0081,
    WriteReg = 0x0083,
    ReadMem = 0x0085,
    WriteMem = 0x0087,
    Pending = 0x0089,
    ReadMemEx = 0x8085,
    WriteMemEx = 0x8087,
};

// GigE Vision status of an acknowledgement or stream packet. Bit 15 marks an error.
namespace AckStatus {
constexpr std::uint16_t Success = 0x0000;
constexpr std::uint16_t PacketResent = 0x0100;
constexpr std::uint16_t NotImplemented = 0x8001;
constexpr std::uint16_t InvalidParameter = 0x8002;
constexpr std::uint16_t InvalidAddress = 0x8003;
constexpr std::uint16_t WriteProtect = 0x8004;
constexpr std::uint16_t BadAlignment = 0x8005;
constexpr std::uint16_t AccessDenied = 0x8006;
constexpr std::uint16_t Busy = 0x8007;
constexpr std::uint16_t LocalProblem = 0x8008;
constexpr std::uint16_t PacketUnavailable = 0x800C;
constexpr std::uint16_t InvalidHeader = 0x800E;
constexpr std::uint16_t PacketNotYetAvailable = 0x8010; // may be asked for again
constexpr std::uint16_t PacketAndPreviousRemovedFromMemory = 0x8011;
constexpr std::uint16_t PacketRemovedFromMemory = 0x8012;
constexpr std::uint16_t PacketTemporarilyUnavailable = 0x8014; // likewise
constexpr std::uint16_t Error = 0x8FFF;
} // namespace AckStatus

struct CommandHeader {
    std::uint8_t flags = Flag::AckRequired;
    Command command = Command::Discovery;
    std::uint16_t length = 0; // payload bytes, as the packet claims
    std::uint16_t reqId = 0;
};

struct AckHeader {
    std::uint16_t status = AckStatus::Success;
    Ack code = Ack::Discovery;
    std::uint16_t length = 0; // payload bytes, as the packet claims
    std::uint16_t ackId = 0;
};

// A packet's header and what follows it in the datagram: `payload` is bounded by the datagram, not by
// header.length, which the caller compares when it matters.
struct CommandPacket {
    CommandHeader header;
    WireBytes payload;
};
struct AckPacket {
    AckHeader header;
    WireBytes payload;
};

struct ForceIpRequest {
    std::uint32_t macHigh = 0; // 16 significant bits
    std::uint32_t macLow = 0;
    std::uint32_t ip = 0;
    std::uint32_t mask = 0;
    std::uint32_t gateway = 0;
};
struct MemoryRequest {
    std::uint64_t address = 0;
    std::uint16_t count = 0;
};
struct MemoryData {
    std::uint64_t address = 0;
    WireBytes data;
};
struct ResendRequest {
    bool extended = false;
    std::uint64_t blockId = 0; // low 16 bits travel unless extended
    std::uint32_t firstPacket = 0;
    std::uint32_t lastPacket = 0; // low 24 bits travel unless extended
    std::uint16_t channel = 0;
};

constexpr std::size_t RoundUp4(std::size_t n) {
    return (n + 3) & ~std::size_t{3};
}

// False for a datagram shorter than a header, or (commands) without the key byte.
[[nodiscard]] bool DecodeCommand(WireBytes datagram, CommandPacket& packet);
[[nodiscard]] bool DecodeAck(WireBytes datagram, AckPacket& packet);

// Commands.
[[nodiscard]] std::size_t EncodeDiscovery(WireRoom room);
[[nodiscard]] std::size_t EncodeForceIp(WireRoom room, const ForceIpRequest& request);
[[nodiscard]] std::size_t EncodeReadReg(WireRoom room, std::uint16_t reqId, std::uint32_t address);
[[nodiscard]] std::size_t EncodeWriteReg(WireRoom room, std::uint16_t reqId, std::uint32_t address,
                                         std::uint32_t value);
// `extended`: the device-specific commands with 64-bit addresses.
[[nodiscard]] std::size_t EncodeReadMem(WireRoom room, bool extended, std::uint16_t reqId,
                                        const MemoryRequest& request);
// The data is padded with zeros to a multiple of 4.
[[nodiscard]] std::size_t EncodeWriteMem(WireRoom room, bool extended, std::uint16_t reqId,
                                         const MemoryData& write);
[[nodiscard]] std::size_t EncodePacketResend(WireRoom room, std::uint16_t reqId,
                                             const ResendRequest& request);

[[nodiscard]] bool DecodeForceIp(WireBytes payload, ForceIpRequest& request);
[[nodiscard]] bool DecodeReadReg(WireBytes payload, std::uint32_t& address);
[[nodiscard]] bool DecodeWriteReg(WireBytes payload, std::uint32_t& address, std::uint32_t& value);
[[nodiscard]] bool DecodeReadMem(WireBytes payload, bool extended, MemoryRequest& request);
[[nodiscard]] bool DecodeWriteMem(WireBytes payload, bool extended, MemoryData& write);
[[nodiscard]] bool DecodePacketResend(const CommandPacket& packet, ResendRequest& request);

// Acknowledgements. EncodeAckHeader alone is a whole acknowledgement without payload (force-IP, errors).
[[nodiscard]] std::size_t EncodeAckHeader(WireRoom room, const AckHeader& header);
[[nodiscard]] std::size_t EncodeReadRegAck(WireRoom room, std::uint16_t ackId, std::uint32_t value);
[[nodiscard]] std::size_t EncodeWriteRegAck(WireRoom room, std::uint16_t ackId, std::uint16_t index);
// The data is padded with zeros to a multiple of 4.
[[nodiscard]] std::size_t EncodeReadMemAck(WireRoom room, bool extended, std::uint16_t ackId,
                                           const MemoryData& read);
[[nodiscard]] std::size_t EncodeWriteMemAck(WireRoom room, bool extended, std::uint16_t ackId,
                                            std::uint16_t index);
[[nodiscard]] std::size_t EncodePendingAck(WireRoom room, std::uint16_t ackId,
                                           std::uint16_t timeToCompletionMs);

[[nodiscard]] bool DecodeReadRegAck(WireBytes payload, std::uint32_t& value);
// The reserved half and the index as one number: 1 is the only complete single-register write.
[[nodiscard]] bool DecodeWriteRegAck(WireBytes payload, std::uint32_t& index);
[[nodiscard]] bool DecodeReadMemAck(WireBytes payload, bool extended, MemoryData& read);
[[nodiscard]] bool DecodeWriteMemAck(WireBytes payload, std::uint16_t& index);
[[nodiscard]] bool DecodePendingAck(WireBytes payload, std::uint16_t& timeToCompletionMs);

} // namespace Gvcp
} // namespace VX3
