// The image parser: blocks in flight, packet marking, placing of data, committing in block-id order.
//
//   datagram -> Process{Leader,PayLoad,Trailer} -> block marked, data placed -> resend bookkeeping told
//            -> blocks that are complete, or will not be completed, committed -> next place predicted
//
// A complete block waits for older ones only while packets of theirs may still come: until the camera has
// answered, or five requests have gone unanswered. It never waits for a given-up block. The eighth block in
// flight pushes the oldest out; while answers are on their way more may queue up behind it, so that a receive
// thread that was kept waiting does not close blocks whose packets lie in the socket already.
// Owned by the receive thread.
#pragma once

#include "gev/stream/GvspBlockRing.h"
#include "gev/stream/GvspGeometry.h"
#include "gev/stream/GvspRedirect.h"
#include "gev/stream/GvspResendParser.h"
#include "gev/stream/IGvspParser.h"
#include "gev/stream/LogLimiter.h"
#include "vx3/gev/NetParam.h"
#include "vx3/image/IImagePool.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace VX3 {

class GvspParserImageA final : public IGvspParser {
public:
    static constexpr std::uint16_t DataOffset = 64;    // pixels in the block's buffer: room for a header
    static constexpr std::uint32_t SpareBytes = 65600; // of a block's buffer beyond the payload
    static constexpr unsigned DefaultBlocks = 8;       // spare blocks when the client asks for 0
    // Blocks in flight at most while answers of the camera to resend requests are on their way, and the
    // memory they may take; without such answers MaxPlacesAhead holds.
    static constexpr std::size_t MaxAwaiting = 32;
    static constexpr std::uint64_t MaxAwaitingBytes = 0x10000000U;
    static constexpr std::size_t MaxPlacesAhead = 7;      // of a free block, before the oldest must go
    static constexpr std::size_t MaxDatagram = 16384;     // bytes
    static constexpr std::size_t MaxEarly = 64;           // packets kept until the first leader comes
    static constexpr std::chrono::milliseconds Quiet{20}; // of silence make a tail count as lost

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

    StatusCode HandlePacket(const std::uint8_t* packet, std::size_t length, WireRoom& next,
                            TimePoint now) override;
    StatusCode Reset() override { return Status::Ok; }
    StatusCode Flush() override;
    StatusCode AllocOneBuff() override;
    LiveStatistics* GetStatistics() override { return statistics_; }
    bool GetResendInfo(GvspResendInfo& info, TimePoint now) override;
    StatusCode CreateImage(std::uint32_t blockId, const Gvsp::Leader& leader, std::uint32_t packets,
                           std::uint32_t bytes, bool extended) override;
    StatusCode CommitBlock(GvspParserInfo& info) override;
    void CheckSilence(WireRoom& next, TimePoint now) override;
    std::chrono::milliseconds MaxWait() const override;

    // The socket is empty; see GvspResendParser.
    void NoteDrained(TimePoint now) { resend_.NoteDrained(now); }
    const GvspGeometry& Geometry() const { return geometry_; }
    std::size_t BlocksInFlight() const { return ring_.InFlight(); }

private:
    static constexpr unsigned int RecyclePoolType = 2;

    // One datagram, taken apart.
    struct Packet {
        Gvsp::Header header;
        GvspPacketAddr addr;
        WireBytes payload; // behind the header
        std::size_t length = 0;
        bool inPlace = false;   // received where it belongs
        bool endsBlock = false; // a trailer before the block's last slot
    };

    StatusCode Dispatch(Packet& packet, TimePoint now);
    StatusCode ProcessLeader(const Packet& packet, TimePoint now);
    StatusCode ProcessPayLoad(const Packet& packet, TimePoint now);
    StatusCode ProcessTrailer(Packet& packet, TimePoint now);
    StatusCode ProcessError(const Packet& packet);
    StatusCode FixGeometry(const Packet& packet, const Gvsp::Leader& leader);
    void Accepted(const Packet& packet, TimePoint now);
    void LearnPace(const GvspPacketAddr& addr, TimePoint now);
    void Lift(Packet& packet);
    void KeepEarly(const Packet& packet, TimePoint now);
    void ReplayEarly(TimePoint now);
    StatusCode SetPacketState(GvspParserInfo& info, const GvspPacketAddr& addr, TimePoint now);

    GvspParserInfo* GetParserInfoByBlockId(std::uint32_t blockId);
    GvspParserInfo* FindOrOpen(const GvspPacketAddr& addr, TimePoint now);
    GvspParserInfo* OpenBlock(std::uint32_t blockId, TimePoint now);
    bool PrepareBlock(GvspParserInfo& info, std::uint32_t blockId);
    bool IsPast(std::uint32_t blockId) const;
    bool WasJustCommitted(std::uint32_t blockId) const;
    bool StartsAnew(const Packet& leader, TimePoint now) const;
    std::size_t MaxInFlight() const;
    void RestartBlocks();
    WireRoom AdjustSettingBlock();

    bool IsComplete(const GvspParserInfo& info) const { return info.packetsReceived == geometry_.packets; }
    void CommitWhatCan();
    void CommitHead();
    void CountHead(const GvspParserInfo& info, std::uint32_t missing);
    StatusCode AddSpareBlock();
    void FillSpares(unsigned int count);

    const GvspImageCallback callback_;
    const GevStreamParam param_;
    const std::shared_ptr<IImagePool> pool_;
    const Options options_;
    LiveStatistics ownStatistics_;
    LiveStatistics* const statistics_;

    GvspResendParser resend_;
    GvspBlockRing ring_;
    GvspBlockOrder order_;
    GvspGeometry geometry_;
    GvspRedirect redirect_;
    GvspParserInfo* current_ = nullptr; // the block found last
    ImageInfo header_;                  // what every block's image starts with
    std::uint32_t blockBytes_;          // payload bytes that every block can hold
    std::size_t spareTarget_ = 0;       // blocks the ring is kept at
    std::uint32_t blockPackets_;        // packet slots that a new block's image gets
    std::uint32_t nextBufferId_ = 1;
    std::size_t leaderLength_ = 0; // of the datagrams; 0: none yet
    std::size_t trailerLength_ = 0;

    std::array<std::uint32_t, 3> committed_{}; // latest block ids; 0: none
    std::size_t committedNext_ = 0;
    std::uint32_t newest_ = 0;     // latest committed block; 0: none
    std::size_t complete_ = 0;     // blocks in flight that have every packet
    std::uint64_t closedSeen_ = 0; // of the resend bookkeeping

    GvspPacketAddr lastAddr_;
    TimePoint lastPacket_{};
    std::chrono::microseconds pace_{0};            // longest recent wait between neighbours of one block
    std::vector<std::uint8_t> lifted_;             // a datagram taken out of an image
    std::vector<std::vector<std::uint8_t>> early_; // datagrams without a leader yet
    LogLimiter warnings_;
};

} // namespace VX3
