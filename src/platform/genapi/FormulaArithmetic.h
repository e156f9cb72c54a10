// What the operators and functions of formulas compute, once in 64-bit integers and once in doubles. Sums and
// products of integers wrap around; what has no result throws FormulaError with the given position.
#pragma once

#include "platform/genapi/FormulaProgram.h"

#include <cstddef>
#include <cstdint>

namespace GenApi_3_2 {
namespace Engine {

std::int64_t ApplyOne(FormulaOp op, std::int64_t value, std::size_t position);
double ApplyOne(FormulaOp op, double value, std::size_t position);

std::int64_t ApplyTwo(FormulaOp op, std::int64_t left, std::int64_t right, std::size_t position);
double ApplyTwo(FormulaOp op, double left, double right, std::size_t position);

} // namespace Engine
} // namespace GenApi_3_2
