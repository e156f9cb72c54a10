// What a channel sends, block after block. Used by one sending thread.
#pragma once

#include "simulated/camera/PreparedBlock.h"

#include <memory>

namespace VX3 {
namespace Simulated {

// A block as it was sent: enough to send any of its packets again.
struct SentBlock {
    BlockStamp stamp;
    std::shared_ptr<const PacketMaker> maker;
    std::shared_ptr<const void> owner{}; // of the stamp's pixels, where they are not the maker's own
};

class IBlockSource {
public:
    virtual ~IBlockSource() = default;
    // True when block and packet ids are the long ones.
    virtual bool ExtendedIds() const = 0;
    // The next block, under the id it gets. May wait a while for one; false when none came.
    virtual bool Next(std::uint64_t blockId, std::uint64_t now, SentBlock& sent) = 0;
    // At which the block that Next gave last is to leave; 0: as the stream's script says.
    virtual double BytesPerSecond() const { return 0; }
    // A packet of the block that Next gave last.
    virtual OutPacket Packet(std::uint32_t packetId, const BlockStamp& stamp) = 0;
};

} // namespace Simulated
} // namespace VX3
