#include "platform/genapi/formula/FormulaFunctions.h"

#include "platform/genapi/base/Characters.h"

namespace GenApi_3_2 {
namespace Engine {

namespace {

using Op = FormulaOp;

constexpr FormulaFunction Functions[] = {
    {"ABS", 1, 1, Op::Abs, Op::End, true, 0},
    {"SGN", 1, 1, Op::Sgn, Op::End, true, 0},
    {"NEG", 1, 1, Op::Negate, Op::End, true, 0},
    {"SQRT", 1, 1, Op::Sqrt, Op::End, true, 0},
    {"TRUNC", 1, 1, Op::Trunc, Op::End, true, 0},
    {"FLOOR", 1, 1, Op::Floor, Op::End, true, 0},
    {"CEIL", 1, 1, Op::Ceil, Op::End, true, 0},
    {"ROUND", 1, 2, Op::Round, Op::RoundTo, true, 0},
    {"SIN", 1, 1, Op::Sin, Op::End, false, 0},
    {"COS", 1, 1, Op::Cos, Op::End, false, 0},
    {"TAN", 1, 1, Op::Tan, Op::End, false, 0},
    {"ASIN", 1, 1, Op::Asin, Op::End, false, 0},
    {"ACOS", 1, 1, Op::Acos, Op::End, false, 0},
    {"ATAN", 1, 1, Op::Atan, Op::End, false, 0},
    {"ATAN2", 2, 2, Op::End, Op::Atan2, false, 0},
    {"EXP", 1, 1, Op::Exp, Op::End, false, 0},
    {"LN", 1, 1, Op::Ln, Op::End, false, 0},
    {"LG", 1, 1, Op::Lg, Op::End, false, 0},
    {"E", 0, 0, Op::End, Op::End, false, 2.71828182845904523536},
    {"PI", 0, 0, Op::End, Op::End, false, 3.14159265358979323846},
};

} // namespace

std::size_t FindFormulaFunction(std::string_view name) {
    for (std::size_t i = 0; i < sizeof(Functions) / sizeof(Functions[0]); ++i)
        if (EqualsIgnoringCase(name, Functions[i].name))
            return i;
    return NoFormulaFunction;
}

const FormulaFunction& FormulaFunctionAt(std::size_t index) {
    return Functions[index];
}

} // namespace Engine
} // namespace GenApi_3_2
