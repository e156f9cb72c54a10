#include "gev/stream/GvspMissingRanges.h"

#include <algorithm>

namespace VX3 {

namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;

constexpr milliseconds LongestBacklog{250};
// How long a camera that answers nothing is asked. Each time it proves in vain the next wait is half as long,
// until the camera answers again.
constexpr milliseconds LongestPatience{100};
constexpr milliseconds ShortestPatience{10};
// A camera that answers, but never with what is missing.
constexpr std::chrono::seconds LongestAsked{2};
constexpr unsigned FewestAttempts = 3;
constexpr std::uint64_t LeastShare = 8;
constexpr std::size_t UsualGaps = 64; // a block has room for without allocating

} // namespace

GvspMissingRanges::GvspMissingRanges(bool resendSupported)
    : mayAsk_(resendSupported), blocks_(MaxBlocks), patience_(LongestPatience) {
    for (GvspBlockGaps& block : blocks_)
        block.Reserve(UsualGaps);
}

void GvspMissingRanges::SetFlagExt(bool extended) {
    extended_ = extended;
    order_ = GvspBlockOrder(extended);
}

// Blocks --------------------------------------------------------------------------------------------------

// used_ when nothing of it is missing.
std::size_t GvspMissingRanges::IndexOf(std::uint32_t blockId) const {
    std::size_t index = 0;
    while (index < used_ && blocks_[index].BlockId() != blockId)
        ++index;
    return index;
}

// In its place by age; null when there is no room, or it was given up.
GvspBlockGaps* GvspMissingRanges::BlockFor(std::uint32_t blockId) {
    const std::size_t known = IndexOf(blockId);
    if (known < used_)
        return blocks_[known].IsAbandoned() ? nullptr : &blocks_[known];
    if (used_ == blocks_.size())
        return nullptr;
    std::size_t place = used_;
    while (place > 0 && order_.Distance(blocks_[place - 1].BlockId(), blockId) < 0)
        --place;
    const auto at = [this](std::size_t i) { return blocks_.begin() + static_cast<std::ptrdiff_t>(i); };
    std::rotate(at(place), at(used_), at(used_ + 1));
    ++used_;
    ++wanted_;
    blocks_[place].Begin(blockId);
    return &blocks_[place];
}

void GvspMissingRanges::Drop(std::size_t index) {
    GvspBlockGaps& block = blocks_[index];
    if (!block.IsAbandoned()) {
        window_.Forget(block.InFlight());
        block.Abandon();
        --wanted_;
    }
    const auto at = [this](std::size_t i) { return blocks_.begin() + static_cast<std::ptrdiff_t>(i); };
    std::rotate(at(index), at(index + 1), at(used_));
    --used_;
    ++closed_;
}

void GvspMissingRanges::GiveUp(GvspBlockGaps& block) {
    if (block.IsAbandoned())
        return;
    if (block.IsUnseen())
        CountLost(1);
    window_.Forget(block.InFlight());
    block.Abandon();
    --wanted_;
    ++closed_;
}

void GvspMissingRanges::CloseIfComplete(std::size_t index) {
    if (blocks_[index].IsEmpty() && !blocks_[index].IsAbandoned())
        Drop(index);
}

void GvspMissingRanges::Remove(std::uint32_t blockId) {
    const std::size_t index = IndexOf(blockId);
    if (index == used_)
        return;
    GiveUp(blocks_[index]);
    Drop(index);
}

void GvspMissingRanges::RemoveUpTo(std::uint32_t blockId) {
    while (used_ != 0 && order_.Distance(blocks_[0].BlockId(), blockId) >= 0) {
        GiveUp(blocks_[0]);
        Drop(0);
    }
}

void GvspMissingRanges::Clear() {
    while (used_ != 0)
        Drop(used_ - 1);
    mayBeDue_ = false;
    newest_ = 0;
}

bool GvspMissingRanges::IsAwaiting(std::uint32_t blockId) const {
    for (std::size_t i = 0; i < used_ && order_.Distance(blocks_[i].BlockId(), blockId) >= 0; ++i)
        if (!blocks_[i].IsAbandoned())
            return true;
    return false;
}

// Gaps ----------------------------------------------------------------------------------------------------

void GvspMissingRanges::Add(std::uint32_t blockId, std::uint32_t first, std::uint32_t last, TimePoint now) {
    GvspBlockGaps* block = BlockFor(blockId);
    if (block != nullptr)
        AddTo(*block, first, last, now);
}

void GvspMissingRanges::AddBlock(std::uint32_t blockId, TimePoint now) {
    GvspBlockGaps* block = BlockFor(blockId);
    if (block == nullptr) {
        CountLost(1);
        return;
    }
    AddTo(*block, 0, 0, now);
    AddTo(*block, 1, GvspGap::ToBlockEnd, now);
    block->SetUnseen(true);
}

void GvspMissingRanges::AddTo(GvspBlockGaps& block, std::uint32_t first, std::uint32_t last, TimePoint now) {
    if (block.Count() >= MaxGaps)
        return GiveUp(block);
    GvspGap gap;
    gap.first = first;
    gap.last = last == GvspGap::ToBlockEnd ? std::max(maxPid_, first) : last;
    gap.createdAt = packets_;
    gap.created = now;
    block.Append(gap);
}

void GvspMissingRanges::Arrived(const GvspPacketAddr& addr, Origin origin, TimePoint now) {
    const std::size_t index = IndexOf(addr.blockId);
    const std::size_t gap = index < used_ ? blocks_[index].Find(addr.packetId) : 0;
    if (index == used_ || gap == blocks_[index].Count()) {
        for (Filled& filled : filled_)
            if (filled.addr == addr && filled.distance != 0) {
                reorder_.Learn(filled.distance, packets_); // asked for too early
                filled.distance = 0;
            }
        return;
    }
    GvspBlockGaps& block = blocks_[index];
    Learn(block, gap, addr, origin, now);
    if (block.IsUnseen()) { // it exists: now for the rest
        block.SetUnseen(false);
        mayBeDue_ = true;
    }
    block.TakeOut(gap, addr.packetId);
    CloseIfComplete(index);
}

void GvspMissingRanges::Learn(GvspBlockGaps& block, std::size_t index, const GvspPacketAddr& addr,
                              Origin origin, TimePoint now) {
    const GvspGap& gap = block.At(index);
    const std::uint64_t distance = packets_ - gap.createdAt;
    marksAgain_ = marksAgain_ || origin == Origin::SentAgain;
    if (gap.attempts == 0 || (marksAgain_ && origin != Origin::SentAgain)) {
        reorder_.Learn(distance, packets_);
    } else {
        answered_ = now;
        patience_ = LongestPatience;
        if (gap.attempts == 1) // of later answers nobody knows which request they answer
            roundTrip_.Learn(now - gap.asked);
        filled_[nextFilled_++ % filled_.size()] = {addr, distance};
    }
    if (gap.state == GvspGap::State::Asked) {
        window_.Answered();
        block.NoteAnswer(index, now); // the rest of the range follows
    }
}

void GvspMissingRanges::Refused(const GvspPacketAddr& addr, TimePoint now) {
    const std::size_t index = IndexOf(addr.blockId);
    if (index == used_)
        return;
    answered_ = now;
    GiveUp(blocks_[index]);
}

void GvspMissingRanges::CutFrom(std::uint32_t blockId, std::uint32_t packetId) {
    const std::size_t index = IndexOf(blockId);
    if (index == used_)
        return;
    const std::uint32_t before = blocks_[index].InFlight();
    blocks_[index].CutFrom(packetId);
    window_.Forget(before - blocks_[index].InFlight());
    CloseIfComplete(index);
}

// Requests ------------------------------------------------------------------------------------------------

bool GvspMissingRanges::NextRequest(GvspResendInfo& info, TimePoint now) {
    if (!mayBeDue_ || window_.Room() == 0)
        return false;
    for (std::size_t i = 0; i < used_; ++i) {
        GvspBlockGaps& block = blocks_[i];
        const std::size_t index = block.NextToAsk();
        if (index == block.Count())
            continue;
        const GvspGap gap = block.At(index);
        const std::uint32_t packets = std::min(gap.Length(), window_.Piece());
        if (packets > window_.Room())
            return false;
        info = {block.BlockId(), 0, extended_ ? 1U : 0U, gap.first, gap.first + packets - 1};
        block.Ask(index, packets, now);
        window_.Asked(packets);
        const unsigned attempts = gap.attempts + 1U;
        block.SetNextLate(std::min(block.NextLate(), now + roundTrip_.RetryDelay(attempts)));
        return true;
    }
    mayBeDue_ = false;
    return false;
}

void GvspMissingRanges::Check(TimePoint now, bool force) {
    checkCounter_ = 0;
    reorder_.Relax(packets_);
    const std::uint64_t createdBefore = packets_ - std::min(packets_, reorder_.Packets());
    for (std::size_t i = 0; i < used_; ++i) {
        GvspBlockGaps& block = blocks_[i];
        if (block.IsAbandoned())
            continue;
        if (block.Ripen(createdBefore, now - ReorderTime, force) != 0) {
            if (!mayAsk_) {
                GiveUp(block);
                continue;
            }
            mayBeDue_ = true;
        }
        if (now >= block.NextLate())
            CheckAsked(block, now);
    }
}

void GvspMissingRanges::CheckAsked(GvspBlockGaps& block, TimePoint now) {
    TimePoint next = TimePoint::max();
    for (std::size_t i = 0; i < block.FirstFresh(); ++i) {
        const GvspGap& gap = block.At(i);
        if (gap.state != GvspGap::State::Asked)
            continue;
        const auto delay = roundTrip_.RetryDelay(gap.attempts);
        const auto waited = now - gap.asked;
        if (waited < delay || (drained_ - gap.asked < delay && waited < LongestBacklog)) {
            next = std::min(next, std::max(gap.asked + delay, now + GvspRoundTrip::ShortestRetry));
            continue;
        }
        if (IsHopeless(gap, now)) {
            patience_ = std::max(patience_ / 2, ShortestPatience);
            return GiveUp(block);
        }
        window_.Late(gap.Length(), now, roundTrip_.Average());
        block.SetLate(i);
        mayBeDue_ = true;
    }
    block.SetNextLate(next);
}

// Nothing is heard of the camera any more, or never of this.
bool GvspMissingRanges::IsHopeless(const GvspGap& gap, TimePoint now) const {
    if (gap.attempts < FewestAttempts)
        return false;
    const auto limit = std::max<microseconds>(patience_, 4 * roundTrip_.Average());
    return now - std::max(gap.firstAsked, answered_) >= limit || now - gap.firstAsked >= LongestAsked;
}

// What can still be completed ----------------------------------------------------------------------------

void GvspMissingRanges::BlockBegins(std::uint32_t blockId, TimePoint now) {
    if (newest_ != 0 && order_.Distance(newest_, blockId) == 1) {
        const auto took = std::chrono::duration_cast<microseconds>(now - begun_);
        blockTime_ = blockTime_.count() == 0 ? took : blockTime_ + (took - blockTime_) / 8;
        if (blockTime_.count() > 0) { // a share of what the stream itself brings in a round trip
            const auto meanwhile = (packets_ - begunAt_) *
                                   static_cast<std::uint64_t>(roundTrip_.Average().count()) /
                                   static_cast<std::uint64_t>(blockTime_.count());
            window_.SetSmallest(
                static_cast<std::uint32_t>(std::min<std::uint64_t>(meanwhile / LeastShare, 0xFFFF)));
        }
    }
    newest_ = blockId;
    begun_ = now;
    begunAt_ = packets_;
    if (window_.IsLimited() && wanted_ > 1)
        Triage();
}

// Every block has to go a number of block times from now, and its packets take their share of the window.
// Taking the blocks by age, and giving up the one that misses most whenever there is too little time, leaves
// as many as can be completed (the rule of Moore and Hodgson for late jobs).
void GvspMissingRanges::Triage() {
    const auto roundTrip = std::max(roundTrip_.Average(), microseconds(1));
    const auto perBlock = static_cast<std::uint64_t>(window_.Size()) *
                              static_cast<std::uint64_t>(blockTime_.count()) /
                              static_cast<std::uint64_t>(roundTrip.count()) +
                          1;
    std::uint64_t wanted = 0;
    for (std::size_t i = 0; i < used_; ++i) {
        if (blocks_[i].IsAbandoned())
            continue;
        wanted += blocks_[i].Missing();
        const std::int64_t age = order_.Distance(blocks_[i].BlockId(), newest_);
        const auto left = static_cast<std::uint64_t>(std::max<std::int64_t>(places_ - age, 0));
        if (wanted <= left * perBlock)
            continue;
        const auto most = std::max_element(
            blocks_.begin(), blocks_.begin() + static_cast<std::ptrdiff_t>(i) + 1,
            [](const GvspBlockGaps& a, const GvspBlockGaps& b) { return a.Missing() < b.Missing(); });
        wanted -= most->Missing();
        GiveUp(*most);
    }
}

} // namespace VX3
