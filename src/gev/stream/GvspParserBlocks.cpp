// The image parser's blocks: making and finding them, handing them on, counting.
#include "gev/protocol/Gvcp.h"
#include "gev/stream/GvspParserImageA.h"
#include "vx3/core/Logger.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace VX3 {

namespace {

// A leader may claim more than the camera's features promised (a pixel format that we do not know, features
// that could not be read), but not without bound.
constexpr std::uint64_t maxUnpromisedBytes = 0x10000000U;
// A leader that goes back in block ids after a pause this long, or by this many, starts a new sequence.
constexpr std::chrono::milliseconds restartPause{250};
constexpr std::int64_t restartSteps = 64;
constexpr std::uint64_t maxRemadeBytes = 0x40000000U; // of all spare blocks together

std::uint64_t MostBytes(std::uint32_t promised) {
    return promised == 0 ? maxUnpromisedBytes : 8ULL * promised + ImageInfo::SlackBytes;
}

} // namespace

void GvspParserImageA::FillSpares(unsigned int count) {
    for (unsigned int i = 0; i < count && !ring_.IsFull(); ++i)
        if (Failed(AddSpareBlock()))
            break;
}

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
        FillSpares(2); // a leader alone may not take all that memory: the rest follow when they are needed
        spareTarget_ = std::max(count, 2U);
        if (!ring_.HasSpare())
            return Status::NoBuffer;
    }
    blockPackets_ = packets;
    header_ = header;
    return Status::Ok;
}

GvspParserInfo* GvspParserImageA::GetParserInfoByBlockId(std::uint32_t blockId) {
    if (current_ == nullptr || current_->blockId != blockId)
        current_ = ring_.Find(blockId);
    return current_;
}

GvspParserInfo* GvspParserImageA::FindOrOpen(const GvspPacketAddr& addr, TimePoint now) {
    GvspParserInfo* info = GetParserInfoByBlockId(addr.blockId);
    return info != nullptr ? info : OpenBlock(addr.blockId, now);
}

GvspParserInfo* GvspParserImageA::OpenBlock(std::uint32_t blockId, TimePoint now) {
    if (!ring_.HasSpare() && ring_.Size() < spareTarget_)
        (void)AddSpareBlock();
    if (ring_.InFlight() != 0 && (ring_.InFlight() > MaxPlacesAhead || !ring_.HasSpare())) {
        const bool full = ring_.InFlight() >= MaxInFlight();
        const bool latecomer = order_.Distance(ring_.Oldest(), blockId) < 0;
        if (latecomer && full)
            return nullptr; // older than all that wait, and too late
        // The oldest makes room, unless it awaits answers or the newcomer is older still.
        if (!latecomer && (full || !resend_.IsAwaiting(ring_.Oldest())))
            (void)CommitBlock(ring_.At(0));
    }
    if (!ring_.HasSpare() && Failed(AddSpareBlock()) && ring_.InFlight() != 0 &&
        order_.Distance(ring_.Oldest(), blockId) > 0)
        (void)CommitBlock(ring_.At(0)); // the pool has no more: its image is to be had again
    if (!ring_.HasSpare()) {
        if (warnings_.Allow(now))
            VxLoggerLog(LogLevel::Error, "SDK", "GetParserInfo with bid(%d) error, NO Buff Available!", 0);
        return nullptr;
    }
    GvspParserInfo& info = ring_.Open(blockId, order_);
    if (!PrepareBlock(info, blockId)) {
        ring_.Close(info);
        return nullptr;
    }
    current_ = &info;
    return current_;
}

bool GvspParserImageA::PrepareBlock(GvspParserInfo& info, std::uint32_t blockId) {
    header_.blockId = blockId;
    if (Failed(static_cast<StatusCode>(info.image->UpdateImageInfo(&header_))))
        return false;
    info.blockId = blockId;
    info.state = info.image->GetExtraInfoBuff();
    info.data = info.image->GetImageBuff();
    if (info.state == nullptr || info.data == nullptr || info.capacity < geometry_.payloadBytes)
        return false;
    std::memset(info.state, 0, geometry_.packets);
    return true;
}

// Not in flight, and not later than what was handed on: nothing of it is wanted.
bool GvspParserImageA::IsPast(std::uint32_t blockId) const {
    return newest_ != 0 && order_.Distance(newest_, blockId) <= 0;
}

bool GvspParserImageA::WasJustCommitted(std::uint32_t blockId) const {
    return std::find(committed_.begin(), committed_.end(), blockId) != committed_.end();
}

bool GvspParserImageA::StartsAnew(const Packet& leader, TimePoint now) const {
    if (leader.header.status == Gvcp::AckStatus::PacketResent)
        return false;
    return now - lastPacket_ >= restartPause || order_.Distance(newest_, leader.addr.blockId) < -restartSteps;
}

std::size_t GvspParserImageA::MaxInFlight() const {
    // A ring pool would overwrite the oldest blocks with the newest.
    if (pool_->PoolType() != RecyclePoolType)
        return std::clamp<std::size_t>(spareTarget_, 1, MaxPlacesAhead + 1);
    if (!resend_.IsAwaiting(ring_.Oldest()))
        return MaxPlacesAhead + 1;
    const std::uint64_t affordable = MaxAwaitingBytes / std::max<std::uint64_t>(blockBytes_, 1);
    return std::clamp<std::uint64_t>(affordable, MaxPlacesAhead + 1, MaxAwaiting);
}

void GvspParserImageA::RestartBlocks() {
    while (ring_.InFlight() != 0)
        CommitHead();
    resend_.Restart();
    closedSeen_ = resend_.Closed();
    committed_.fill(0);
    newest_ = 0;
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
