#include "support/ScriptedPackets.h"

#include <algorithm>
#include <chrono>
#include <stdexcept>
#include <vector>

namespace VX3 {
namespace Test {

namespace {

constexpr std::size_t patternBytes = std::size_t{16} << 20;
constexpr std::size_t longestShift = std::size_t{1} << 16;

std::vector<std::uint8_t> MakePattern() {
    std::vector<std::uint8_t> bytes(patternBytes);
    std::uint64_t state = 0x9E3779B97F4A7C15ULL;
    for (std::size_t i = 0; i < bytes.size(); i += 8) {
        state ^= state << 13;
        state ^= state >> 7;
        state ^= state << 17;
        Wire::Store(bytes.data() + i, state);
    }
    return bytes;
}

std::uint64_t Nanoseconds() {
    return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::nanoseconds>(
                                          std::chrono::steady_clock::now().time_since_epoch())
                                          .count());
}

} // namespace

const std::uint8_t* ScriptedPackets::ExpectedData(std::uint64_t blockId, std::size_t size) {
    static const std::vector<std::uint8_t> pattern = MakePattern();
    if (size > patternBytes - longestShift)
        throw std::length_error("a scripted frame has at most 15 MiB");
    return pattern.data() + (blockId * 61) % longestShift;
}

ScriptedPackets::ScriptedPackets(const StreamGeometry& geometry, const StreamScript& script)
    : geometry_(geometry),
      extended_(script.extendedIds),
      payloadType_(script.payloadType),
      trailerSizeY_(script.trailerSizeY.value_or(geometry.height)),
      frameBytes_(geometry.FrameBytes()),
      perPacket_(std::max<std::size_t>(Gvsp::DataPerPacket(geometry.packetSize, script.extendedIds), 1)),
      payloadPackets_(static_cast<std::uint32_t>((frameBytes_ + perPacket_ - 1) / perPacket_)) {}

OutPacket ScriptedPackets::Make(std::uint64_t blockId, std::uint32_t packetId, std::uint16_t status) const {
    OutPacket packet;
    packet.address = {blockId, packetId};
    const Gvsp::Header header{blockId, packetId, status, 0, extended_};
    const WireRoom room{packet.head.data(), packet.head.size()};
    if (packetId == 0) {
        Gvsp::Leader leader;
        leader.payloadType = payloadType_;
        leader.timeStamp = Nanoseconds();
        leader.pixelFormat = geometry_.pixelFormat;
        leader.sizeX = leader.IsPlainBytes() ? static_cast<std::uint32_t>(frameBytes_) : geometry_.width;
        leader.sizeY = leader.IsPlainBytes() ? 0 : geometry_.height;
        packet.headSize = Gvsp::EncodeLeader(room, header, leader);
    } else if (packetId > payloadPackets_) {
        packet.headSize = Gvsp::EncodeTrailer(room, header, {payloadType_, trailerSizeY_});
    } else {
        const std::size_t offset = (packetId - 1) * perPacket_;
        packet.headSize = Gvsp::EncodePayload(room, header, {});
        packet.data = {ExpectedData(blockId, frameBytes_) + offset,
                       std::min(perPacket_, frameBytes_ - offset)};
    }
    return packet;
}

OutPacket ScriptedPackets::MakeUnavailable(std::uint64_t blockId, std::uint32_t packetId,
                                           std::uint16_t status) const {
    OutPacket packet;
    packet.address = {blockId, packetId};
    packet.headSize = Gvsp::EncodePayload({packet.head.data(), packet.head.size()},
                                          {blockId, packetId, status, 0, extended_}, {});
    return packet;
}

} // namespace Test
} // namespace VX3
