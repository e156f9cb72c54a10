// One channel's profile along a line or a column: u32 samples, or f64 means, in a pooled buffer that copies
// share.
#pragma once

#include "vx3/image/StatisticsInfo.h"

#include <cstdint>
#include <memory>

namespace VX3 {

class IBuffer;

// 0 along one line; any other value along one column.
enum class ProfileType : std::uint32_t { Horizontal = 0, Vertical = 1 };

class VX3_API ProfileData {
public:
    ProfileData(unsigned int size, bool isFloat, bool zero);

    unsigned int Size() const { return size_; }
    bool IsFloat() const { return isFloat_; }
    const std::uint32_t* Data() const;
    std::uint32_t* Data();
    const double* FloatData() const;
    double* FloatData();
    bool IsVaid() const { return size_ != 0; }
    // Statistics of the entries from..to (either order, clipped) taken as samples: min and max are the
    // rounded smallest and largest value, count their number.
    StatisticsInfo CreateStatistics(unsigned int from, unsigned int to) const;

private:
    std::shared_ptr<IBuffer> buffer_;
    unsigned int size_;
    bool isFloat_;
};

} // namespace VX3
