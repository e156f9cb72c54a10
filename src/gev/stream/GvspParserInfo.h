// One block in flight: its image and which of its packets have come. Owned by the block ring.
#pragma once

#include "vx3/image/IImage.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace VX3 {

struct GvspParserInfo {
    static constexpr std::uint8_t Received = 0x80; // of a packet's state byte
    static constexpr std::uint32_t NoPacket = 0xFFFFFFFFU;

    std::unique_ptr<IImage> image;
    std::uint32_t lastPacketId = NoPacket; // seen last
    std::uint32_t blockId = 0;             // 0: free
    std::uint32_t packetsReceived = 0;
    std::uint32_t packetsResent = 0; // asked for again
    std::uint32_t lines = 0;         // from the trailer
    std::uint32_t shape = 0;         // of the store, which its image has
    std::uint32_t bufferId = 0;
    std::uint8_t* state = nullptr; // one byte a packet, in the image's extra information
    std::uint8_t* data = nullptr;  // first pixel byte
    std::size_t capacity = 0;      // bytes that may be written from `data` on

    bool Has(std::uint32_t packetId) const { return (state[packetId] & Received) != 0; }
    // True when the packet is new.
    bool Mark(std::uint32_t packetId) {
        if (Has(packetId))
            return false;
        state[packetId] |= Received;
        lastPacketId = packetId;
        ++packetsReceived;
        return true;
    }
    void Free() {
        lastPacketId = NoPacket;
        blockId = packetsReceived = packetsResent = lines = 0;
        state = data = nullptr;
    }
};

} // namespace VX3
