// GenCP exchanges through the transaction machine, against a camera (or noise) on a serial line that sends
// what the input says, when it says so, in pieces. However that is: four sends at most, an end within the
// time allowed, no success without the right acknowledgement, nothing read past what arrived. The input's
// rest is taken for a manifest table, too.
//
// Input: write or read (1 byte), request id (2), address (8), count (2), then arrivals: delay in 10 ms (7
// bits) and whether what follows is to be packed with right checksums (1 bit), size (1; 0: all the rest),
// bytes. Packed bytes are status, command, id, payload.
#include "FuzzInput.h"
#include "platform/clprotocol/GenCpCodec.h"
#include "platform/clprotocol/Manifest.h"
#include "support/GenCpPackets.h"
#include "support/TransactionLab.h"

using namespace VX3;
using CLProtocol::GenCpCodec;
using Fuzz::Require;
using Test::Bytes;
using Outcome = Transaction::Outcome;

namespace {

constexpr long AttemptMs = 200;
constexpr long PendingMs = 30000;

Bytes Packed(const Bytes& bytes) {
    if (bytes.size() < 6)
        return bytes;
    const auto word = [&](std::size_t at) {
        return static_cast<std::uint16_t>(Test::GenCpPackets::Number(bytes, at, 2));
    };
    return Test::GenCpPackets::Answer(word(0), word(2), word(4), Bytes(bytes.begin() + 6, bytes.end()));
}

std::vector<Test::Arrival> Arrivals(Fuzz::FuzzInput& input) {
    std::vector<Test::Arrival> arrivals;
    for (long ms = 0; input.Left() > 1;) {
        const std::uint8_t delay = input.Take();
        const std::uint8_t size = input.Take();
        Bytes bytes = input.Bytes(size == 0 ? input.Left() : size);
        ms += (delay & 0x7F) * 10;
        arrivals.push_back({ms, (delay & 0x80) != 0 ? Packed(bytes) : bytes});
    }
    return arrivals;
}

// By the layout alone.
void CheckComplete(WireBytes packet, const WireRequest& request, std::uint16_t id) {
    const Bytes bytes(packet.data, packet.data + packet.size);
    const auto word = [&](std::size_t at) { return Test::GenCpPackets::Number(bytes, at, 2); };
    Require(bytes.size() >= 16 && word(0) == 0x0100 && word(6) == 0);
    Require(word(10) == request.command + 1U && word(14) == id && (word(8) & 0x8000) == 0);
    Require(word(12) == bytes.size() - 16);
    const std::uint64_t sum = Test::GenCpPackets::Sum(bytes, 6, bytes.size());
    Require(sum == word(4) || (sum == 0 && word(4) == 0xFFFF));
    if (request.command == 0x0800)
        Require(bytes.size() == 16 + request.count);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const std::uint8_t source[0x10000] = {};
    Fuzz::FuzzInput input(data, size);
    WireRequest request;
    const bool writes = (input.Take() & 1) != 0;
    const auto id = input.Take<std::uint16_t>();
    request.command = writes ? 0x0802 : 0x0800;
    request.address = input.Take<std::uint64_t>();
    const auto count = input.Take<std::uint16_t>();
    if (writes)
        request.data = {source, count};
    else
        request.count = count;
    const Bytes table(data, data + size);
    for (const CLProtocol::ManifestEntry& entry :
         CLProtocol::DeviceDescriptions({table.data(), table.size()}))
        Require(entry.describesDevice && entry.size != 0);

    const GenCpCodec codec;
    Test::TransactionLab lab(codec, 2048);
    const Outcome outcome = lab.Run(
        request, id, {Transaction::Duration(AttemptMs), Transaction::Duration(PendingMs)}, Arrivals(input));
    Require(lab.sent.size() <= 4 && lab.sent.empty() == (outcome == Outcome::Unsendable));
    Require(lab.endMs <= 4 * AttemptMs + PendingMs);
    const WireBytes packet = lab.machine.Packet();
    const WireBytes answered = lab.machine.Answer().data;
    Require(answered.size == 0 ||
            (answered.data >= packet.data && answered.data + answered.size <= packet.data + packet.size));
    for (std::size_t i = 0; i < packet.size; ++i)
        Fuzz::Touch(packet.data + i);
    if (outcome == Outcome::Complete)
        CheckComplete(packet, request, id);
    if (outcome == Outcome::Refused)
        Require((lab.machine.Answer().status & 0x8000) != 0);
    return 0;
}
