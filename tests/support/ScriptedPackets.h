// Makes the packets of a scripted stream: which packets a block has and what is in each.
#pragma once

#include "support/CameraScript.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace VX3 {
namespace Test {

struct StreamGeometry {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t pixelFormat = Mono8;
    std::uint32_t packetSize = 1500; // IP and UDP headers included

    std::size_t FrameBytes() const { return std::size_t{width} * height * ((pixelFormat >> 16) & 0xFF) / 8; }
};

// A packet ready to be sent: bytes of its own, then bytes of the frame.
struct OutPacket {
    PacketAddress address;
    std::array<std::uint8_t, Gvsp::ExtendedHeaderSize + Gvsp::ImageLeaderSize> head{};
    std::size_t headSize = 0;
    WireBytes data; // outlives the process' streams

    std::size_t Size() const { return headSize + data.size; }
};

class ScriptedPackets {
public:
    ScriptedPackets(const StreamGeometry& geometry, const StreamScript& script);

    std::uint32_t TrailerId() const { return payloadPackets_ + 1; }
    // The packet with id 0 .. TrailerId() of a block.
    OutPacket Make(std::uint64_t blockId, std::uint32_t packetId, std::uint16_t status) const;
    // A header alone: how a camera says that it has the packet no longer.
    OutPacket MakeUnavailable(std::uint64_t blockId, std::uint32_t packetId, std::uint16_t status) const;

    // The pixel bytes of a block: at least `size` of them, the same for every camera and run, different for
    // neighbouring blocks. Throws std::length_error for frames above 15 MiB.
    static const std::uint8_t* ExpectedData(std::uint64_t blockId, std::size_t size);

private:
    StreamGeometry geometry_;
    bool extended_;
    std::uint16_t payloadType_;
    std::uint32_t trailerSizeY_;
    std::size_t frameBytes_;
    std::size_t perPacket_;
    std::uint32_t payloadPackets_;
};

} // namespace Test
} // namespace VX3
