// How a stream's blocks are cut into packets: fixed by the first leader, and by a later one that says
// otherwise. A value; pure arithmetic over checked numbers.
#pragma once

#include "gev/protocol/Gvsp.h"
#include "vx3/core/Status.h"

#include <cstddef>
#include <cstdint>

namespace VX3 {

struct GvspGeometry {
    // What a leader may claim at most; beyond it is a lie or a mistake.
    static constexpr std::uint64_t MaxBlockBytes = 0x40000000U;
    static constexpr std::uint64_t MaxPackets = Gvsp::MaxStandardPacketId;

    std::uint32_t payloadBytes = 0; // of one block
    std::uint32_t packetData = 0;   // bytes in a full packet
    std::uint32_t fullPackets = 0;
    std::uint32_t lastData = 0; // bytes in the short packet behind the full ones; 0: there is none
    std::uint32_t packets = 0;  // slots of a block, leader and trailer included; 0: nothing fixed yet
    std::uint32_t headerSize = 0;
    bool extended = false;

    bool IsFixed() const { return packets != 0; }
    bool operator==(const GvspGeometry& other) const {
        return payloadBytes == other.payloadBytes && packetData == other.packetData &&
               packets == other.packets && extended == other.extended; // the rest follows
    }
    std::uint32_t TrailerId() const { return packets - 1; }
    // Payload packets are 1 .. TrailerId() - 1.
    bool IsPayloadId(std::uint32_t packetId) const { return packetId != 0 && packetId < TrailerId(); }
    std::size_t DataSize(std::uint32_t packetId) const {
        return packetId <= fullPackets ? packetData : lastData;
    }
    std::size_t Offset(std::uint32_t packetId) const {
        return static_cast<std::size_t>(packetData) * (packetId - 1);
    }
    // The last packet may also come padded to full size.
    bool AcceptsData(std::uint32_t packetId, std::size_t dataSize) const {
        return dataSize == packetData || (dataSize == lastData && packetId > fullPackets);
    }

    // Malformed when the packet size leaves no room for data, or the leader's sizes are absurd. `packetSize`
    // as the camera counts it (SCPS).
    [[nodiscard]] static StatusCode FromLeader(const Gvsp::Leader& leader, std::uint32_t packetSize,
                                               bool extended, GvspGeometry& geometry);
};

} // namespace VX3
