#include "platform/genapi/base/Ranges.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

namespace GenApi_3_2 {
namespace Engine {
namespace {

constexpr double TwoTo63 = 9223372036854775808.0;
constexpr std::int64_t Most = std::numeric_limits<std::int64_t>::max();

// Unsigned differences are exact over the whole of 64 bits.
std::uint64_t Distance(std::int64_t from, std::int64_t to) {
    return static_cast<std::uint64_t>(to) - static_cast<std::uint64_t>(from);
}

// The lowest value from `low` on that is a multiple of `step` away from `point`.
std::optional<std::int64_t> FirstOnGrid(std::int64_t point, std::int64_t step, std::int64_t low) {
    const auto stride = static_cast<std::uint64_t>(step);
    std::uint64_t up = 0;
    if (low <= point)
        up = Distance(low, point) % stride;
    else if (const std::uint64_t rest = Distance(point, low) % stride; rest != 0)
        up = stride - rest;
    if (up > Distance(low, Most))
        return std::nullopt;
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(low) + up);
}

// The number whose product with `value` leaves 1 when divided by `modulus`; the two share no divisor.
std::int64_t Inverse(std::int64_t value, std::int64_t modulus) {
    std::int64_t previous = modulus, current = value % modulus, before = 0, inverse = 1;
    while (current > 1) {
        const std::int64_t times = previous / current;
        previous = std::exchange(current, previous % current);
        before = std::exchange(inverse, before - times * inverse);
    }
    return inverse < 0 ? inverse + modulus : inverse;
}

// A value on the grids of both; empty where they never meet, or the steps are beyond any device's.
std::optional<std::int64_t> MeetingPoint(const IntegerRange& one, const IntegerRange& other) {
    constexpr std::int64_t MaxStep = std::numeric_limits<std::int32_t>::max();
    if (one.inc > MaxStep || other.inc > MaxStep)
        return std::nullopt;
    const auto stride = static_cast<std::uint64_t>(other.inc);
    const std::uint64_t apart = one.min <= other.min
                                    ? Distance(one.min, other.min) % stride
                                    : (stride - Distance(other.min, one.min) % stride) % stride;
    const std::int64_t divisor = std::gcd(one.inc, other.inc);
    const auto wanted = static_cast<std::int64_t>(apart);
    if (wanted % divisor != 0)
        return std::nullopt;
    const std::int64_t modulus = other.inc / divisor;
    if (modulus == 1)
        return one.min;
    const std::int64_t steps = wanted / divisor * Inverse(one.inc / divisor, modulus) % modulus;
    if (static_cast<std::uint64_t>(steps * one.inc) > Distance(one.min, Most))
        return std::nullopt;
    return one.min + steps * one.inc;
}

} // namespace

bool IntegerRange::IsOnGrid(std::int64_t value) const {
    if (inc <= 1)
        return true;
    return Distance(min, value) % static_cast<std::uint64_t>(inc) == 0;
}

void IntegerRange::Intersect(const IntegerRange& other) {
    IntegerRange mine = *this, theirs = other;
    mine.inc = std::max<std::int64_t>(inc, 1);
    theirs.inc = std::max<std::int64_t>(other.inc, 1);
    const std::int64_t low = std::max(min, other.min);
    max = std::min(max, other.max);
    if (const auto point = MeetingPoint(mine, theirs)) {
        const std::int64_t step = mine.inc / std::gcd(mine.inc, theirs.inc) * theirs.inc;
        const auto first = FirstOnGrid(*point, step, low);
        if (first && *first <= max) {
            min = *first;
            inc = step;
            return;
        }
    }
    min = FirstOnGrid(mine.min, mine.inc, low).value_or(low);
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
