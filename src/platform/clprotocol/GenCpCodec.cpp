#include "platform/clprotocol/GenCpCodec.h"

#include <algorithm>

namespace CLProtocol {

using namespace GenCp;
using VX3::WireAnswer;
using VX3::WireBytes;
using VX3::WireFrame;
using VX3::WireRequest;
using VX3::WireRoom;
using VX3::WireWriter;
using Kind = WireAnswer::Kind;

namespace {

constexpr std::size_t ReadCommandPayload = 12; // address, reserved, count
constexpr std::size_t AddressSize = 8;
constexpr std::size_t WrittenSize = 4; // reserved, count

std::uint16_t Word(WireBytes packet, std::size_t at) {
    return VX3::Wire::Load<std::uint16_t>(packet.data + at);
}

bool IsWrite(const WireRequest& request) {
    return request.command == static_cast<std::uint16_t>(Command::WriteMem);
}

// Zero over the summed range together with its checksum, whichever form of zero the sender chose.
bool SumHolds(WireBytes summed, std::uint16_t checksum) {
    const std::uint32_t sum = static_cast<std::uint16_t>(~Checksum(summed)) + std::uint32_t{checksum};
    return ((sum & 0xFFFFU) + (sum >> 16)) == 0xFFFFU;
}

WireBytes Summed(WireBytes packet, std::size_t end) {
    return {packet.data + SummedFrom, end - SummedFrom};
}

Kind JudgeWritten(WireBytes payload, std::size_t size) {
    if (payload.size == 0)
        return Kind::Complete;
    if (payload.size != WrittenSize)
        return Kind::Malformed;
    return VX3::Wire::Load<std::uint16_t>(payload.data + 2) == size ? Kind::Complete : Kind::Incomplete;
}

} // namespace

std::uint16_t Checksum(WireBytes bytes) {
    std::uint32_t sum = 0; // 1024 bytes cannot fill it
    std::size_t at = 0;
    for (; at + 1 < bytes.size; at += 2) {
        sum += VX3::Wire::Load<std::uint16_t>(bytes.data + at);
        sum = (sum & 0xFFFFU) + (sum >> 16);
    }
    if (at < bytes.size)
        sum += std::uint32_t{bytes.data[at]} << 8;
    sum = (sum & 0xFFFFU) + (sum >> 16);
    return static_cast<std::uint16_t>(~sum);
}

GenCpCodec::GenCpCodec(unsigned attempts) {
    rules_.attempts = attempts;
    rules_.firstId = 0;
    rules_.wrapsTo = 1;
    rules_.silenceKeepsId = false;
    rules_.pendingCarriesId = true;
    rules_.readChunk = MaxRead;
    rules_.writeChunk = MaxWrite;
}

std::size_t GenCpCodec::CommandSize(const WireRequest& request) {
    return HeaderSize + (IsWrite(request) ? AddressSize + request.data.size : ReadCommandPayload);
}

std::size_t GenCpCodec::AnswerSize(const WireRequest& request) {
    return HeaderSize + (IsWrite(request) ? WrittenSize : request.count);
}

WireBytes GenCpCodec::Encode(WireRoom room, const WireRequest& request, std::uint16_t id,
                             unsigned attempt) const {
    const bool write = IsWrite(request);
    if (!write && request.command != static_cast<std::uint16_t>(Command::ReadMem))
        return {};
    // Id 0 is executed again when it is repeated, which only a read may be.
    if (request.count > MaxRead || request.data.size > MaxWrite || (write && id == 0))
        return {};
    const std::size_t size = CommandSize(request);
    const std::uint16_t flags = attempt == 0 ? FlagRequestAck : FlagRequestAck | FlagResend;
    WireWriter writer(room);
    bool fits = writer.U16(Preamble) && writer.Zeros(4) && writer.U16(ControlChannel) && writer.U16(flags) &&
                writer.U16(request.command) && writer.U16(static_cast<std::uint16_t>(size - HeaderSize)) &&
                writer.U16(id) && writer.U64(request.address);
    fits = fits && (write ? writer.Copy(request.data)
                          : writer.U16(0) && writer.U16(static_cast<std::uint16_t>(request.count)));
    if (!fits)
        return {};
    const WireBytes packet{room.data, size};
    VX3::Wire::Store(room.data + CcdChecksumAt, Checksum(Summed(packet, HeaderSize)));
    VX3::Wire::Store(room.data + ScdChecksumAt, Checksum(Summed(packet, size)));
    return packet;
}

WireAnswer GenCpCodec::Judge(WireBytes packet, const WireRequest& request) const {
    WireAnswer answer;
    if (packet.size < HeaderSize || Word(packet, PrefixSize - 2) != ControlChannel)
        return answer;
    const WireBytes payload{packet.data + HeaderSize, packet.size - HeaderSize};
    const std::uint16_t command = Word(packet, CommandAt);
    answer.id = Word(packet, IdAt);
    answer.status = Word(packet, StatusAt);
    if (command == PendingAck) {
        if (payload.size != WrittenSize)
            return answer;
        answer.kind = Kind::Pending;
        answer.pendingMs = VX3::Wire::Load<std::uint16_t>(payload.data + 2);
    } else if (command != AckOf(request.command)) {
        answer.kind = Kind::Foreign;
    } else if ((answer.status & AckStatus::Error) != 0) {
        answer.kind = Kind::Refused;
    } else if (IsWrite(request)) {
        answer.kind = JudgeWritten(payload, request.data.size);
    } else {
        answer.kind = payload.size == request.count ? Kind::Complete : Kind::Malformed;
        answer.data = payload;
    }
    return answer;
}

WireFrame GenCpCodec::FrameOf(WireBytes arrived) const {
    for (std::size_t at = 0; at < arrived.size; ++at) {
        const WireBytes rest{arrived.data + at, arrived.size - at};
        if (rest.data[0] != Preamble >> 8 || (rest.size > 1 && rest.data[1] != (Preamble & 0xFF)))
            continue;
        if (rest.size < HeaderSize)
            return {at, 0};
        const std::size_t size = HeaderSize + Word(rest, LengthAt);
        if (size > MaxPacket || !SumHolds(Summed(rest, HeaderSize), Word(rest, CcdChecksumAt)))
            continue;
        if (rest.size < size)
            return {at, 0};
        if (SumHolds(Summed(rest, size), Word(rest, ScdChecksumAt)))
            return {at, size};
    }
    return {arrived.size, 0};
}

const char* GenCp::StatusName(std::uint16_t status) {
    switch (status) {
    case AckStatus::Success:
        return "success";
    case 0x8001:
        return "not implemented";
    case 0x8002:
        return "invalid parameter";
    case AckStatus::InvalidAddress:
        return "invalid address";
    case AckStatus::WriteProtect:
        return "write protected";
    case 0x8005:
        return "bad alignment";
    case AckStatus::AccessDenied:
        return "access denied";
    case AckStatus::Busy:
        return "busy";
    case 0x800B:
        return "message time-out";
    case 0x800E:
        return "invalid header";
    case 0x800F:
        return "wrong configuration";
    default:
        return "error";
    }
}

} // namespace CLProtocol
