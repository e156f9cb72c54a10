// The ranges of packets that a stream misses, and when each may be asked for. Knows nothing of how gaps are
// found.
//
//   missing --32 packets or silence--> due --request--> waiting --countdown--> due ... five requests -->
//   given up
//
// A new range waits until 32 packets have followed it, so that reordered packets are not asked for; in a
// silent stream for the caller to force the check, in a trickling one for 100 ms.
// A request is repeated when its countdown, counted in packets, has run out and a few round-trip times have
// passed. Requests are bounded in rate, never in total.
// Owned by the resend bookkeeping; its thread only, but LostBlocks. Allocates when constructed.
#pragma once

#include "gev/stream/GvspPacketAddr.h"
#include "gev/stream/GvspResendBudget.h"
#include "gev/stream/GvspResendInfo.h"
#include "gev/stream/GvspResendItem.h"
#include "gev/stream/GvspRoundTrip.h"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace VX3 {

class GvspMissingRanges {
public:
    using TimePoint = std::chrono::steady_clock::time_point;
    static constexpr std::uint64_t ReorderPackets = 32;
    static constexpr std::chrono::milliseconds ReorderTime{100};
    static constexpr std::uint8_t MaxAttempts = 5;
    static constexpr std::size_t MaxItems = 4096;   // ranges beyond are given up at once
    static constexpr std::uint32_t CheckEvery = 10; // packets

    // Without resend support ranges are kept for their reorder window, and then given up unasked.
    explicit GvspMissingRanges(bool resendSupported);

    void SetMaxPid(std::uint32_t packetId);
    void SetFlagExt(bool extended);
    bool MayAsk() const { return maxAttempts_ != 0; }

    // A packet was received: every tenth moves the ranges on.
    void CountPacket(TimePoint now) {
        ++packets_;
        if (++checkCounter_ >= CheckEvery)
            Check(now, false);
    }
    // Everything that had come by `now` has been taken: an answer that is still missing is late. While
    // packets lie unread, its absence says nothing.
    void NoteDrained(TimePoint now) { drained_ = now; }
    // Moves ranges on; `force` (a silent stream) makes everything due that is not within its round trip.
    void Check(TimePoint now, bool force);

    // Packets first .. last of a block did not come.
    void Add(std::uint32_t blockId, std::uint32_t first, std::uint32_t last, TimePoint now);
    // One of them came after all.
    void Arrived(const GvspPacketAddr& addr, TimePoint now);
    // The camera no longer has the packet (`andPrevious`: nor those before it).
    void Refused(const GvspPacketAddr& addr, bool andPrevious);
    // The range to ask for now; false when none is due, or no more may be asked for yet.
    [[nodiscard]] bool NextRequest(GvspResendInfo& info, TimePoint now);

    // Given up: the block was handed on.
    void Remove(std::uint32_t blockId);
    void RemoveUpTo(std::uint32_t blockId);
    // Every range, without counting a block as lost.
    void Clear();

    // Packets of this block or an earlier one may still come.
    bool IsAwaiting(std::uint32_t blockId) const;
    bool IsEmpty() const { return requests_.empty() && waiting_.empty(); }
    // Grows whenever a range goes: a reason to look whether a block can be handed on.
    std::uint64_t Closed() const { return closed_; }
    // Blocks of which nothing arrived; any thread. CountLost adds those that no range stands for.
    std::uint64_t LostBlocks() const { return lostBlocks_.load(std::memory_order_relaxed); }
    void CountLost(std::uint64_t blocks) { lostBlocks_.fetch_add(blocks, std::memory_order_relaxed); }

private:
    using Items = std::vector<GvspResendItem>;

    bool TakeFrom(Items& items, const GvspPacketAddr& addr, TimePoint now);
    void Shrink(Items& items, std::size_t index, std::uint32_t packetId);
    void GiveUp(const GvspResendItem& item);
    void CheckWaiting(TimePoint now, bool force);
    void CheckRequests(TimePoint now, bool force);
    std::uint32_t LastOf(const GvspResendItem& item) const;
    std::size_t Count() const { return requests_.size() + waiting_.size(); }
    template <typename Pick>
    void RemoveIf(Pick pick);

    const std::uint8_t maxAttempts_;
    GvspBlockOrder order_;
    bool extended_ = false;
    std::uint32_t maxPid_ = 0;
    Items requests_; // missing or due
    Items waiting_;  // asked for
    bool requestDue_ = false;
    GvspResendBudget budget_;
    GvspRoundTrip roundTrip_;
    TimePoint drained_{};
    std::uint32_t checkCounter_ = 0; // packets since the last check
    std::uint64_t packets_ = 0;      // taken so far
    std::uint64_t closed_ = 0;
    std::atomic<std::uint64_t> lostBlocks_{0};
};

} // namespace VX3
