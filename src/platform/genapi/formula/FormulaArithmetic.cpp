#include "platform/genapi/formula/FormulaArithmetic.h"

#include "platform/genapi/formula/FloatArithmetic.h"
#include "platform/genapi/formula/IntegerArithmetic.h"

namespace GenApi_3_2 {
namespace Engine {

template <class T>
T ApplyOne(FormulaOp op, T value, std::size_t position) {
    using In = Arithmetic<T>;
    switch (op) {
    case FormulaOp::Negate:
        return In::Negate(value);
    case FormulaOp::BitNot:
        return In::BitNot(value, position);
    case FormulaOp::LogicalNot:
        return value == 0;
    case FormulaOp::ToBoolean:
        return value != 0;
    case FormulaOp::Abs:
        return In::Abs(value);
    case FormulaOp::Sgn:
        return In::Sgn(value);
    case FormulaOp::Sqrt:
        return In::Sqrt(value, position);
    default:
        return In::Function(op, value, position);
    }
}

template <class T>
T ApplyTwo(FormulaOp op, T left, T right, std::size_t position) {
    using In = Arithmetic<T>;
    switch (op) {
    case FormulaOp::Add:
        return In::Add(left, right);
    case FormulaOp::Subtract:
        return In::Subtract(left, right);
    case FormulaOp::Multiply:
        return In::Multiply(left, right);
    case FormulaOp::Divide:
        return In::Divide(left, right, position);
    case FormulaOp::Remainder:
        return In::Remainder(left, right, position);
    case FormulaOp::Power:
        return In::Power(left, right, position);
    case FormulaOp::BitAnd:
    case FormulaOp::BitOr:
    case FormulaOp::BitXor:
    case FormulaOp::ShiftLeft:
    case FormulaOp::ShiftRight:
        return In::OnBits(op, left, right, position);
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
        return In::RoundTo(left, right, position);
    default:
        return In::Function(op, left, right, position);
    }
}

template std::int64_t ApplyOne(FormulaOp, std::int64_t, std::size_t);
template double ApplyOne(FormulaOp, double, std::size_t);
template std::int64_t ApplyTwo(FormulaOp, std::int64_t, std::int64_t, std::size_t);
template double ApplyTwo(FormulaOp, double, double, std::size_t);

} // namespace Engine
} // namespace GenApi_3_2
