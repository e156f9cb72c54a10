// The blocks in flight: finds them, makes room for new ones, and decides when each is handed on.
//
// A complete block waits for older ones only while packets of theirs may still come: until the camera has
// answered, or five requests have gone unanswered. It never waits for a given-up block. The eighth block in
// flight pushes the oldest out; while answers are on their way more may queue up behind it, so that a receive
// thread that was kept waiting does not close blocks whose packets lie in the socket already.
// Owned by the parser, like what it is made of; its thread only.
#pragma once

#include "gev/stream/GvspAdmission.h"
#include "gev/stream/GvspBlockHistory.h"
#include "gev/stream/GvspBlockStore.h"
#include "gev/stream/GvspDelivery.h"
#include "gev/stream/GvspResendParser.h"

#include <cstddef>
#include <cstdint>

namespace VX3 {

class GvspBlockQueue {
public:
    using TimePoint = std::chrono::steady_clock::time_point;
    // Blocks in flight at most while answers of the camera to resend requests are on their way, and the
    // memory they may take; without such answers MaxPlacesAhead holds.
    static constexpr std::size_t MaxAwaiting = 32;
    static constexpr std::uint64_t MaxAwaitingBytes = 0x10000000U;
    static constexpr std::size_t MaxPlacesAhead = 7; // of a free block, before the oldest must go

    GvspBlockQueue(const GvspGeometry& geometry, GvspBlockStore& store, GvspResendParser& resend,
                   GvspDelivery& delivery, GvspAdmission& admission)
        : geometry_(geometry), store_(store), resend_(resend), delivery_(delivery), admission_(admission) {}

    void SetOrder(const GvspBlockOrder& order);
    const GvspBlockHistory& History() const { return history_; }
    std::size_t InFlight() const { return store_.Ring().InFlight(); }
    // Blocks, while the oldest of them awaits answers.
    std::size_t MaxInFlight() const;

    // Null when it is not in flight.
    GvspParserInfo* Find(std::uint32_t blockId) {
        if (current_ == nullptr || current_->blockId != blockId)
            current_ = store_.Ring().Find(blockId);
        return current_;
    }
    // A block that is not in flight; null (logged) when there is no room for it.
    GvspParserInfo* Open(std::uint32_t blockId, TimePoint now);
    GvspParserInfo* FindOrOpen(std::uint32_t blockId, TimePoint now) {
        GvspParserInfo* info = Find(blockId);
        return info != nullptr ? info : Open(blockId, now);
    }
    // A packet of it was received.
    void Mark(GvspParserInfo& info, std::uint32_t packetId) {
        if (info.Mark(packetId) && IsComplete(info))
            ++complete_;
    }

    // After each packet: hands on what can go, when there may be something.
    void Advance(TimePoint now) {
        if (complete_ != 0 &&
            (closedSeen_ != resend_.Closed() || (current_ != nullptr && IsComplete(*current_))))
            CommitWhatCan(now);
    }
    // Complete blocks, oldest first, with the given-up ones before them.
    void CommitWhatCan(TimePoint now);
    // Every block that nothing more will come of: the stream is silent.
    void CommitGivenUp(TimePoint now);
    // That block and those before it; WrongState when it is not in flight.
    [[nodiscard]] StatusCode CommitUpTo(const GvspParserInfo& info, TimePoint now);
    // Every block; ids start anew then.
    void Restart(TimePoint now);
    // Every block: those that follow have another geometry.
    void HandOnAll(TimePoint now);
    // Later than every block in flight.
    bool IsNewest(std::uint32_t blockId) const {
        return InFlight() == 0 || order_.Distance(store_.Ring().Newest(), blockId) > 0;
    }
    // Hands on what is complete and drops the rest.
    void Flush(TimePoint now);

private:
    bool IsComplete(const GvspParserInfo& info) const { return info.packetsReceived == geometry_.packets; }
    bool MakeRoom(std::uint32_t blockId, TimePoint now);
    void CommitHead(TimePoint now);

    const GvspGeometry& geometry_;
    GvspBlockStore& store_;
    GvspResendParser& resend_;
    GvspDelivery& delivery_;
    GvspAdmission& admission_;
    GvspBlockOrder order_;
    GvspBlockHistory history_;
    GvspParserInfo* current_ = nullptr; // the block found last
    std::size_t complete_ = 0;          // blocks in flight that have every packet
    std::uint64_t closedSeen_ = 0;      // of the resend bookkeeping
    LogLimiter warnings_;
};

} // namespace VX3
