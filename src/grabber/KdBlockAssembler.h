// Puts the segments of frames together: says where the bytes of each belong, and hands finished images on.
// Memory only, without nodes and clock. Owned by a stream and used by its reading thread; the gap may be read
// by any.
//
//   none --segment 0--> in progress --last segment--> none   (the image is handed on)
//                       in progress --another's segment--> none, or in progress when it is that block's first
//                                                             (the image is handed on as far as it got)
#pragma once

#include "grabber/KdSegment.h"
#include "vx3/image/IImage.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>

namespace VX3 {

class KdBlockAssembler {
public:
    using Sink = std::function<void(std::unique_ptr<IImage>&& image)>;

    struct Place {
        StatusCode status = Status::Ok;
        unsigned char* target = nullptr; // where the segment's bytes go, all of them, when status is Ok
        bool drain = false;              // they are to be read and dropped, so that the card gets on
    };

    explicit KdBlockAssembler(Sink sink) : sink_(std::move(sink)) {}

    // Forgets everything. Every image has this geometry and comes from this pool.
    void Start(const ImageInfo& header, std::shared_ptr<IImagePool> pool);
    // Drops a block in progress, and the pool.
    void Stop();

    // NoBuffer: the pool is empty, and the segment stays unread. WrongState: the segment does not belong
    // here, or does not fit; a block in progress that it ends has been handed on. After Ok comes Arrived or
    // NotArrived.
    [[nodiscard]] Place Accept(const KdSegment& segment);
    void Arrived();
    // The block ends here; with nothing of it there, it is dropped.
    void NotArrived();

    // Blocks that were left out before the last one that was not the next in turn.
    std::uint64_t LastGap() const { return gap_; }
    // 0: no block was seen yet.
    std::uint64_t NextBlockId() const { return nextBlockId_; }

private:
    bool Continues(const KdSegment& segment) const;
    std::uint32_t Missing(const KdSegment& segment) const;
    Place Begin(const KdSegment& segment);
    bool CanBegin(const KdSegment& segment) const;
    void CommitIncomplete(std::uint32_t missing, std::uint32_t blockId);
    void CommitBlock(std::uint32_t blockId);
    void Clear();

    const Sink sink_;
    ImageInfo header_; // of every image; the parts that change are those of the block begun last
    std::shared_ptr<IImagePool> pool_;
    std::unique_ptr<IImage> image_; // null: no block in progress
    std::uint32_t imageSize_ = 0;   // bytes it can take
    std::uint32_t expectedBlock_ = 0;
    std::uint32_t nextSegment_ = 0;
    std::uint32_t segmentCount_ = 0;
    std::uint32_t received_ = 0;      // bytes
    std::uint32_t pendingLength_ = 0; // of the segment that was accepted and has not arrived
    std::atomic<std::uint64_t> nextBlockId_{0};
    std::atomic<std::uint64_t> gap_{0};
};

} // namespace VX3
