// The image parser's far side: making blocks, handing them on, counting.
#include "gev/GvspParserImageA.h"
#include "vx3/core/Logger.h"

#include <algorithm>
#include <utility>

namespace VX3 {

namespace {

// A leader may claim more than the camera's features promised (a pixel format that we do not know, features
// that could not be read), but not without bound.
constexpr std::uint64_t maxUnpromisedBytes = 0x10000000U;
constexpr std::uint64_t maxRemadeBytes = 0x40000000U; // of all spare blocks together

std::uint64_t MostBytes(std::uint32_t promised) {
    return promised == 0 ? maxUnpromisedBytes : 8ULL * promised + ImageInfo::SlackBytes;
}

} // namespace

StatusCode GvspParserImageA::AllocOneBuff() {
    const StatusCode status = AddSpareBlock();
    if (!Failed(status))
        ++spareTarget_;
    return status;
}

StatusCode GvspParserImageA::AddSpareBlock() {
    if (ring_.IsFull())
        return Status::QueueFull;
    // A raw block: its buffer takes the payload whatever the pixel format turns out to be.
    ImageInfo info;
    info.imageType = ImageTypeImage;
    info.pixelFormat = RawBlock;
    info.width = 1;
    info.height = blockBytes_;
    info.dataOffset = DataOffset;
    info.extraInfoSize = blockPackets_;
    std::unique_ptr<IImage> image;
    if (info.SizesFit())
        image = pool_->Create(&info, nullptr, 0);
    if (!image || image->GetImageBuff() == nullptr)
        return Status::NoBuffer;
    // Only the recycle pool promises slack behind the pixels.
    const std::size_t slack = pool_->PoolType() == RecyclePoolType ? ImageInfo::SlackBytes : 0;
    ring_.AddSpare(std::move(image), nextBufferId_, blockBytes_ + slack);
    nextBufferId_ = nextBufferId_ == 0xFFFFFFFFU ? 1 : nextBufferId_ + 1;
    return Status::Ok;
}

StatusCode GvspParserImageA::CreateImage(std::uint32_t blockId, const Gvsp::Leader& leader,
                                         std::uint32_t packets, std::uint32_t bytes, bool extended) {
    ImageInfo header;
    header.fieldInfo = leader.fieldInfo;
    header.imageType = leader.payloadType;
    header.timestampHigh = static_cast<std::uint32_t>(leader.timeStamp >> 32);
    header.timestampLow = static_cast<std::uint32_t>(leader.timeStamp);
    header.pixelFormat = leader.pixelFormat;
    header.width = leader.sizeX;
    header.height = leader.sizeY;
    header.offsetX = leader.offsetX;
    header.offsetY = leader.offsetY;
    header.paddingX = leader.paddingX;
    header.paddingY = leader.paddingY;
    header.blockId = blockId;
    header.extraInfoSize = packets;
    header.dataOffset = DataOffset;
    header.streamFlag = extended ? 1 : 0;
    if (leader.IsPlainBytes()) { // width, height and format mean nothing: a block of bytes
        header.pixelFormat = RawBlock;
        header.width = 1;
        header.height = bytes;
        header.paddingX = header.paddingY = 0;
    }
    if (!header.SizesFit())
        return Status::Malformed;
    // Clients read what the header's geometry says: the buffer must hold that too.
    const std::uint64_t needed = std::max<std::uint64_t>(bytes, header.ImageDataSize());
    if (needed > blockBytes_) {
        if (needed > MostBytes(param_.bufferSize))
            return Status::NoBuffer;
        const auto most = static_cast<unsigned int>(std::max<std::uint64_t>(2, maxRemadeBytes / needed));
        const auto count = std::min(static_cast<unsigned int>(ring_.Size()), most);
        blockBytes_ = static_cast<std::uint32_t>(needed);
        blockPackets_ = packets;
        ring_.DropSpares();
        FillSpares(std::max(count, 1U));
        spareTarget_ = ring_.Size();
        if (!ring_.HasSpare())
            return Status::NoBuffer;
    }
    blockPackets_ = packets;
    header_ = header;
    return Status::Ok;
}

// Complete blocks, oldest first, with the given-up ones before them.
void GvspParserImageA::CommitWhatCan() {
    closedSeen_ = resend_.Closed();
    while (complete_ != 0 && !resend_.IsAwaiting(ring_.At(0).blockId))
        CommitHead();
}

StatusCode GvspParserImageA::CommitBlock(GvspParserInfo& info) {
    while (ring_.InFlight() != 0) {
        GvspParserInfo& head = ring_.At(0);
        if (&head == &info) {
            CommitHead();
            return Status::Ok;
        }
        const std::int64_t ahead = order_.Distance(head.blockId, info.blockId);
        if ((ahead <= 0 || ahead >= 17) && warnings_.Allow(lastPacket_))
            VxLoggerLog(LogLevel::Fatal, "SDK",
                        "Ready to commit block %u whose ID bigger than current %u!!!!", head.blockId,
                        info.blockId);
        CommitHead();
    }
    return Status::WrongState;
}

void GvspParserImageA::CommitHead() {
    GvspParserInfo& info = ring_.At(0);
    redirect_.Restore(); // the image must be whole before it goes
    const std::uint32_t missing = geometry_.packets - info.packetsReceived;
    const std::uint32_t blockId = info.blockId;
    info.image->UpdateImageInfoB(info.lines, missing, info.packetsResent);
    if (missing != 0 && info.packetsResent == 0 && warnings_.Allow(lastPacket_))
        VxLoggerLog(LogLevel::Error, "SDK", "block 0x%x lost %u packets with %u parse items remained!",
                    blockId, missing, static_cast<unsigned int>(ring_.InFlight()));
    resend_.RemoveUpTo(blockId);
    CountHead(info, missing);
    if (missing == 0)
        --complete_;
    if (current_ == &info)
        current_ = nullptr;
    std::unique_ptr<IImage> image = ring_.PopHead();
    newest_ = blockId;
    committed_[committedNext_] = blockId;
    committedNext_ = (committedNext_ + 1) % committed_.size();
    if (callback_)
        callback_(std::move(image), 0);
    if (ring_.Size() < spareTarget_ || !ring_.HasSpare())
        (void)AddSpareBlock();
}

void GvspParserImageA::CountHead(const GvspParserInfo& info, std::uint32_t missing) {
    if (missing != 0) {
        LiveStatistics::Add(statistics_->missingPackets, missing);
        LiveStatistics::Add(statistics_->incompleteBlocks);
    }
    LiveStatistics::Add(statistics_->resentPackets, info.packetsResent);
    LiveStatistics::Add(statistics_->blocks);
    statistics_->lostBlocks.store(resend_.GetImagesLost(), std::memory_order_relaxed);
}

StatusCode GvspParserImageA::Flush() {
    redirect_.Restore();
    while (complete_ != 0)
        CommitHead();
    while (ring_.InFlight() != 0) {
        resend_.RemoveUpTo(ring_.At(0).blockId);
        (void)ring_.PopHead();
    }
    current_ = nullptr;
    return Status::Ok;
}

} // namespace VX3
