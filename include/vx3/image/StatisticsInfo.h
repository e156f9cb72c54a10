// Minimum, maximum, count, mean and standard deviation of a histogram or a profile.
#pragma once

#include "vx3/core/Export.h"

#include <cstdint>

namespace VX3 {

struct VX3_API StatisticsInfo {
    std::uint32_t min = 0xFFFFFFFFU; // unset
    std::uint32_t max = 0;
    std::uint32_t count = 0;
    double mean = 0.0;
    double stddev = 0.0;
    double reservedA = -1.0; // kept for the record's layout, never changed
    double reservedB = 0.0;

    bool IsValid() const { return min != 0xFFFFFFFFU; }
};

} // namespace VX3
