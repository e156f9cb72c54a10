#include "simulated/camera/AckFaults.h"

#include "gev/protocol/Gvcp.h"

#include <algorithm>

namespace VX3 {
namespace Simulated {

namespace {

using Bytes = std::vector<std::uint8_t>;
using Kind = AckStep::Kind;

constexpr std::size_t IndexOffset = Gvcp::HeaderSize + 2; // of write acknowledgements

bool Matches(const AckRule& rule, const SeenCommand& command) {
    return rule.command.value_or(command.command) == command.command &&
           rule.address.value_or(command.address) == command.address;
}

// The same acknowledgement with another header.
template <typename Change>
Bytes Changed(WireBytes ack, Change change) {
    Bytes bytes(ack.data, ack.data + ack.size);
    Gvcp::AckPacket packet;
    if (Gvcp::DecodeAck(ack, packet)) {
        change(packet.header);
        (void)Gvcp::EncodeAckHeader({bytes.data(), bytes.size()}, packet.header);
    }
    return bytes;
}

Bytes WithByte(Bytes bytes, std::size_t at, unsigned flip) {
    if (at < bytes.size())
        bytes[at] = static_cast<std::uint8_t>(bytes[at] ^ flip);
    return bytes;
}

Bytes Pending(WireBytes ack, std::uint16_t ms) {
    Bytes bytes(Gvcp::HeaderSize + 4);
    Gvcp::AckPacket packet;
    if (Gvcp::DecodeAck(ack, packet))
        (void)Gvcp::EncodePendingAck({bytes.data(), bytes.size()}, packet.header.ackId, ms);
    return bytes;
}

Bytes WithoutIndex(Bytes bytes) {
    for (std::size_t at = IndexOffset; at < std::min(bytes.size(), IndexOffset + 2); ++at)
        bytes[at] = 0;
    return bytes;
}

} // namespace

void AckFaults::Add(const AckRule& rule) {
    MutexLock lock(mutex_);
    if (rule.times != 0)
        rules_.push_back(rule);
}

std::optional<AckRule> AckFaults::Take(const SeenCommand& command) {
    MutexLock lock(mutex_);
    const auto rule = std::find_if(rules_.begin(), rules_.end(),
                                   [&](const AckRule& candidate) { return Matches(candidate, command); });
    if (rule == rules_.end())
        return std::nullopt;
    if (rule->skip != 0) {
        --rule->skip;
        return std::nullopt;
    }
    const AckRule taken = *rule;
    if (--rule->times == 0)
        rules_.erase(rule);
    return taken;
}

std::vector<AckStep> AckFaults::Steps(const AckRule& rule, WireBytes ack) {
    const Bytes right(ack.data, ack.data + ack.size);
    const auto header = [&](auto change) { return Changed(ack, change); };
    switch (rule.fault) {
    case AckFault::Silence:
        return {};
    case AckFault::ErrorStatus: // the answer was made that way
        return {{Kind::Send, right}};
    case AckFault::StaleFirst:
        return {{Kind::Send, header([](Gvcp::AckHeader& h) { --h.ackId; })}, {Kind::Send, right}};
    case AckFault::ForeignFirst:
        return {{Kind::SendFromElsewhere, WithByte(right, right.size() - 1, 0xFF)}, {Kind::Send, right}};
    case AckFault::PendingFirst:
        return {{Kind::Send, Pending(ack, rule.ms)}, {Kind::Wait, {}, rule.delayMs}, {Kind::Send, right}};
    case AckFault::Late:
        return {{Kind::Wait, {}, rule.delayMs}, {Kind::Send, right}};
    case AckFault::WrongLength:
        return {{Kind::Send,
                 header([](Gvcp::AckHeader& h) { h.length = static_cast<std::uint16_t>(h.length + 4); })}};
    case AckFault::CutShort:
        return {{Kind::Send, Bytes(right.begin(), right.end() - 2)}};
    case AckFault::WrongCode:
        return {{Kind::Send, header([](Gvcp::AckHeader& h) {
                     h.code = static_cast<Gvcp::Ack>(static_cast<std::uint16_t>(h.code) ^ 0x40U);
                 })}};
    case AckFault::WrongAddress:
        return {{Kind::Send, WithByte(right, Gvcp::HeaderSize, 0x01)}};
    case AckFault::IncompleteIndex:
        return {{Kind::Send, WithoutIndex(right)}};
    case AckFault::Twice:
        return {{Kind::Send, right}, {Kind::Send, right}};
    }
    return {};
}

} // namespace Simulated
} // namespace VX3
