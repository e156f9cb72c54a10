// The packets that a stream misses, block by block, and which of them to ask for now. Knows nothing of how
// gaps are found.
//
//   fresh --reorder window or silence--> due --request--> asked --no answer--> late --request--> asked ...
//
// What is asked for is bounded by a congestion window, the oldest block goes first, and long ranges go in
// pieces. A block is asked for as long as the camera may still hold it: until it says that it does not, or
// answers nobody any more. Of a block that was lost whole only the leader is asked for at first.
// Owned by the resend bookkeeping; its thread only, but LostBlocks. Allocates when constructed, and where a
// block has more gaps than any before.
#pragma once

#include "gev/stream/GvspBlockGaps.h"
#include "gev/stream/GvspPacketAddr.h"
#include "gev/stream/GvspRecoveryWindow.h"
#include "gev/stream/GvspReorderWindow.h"
#include "gev/stream/GvspResendInfo.h"
#include "gev/stream/GvspRoundTrip.h"

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace VX3 {

class GvspMissingRanges {
public:
    using TimePoint = std::chrono::steady_clock::time_point;
    // What a packet says of itself.
    enum class Origin { Unknown, SentAgain };
    static constexpr std::chrono::milliseconds ReorderTime{100};
    static constexpr std::size_t MaxGaps = 4096; // a block that would have more is given up
    static constexpr std::size_t MaxBlocks = 80;
    static constexpr std::uint32_t CheckEvery = 10; // packets

    // Without resend support gaps are kept for their reorder window, and then given up unasked.
    explicit GvspMissingRanges(bool resendSupported);

    void SetMaxPid(std::uint32_t packetId) { maxPid_ = packetId; }
    void SetFlagExt(bool extended);
    // Packets that the socket's buffer has room for beside the stream.
    void SetLargestWindow(std::uint32_t packets) { window_.SetLargest(packets); }
    // Blocks that may be in flight at a time: what is older than that is handed on.
    void SetPlaces(std::size_t blocks) { places_ = static_cast<std::int64_t>(blocks); }
    bool MayAsk() const { return mayAsk_; }

    // A packet was received: every tenth moves the gaps on.
    void CountPacket(TimePoint now) {
        ++packets_;
        if (++checkCounter_ >= CheckEvery)
            Check(now, false);
    }
    // Everything that had come by `now` has been taken: an answer that is still missing is late. While
    // packets lie unread, its absence says nothing.
    void NoteDrained(TimePoint now) { drained_ = now; }
    // The socket's buffer was full, and packets were dropped.
    void NoteOverrun(TimePoint now) { window_.Overrun(now, roundTrip_.Average()); }
    // Blocks are left out from now on, which leaves room for answers.
    void NoteRelief() { window_.Restart(); }
    // Moves gaps on; `force` (a silent stream) makes everything due.
    void Check(TimePoint now, bool force);
    // The first packet of a new block: those that cannot be completed before they have to go are given up.
    void BlockBegins(std::uint32_t blockId, TimePoint now);

    // Packets first .. last of a block did not come. Behind all that its block misses so far.
    void Add(std::uint32_t blockId, std::uint32_t first, std::uint32_t last, TimePoint now);
    // A whole block did not come.
    void AddBlock(std::uint32_t blockId, TimePoint now);
    // A missing packet came after all; one that is not missing did.
    void Arrived(const GvspPacketAddr& addr, Origin origin, TimePoint now);
    // The camera no longer has the packet.
    void Refused(const GvspPacketAddr& addr, TimePoint now);
    // A block ended before that packet.
    void CutFrom(std::uint32_t blockId, std::uint32_t packetId);
    // The range to ask for now; false when none is due, or no more may be asked for yet.
    [[nodiscard]] bool NextRequest(GvspResendInfo& info, TimePoint now);

    // Handed on: what is missing of it is given up.
    void Remove(std::uint32_t blockId);
    void RemoveUpTo(std::uint32_t blockId);
    // Everything, without counting a block as lost.
    void Clear();

    // Packets of this block or an earlier one may still come.
    bool IsAwaiting(std::uint32_t blockId) const;
    bool IsEmpty() const { return wanted_ == 0; }
    const GvspRecoveryWindow& Window() const { return window_; }
    // Grows whenever a block has nothing to wait for any more: a reason to look whether it can be handed on.
    std::uint64_t Closed() const { return closed_; }
    // Blocks of which nothing arrived; any thread. CountLost adds those that nothing is known of here.
    std::uint64_t LostBlocks() const { return lostBlocks_.load(std::memory_order_relaxed); }
    void CountLost(std::uint64_t blocks) { lostBlocks_.fetch_add(blocks, std::memory_order_relaxed); }

private:
    // A packet that came after it had been asked for. When it comes once more, the first one had only been
    // overtaken.
    struct Filled {
        GvspPacketAddr addr;
        std::uint64_t distance = 0;
    };

    std::size_t IndexOf(std::uint32_t blockId) const;
    GvspBlockGaps* BlockFor(std::uint32_t blockId);
    void AddTo(GvspBlockGaps& block, std::uint32_t first, std::uint32_t last, TimePoint now);
    void Learn(GvspBlockGaps& block, std::size_t index, const GvspPacketAddr& addr, Origin origin,
               TimePoint now);
    void GiveUp(GvspBlockGaps& block);
    void CloseIfComplete(std::size_t index);
    void Drop(std::size_t index);
    void CheckAsked(GvspBlockGaps& block, TimePoint now);
    bool IsHopeless(const GvspGap& gap, TimePoint now) const;
    void Triage();

    const bool mayAsk_;
    GvspBlockOrder order_;
    bool extended_ = false;
    std::uint32_t maxPid_ = 0;
    std::int64_t places_ = 8;
    std::vector<GvspBlockGaps> blocks_; // oldest first, used_ of them; the others keep their memory
    std::size_t used_ = 0;
    std::size_t wanted_ = 0; // blocks that are not given up
    bool mayBeDue_ = false;  // something may have to be asked for

    GvspRecoveryWindow window_;
    GvspReorderWindow reorder_;
    GvspRoundTrip roundTrip_;
    std::array<Filled, 64> filled_{};
    std::size_t nextFilled_ = 0;
    bool marksAgain_ = false; // the camera marks what it sends again

    TimePoint drained_{};
    TimePoint answered_{}; // the camera's latest answer, to whatever request
    std::chrono::milliseconds patience_;
    std::uint32_t checkCounter_ = 0;         // packets since the last check
    std::uint64_t packets_ = 0;              // taken so far
    std::uint32_t newest_ = 0;               // block; 0: none
    TimePoint begun_{};                      // when it did
    std::uint64_t begunAt_ = 0;              // packets taken by then
    std::chrono::microseconds blockTime_{0}; // from one block to the next, on average
    std::uint64_t closed_ = 0;
    std::atomic<std::uint64_t> lostBlocks_{0};
};

} // namespace VX3
