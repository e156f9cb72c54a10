// Which packets a block has, and which bytes of its data each one carries. Numbers only; immutable.
#pragma once

#include "vx3/simulated/Block.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace VX3 {
namespace Simulated {

// How a channel forms its packets.
struct PacketForm {
    std::uint32_t packetSize = 1500; // SCPS: IP and UDP headers included
    bool extendedIds = false;
};

class BlockLayout {
public:
    // One payload packet.
    struct Slot {
        std::uint32_t part = 0; // which piece of the block's data
        std::uint32_t size = 0;
        std::uint64_t offset = 0;      // in that piece
        std::uint64_t blockOffset = 0; // in all pieces laid out one after the other
        bool lastOfPart = false;
    };

    BlockLayout(const Block& block, const PacketForm& form);

    std::uint32_t PayloadPackets() const { return static_cast<std::uint32_t>(slots_.size()); }
    std::uint32_t TrailerId() const { return PayloadPackets() + 1; }
    // packetId from 1 to PayloadPackets().
    const Slot& At(std::uint32_t packetId) const { return slots_[packetId - 1]; }
    std::uint64_t DataBytes() const { return dataBytes_; }
    std::size_t LargestSlot() const { return largestSlot_; }

    // Datagrams of other sizes are not sent: SCPS is brought into these bounds.
    static constexpr std::uint32_t SmallestPacket = 128;
    static constexpr std::uint32_t LargestPacket = 65535;

private:
    std::vector<Slot> slots_;
    std::uint64_t dataBytes_ = 0;
    std::size_t largestSlot_ = 0;
};

} // namespace Simulated
} // namespace VX3
