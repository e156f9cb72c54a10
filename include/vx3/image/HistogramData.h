// One channel's histogram: counts in a pooled buffer that copies share.
#pragma once

#include "vx3/image/StatisticsInfo.h"

#include <cstdint>
#include <memory>

namespace VX3 {

class IBuffer;

class VX3_API HistogramData {
public:
    // At most 65536 bins, zeroed; 0 bins take no buffer and make an invalid histogram.
    explicit HistogramData(unsigned int bins);

    unsigned int Bins() const { return bins_; }
    const std::uint32_t* Data() const;
    std::uint32_t* Data();
    bool IsValid() const { return bins_ != 0; }
    // Statistics of bins min(from, to) <= i < max(from, to).
    StatisticsInfo CreateStatistics(unsigned int from, unsigned int to) const;

private:
    std::shared_ptr<IBuffer> buffer_;
    unsigned int bins_;
};

} // namespace VX3
