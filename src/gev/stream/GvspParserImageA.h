// The image parser: takes a stream's datagrams one by one and sees that each lands where it belongs.
//
//   datagram -> GvspPacket -> fits the GvspStreamForm? -> Process{Leader,PayLoad,Trailer}: block found or
//   opened in the GvspBlockQueue, data placed, packet marked -> GvspResendParser told -> what can go goes
//   through GvspDelivery -> GvspRedirect: the next place predicted
//
// Owned by the receive thread.
#pragma once

#include "gev/stream/GvspAdmission.h"
#include "gev/stream/GvspBlockQueue.h"
#include "gev/stream/GvspBlockStore.h"
#include "gev/stream/GvspDelivery.h"
#include "gev/stream/GvspEarlyPackets.h"
#include "gev/stream/GvspPace.h"
#include "gev/stream/GvspRedirect.h"
#include "gev/stream/GvspResendParser.h"
#include "gev/stream/GvspStreamForm.h"
#include "gev/stream/IGvspParser.h"
#include "gev/stream/LogLimiter.h"
#include "vx3/gev/NetParam.h"
#include "vx3/image/IImagePool.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace VX3 {

class GvspParserImageA final : public IGvspParser {
public:
    static constexpr std::size_t MaxAwaiting = GvspBlockQueue::MaxAwaiting;
    static constexpr std::size_t MaxDatagram = 16384; // bytes
    static constexpr std::size_t MaxWindow = 4096;    // packets asked for and not yet answered

    struct Options {
        // Predict places for datagrams; pointless where the receiver cannot use them.
        bool redirect = true;
        // Where to count; null: the parser's own record. Must outlive the parser.
        LiveStatistics* statistics = nullptr;
    };

    GvspParserImageA(GvspImageCallback callback, const GevStreamParam& param,
                     std::shared_ptr<IImagePool> pool, unsigned int count, Options options);
    GvspParserImageA(GvspImageCallback callback, const GevStreamParam& param,
                     std::shared_ptr<IImagePool> pool, unsigned int count)
        : GvspParserImageA(std::move(callback), param, std::move(pool), count, Options()) {}
    GvspParserImageA(const GvspParserImageA&) = delete;
    GvspParserImageA& operator=(const GvspParserImageA&) = delete;

    StatusCode HandlePacket(const std::uint8_t* packet, std::size_t length, WireRoom& next,
                            TimePoint now) override;
    StatusCode Reset() override { return Status::Ok; }
    StatusCode Flush() override;
    StatusCode AllocOneBuff() override { return store_.Extend(); }
    LiveStatistics* GetStatistics() override { return delivery_.Statistics(); }
    bool GetResendInfo(GvspResendInfo& info, TimePoint now) override;
    StatusCode CreateImage(std::uint32_t blockId, const Gvsp::Leader& leader, std::uint32_t packets,
                           std::uint32_t bytes, bool extended) override {
        return store_.Shape(blockId, leader, packets, bytes, extended);
    }
    StatusCode CommitBlock(GvspParserInfo& info) override;
    void CheckSilence(WireRoom& next, TimePoint now) override;
    std::chrono::milliseconds MaxWait() const override;

    // Datagrams that the socket's buffer holds: half of them may be answers to what was asked for again.
    void SetSocketRoom(std::size_t datagrams) {
        resend_.SetLargestWindow(static_cast<std::uint32_t>(std::min<std::size_t>(datagrams / 2, MaxWindow)));
    }
    // The socket dropped datagrams since the last time.
    void NoteOverrun(TimePoint now) { resend_.NoteOverrun(now); }
    // What the socket's queue looks like; see GvspAdmission.
    void Observe(const GvspAdmission::Load& load, TimePoint now);
    const GvspAdmission& Admission() const { return admission_; }
    bool IsGated() const { return admission_.IsGated(); }
    // The socket is empty; see GvspResendParser and GvspAdmission.
    void NoteDrained(TimePoint now);
    const GvspGeometry& Geometry() const { return form_.Geometry(); }
    std::size_t BlocksInFlight() const { return queue_.InFlight(); }

private:
    void Accepted(const GvspPacket& packet, TimePoint now);
    StatusCode Dispatch(GvspPacket& packet, TimePoint now);
    bool IsAdmitted(const GvspPacket& packet, TimePoint now);
    StatusCode ProcessLeader(const GvspPacket& packet, TimePoint now);
    StatusCode ProcessPayLoad(const GvspPacket& packet, TimePoint now);
    StatusCode ProcessTrailer(GvspPacket& packet, TimePoint now);
    StatusCode ProcessError(const GvspPacket& packet, TimePoint now);
    StatusCode AdoptShape(const GvspPacket& packet, const Gvsp::Leader& leader, TimePoint now);
    StatusCode ShapeOf(const GvspPacket& packet, const Gvsp::Leader& leader, GvspGeometry& geometry);
    void FixGeometry(const GvspPacket& packet, const GvspGeometry& geometry, TimePoint now);
    StatusCode SetPacketState(GvspParserInfo& info, const GvspPacketAddr& addr, TimePoint now);
    void KeepEarly(const GvspPacket& packet, TimePoint now);
    void ReplayEarly(TimePoint now);
    void Lift(GvspPacket& packet);
    void LogJustCommitted(const char* what, std::uint32_t blockId, TimePoint now);
    bool StartsAnew(const GvspPacket& leader, TimePoint now) const;
    WireRoom AdjustSettingBlock();

    const GevStreamParam param_;
    const bool mayRedirect_;

    GvspStreamForm form_;
    GvspAdmission admission_;
    GvspPace pace_;
    GvspResendParser resend_;
    GvspBlockStore store_;
    GvspDelivery delivery_;
    GvspBlockQueue queue_{form_.Geometry(), store_, resend_, delivery_, admission_};
    GvspRedirect redirect_;
    GvspEarlyPackets early_;
    std::vector<std::uint8_t> lifted_; // a datagram taken out of an image
    LogLimiter warnings_;
};

} // namespace VX3
