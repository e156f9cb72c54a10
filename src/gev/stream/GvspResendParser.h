// The resend bookkeeping of one stream: packet addresses and the time go in, requests for the camera come
// out. Follows the order of addresses and finds the gaps; GvspMissingRanges knows when each may be asked for.
// Owned by a parser; confined to its receive thread, so nothing here is locked. The check counter is per
// stream: one shared between streams would race and let a busy stream starve a slow one of its checks.
#pragma once

#include "gev/stream/GvspMissingRanges.h"
#include "gev/stream/IGvspResendParser.h"
#include "gev/stream/LogLimiter.h"

namespace VX3 {

class GvspResendParser final : public IGvspResendParser {
public:
    static constexpr std::chrono::milliseconds ReorderTime = GvspMissingRanges::ReorderTime;
    using Origin = GvspMissingRanges::Origin;
    // Whole blocks in a gap that are asked for; those before them are counted lost at once.
    static constexpr std::int64_t MaxWholeBlocks = 8;

    // Without resend support gaps are tracked all the same (they tell when a block will not be completed any
    // more) but nothing is ever asked for.
    explicit GvspResendParser(bool resendSupported) : missing_(resendSupported) {}

    // What comes in: the shape of the stream, its packets, the camera's refusals, the passing of time.
    StatusCode SetMaxPid(std::uint32_t packetId) override;
    StatusCode SetFlagExt(bool extended) override;
    StatusCode UpdateResend(const GvspPacketAddr* addr, TimePoint now) override {
        return UpdateResend(*addr, Origin::Unknown, now);
    }
    StatusCode UpdateResend(const GvspPacketAddr& addr, Origin origin, TimePoint now);
    StatusCode UpdateResend(const GvspPacketAddr* from, const GvspPacketAddr* to, TimePoint now) override;
    StatusCode UpdateResend(unsigned int) override { return Status::Ok; }
    // A block ended with the packet before this one, earlier than others: nothing more of it is missing.
    void SkipRest(std::uint32_t blockId, std::uint32_t packetId);
    // A payload packet came before any leader: that block's leader is asked for.
    void RequestLeader(std::uint32_t blockId, bool extended, TimePoint now);
    // The camera no longer has it.
    void Refused(const GvspPacketAddr& addr, TimePoint now) { missing_.Refused(addr, now); }
    // See GvspMissingRanges.
    void SetLargestWindow(std::uint32_t packets) { missing_.SetLargestWindow(packets); }
    void SetPlaces(std::size_t blocks) { missing_.SetPlaces(blocks); }
    void NoteOverrun(TimePoint now) { missing_.NoteOverrun(now); }
    void NoteRelief() { missing_.NoteRelief(); }
    void NoteDrained(TimePoint now) { missing_.NoteDrained(now); }
    void CheckListTimeOut(TimePoint now, bool force) { missing_.Check(now, force); }
    // The rest of the newest block counts as missing: a silent stream lost its tail.
    void CloseTail(TimePoint now);
    // The stream goes on with that block: those between are not expected.
    void SkipTo(std::uint32_t blockId, TimePoint now);
    // Blocks were handed on: what they lack is given up.
    StatusCode Remove(std::uint32_t blockId) override;
    void RemoveUpTo(std::uint32_t blockId) { missing_.RemoveUpTo(blockId); }
    StatusCode Reset() override { return Status::Ok; }
    // Block ids start anew: forgets everything but the counters.
    void Restart();

    // What comes out.
    bool GetResendInfo(GvspResendInfo& info, TimePoint now) override {
        return missing_.NextRequest(info, now);
    }
    // The packet that comes next in an undisturbed stream.
    const GvspPacketAddr& Expected() const { return expected_; }
    bool IsAwaiting(std::uint32_t blockId) const { return missing_.IsAwaiting(blockId); }
    bool HasItems() const { return !missing_.IsEmpty(); }
    std::uint64_t Closed() const { return missing_.Closed(); }
    std::uint64_t GetImagesLost() const override { return missing_.LostBlocks(); }

private:
    void AdvanceFrom(const GvspPacketAddr& addr);
    void AddRange(std::uint32_t blockId, std::uint32_t first, std::uint32_t last, TimePoint now);
    void CreateResendInfo(const GvspPacketAddr& from, const GvspPacketAddr& to, TimePoint now);

    GvspMissingRanges missing_;
    GvspBlockOrder order_;
    GvspPacketAddr expected_{0, 1};
    std::uint32_t maxPid_ = 0;
    bool seen_ = false;               // any packet yet
    std::uint32_t headlessBlock_ = 0; // whose leader was asked for
    LogLimiter itemLog_;
};

} // namespace VX3
