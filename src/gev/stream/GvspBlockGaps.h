// What is missing of one block: its gaps in the order of packet ids, which is that of their discovery. Those
// that were asked for, or may be, stand before those that are fresh, and cost nothing until their time comes.
// Owned by GvspMissingRanges, which decides what happens when; its thread only.
#pragma once

#include "gev/stream/GvspGap.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace VX3 {

class GvspBlockGaps {
public:
    using TimePoint = GvspGap::TimePoint;

    void Reserve(std::size_t gaps) { gaps_.reserve(gaps); }
    // Becomes that block's, without gaps.
    void Begin(std::uint32_t blockId);

    std::uint32_t BlockId() const { return blockId_; }
    bool IsEmpty() const { return gaps_.empty(); }
    std::size_t Count() const { return gaps_.size(); }
    const GvspGap& At(std::size_t index) const { return gaps_[index]; }
    // Packets.
    std::uint64_t Missing() const { return missing_; }
    std::uint32_t InFlight() const { return inFlight_; }
    // Not wanted any more: it has no gaps, and gets none.
    bool IsAbandoned() const { return abandoned_; }
    // Nothing of it has been seen: its leader is asked for, and the rest once that has come.
    bool IsUnseen() const { return unseen_; }
    void SetUnseen(bool unseen) { unseen_ = unseen; }

    // A gap behind all others.
    void Append(const GvspGap& gap);
    // The gap that lacks the packet; Count() when none does.
    std::size_t Find(std::uint32_t packetId) const;
    // The packet came, or never will: out of its gap, which may go, or leave one on either side.
    void TakeOut(std::size_t index, std::uint32_t packetId);
    // Every packet from that id on.
    void CutFrom(std::uint32_t packetId);
    void Abandon();

    // Fresh gaps that no reordering explains any more become due; how many there are to ask for then.
    // `force`: all of them.
    std::size_t Ripen(std::uint64_t createdBefore, TimePoint foundBefore, bool force);
    // The first gap to ask for; Count() when there is none.
    std::size_t NextToAsk();
    // The first `packets` of that gap are asked for; what is left of it stays to be asked for.
    void Ask(std::size_t index, std::uint32_t packets, TimePoint now);
    // No answer so far.
    void SetLate(std::size_t index);
    void NoteAnswer(std::size_t index, TimePoint now) { gaps_[index].asked = now; }
    // Gaps before it are not fresh.
    std::size_t FirstFresh() const { return firstFresh_; }
    // The earliest time at which an answer is late; kept for the owner.
    TimePoint NextLate() const { return nextLate_; }
    void SetNextLate(TimePoint time) { nextLate_ = time; }

private:
    void Erase(std::size_t index);
    void Insert(std::size_t index, const GvspGap& gap);
    void Account(const GvspGap& gap, std::int64_t packets);

    std::vector<GvspGap> gaps_;
    std::size_t firstFresh_ = 0;
    std::size_t askable_ = 0; // gaps that may be asked for
    std::size_t askFrom_ = 0; // none of them stands before it
    std::uint64_t missing_ = 0;
    std::uint32_t inFlight_ = 0;
    std::uint32_t blockId_ = 0;
    bool abandoned_ = false;
    bool unseen_ = false;
    TimePoint nextLate_ = TimePoint::max();
};

} // namespace VX3
