#include "gev/stream/GvspAdmission.h"

#include <algorithm>
#include <cmath>

namespace VX3 {

namespace {

constexpr std::uint32_t Ticks = 0xFFF; // observations that are remembered: 12 ...
constexpr unsigned ManyFull = 6;       // ... of which so many with a full socket show overload ...
constexpr unsigned SomeOverran = 3;    // ... or so many overruns, where so many of the
constexpr unsigned ManyBroken = 12;    // latest 32 blocks are not whole
constexpr double DeepBacklog = 16;     // blocks in the queue: answers come behind them, too late for most
constexpr std::uint32_t FirstRun = 4;
constexpr std::uint32_t Earlier = 64; // blocks that may still be in flight
constexpr double HalfFull = 0.5;
// A run as long as this one that leaves no backlog opens the gate. Each time the gate had to be closed soon
// after, the next one has to be twice as long.
constexpr std::uint32_t ShortestTrial = 8;
constexpr std::chrono::milliseconds Soon{250};
// How long a run may be mended before the next one begins.
constexpr std::chrono::milliseconds MendTime{10};
// A run of which no end is heard: the stream has stopped, or sends no leaders.
constexpr std::chrono::milliseconds LongestQuiet{500};

unsigned BitsIn(std::uint32_t bits) {
    unsigned count = 0;
    for (; bits != 0; bits &= bits - 1)
        ++count;
    return count;
}

} // namespace

bool GvspAdmission::SeeLeader(std::uint32_t blockId) {
    if (newest_ == 0 || order_.Distance(newest_, blockId) > 0)
        newest_ = blockId;
    return Takes(blockId);
}

bool GvspAdmission::IsOverloaded(const Load& load) {
    const bool full = (load.overrun && load.fill >= HalfFull) || load.blocks > DeepBacklog;
    overran_ = (overran_ << 1U | (load.overrun ? 1U : 0U)) & Ticks;
    full_ = (full_ << 1U | (full ? 1U : 0U)) & Ticks;
    return BitsIn(full_) >= ManyFull || (BitsIn(overran_) >= SomeOverran && BitsIn(outcomes_) >= ManyBroken);
}

void GvspAdmission::Observe(const Load& load, TimePoint now) {
    highest_ = std::max(highest_, load.fill);
    if (gated_ && now - begun_ >= LongestQuiet)
        Open();
    else if (!gated_ && IsOverloaded(load) && newest_ != 0)
        Gate(load, now);
}

// What lies in the queue is taken as it is.
void GvspAdmission::Gate(const Load& load, TimePoint now) {
    gated_ = true;
    ++version_;
    const auto queued = static_cast<std::uint32_t>(std::min(std::ceil(load.blocks), 64.0));
    previous_ = {};
    run_ = {order_.Back(newest_, Earlier), Earlier + 1 + queued};
    runLength_ = FirstRun;
    handed_ = whole_ = 0;
    trial_ =
        opened_ != TimePoint{} && now - opened_ < Soon ? std::min(trial_ * 2, LongestRun) : ShortestTrial;
    highest_ = 0;
    begun_ = now;
    over_ = {};
}

void GvspAdmission::Open() {
    version_ += gated_;
    gated_ = false;
    overran_ = full_ = outcomes_ = 0;
    newest_ = 0;
}

void GvspAdmission::AdaptRun() {
    if (handed_ < 2)
        return;
    if (whole_ * 8 >= handed_ * 7)
        runLength_ = std::min(runLength_ + 1 + runLength_ / 8, LongestRun);
    else if (whole_ * 2 < handed_)
        runLength_ = std::max(runLength_ / 2, 1U);
    handed_ = whole_ = 0;
}

bool GvspAdmission::BeginRun(bool mended, TimePoint now) {
    if (!gated_ || order_.Distance(run_.first, newest_) < static_cast<std::int64_t>(run_.count))
        return false;
    if (over_ == TimePoint{})
        over_ = now;
    // Its last answers may come while the next run is received.
    if (!mended && highest_ >= HalfFull &&
        now - over_ < std::min<TimePoint::duration>(MendTime, (over_ - begun_) / 2))
        return false;
    if (runLength_ >= trial_ && highest_ < HalfFull) {
        run_ = {order_.Next(newest_), 0};
        opened_ = now;
        Open();
        return true;
    }
    AdaptRun();
    // Left out are those that begin meanwhile; of earlier ones nothing but answers comes any more.
    previous_ = {order_.Back(run_.first, Earlier), Earlier + run_.count};
    run_ = {order_.Next(newest_), runLength_};
    highest_ = 0;
    begun_ = now;
    over_ = {};
    ++version_;
    return true;
}

} // namespace VX3
