// What the operators and functions of formulas compute, in 64-bit integers or in doubles. What has no result
// throws FormulaError with the given position.
#pragma once

#include "platform/genapi/formula/FormulaProgram.h"

#include <cstddef>
#include <cstdint>

namespace GenApi_3_2 {
namespace Engine {

// T is std::int64_t or double.
template <class T>
T ApplyOne(FormulaOp op, T value, std::size_t position);
template <class T>
T ApplyTwo(FormulaOp op, T left, T right, std::size_t position);

extern template std::int64_t ApplyOne(FormulaOp, std::int64_t, std::size_t);
extern template double ApplyOne(FormulaOp, double, std::size_t);
extern template std::int64_t ApplyTwo(FormulaOp, std::int64_t, std::int64_t, std::size_t);
extern template double ApplyTwo(FormulaOp, double, double, std::size_t);

} // namespace Engine
} // namespace GenApi_3_2
