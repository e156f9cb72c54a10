// The way out of the parser: writes a block's fate into its image, counts it, hands it to the client's
// callback. Owned by the parser; its thread only, but the counters.
#pragma once

#include "gev/stream/GvspParserInfo.h"
#include "gev/stream/IGvspParser.h"
#include "gev/stream/LogLimiter.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace VX3 {

class GvspDelivery {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    // `statistics`: where to count; null: a record of its own. Must outlive the delivery.
    GvspDelivery(GvspImageCallback callback, LiveStatistics* statistics, bool resendSupported);

    // A block in flight is about to go with `missing` packets lacking; `inFlight` blocks, itself included.
    void Finish(const GvspParserInfo& info, std::uint32_t missing, std::size_t inFlight, TimePoint now);
    // `lostBlocks` of the stream so far.
    void Count(const GvspParserInfo& info, std::uint32_t missing, std::uint64_t lostBlocks);
    // A block that was not taken, as the host could not keep up.
    void CountLeftOut() { LiveStatistics::Add(statistics_->leftOutBlocks); }
    std::uint64_t LeftOut() const { return statistics_->leftOutBlocks.load(std::memory_order_relaxed); }
    void Hand(std::unique_ptr<IImage> image) const;
    LiveStatistics* Statistics() { return statistics_; }

private:
    const GvspImageCallback callback_;
    LiveStatistics own_;
    LiveStatistics* const statistics_;
    const bool resendSupported_;
    LogLimiter warnings_;
};

} // namespace VX3
