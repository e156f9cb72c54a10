// How formulas calculate in 64-bit integers. Sums and products wrap around; what has no result throws
// FormulaError with the given position.
#pragma once

#include "platform/genapi/formula/Formula.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>

namespace GenApi_3_2 {
namespace Engine {

template <class T>
struct Arithmetic;

template <>
struct Arithmetic<std::int64_t> {
    static std::int64_t Wrap(std::uint64_t bits) { return static_cast<std::int64_t>(bits); }
    static std::uint64_t Bits(std::int64_t value) { return static_cast<std::uint64_t>(value); }

    static std::int64_t Negate(std::int64_t value) { return Wrap(0 - Bits(value)); }
    static std::int64_t Add(std::int64_t left, std::int64_t right) { return Wrap(Bits(left) + Bits(right)); }
    static std::int64_t Subtract(std::int64_t left, std::int64_t right) {
        return Wrap(Bits(left) - Bits(right));
    }
    static std::int64_t Multiply(std::int64_t left, std::int64_t right) {
        return Wrap(Bits(left) * Bits(right));
    }
    static std::int64_t Abs(std::int64_t value) { return value < 0 ? Negate(value) : value; }
    static std::int64_t Sgn(std::int64_t value) { return (value > 0) - (value < 0); }

    static std::int64_t Divide(std::int64_t left, std::int64_t right, std::size_t position) {
        if (right == 0)
            throw FormulaError("division by zero", position);
        if (left == std::numeric_limits<std::int64_t>::min() && right == -1)
            throw FormulaError("quotient does not fit 64 bits", position);
        return left / right;
    }

    static std::int64_t Remainder(std::int64_t left, std::int64_t right, std::size_t position) {
        if (right == 0)
            throw FormulaError("remainder by zero", position);
        return right == -1 ? 0 : left % right;
    }

    // Powers with a negative exponent are truncated towards zero as quotients are.
    static std::int64_t Power(std::int64_t base, std::int64_t exponent, std::size_t position) {
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

    static std::int64_t OnBits(FormulaOp op, std::int64_t left, std::int64_t right, std::size_t position) {
        switch (op) {
        case FormulaOp::BitAnd:
            return left & right;
        case FormulaOp::BitOr:
            return left | right;
        case FormulaOp::BitXor:
            return left ^ right;
        case FormulaOp::ShiftLeft:
            return Wrap(Bits(left) << ShiftCount(right, position));
        default:
            return ShiftRight(left, ShiftCount(right, position));
        }
    }

    static std::int64_t BitNot(std::int64_t value, std::size_t) { return ~value; }

    // The largest integer whose square is not above the value.
    static std::int64_t Sqrt(std::int64_t value, std::size_t position) {
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
    static std::int64_t RoundTo(std::int64_t value, std::int64_t digits, std::size_t position) {
        if (digits >= 0)
            return value;
        if (digits < -18)
            return 0;
        const std::int64_t unit = Power(10, -digits, position);
        const std::int64_t rest = value % unit;
        const std::int64_t down = value - rest;
        if (rest >= unit / 2)
            return Add(down, unit);
        return rest <= -(unit / 2) ? Subtract(down, unit) : down;
    }

    // TRUNC, FLOOR, CEIL and ROUND; the compiler refuses what has no integer form.
    static std::int64_t Function(FormulaOp, std::int64_t value, std::size_t) { return value; }
    static std::int64_t Function(FormulaOp, std::int64_t, std::int64_t, std::size_t position) {
        throw FormulaError("operation has no integer form", position);
    }

private:
    static unsigned ShiftCount(std::int64_t count, std::size_t position) {
        if (count < 0 || count > 63)
            throw FormulaError("shift by " + std::to_string(count) + " bits", position);
        return static_cast<unsigned>(count);
    }
    static std::int64_t ShiftRight(std::int64_t value, unsigned count) {
        return value < 0 ? ~Wrap(Bits(~value) >> count) : Wrap(Bits(value) >> count);
    }
};

} // namespace Engine
} // namespace GenApi_3_2
