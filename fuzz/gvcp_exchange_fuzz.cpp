// GVCP exchanges through the transaction machine, against a camera (or anybody) that sends what the input
// says, when it says so. However that is: two sends at most, an end within the time allowed, no success
// without the right acknowledgement, and nothing read past a datagram. Every datagram is also taken for a
// command and for a discovery acknowledgement: what can be read must come out the same when written again.
//
// Input: command (1 byte), request id (2), address (8), count (2), device's pending time-out in 100 ms (1);
// then datagrams: delay in 10 ms (1), size (1; 0: all the rest), bytes.
#include "FuzzInput.h"
#include "gev/protocol/DiscoveryInfo.h"
#include "gev/protocol/GvcpCodec.h"
#include "support/GvcpReencode.h"
#include "support/TransactionLab.h"

using namespace VX3;
using namespace VX3::Gvcp;
using Fuzz::Require;
using Test::Bytes;

namespace {

constexpr long AttemptMs = 200;
constexpr Command Commands[] = {Command::ReadReg,   Command::WriteReg,    Command::ReadMem,
                                Command::ReadMemEx, Command::WriteMem,    Command::WriteMemEx,
                                Command::Discovery, Command::PacketResend};

void CheckPacket(const Bytes& packet) {
    static Bytes once(70000);
    const std::size_t size =
        Test::ReencodeCommand({packet.data(), packet.size()}, {once.data(), once.size()});
    Bytes twice(size);
    Require(Test::ReencodeCommand({once.data(), size}, {twice.data(), size}) == size);
    Require(std::equal(twice.begin(), twice.end(), once.begin()));

    GevDiscoveryInfo info;
    GevDiscoveryInfo again;
    GVCP_DISCOVERY_ACK ack;
    if (packet.size() < HeaderSize ||
        !DecodeDiscoveryPayload({packet.data() + HeaderSize, packet.size() - HeaderSize}, info))
        return;
    Require(info.serialNumber.size() <= 16 && info.manufacturerInfo.size() <= 48);
    Require(EncodeDiscoveryAck({ack.bytes.data(), ack.bytes.size()}, 1, info) == DiscoveryAckSize &&
            DecodeDiscoveryAck(ack, again));
    Require(again.macLow == info.macLow && again.modelName == info.modelName &&
            again.userDefinedName == info.userDefinedName && again.currentIp == info.currentIp);
}

// By the layouts alone, without the codec's help.
bool Answers(WireBytes ack, const WireRequest& request, std::uint16_t id) {
    const auto word = [&](std::size_t at) { return Wire::Load<std::uint16_t>(ack.data + at); };
    if (ack.size < 12 || word(0) != 0 || word(2) != request.command + 1 || word(4) > ack.size - 8 ||
        word(6) != id)
        return false;
    switch (static_cast<Command>(request.command)) {
    case Command::ReadMem:
        return Wire::Load<std::uint32_t>(ack.data + 8) == static_cast<std::uint32_t>(request.address);
    case Command::ReadMemEx:
        return Wire::Load<std::uint64_t>(ack.data + 8) == request.address;
    case Command::WriteMem:
    case Command::WriteMemEx:
        return word(10) == RoundUp4(request.data.size);
    case Command::WriteReg:
        return word(8) == 0 && word(10) == 1;
    default:
        return true;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const std::uint8_t source[0x10000] = {};
    WireReader input(data, size);
    std::uint8_t command = 0;
    std::uint16_t id = 0;
    std::uint16_t count = 0;
    std::uint8_t pending = 0;
    WireRequest request;
    if (!input.U8(command) || !input.U16(id) || !input.U64(request.address) || !input.U16(count) ||
        !input.U8(pending))
        return 0;
    request.command = static_cast<std::uint16_t>(Commands[command % 8]);
    const bool writes = request.command == 0x82 || (request.command & 0x7FFF) == 0x86;
    if (writes)
        request.data = {source, count};
    else
        request.count = count;

    const GvcpCodec codec;
    std::vector<Test::Arrival> arrivals;
    std::uint8_t delay = 0;
    std::uint8_t length = 0;
    for (long ms = 0; input.U8(delay) && input.U8(length);) {
        WireBytes bytes;
        if (length == 0 || !input.View(length, bytes))
            bytes = input.Rest();
        const Bytes packet(bytes.data, bytes.data + bytes.size); // exactly as long as its heap block
        CheckPacket(packet);
        (void)codec.Judge({packet.data(), packet.size()}, request);
        arrivals.push_back({ms += delay * 10, packet});
    }

    const auto pendingLimit = Transaction::PendingLimit(Transaction::Duration(pending * 100));
    Test::TransactionLab lab(codec, MaxPacket);
    const auto outcome = lab.Run(request, id, {Transaction::Duration(AttemptMs), pendingLimit}, arrivals);
    const WireAnswer& answer = lab.machine.Answer();
    const WireBytes packet = lab.machine.Packet();
    const bool answered =
        outcome != Transaction::Outcome::TimedOut && outcome != Transaction::Outcome::Unsendable;
    Require(lab.sent.size() <= 2 && lab.sent.empty() == (outcome == Transaction::Outcome::Unsendable));
    Require(lab.endMs <= 2 * AttemptMs + pendingLimit.count() && pendingLimit.count() <= 30000);
    Require(lab.machine.IdUsed() == answered && answered == (packet.size != 0));
    Require(answer.data.size == 0 || (answer.data.data >= packet.data &&
                                      answer.data.data + answer.data.size <= packet.data + packet.size));
    if (outcome == Transaction::Outcome::Complete) {
        Require(Answers(packet, request, id));
        Require(writes || answer.data.size == (request.command == 0x80 ? 4 : request.count));
    }
    if (outcome == Transaction::Outcome::Refused)
        Require(answer.status != 0);
    return 0;
}
