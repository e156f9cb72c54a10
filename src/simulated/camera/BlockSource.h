// What a channel sends, block after block: the blocks a script gives, or pictures of the camera's own. Used
// by one sending thread.
#pragma once

#include "simulated/camera/PreparedBlock.h"

#include <memory>
#include <vector>

namespace VX3 {
namespace Simulated {

// A block as it was sent: enough to send any of its packets again.
struct SentBlock {
    BlockStamp stamp;
    std::shared_ptr<const PacketMaker> maker;
};

class BlockSource {
public:
    // `image`: the camera's own pictures.
    BlockSource(const StreamScript& script, const Gvsp::ImageShape& image, const PacketForm& form);

    // Null when such a stream can be sent; otherwise why not.
    static const char* Objection(const StreamScript& script, const Gvsp::ImageShape& image);

    // True when block and packet ids are the long ones.
    bool ExtendedIds() const { return form_.extendedIds; }
    // The next block, under the id it gets.
    SentBlock Next(std::uint64_t blockId, std::uint64_t now);
    // A packet of the block that Next gave last.
    OutPacket Packet(std::uint32_t packetId, const BlockStamp& stamp) {
        return blocks_[current_].Packet(packetId, stamp);
    }

private:
    PacketForm form_;
    std::vector<PreparedBlock> blocks_;
    std::size_t current_ = 0;
    std::size_t next_ = 0;
    std::size_t patternBytes_ = 0; // not 0: pictures of the camera's own
    bool moving_;
};

} // namespace Simulated
} // namespace VX3
