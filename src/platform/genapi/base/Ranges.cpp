#include "platform/genapi/base/Ranges.h"

#include <algorithm>
#include <cmath>

namespace GenApi_3_2 {
namespace Engine {
namespace {

constexpr double TwoTo63 = 9223372036854775808.0;

} // namespace

bool IntegerRange::IsOnGrid(std::int64_t value) const {
    if (inc <= 1)
        return true;
    // Unsigned differences are exact over the whole of 64 bits.
    const std::uint64_t distance = static_cast<std::uint64_t>(value) - static_cast<std::uint64_t>(min);
    return distance % static_cast<std::uint64_t>(inc) == 0;
}

void IntegerRange::Intersect(const IntegerRange& other) {
    min = std::max(min, other.min);
    max = std::min(max, other.max);
    inc = std::max(inc, other.inc);
}

void FloatRange::Intersect(const FloatRange& other) {
    min = std::max(min, other.min);
    max = std::min(max, other.max);
}

FloatRange ToFloatRange(const IntegerRange& range) {
    FloatRange result;
    result.min = static_cast<double>(range.min);
    result.max = static_cast<double>(range.max);
    result.inc = static_cast<double>(range.inc);
    return result;
}

IntegerRange ToIntegerRange(const FloatRange& range) {
    IntegerRange result;
    result.min = ClampToInteger(std::ceil(range.min));
    result.max = ClampToInteger(std::floor(range.max));
    if (range.inc)
        result.inc = std::max<std::int64_t>(1, ClampToInteger(*range.inc));
    return result;
}

std::optional<std::int64_t> RoundToInteger(double value) {
    const double rounded = std::round(value);
    if (!(rounded >= -TwoTo63 && rounded < TwoTo63))
        return std::nullopt;
    return static_cast<std::int64_t>(rounded);
}

std::int64_t ClampToInteger(double value) {
    if (const auto exact = RoundToInteger(value))
        return *exact;
    return value < 0 ? std::numeric_limits<std::int64_t>::min() : std::numeric_limits<std::int64_t>::max();
}

} // namespace Engine
} // namespace GenApi_3_2
