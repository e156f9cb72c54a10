// Which blocks are taken when the host cannot take all. Then every block would lose packets and none would be
// whole; so whole blocks are left out instead, before they cost anything: the socket is told which block ids
// it may queue, and leaders, from which the progress of the stream is known.
//
//   open --the socket stays full, or overruns while blocks stay incomplete--> gated: runs of blocks are
//   admitted, each when the one before has been read and mended --runs that leave no backlog--> open
//
// A run is as long as its blocks come whole: longer each time while they do, half when most do not.
// Owned by the parser; its thread only.
#pragma once

#include "gev/stream/GvspPacketAddr.h"

#include <chrono>
#include <cstdint>

namespace VX3 {

class GvspAdmission {
public:
    using TimePoint = std::chrono::steady_clock::time_point;
    static constexpr std::uint32_t LongestRun = 256; // blocks

    // Blocks first .. first + count - 1.
    struct Run {
        std::uint32_t first = 0;
        std::uint32_t count = 0;
    };
    // What the socket's queue looks like.
    struct Load {
        double fill = 0;   // of its buffer
        double blocks = 0; // that wait in it, about
        bool overrun = false;
    };

    void SetOrder(const GvspBlockOrder& order) { order_ = order; }
    // Block ids start anew.
    void Restart() { Open(); }

    bool IsGated() const { return gated_; }
    bool Takes(std::uint32_t blockId) const {
        return !gated_ || Holds(run_, blockId) || Holds(previous_, blockId);
    }
    // The runs admitted, while gated; another version is another pair.
    const Run& Current() const { return run_; }
    const Run& Previous() const { return previous_; } // and what was before it
    unsigned Version() const { return version_; }

    // A leader was read, admitted or not. False when its block is left out.
    bool SeeLeader(std::uint32_t blockId);
    // A block was handed on.
    void NoteBlock(bool whole) {
        outcomes_ = outcomes_ << 1U | (whole ? 0U : 1U);
        ++handed_;
        whole_ += whole;
    }
    // At least once a millisecond; while gated before every batch.
    void Observe(const Load& load, TimePoint now);
    // A run may begin when no answers for this block, or earlier ones, are awaited.
    std::uint32_t MendedUpTo() const { return order_.Previous(run_.first); }
    // All that had come was read; `mended`: see MendedUpTo. True when a new run begins
    // with the block Current().first, and those before it are not expected any more.
    [[nodiscard]] bool BeginRun(bool mended, TimePoint now);

private:
    bool Holds(const Run& run, std::uint32_t blockId) const {
        const std::int64_t steps = order_.Distance(run.first, blockId);
        return steps >= 0 && steps < static_cast<std::int64_t>(run.count);
    }
    bool IsOverloaded(const Load& load);
    void AdaptRun();
    void Gate(const Load& load, TimePoint now);
    void Open();

    GvspBlockOrder order_;
    bool gated_ = false;
    unsigned version_ = 0;
    // One bit each of the latest observations, set where the socket overran, and where it was full besides.
    std::uint32_t overran_ = 0;
    std::uint32_t full_ = 0;
    std::uint32_t outcomes_ = 0; // one bit each of the latest blocks, set where packets are missing
    std::uint32_t handed_ = 0;   // blocks handed on since the run began
    std::uint32_t whole_ = 0;    // of those
    std::uint32_t newest_ = 0;   // block whose leader was seen; 0: none
    Run run_;
    Run previous_;
    std::uint32_t runLength_ = 0;
    std::uint32_t trial_ = 0; // length of a run after which the gate may open
    double highest_ = 0;      // fill during this run
    TimePoint opened_{};      // the gate, the last time
    TimePoint begun_{};       // this run
    TimePoint over_{};        // the run has been read since then; the clock's epoch: it has not
};

} // namespace VX3
