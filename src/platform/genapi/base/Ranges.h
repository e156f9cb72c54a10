// Bounds and increments of numbers, and the conversions between integers and doubles that may fail.
#pragma once

#include "GenApi/Types.h"

#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

namespace GenApi_3_2 {
namespace Engine {

struct IntegerRange {
    std::int64_t min = std::numeric_limits<std::int64_t>::min();
    std::int64_t max = std::numeric_limits<std::int64_t>::max();
    std::int64_t inc = 1;
    const std::vector<std::int64_t>* validValues = nullptr;

    // True when `value` lies on the grid of increments that starts at min.
    bool IsOnGrid(std::int64_t value) const;
    // What both hold. Where their grids never meet inside the bounds this range's own grid stays.
    void Intersect(const IntegerRange& other);
};

struct FloatRange {
    double min = std::numeric_limits<double>::lowest();
    double max = std::numeric_limits<double>::max();
    std::optional<double> inc;
    const std::vector<double>* validValues = nullptr;

    void Intersect(const FloatRange& other);
};

FloatRange ToFloatRange(const IntegerRange& range);
IntegerRange ToIntegerRange(const FloatRange& range);

// Rounded half away from zero; empty when the result does not fit or `value` is no number.
std::optional<std::int64_t> RoundToInteger(double value);
// The same with the bounds of 64 bits for what does not fit.
std::int64_t ClampToInteger(double value);

} // namespace Engine
} // namespace GenApi_3_2
