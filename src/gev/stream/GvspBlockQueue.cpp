#include "gev/stream/GvspBlockQueue.h"

#include "vx3/core/Logger.h"

#include <algorithm>
#include <utility>

namespace VX3 {

namespace {

constexpr std::int64_t FarAhead = 17; // block ids between two in flight that are worth a line in the log

} // namespace

void GvspBlockQueue::SetOrder(const GvspBlockOrder& order) {
    order_ = order;
    history_.SetOrder(order);
}

GvspParserInfo* GvspBlockQueue::Open(std::uint32_t blockId, TimePoint now) {
    if (!MakeRoom(blockId, now))
        return nullptr;
    if (!store_.Ring().HasSpare()) {
        if (warnings_.Allow(now))
            VxLoggerLog(LogLevel::Error, "SDK",
                        "GetParserInfo with bid(%d) error, NO Buff Available!: the client holds all images, "
                        "or there is no memory for more",
                        0);
        return nullptr;
    }
    GvspParserInfo* info = store_.Open(blockId, order_, geometry_);
    if (info != nullptr)
        current_ = info;
    return info;
}

// False when the block is older than all that wait, and too late.
bool GvspBlockQueue::MakeRoom(std::uint32_t blockId, TimePoint now) {
    const GvspBlockRing& ring = store_.Ring();
    if (!ring.HasSpare() && ring.Size() < store_.Target())
        (void)store_.AddSpare(); // whether there is one is looked at below
    if (ring.InFlight() != 0 && (ring.InFlight() > MaxPlacesAhead || !ring.HasSpare())) {
        const bool awaiting = resend_.IsAwaiting(ring.Oldest());
        const std::size_t most = awaiting ? MaxInFlight() : std::min(MaxInFlight(), MaxPlacesAhead + 1);
        const bool full = ring.InFlight() >= most;
        const bool latecomer = order_.Distance(ring.Oldest(), blockId) < 0;
        if (latecomer && full)
            return false;
        // The oldest makes room, unless it awaits answers or the newcomer is older still.
        if (!latecomer && (full || !awaiting))
            CommitHead(now);
    }
    if (!ring.HasSpare() && Failed(store_.AddSpare()) && ring.InFlight() != 0 &&
        order_.Distance(ring.Oldest(), blockId) > 0)
        CommitHead(now); // the pool has no more: its image is to be had again
    return true;
}

std::size_t GvspBlockQueue::MaxInFlight() const {
    if (!store_.IsRecycling())
        return std::clamp<std::size_t>(store_.Target(), 1, MaxPlacesAhead + 1);
    const std::uint64_t affordable = MaxAwaitingBytes / std::max<std::uint64_t>(store_.BlockBytes(), 1);
    return std::clamp<std::uint64_t>(affordable, MaxPlacesAhead + 1, MaxAwaiting);
}

void GvspBlockQueue::CommitWhatCan(TimePoint now) {
    closedSeen_ = resend_.Closed();
    while (complete_ != 0 && !resend_.IsAwaiting(store_.Ring().Oldest()))
        CommitHead(now);
}

void GvspBlockQueue::CommitGivenUp(TimePoint now) {
    while (InFlight() != 0 && !resend_.IsAwaiting(store_.Ring().Oldest()))
        CommitHead(now);
}

StatusCode GvspBlockQueue::CommitUpTo(const GvspParserInfo& info, TimePoint now) {
    while (InFlight() != 0) {
        const GvspParserInfo& head = store_.Ring().At(0);
        if (&head == &info) {
            CommitHead(now);
            return Status::Ok;
        }
        const std::int64_t ahead = order_.Distance(head.blockId, info.blockId);
        if ((ahead <= 0 || ahead >= FarAhead) && warnings_.Allow(now))
            VxLoggerLog(LogLevel::Fatal, "SDK",
                        "Ready to commit block %u whose ID bigger than current %u!!!!: the camera began its "
                        "numbers anew, or many blocks were lost",
                        head.blockId, info.blockId);
        CommitHead(now);
    }
    return Status::WrongState;
}

void GvspBlockQueue::CommitHead(TimePoint now) {
    GvspBlockRing& ring = store_.Ring();
    GvspParserInfo& info = ring.At(0);
    const std::uint32_t missing = geometry_.packets - info.packetsReceived;
    const std::uint32_t blockId = info.blockId;
    delivery_.Finish(info, missing, ring.InFlight(), now);
    resend_.RemoveUpTo(blockId);
    delivery_.Count(info, missing, resend_.GetImagesLost());
    admission_.NoteBlock(missing == 0);
    if (missing == 0)
        --complete_;
    if (current_ == &info)
        current_ = nullptr;
    history_.Add(blockId);
    delivery_.Hand(ring.PopHead());
    if (ring.Size() < store_.Target() || !ring.HasSpare())
        (void)store_.AddSpare(); // tried again when the next block needs it
}

void GvspBlockQueue::HandOnAll(TimePoint now) {
    while (InFlight() != 0)
        CommitHead(now);
}

void GvspBlockQueue::Restart(TimePoint now) {
    HandOnAll(now);
    resend_.Restart();
    closedSeen_ = resend_.Closed();
    history_.Forget();
}

void GvspBlockQueue::Flush(TimePoint now) {
    while (complete_ != 0)
        CommitHead(now);
    while (InFlight() != 0) {
        resend_.RemoveUpTo(store_.Ring().Oldest());
        (void)store_.Ring().PopHead(); // its image goes back to the pool
    }
    current_ = nullptr;
}

} // namespace VX3
