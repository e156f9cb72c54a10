// How formulas calculate in doubles. What has no result throws FormulaError with the given position.
#pragma once

#include "platform/genapi/formula/IntegerArithmetic.h"

#include <algorithm>
#include <cmath>

namespace GenApi_3_2 {
namespace Engine {

template <>
struct Arithmetic<double> {
    static double Negate(double value) { return -value; }
    static double Add(double left, double right) { return left + right; }
    static double Subtract(double left, double right) { return left - right; }
    static double Multiply(double left, double right) { return left * right; }
    static double Abs(double value) { return std::fabs(value); }
    static double Sgn(double value) { return std::isnan(value) ? value : (value > 0) - (value < 0); }

    static double Divide(double left, double right, std::size_t position) {
        return left / NotZero(right, position);
    }
    static double Remainder(double left, double right, std::size_t position) {
        return Defined(std::fmod(left, NotZero(right, position)), left, right, position);
    }
    static double Power(double base, double exponent, std::size_t position) {
        if (base == 0 && exponent < 0)
            throw FormulaError("zero to a negative power", position);
        return Defined(std::pow(base, exponent), base, exponent, position);
    }

    // Bit operations work on the integer part.
    static double OnBits(FormulaOp op, double left, double right, std::size_t position) {
        return static_cast<double>(Arithmetic<std::int64_t>::OnBits(op, WholePart(left, position),
                                                                    WholePart(right, position), position));
    }
    static double BitNot(double value, std::size_t position) {
        return static_cast<double>(~WholePart(value, position));
    }

    static double Sqrt(double value, std::size_t position) {
        return Defined(std::sqrt(value), value, position);
    }
    static double RoundTo(double value, double digits, std::size_t position) {
        if (std::isnan(digits))
            throw FormulaError("number of digits is not a number", position);
        const double scale = std::pow(10.0, std::trunc(std::min(std::fabs(digits), 308.0)));
        if (digits < 0)
            return std::round(value / scale) * scale;
        const double scaled = value * scale;
        return std::isfinite(scaled) ? std::round(scaled) / scale : value;
    }

    static double Function(FormulaOp op, double value, std::size_t position) {
        switch (op) {
        case FormulaOp::Trunc:
            return std::trunc(value);
        case FormulaOp::Floor:
            return std::floor(value);
        case FormulaOp::Ceil:
            return std::ceil(value);
        case FormulaOp::Round:
            return std::round(value);
        case FormulaOp::Exp:
            return std::exp(value);
        case FormulaOp::Ln:
            return std::log(Positive(value, position));
        case FormulaOp::Lg:
            return std::log10(Positive(value, position));
        default:
            return Defined(Angle(op, value), value, position);
        }
    }
    static double Function(FormulaOp, double left, double right, std::size_t) {
        return std::atan2(left, right);
    }

private:
    static double Angle(FormulaOp op, double value) {
        switch (op) {
        case FormulaOp::Sin:
            return std::sin(value);
        case FormulaOp::Cos:
            return std::cos(value);
        case FormulaOp::Tan:
            return std::tan(value);
        case FormulaOp::Asin:
            return std::asin(value);
        case FormulaOp::Acos:
            return std::acos(value);
        default:
            return std::atan(value);
        }
    }

    static std::int64_t WholePart(double value, std::size_t position) {
        constexpr double TwoTo63 = 9223372036854775808.0;
        if (!(value >= -TwoTo63 && value < TwoTo63))
            throw FormulaError("operand of a bit operation does not fit 64 bits", position);
        return static_cast<std::int64_t>(value);
    }
    // A result that is not a number although the operands are: outside the operation's domain.
    static double Defined(double result, double left, double right, std::size_t position) {
        if (std::isnan(result) && !std::isnan(left) && !std::isnan(right))
            throw FormulaError("operation has no result for this value", position);
        return result;
    }
    static double Defined(double result, double value, std::size_t position) {
        return Defined(result, value, value, position);
    }
    static double NotZero(double divisor, std::size_t position) {
        if (divisor == 0)
            throw FormulaError("division by zero", position);
        return divisor;
    }
    static double Positive(double value, std::size_t position) {
        if (value <= 0)
            throw FormulaError("logarithm of a number that is not positive", position);
        return value;
    }
};

} // namespace Engine
} // namespace GenApi_3_2
