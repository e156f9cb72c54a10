#include "platform/genapi/Formula.h"
#include "platform/genapi/FormulaArithmetic.h"

#include <algorithm>
#include <cmath>

namespace GenApi_3_2 {
namespace Engine {

namespace {

constexpr double TwoTo63 = 9223372036854775808.0;

// Bit operations work on the integer part.
std::int64_t WholePart(double value, std::size_t position) {
    if (!(value >= -TwoTo63 && value < TwoTo63))
        throw FormulaError("operand of a bit operation does not fit 64 bits", position);
    return static_cast<std::int64_t>(value);
}

double BitOperation(FormulaOp op, double left, double right, std::size_t position) {
    return static_cast<double>(ApplyTwo(op, WholePart(left, position), WholePart(right, position), position));
}

// A result that is not a number although the operands are: outside the operation's domain.
double Defined(double result, double left, double right, std::size_t position) {
    if (std::isnan(result) && !std::isnan(left) && !std::isnan(right))
        throw FormulaError("operation has no result for this value", position);
    return result;
}

double Defined(double result, double value, std::size_t position) {
    return Defined(result, value, value, position);
}

double NotZero(double divisor, std::size_t position) {
    if (divisor == 0)
        throw FormulaError("division by zero", position);
    return divisor;
}

double Logarithm(double (*function)(double), double value, std::size_t position) {
    if (value <= 0)
        throw FormulaError("logarithm of a number that is not positive", position);
    return function(value);
}

double Power(double base, double exponent, std::size_t position) {
    if (base == 0 && exponent < 0)
        throw FormulaError("zero to a negative power", position);
    return Defined(std::pow(base, exponent), base, exponent, position);
}

double RoundTo(double value, double digits, std::size_t position) {
    if (std::isnan(digits))
        throw FormulaError("number of digits is not a number", position);
    const double scale = std::pow(10.0, std::trunc(std::min(std::fabs(digits), 308.0)));
    if (digits < 0)
        return std::round(value / scale) * scale;
    const double scaled = value * scale;
    return std::isfinite(scaled) ? std::round(scaled) / scale : value;
}

double Sign(double value) {
    if (std::isnan(value))
        return value;
    return (value > 0) - (value < 0);
}

} // namespace

double ApplyOne(FormulaOp op, double value, std::size_t position) {
    switch (op) {
    case FormulaOp::Negate:
        return -value;
    case FormulaOp::BitNot:
        return static_cast<double>(~WholePart(value, position));
    case FormulaOp::LogicalNot:
        return value == 0;
    case FormulaOp::ToBoolean:
        return value != 0;
    case FormulaOp::Abs:
        return std::fabs(value);
    case FormulaOp::Sgn:
        return Sign(value);
    case FormulaOp::Sqrt:
        return Defined(std::sqrt(value), value, position);
    case FormulaOp::Trunc:
        return std::trunc(value);
    case FormulaOp::Floor:
        return std::floor(value);
    case FormulaOp::Ceil:
        return std::ceil(value);
    case FormulaOp::Round:
        return std::round(value);
    case FormulaOp::Sin:
        return Defined(std::sin(value), value, position);
    case FormulaOp::Cos:
        return Defined(std::cos(value), value, position);
    case FormulaOp::Tan:
        return Defined(std::tan(value), value, position);
    case FormulaOp::Asin:
        return Defined(std::asin(value), value, position);
    case FormulaOp::Acos:
        return Defined(std::acos(value), value, position);
    case FormulaOp::Atan:
        return std::atan(value);
    case FormulaOp::Exp:
        return std::exp(value);
    case FormulaOp::Ln:
        return Logarithm(std::log, value, position);
    case FormulaOp::Lg:
        return Logarithm(std::log10, value, position);
    default:
        throw FormulaError("operation has no floating form", position);
    }
}

double ApplyTwo(FormulaOp op, double left, double right, std::size_t position) {
    switch (op) {
    case FormulaOp::Add:
        return left + right;
    case FormulaOp::Subtract:
        return left - right;
    case FormulaOp::Multiply:
        return left * right;
    case FormulaOp::Divide:
        return left / NotZero(right, position);
    case FormulaOp::Remainder:
        return Defined(std::fmod(left, NotZero(right, position)), left, right, position);
    case FormulaOp::Power:
        return Power(left, right, position);
    case FormulaOp::BitAnd:
    case FormulaOp::BitOr:
    case FormulaOp::BitXor:
    case FormulaOp::ShiftLeft:
    case FormulaOp::ShiftRight:
        return BitOperation(op, left, right, position);
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
    case FormulaOp::Atan2:
        return std::atan2(left, right);
    case FormulaOp::RoundTo:
        return RoundTo(left, right, position);
    default:
        throw FormulaError("operation has no floating form", position);
    }
}

} // namespace Engine
} // namespace GenApi_3_2
