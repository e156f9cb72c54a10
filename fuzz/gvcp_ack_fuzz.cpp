// What a camera (or anybody) may send to the control channel: the judgement of acknowledgements, their
// payloads, discovery, and the commands a simulated camera takes. Nothing may be read past the datagram, a
// judgement of Complete must hold what it promises, and what was decoded must encode to the same again.
//
// Input: request id (2 bytes), acknowledgement code (2), length (2), then the datagram.
#include "gev/protocol/DiscoveryInfo.h"
#include "gev/protocol/Gvcp.h"

#include <array>
#include <cstdlib>
#include <cstring>

using namespace VX3;
using namespace VX3::Gvcp;

namespace {

void Require(bool condition) {
    if (!condition)
        std::abort();
}

struct Packet {
    std::array<std::uint8_t, 70000> bytes;
    WireRoom Room() { return {bytes.data(), bytes.size()}; }
};

void CheckAck(WireBytes datagram, const AckExpectation& expected) {
    const AckVerdict verdict = JudgeAck(datagram, expected);
    AckPacket packet;
    if (!DecodeAck(datagram, packet)) {
        Require(datagram.size < HeaderSize && verdict.kind == AckVerdict::Kind::Ignore);
        return;
    }
    if (verdict.kind == AckVerdict::Kind::Complete)
        Require(packet.header.ackId == expected.reqId && packet.header.status == 0 &&
                packet.payload.size >= expected.length);
    if (verdict.kind == AckVerdict::Kind::ErrorCode)
        Require(verdict.status != 0);
    std::uint32_t word = 0;
    std::uint16_t half = 0;
    Require(DecodeReadRegAck(packet.payload, word) == (packet.payload.size >= 4));
    Require(DecodeWriteRegAck(packet.payload, word) == (packet.payload.size >= 4));
    Require(DecodeWriteMemAck(packet.payload, half) == (packet.payload.size >= 4));
    for (const bool extended : {false, true}) {
        MemoryData read;
        if (DecodeReadMemAck(packet.payload, extended, read))
            Require(read.data.size + (extended ? 8 : 4) == packet.payload.size);
    }
}

void CheckDiscovery(WireBytes datagram) {
    GevDiscoveryInfo info;
    if (datagram.size < HeaderSize ||
        !DecodeDiscoveryPayload({datagram.data + HeaderSize, datagram.size - HeaderSize}, info))
        return;
    Require(info.serialNumber.size() <= 16 && info.manufacturerInfo.size() <= 48);
    GVCP_DISCOVERY_ACK ack;
    GevDiscoveryInfo again;
    Require(EncodeDiscoveryAck({ack.bytes.data(), ack.bytes.size()}, 1, info) == DiscoveryAckSize &&
            DecodeDiscoveryAck(ack, again));
    Require(again.macLow == info.macLow && again.modelName == info.modelName &&
            again.userDefinedName == info.userDefinedName && again.currentIp == info.currentIp);
}

void CheckCommand(WireBytes datagram) {
    static Packet room;
    CommandPacket packet;
    if (!DecodeCommand(datagram, packet))
        return;
    const WireBytes payload = packet.payload;
    std::uint32_t address = 0;
    std::uint32_t value = 0;
    if (DecodeReadReg(payload, address)) {
        Require(EncodeReadReg(room.Room(), packet.header.reqId, address) == 12);
        Require(std::memcmp(room.bytes.data() + HeaderSize, payload.data, 4) == 0);
    }
    if (DecodeWriteReg(payload, address, value)) {
        Require(EncodeWriteReg(room.Room(), packet.header.reqId, address, value) == 16);
        Require(std::memcmp(room.bytes.data() + HeaderSize, payload.data, 8) == 0);
    }
    for (const bool extended : {false, true}) {
        MemoryRequest request;
        MemoryData write;
        if (DecodeReadMem(payload, extended, request))
            Require(EncodeReadMem(room.Room(), extended, 1, request) == (extended ? 20 : 16));
        if (DecodeWriteMem(payload, extended, write) && payload.size < 60000) {
            const std::size_t size = EncodeWriteMem(room.Room(), extended, 1, write);
            Require(size >= HeaderSize + payload.size && size % 4 == 0);
            Require(std::memcmp(room.bytes.data() + HeaderSize, payload.data, payload.size) == 0);
        }
    }
    ResendRequest resend;
    if (DecodePacketResend(packet, resend)) {
        ResendRequest again;
        const std::size_t size = EncodePacketResend(room.Room(), 1, resend);
        Require(DecodeCommand({room.bytes.data(), size}, packet) && DecodePacketResend(packet, again));
        Require(again.blockId == resend.blockId && again.firstPacket == resend.firstPacket);
    }
    ForceIpRequest force;
    if (DecodeForceIp(payload, force))
        Require(EncodeForceIp(room.Room(), force) == ForceIpSize);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    WireReader reader(data, size);
    AckExpectation expected;
    std::uint16_t code = 0;
    if (!reader.U16(expected.reqId) || !reader.U16(code) || !reader.U16(expected.length))
        return 0;
    expected.code = static_cast<Ack>(code);
    const WireBytes datagram = reader.Rest();
    CheckAck(datagram, expected);
    CheckDiscovery(datagram);
    CheckCommand(datagram);
    return 0;
}
