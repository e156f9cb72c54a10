#include "vx3/image/HistogramData.h"

#include "image/BufferCreator.h"
#include "image/DefaultPools.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace VX3 {

namespace {
constexpr unsigned int MostBins = 65536;
constexpr unsigned int BufferBytes = MostBins * sizeof(std::uint32_t);
} // namespace

HistogramData::HistogramData(unsigned int bins) : bins_(std::min(bins, MostBins)) {
    if (bins_ == 0)
        return;
    buffer_ = BufferCreator::Create(BufferBytes, HistogramBufferPool());
    std::memset(buffer_->Pointer(), 0, bins_ * sizeof(std::uint32_t));
}

const std::uint32_t* HistogramData::Data() const {
    return buffer_ == nullptr ? nullptr : reinterpret_cast<const std::uint32_t*>(buffer_->Pointer());
}

std::uint32_t* HistogramData::Data() {
    return const_cast<std::uint32_t*>(static_cast<const HistogramData*>(this)->Data());
}

StatisticsInfo HistogramData::CreateStatistics(unsigned int from, unsigned int to) const {
    StatisticsInfo result;
    if (!IsValid())
        return result;
    unsigned int low = std::min(from, to);
    low = low >= bins_ ? 0 : low;
    const unsigned int high = std::min(std::max(from, to), bins_);
    const std::uint32_t* counts = Data();
    std::uint64_t count = 0;
    std::uint64_t sum = 0;
    std::uint64_t squares = 0;
    for (std::uint64_t i = low; i < high; ++i) {
        if (counts[i] == 0)
            continue;
        result.min = count == 0 ? static_cast<std::uint32_t>(i) : result.min;
        result.max = static_cast<std::uint32_t>(i);
        count += counts[i];
        sum += i * counts[i];
        squares += i * i * counts[i];
    }
    if (count == 0) {
        result.min = 0;
        return result;
    }
    result.count = static_cast<std::uint32_t>(count);
    result.mean = static_cast<double>(sum) / static_cast<double>(count);
    // Rounding may leave a little less than nothing.
    const double spread =
        std::max(0.0, static_cast<double>(squares) - static_cast<double>(sum) * result.mean);
    result.stddev = std::sqrt(count == 1 ? spread : spread / static_cast<double>(count - 1));
    return result;
}

} // namespace VX3
