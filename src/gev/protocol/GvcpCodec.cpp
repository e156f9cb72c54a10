#include "gev/protocol/GvcpCodec.h"

namespace VX3 {

using namespace Gvcp;

namespace {

using Kind = WireAnswer::Kind;

constexpr std::size_t RegisterSize = 4;

bool IsExtended(Command command) {
    return command == Command::ReadMemEx || command == Command::WriteMemEx;
}

Command CommandOf(const WireRequest& request) {
    return static_cast<Command>(request.command);
}

// What travels of the address, and is echoed.
std::uint64_t AddressOf(const WireRequest& request) {
    return IsExtended(CommandOf(request)) ? request.address : request.address & 0xFFFFFFFFU;
}

std::size_t EncodeCommand(WireRoom room, const WireRequest& request, std::uint16_t id) {
    const Command command = CommandOf(request);
    const auto address = static_cast<std::uint32_t>(request.address);
    if (request.count > MaxChunk || request.data.size > MaxChunk)
        return 0;
    switch (command) {
    case Command::ReadReg:
        return EncodeReadReg(room, id, address);
    case Command::WriteReg:
        if (request.data.size != RegisterSize)
            return 0;
        return EncodeWriteReg(room, id, address, Wire::Load<std::uint32_t>(request.data.data));
    case Command::ReadMem:
    case Command::ReadMemEx:
        return EncodeReadMem(room, IsExtended(command), id,
                             {AddressOf(request), static_cast<std::uint16_t>(request.count)});
    case Command::WriteMem:
    case Command::WriteMemEx:
        return EncodeWriteMem(room, IsExtended(command), id, {request.address, request.data});
    default:
        return 0; // has no acknowledgement, or not one answer
    }
}

std::size_t AckLength(const WireRequest& request) {
    switch (CommandOf(request)) {
    case Command::ReadMem:
        return 4 + RoundUp4(request.count);
    case Command::ReadMemEx:
        return 8 + RoundUp4(request.count);
    default:
        return 4;
    }
}

WireBytes PayloadOf(WireBytes datagram) {
    return {datagram.data + HeaderSize, datagram.size - HeaderSize};
}

// The judgement of a payload whose length is right.
Kind JudgePayload(WireBytes payload, const WireRequest& request, WireBytes& data) {
    MemoryData read;
    std::uint32_t index = 0;
    std::uint16_t written = 0;
    const Command command = CommandOf(request);
    switch (command) {
    case Command::ReadReg:
        data = {payload.data, RegisterSize};
        return Kind::Complete;
    case Command::WriteReg:
        return DecodeWriteRegAck(payload, index) && index == 1 ? Kind::Complete : Kind::Incomplete;
    case Command::ReadMem:
    case Command::ReadMemEx:
        if (!DecodeReadMemAck(payload, IsExtended(command), read) || read.address != AddressOf(request) ||
            read.data.size < request.count)
            return Kind::Malformed;
        data = {read.data.data, request.count};
        return Kind::Complete;
    default:
        return DecodeWriteMemAck(payload, written) && written == RoundUp4(request.data.size)
                   ? Kind::Complete
                   : Kind::Incomplete;
    }
}

} // namespace

const TransactionRules& GvcpCodecAbs::SharedRules() {
    static constexpr TransactionRules Rules = [] {
        TransactionRules rules;
        rules.attempts = 2;
        rules.firstId = 1;
        rules.wrapsTo = 1;
        rules.silenceKeepsId = true;
        rules.pendingCarriesId = false;
        rules.readChunk = MaxChunk;
        rules.writeChunk = MaxChunk;
        return rules;
    }();
    return Rules;
}

WireAnswer GvcpCodecAbs::JudgeHeader(WireBytes datagram, Ack code, std::uint16_t length) {
    WireAnswer answer;
    AckPacket packet;
    if (!DecodeAck(datagram, packet))
        return answer;
    answer.id = packet.header.ackId;
    answer.status = packet.header.status;
    if (packet.header.code == Ack::Pending)
        answer.kind = DecodePendingAck(packet.payload, answer.pendingMs) ? Kind::Pending : Kind::Foreign;
    else if (packet.header.code != code)
        answer.kind = Kind::Foreign;
    else if (packet.header.status != AckStatus::Success)
        answer.kind = Kind::Refused;
    // A datagram cut short of its own length field is as wrong as a wrong length field.
    else if (packet.header.length != length || packet.payload.size < length)
        answer.kind = Kind::Malformed;
    else
        answer.kind = Kind::Complete;
    return answer;
}

WireBytes GvcpCodec::Encode(WireRoom room, const WireRequest& request, std::uint16_t id,
                            unsigned /*attempt*/) const {
    return {room.data, EncodeCommand(room, request, id)};
}

WireAnswer GvcpCodec::Judge(WireBytes datagram, const WireRequest& request) const {
    const auto code = static_cast<Ack>(request.command + 1U);
    WireAnswer answer = JudgeHeader(datagram, code, static_cast<std::uint16_t>(AckLength(request)));
    if (answer.kind == Kind::Complete)
        answer.kind = JudgePayload(PayloadOf(datagram), request, answer.data);
    return answer;
}

WireAnswer GvcpRawCodec::Judge(WireBytes datagram, const WireRequest& /*request*/) const {
    WireAnswer answer = JudgeHeader(datagram, code_, length_);
    if (answer.kind == Kind::Complete)
        answer.data = PayloadOf(datagram);
    return answer;
}

} // namespace VX3
