#include "platform/genapi/Formula.h"
#include "platform/genapi/FormulaArithmetic.h"

#include <limits>

namespace GenApi_3_2 {
namespace Engine {

namespace {

constexpr std::int64_t Lowest = std::numeric_limits<std::int64_t>::min();

std::int64_t Wrap(std::uint64_t bits) {
    return static_cast<std::int64_t>(bits);
}
std::uint64_t Bits(std::int64_t value) {
    return static_cast<std::uint64_t>(value);
}
std::int64_t Negated(std::int64_t value) {
    return Wrap(0 - Bits(value));
}

std::int64_t Divide(std::int64_t left, std::int64_t right, std::size_t position) {
    if (right == 0)
        throw FormulaError("division by zero", position);
    if (left == Lowest && right == -1)
        throw FormulaError("quotient does not fit 64 bits", position);
    return left / right;
}

std::int64_t Remainder(std::int64_t left, std::int64_t right, std::size_t position) {
    if (right == 0)
        throw FormulaError("remainder by zero", position);
    return right == -1 ? 0 : left % right;
}

// Powers with a negative exponent are truncated towards zero as quotients are.
std::int64_t Power(std::int64_t base, std::int64_t exponent, std::size_t position) {
    if (exponent < 0) {
        if (base == 0)
            throw FormulaError("zero to a negative power", position);
        if (base == 1 || (base == -1 && exponent % 2 == 0))
            return 1;
        return base == -1 ? -1 : 0;
    }
    std::uint64_t result = 1;
    std::uint64_t factor = Bits(base);
    for (; exponent > 0; exponent >>= 1, factor *= factor)
        if (exponent & 1)
            result *= factor;
    return Wrap(result);
}

unsigned ShiftCount(std::int64_t count, std::size_t position) {
    if (count < 0 || count > 63)
        throw FormulaError("shift by " + std::to_string(count) + " bits", position);
    return static_cast<unsigned>(count);
}

std::int64_t ShiftRight(std::int64_t value, unsigned count) {
    return value < 0 ? ~Wrap(Bits(~value) >> count) : Wrap(Bits(value) >> count);
}

// The largest integer whose square is not above the value.
std::int64_t Sqrt(std::int64_t value, std::size_t position) {
    if (value < 0)
        throw FormulaError("square root of a negative number", position);
    std::uint64_t rest = Bits(value);
    std::uint64_t root = 0;
    for (std::uint64_t bit = std::uint64_t{1} << 62; bit != 0; bit >>= 2) {
        if (rest >= root + bit) {
            rest -= root + bit;
            root = (root >> 1) + bit;
        } else {
            root >>= 1;
        }
    }
    return Wrap(root);
}

// Digits behind the point change nothing; -n rounds to the n-th power of ten, halves away from zero.
std::int64_t RoundTo(std::int64_t value, std::int64_t digits, std::size_t position) {
    if (digits >= 0)
        return value;
    if (digits < -18)
        return 0;
    const std::int64_t unit = Power(10, -digits, position);
    const std::int64_t rest = value % unit;
    const std::int64_t down = value - rest;
    if (rest >= unit / 2)
        return Wrap(Bits(down) + Bits(unit));
    return rest <= -(unit / 2) ? Wrap(Bits(down) - Bits(unit)) : down;
}

} // namespace

std::int64_t ApplyOne(FormulaOp op, std::int64_t value, std::size_t position) {
    switch (op) {
    case FormulaOp::Negate:
        return Negated(value);
    case FormulaOp::BitNot:
        return ~value;
    case FormulaOp::LogicalNot:
        return value == 0;
    case FormulaOp::ToBoolean:
        return value != 0;
    case FormulaOp::Abs:
        return value < 0 ? Negated(value) : value;
    case FormulaOp::Sgn:
        return (value > 0) - (value < 0);
    case FormulaOp::Sqrt:
        return Sqrt(value, position);
    default:
        return value; // TRUNC, FLOOR, CEIL, ROUND
    }
}

std::int64_t ApplyTwo(FormulaOp op, std::int64_t left, std::int64_t right, std::size_t position) {
    switch (op) {
    case FormulaOp::Add:
        return Wrap(Bits(left) + Bits(right));
    case FormulaOp::Subtract:
        return Wrap(Bits(left) - Bits(right));
    case FormulaOp::Multiply:
        return Wrap(Bits(left) * Bits(right));
    case FormulaOp::Divide:
        return Divide(left, right, position);
    case FormulaOp::Remainder:
        return Remainder(left, right, position);
    case FormulaOp::Power:
        return Power(left, right, position);
    case FormulaOp::BitAnd:
        return left & right;
    case FormulaOp::BitOr:
        return left | right;
    case FormulaOp::BitXor:
        return left ^ right;
    case FormulaOp::ShiftLeft:
        return Wrap(Bits(left) << ShiftCount(right, position));
    case FormulaOp::ShiftRight:
        return ShiftRight(left, ShiftCount(right, position));
    case FormulaOp::Equal:
        return left == right;
    case FormulaOp::NotEqual:
        return left != right;
    case FormulaOp::Less:
        return left < right;
    case FormulaOp::LessEqual:
        return left <= right;
    case FormulaOp::Greater:
        return left > right;
    case FormulaOp::GreaterEqual:
        return left >= right;
    case FormulaOp::RoundTo:
        return RoundTo(left, right, position);
    default:
        throw FormulaError("operation has no integer form", position);
    }
}

} // namespace Engine
} // namespace GenApi_3_2
