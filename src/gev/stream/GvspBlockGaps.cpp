#include "gev/stream/GvspBlockGaps.h"

#include <algorithm>

namespace VX3 {

void GvspBlockGaps::Begin(std::uint32_t blockId) {
    Abandon();
    blockId_ = blockId;
    abandoned_ = unseen_ = false;
}

void GvspBlockGaps::Abandon() {
    gaps_.clear(); // its room stays
    firstFresh_ = askable_ = askFrom_ = 0;
    missing_ = inFlight_ = 0;
    abandoned_ = true;
    nextLate_ = TimePoint::max();
}

// So many packets more, or less, are missing in the state of that gap.
void GvspBlockGaps::Account(const GvspGap& gap, std::int64_t packets) {
    missing_ += static_cast<std::uint64_t>(packets);
    if (gap.state == GvspGap::State::Asked)
        inFlight_ += static_cast<std::uint32_t>(packets);
}

void GvspBlockGaps::Append(const GvspGap& gap) {
    Insert(gaps_.size(), gap);
    Account(gap, gap.Length());
}

void GvspBlockGaps::Insert(std::size_t index, const GvspGap& gap) {
    gaps_.insert(gaps_.begin() + static_cast<std::ptrdiff_t>(index), gap);
    if (gap.state != GvspGap::State::Fresh)
        ++firstFresh_;
    askable_ += gap.MayBeAsked();
    if (gap.MayBeAsked())
        askFrom_ = std::min(askFrom_, index);
    else if (index < askFrom_)
        ++askFrom_;
}

void GvspBlockGaps::Erase(std::size_t index) {
    askable_ -= gaps_[index].MayBeAsked();
    if (index < firstFresh_)
        --firstFresh_;
    if (index < askFrom_)
        --askFrom_;
    gaps_.erase(gaps_.begin() + static_cast<std::ptrdiff_t>(index));
}

std::size_t GvspBlockGaps::Find(std::uint32_t packetId) const {
    const auto found = std::lower_bound(gaps_.begin(), gaps_.end(), packetId,
                                        [](const GvspGap& gap, std::uint32_t id) { return gap.last < id; });
    const bool holds = found != gaps_.end() && found->Holds(packetId);
    return holds ? static_cast<std::size_t>(found - gaps_.begin()) : gaps_.size();
}

void GvspBlockGaps::TakeOut(std::size_t index, std::uint32_t packetId) {
    GvspGap& gap = gaps_[index];
    Account(gap, -1);
    if (gap.Length() == 1) {
        Erase(index);
    } else if (packetId == gap.first) {
        ++gap.first;
    } else if (packetId == gap.last) {
        --gap.last;
    } else {
        GvspGap rest = gap;
        gap.last = packetId - 1;
        rest.first = packetId + 1;
        Insert(index + 1, rest);
    }
}

void GvspBlockGaps::CutFrom(std::uint32_t packetId) {
    while (!gaps_.empty() && gaps_.back().last >= packetId) {
        GvspGap& gap = gaps_.back();
        const std::uint32_t from = std::max(gap.first, packetId);
        Account(gap, -static_cast<std::int64_t>(gap.last - from + 1));
        if (from == gap.first)
            Erase(gaps_.size() - 1);
        else
            gap.last = from - 1;
    }
}

std::size_t GvspBlockGaps::Ripen(std::uint64_t createdBefore, TimePoint foundBefore, bool force) {
    for (; firstFresh_ < gaps_.size(); ++firstFresh_) {
        GvspGap& gap = gaps_[firstFresh_];
        if (!force && gap.createdAt > createdBefore && gap.created > foundBefore)
            break;
        gap.state = GvspGap::State::Due;
        ++askable_;
    }
    return askable_;
}

std::size_t GvspBlockGaps::NextToAsk() {
    if (askable_ == 0)
        return gaps_.size();
    if (unseen_)
        return gaps_.front().MayBeAsked() ? 0 : gaps_.size();
    while (!gaps_[askFrom_].MayBeAsked())
        ++askFrom_;
    return askFrom_;
}

void GvspBlockGaps::Ask(std::size_t index, std::uint32_t packets, TimePoint now) {
    if (packets < gaps_[index].Length()) {
        GvspGap rest = gaps_[index];
        rest.first += packets;
        gaps_[index].last = rest.first - 1;
        Insert(index + 1, rest);
    }
    GvspGap& gap = gaps_[index];
    --askable_;
    gap.state = GvspGap::State::Asked;
    inFlight_ += packets;
    gap.asked = now;
    if (gap.attempts++ == 0)
        gap.firstAsked = now;
}

void GvspBlockGaps::SetLate(std::size_t index) {
    GvspGap& gap = gaps_[index];
    inFlight_ -= gap.Length();
    gap.state = GvspGap::State::Late;
    ++askable_;
    askFrom_ = std::min(askFrom_, index);
}

} // namespace VX3
