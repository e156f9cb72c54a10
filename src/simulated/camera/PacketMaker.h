// Makes the packets of one block: heads into room of the caller's, data where they lie. Immutable once made,
// so that first sendings and resends may use it side by side.
#pragma once

#include "gev/protocol/GvspBlockCodec.h"
#include "simulated/camera/BlockLayout.h"
#include "wire/WireCursor.h"

namespace VX3 {
namespace Simulated {

// What differs between two sendings of the same block.
struct BlockStamp {
    std::uint64_t blockId = 0;
    std::uint64_t timeStamp = 0;          // ns
    const std::uint8_t* pixels = nullptr; // the first piece's bytes, if not the block's own
};

class PacketMaker {
public:
    PacketMaker(Block block, const PacketForm& form);

    // Empty when a block like this can be sent; otherwise why not.
    static const char* Objection(const Block& block);

    const BlockLayout& Layout() const { return layout_; }
    bool ExtendedIds() const { return form_.extendedIds; }
    // Room that the head of any packet, and of any payload packet, finds enough.
    std::size_t LargestHeadSize() const { return largestHead_; }
    std::size_t PayloadHeadSize() const;
    // The block's own time stamp; 0: whenever it is sent.
    std::uint64_t OwnTimeStamp() const { return block_.info.timeStamp; }

    // What a packet (0 to Layout().TrailerId()) has besides data: header and leader, trailer or prefix. The
    // size, 0 when the room is smaller.
    std::size_t MakeHead(std::uint32_t packetId, const BlockStamp& stamp, std::uint16_t status,
                         WireRoom room) const;
    // A payload packet's data; empty for leader and trailer.
    WireBytes Data(std::uint32_t packetId, const BlockStamp& stamp) const;
    // Makes another block's head of one that MakeHead made with status 0.
    void Restamp(std::uint32_t packetId, const BlockStamp& stamp, std::uint8_t* head) const {
        Gvsp::PatchBlockId(head, form_.extendedIds, stamp.blockId);
        const bool leader = packetId == 0;
        if (timeInPayload_ ? !leader && packetId <= layout_.PayloadPackets() : leader)
            Gvsp::PatchTimeStamp(head, form_.extendedIds, leader, stamp.timeStamp);
    }

private:
    std::size_t MakePrefix(std::uint32_t packetId, WireRoom room) const;

    Block block_;
    PacketForm form_;
    BlockLayout layout_;
    bool timeInPayload_; // H.264: each payload packet begins with the time
    std::size_t largestHead_ = 0;
};

} // namespace Simulated
} // namespace VX3
