// The resend bookkeeping of one stream: a list of missing ranges and when each may be asked for.
//
//   gap seen --32 packets or silence--> due --request--> waiting --countdown--> due ... five requests -->
//   given up
//
// A new gap waits until 32 packets have followed it, so that reordered packets are not asked for; in a silent
// stream for the caller to force the check, in a trickling one for 100 ms.
// A request is repeated when its countdown, counted in packets, has run out and a few round-trip times have
// passed. Requests are bounded in rate (a quarter of the packets received), never in total.
// Owned by a parser; confined to its receive thread, so nothing here is locked. The check counter is per
// stream: one shared between streams would race and let a busy stream starve a slow one of its checks.
#pragma once

#include "gev/stream/GvspResendItem.h"
#include "gev/stream/IGvspResendParser.h"
#include "gev/stream/LogLimiter.h"

#include <atomic>
#include <cstddef>
#include <vector>

namespace VX3 {

class GvspResendParser final : public IGvspResendParser {
public:
    static constexpr std::uint64_t ReorderPackets = 32;
    static constexpr std::chrono::milliseconds ReorderTime{100};
    static constexpr std::uint8_t MaxAttempts = 5;
    static constexpr std::size_t MaxItems = 4096; // ranges beyond are given up at once

    // Without resend support gaps are tracked all the same (they tell when a block will not be completed any
    // more) but nothing is ever asked for.
    explicit GvspResendParser(bool resendSupported);

    StatusCode Reset() override { return Status::Ok; }
    StatusCode Remove(std::uint32_t blockId) override;
    bool GetResendInfo(GvspResendInfo& info, TimePoint now) override;
    StatusCode UpdateResend(const GvspPacketAddr* addr, TimePoint now) override;
    StatusCode UpdateResend(const GvspPacketAddr* from, const GvspPacketAddr* to, TimePoint now) override;
    StatusCode UpdateResend(unsigned int) override { return Status::Ok; }
    std::uint64_t GetImagesLost() const override { return imagesLost_.load(std::memory_order_relaxed); }
    StatusCode SetMaxPid(std::uint32_t packetId) override;
    StatusCode SetFlagExt(bool extended) override;

    // Everything that had come by `now` has been taken: an answer that is still missing is late. While
    // packets lie unread, its absence says nothing.
    void NoteDrained(TimePoint now) { drained_ = now; }
    // The packet that comes next in an undisturbed stream.
    const GvspPacketAddr& Expected() const { return expected_; }
    // Moves items on; `force` (a silent stream) makes everything due that is not within its round trip.
    void CheckListTimeOut(TimePoint now, bool force);
    // The rest of the newest block counts as missing: a silent stream lost its tail.
    void CloseTail(TimePoint now);
    // The newest block ended before its last packet id: nothing more of it is missing.
    void SkipRest(std::uint32_t blockId);
    // A payload packet came before any leader: that block's leader is asked for.
    void RequestLeader(std::uint32_t blockId, bool extended, TimePoint now);
    // The camera no longer has the packet (`andPrevious`: nor those before it).
    void Refused(const GvspPacketAddr& addr, bool andPrevious);
    // Like Remove for every block up to and including `blockId`.
    void RemoveUpTo(std::uint32_t blockId);
    // Block ids start anew: forgets everything but the counters.
    void Restart();
    // Packets of this block or an earlier one may still come.
    bool IsAwaiting(std::uint32_t blockId) const;
    bool HasItems() const { return !requests_.empty() || !waiting_.empty(); }
    // Grows whenever an item goes: a reason to look whether a block can be handed on.
    std::uint64_t Closed() const { return closed_; }

private:
    using Items = std::vector<GvspResendItem>;

    void AdvanceFrom(const GvspPacketAddr& addr);
    void CreateResendInfo(const GvspPacketAddr& from, const GvspPacketAddr& to, TimePoint now);
    void AddItem(std::uint32_t blockId, std::uint32_t first, std::uint32_t last, TimePoint now);
    void Late(const GvspPacketAddr& addr, TimePoint now);
    bool TakeFrom(Items& items, const GvspPacketAddr& addr, TimePoint now);
    void Shrink(Items& items, std::size_t index, std::uint32_t packetId);
    void GiveUp(const GvspResendItem& item);
    void CheckWaiting(TimePoint now, bool force);
    void CheckRequests(TimePoint now, bool force);
    std::chrono::microseconds RetryDelay(const GvspResendItem& item) const;
    std::uint32_t LastOf(const GvspResendItem& item) const;
    std::uint64_t TokenCapacity() const;
    template <typename Pick>
    void RemoveIf(Pick pick);

    const std::uint8_t maxAttempts_;
    GvspBlockOrder order_;
    GvspPacketAddr expected_{0, 1};
    bool seen_ = false; // any packet yet
    bool extended_ = false;
    TimePoint drained_{};
    bool requestDue_ = false;
    std::uint32_t maxPid_ = 0;
    std::uint32_t checkCounter_ = 0;
    std::uint32_t headlessBlock_ = 0; // whose leader was asked for
    std::uint64_t packets_ = 0;       // taken so far
    std::uint64_t closed_ = 0;
    Items requests_;
    Items waiting_;
    std::uint64_t tokens_; // quarters of a packet that may be asked for
    TimePoint refilled_{};
    std::chrono::microseconds roundTrip_{1000};
    std::atomic<std::uint64_t> imagesLost_{0};
    LogLimiter itemLog_;
};

} // namespace VX3
