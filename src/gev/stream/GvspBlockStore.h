// A stream's blocks as memory: takes images from the pool as spare blocks, makes larger ones when a leader
// asks for more than was promised (within reason), and prepares a spare block for the packets of a new one.
// Which block is wanted, and when one is handed on, is the queue's matter. Owned by the parser; its thread
// only.
#pragma once

#include "gev/protocol/Gvsp.h"
#include "gev/stream/GvspBlockRing.h"
#include "gev/stream/GvspGeometry.h"
#include "vx3/core/Status.h"
#include "vx3/gev/NetParam.h"
#include "vx3/image/IImagePool.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace VX3 {

class GvspBlockStore {
public:
    static constexpr std::uint16_t DataOffset = 64; // pixels in the block's buffer: room for a header
    static constexpr unsigned DefaultBlocks = 8;    // spare blocks when the client asks for 0

    // An empty pool is the library's default one.
    GvspBlockStore(const GevStreamParam& param, std::shared_ptr<IImagePool> pool, unsigned int count);

    GvspBlockRing& Ring() { return ring_; }
    const GvspBlockRing& Ring() const { return ring_; }
    // Blocks that the ring is kept at.
    std::size_t Target() const { return target_; }
    std::uint32_t BlockBytes() const { return blockBytes_; }
    // A ring pool would overwrite the oldest blocks with the newest.
    bool IsRecycling() const { return pool_->PoolType() == RecyclePoolType; }
    // The picture is the one that Shape was told last; block id and time stamp do not count.
    bool HasShapeOf(const Gvsp::Leader& leader) const;

    // One more spare block for good; QueueFull, NoBuffer.
    [[nodiscard]] StatusCode Extend();
    // One spare block to make up for one that went; QueueFull, NoBuffer.
    [[nodiscard]] StatusCode AddSpare();
    // Makes the header of every later block from a leader's, without its time stamp, and blocks that can hold
    // `bytes` and what the header's geometry says. Malformed, NoBuffer; the header stays as it was then.
    [[nodiscard]] StatusCode Shape(std::uint32_t blockId, const Gvsp::Leader& leader, std::uint32_t packets,
                                   std::uint32_t bytes, bool extended);
    // A block in flight gets what its own leader says, which is the shape told last; its packets stay. False
    // when its image refuses that.
    [[nodiscard]] bool Title(GvspParserInfo& info, const Gvsp::Leader& leader);
    // A spare block becomes that block, no packet received; there must be one. Null when its image refuses.
    GvspParserInfo* Open(std::uint32_t blockId, const GvspBlockOrder& order, const GvspGeometry& geometry);

private:
    static constexpr unsigned int RecyclePoolType = 2;

    void FillSpares(unsigned int count);
    [[nodiscard]] StatusCode MakeRoom(std::uint64_t bytes, std::uint32_t packets);
    bool Prepare(GvspParserInfo& info, std::uint32_t blockId, const GvspGeometry& geometry);

    const std::uint32_t promisedBytes_; // of a block, by the camera's features; 0: unknown
    const std::shared_ptr<IImagePool> pool_;
    GvspBlockRing ring_;
    Gvsp::Leader shape_;         // that header_ was made from
    std::uint32_t shapes_ = 0;   // so far
    ImageInfo header_;           // what every block's image starts with; of unknown time, 0
    std::uint32_t blockBytes_;   // payload bytes that every block can hold
    std::uint32_t blockPackets_; // packet slots that a new block's image gets
    std::size_t target_ = 0;
    std::uint32_t nextBufferId_ = 1;
};

} // namespace VX3
