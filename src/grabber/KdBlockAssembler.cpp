#include "grabber/KdBlockAssembler.h"

#include "vx3/core/Logger.h"

#include <utility>

namespace VX3 {

void KdBlockAssembler::Start(const ImageInfo& header, std::shared_ptr<IImagePool> pool) {
    Clear();
    header_ = header;
    pool_ = std::move(pool);
    nextBlockId_ = 0;
    gap_ = 0;
}

void KdBlockAssembler::Stop() {
    Clear();
    pool_.reset();
}

void KdBlockAssembler::Clear() {
    image_.reset();
    imageSize_ = 0;
    expectedBlock_ = 0;
    nextSegment_ = 0;
    segmentCount_ = 0;
    received_ = 0;
    pendingLength_ = 0;
}

bool KdBlockAssembler::Continues(const KdSegment& segment) const {
    return segment.blockId == expectedBlock_ && segment.number == nextSegment_ &&
           segment.count == segmentCount_ && segment.length <= imageSize_ - received_;
}

// Of the block in progress, once this segment has ended it. One that came too early is there, although the
// image has no place for it.
std::uint32_t KdBlockAssembler::Missing(const KdSegment& segment) const {
    const bool early = segment.blockId == expectedBlock_ && segment.count == segmentCount_ &&
                       segment.number > nextSegment_ && segment.number < segmentCount_;
    return segmentCount_ - nextSegment_ - (early ? 1 : 0);
}

KdBlockAssembler::Place KdBlockAssembler::Accept(const KdSegment& segment) {
    if (!image_)
        return Begin(segment);
    if (Continues(segment)) {
        pendingLength_ = segment.length;
        return {Status::Ok, image_->GetImageBuff() + received_, false};
    }
    VxLoggerLog(LogLevel::Error, "SDK", "Waiting for Segment 0x%x-%u but 0x%x-%u received!", expectedBlock_,
                nextSegment_, segment.blockId, static_cast<unsigned int>(segment.number));
    const bool first = segment.number == 0 && segment.blockId != 0;
    CommitIncomplete(Missing(segment), first ? expectedBlock_ : segment.blockId);
    return first ? Begin(segment) : Place{Status::WrongState, nullptr, true};
}

bool KdBlockAssembler::CanBegin(const KdSegment& segment) const {
    const auto number = static_cast<unsigned int>(segment.number);
    if (number != 0)
        VxLoggerLog(LogLevel::Error, "SDK", "Segment %u-%u received, 0-indexed segmentNo expected!",
                    segment.blockId, number);
    else if (segment.blockId == 0)
        VxLoggerLog(LogLevel::Error, "SDK", "block id 0 received(invalid)!");
    else if (!header_.SizesFit() || segment.length > header_.ImageDataSize())
        VxLoggerLog(LogLevel::Error, "SDK", "Segment 0x%x-%u of %u bytes does not fit an image of %u x %u!",
                    segment.blockId, number, segment.length, header_.width, header_.height);
    else
        return true;
    return false;
}

KdBlockAssembler::Place KdBlockAssembler::Begin(const KdSegment& segment) {
    if (!CanBegin(segment))
        return {Status::WrongState, nullptr, true};
    header_.imageType = ImageTypeImage;
    header_.headerVersion = 1;
    header_.timestampHigh = segment.timestampHigh;
    header_.timestampLow = segment.timestampLow;
    header_.statusA = segment.status;
    header_.blockId = segment.blockId;
    header_.offsetX = header_.offsetY = 0;
    header_.paddingX = header_.paddingY = 0;
    header_.lostPackets = header_.statusC = 0;
    header_.extraInfoSize = 0;
    header_.dataOffset = 0;
    image_ = pool_ ? pool_->Create(&header_, nullptr, 0) : nullptr;
    unsigned char* pixels = image_ ? image_->GetImageBuff() : nullptr;
    imageSize_ = image_ ? image_->GetImageInfo()->ImageDataSize() : 0;
    if (pixels == nullptr || imageSize_ < segment.length) {
        Clear();
        return {Status::NoBuffer, nullptr, false};
    }
    expectedBlock_ = segment.blockId;
    nextSegment_ = 0;
    segmentCount_ = segment.count;
    received_ = 0;
    pendingLength_ = segment.length;
    return {Status::Ok, pixels, false};
}

void KdBlockAssembler::Arrived() {
    if (!image_)
        return;
    ++nextSegment_;
    received_ += std::exchange(pendingLength_, 0);
    if (nextSegment_ >= segmentCount_)
        CommitBlock(expectedBlock_);
}

void KdBlockAssembler::NotArrived() {
    if (!image_)
        return;
    if (nextSegment_ == 0)
        Clear();
    else
        CommitIncomplete(segmentCount_ - nextSegment_, expectedBlock_);
}

void KdBlockAssembler::CommitIncomplete(std::uint32_t missing, std::uint32_t blockId) {
    const ImageInfo* info = image_->GetImageInfo();
    (void)image_->UpdateImageInfoB(info->statusA, missing, info->statusC);
    CommitBlock(blockId);
}

void KdBlockAssembler::CommitBlock(std::uint32_t blockId) {
    sink_(std::move(image_));
    Clear();
    const std::uint64_t expected = nextBlockId_;
    if (expected != 0 && blockId > expected) // lower ones begin anew
        gap_ = blockId - expected;
    nextBlockId_ = std::uint64_t{blockId} + 1;
}

} // namespace VX3
