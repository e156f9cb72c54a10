// The functions and constants that every formula knows.
#pragma once

#include "platform/genapi/formula/FormulaProgram.h"

#include <cstddef>
#include <string_view>

namespace GenApi_3_2 {
namespace Engine {

struct FormulaFunction {
    const char* name;
    std::size_t minArguments;
    std::size_t maxArguments; // 0: a constant, with or without brackets
    FormulaOp opOfOne;
    FormulaOp opOfTwo;
    bool hasIntegerForm;
    double constant;
};

constexpr std::size_t NoFormulaFunction = static_cast<std::size_t>(-1);

// Upper and lower case are the same. NoFormulaFunction when there is none of this name.
std::size_t FindFormulaFunction(std::string_view name);
const FormulaFunction& FormulaFunctionAt(std::size_t index);

} // namespace Engine
} // namespace GenApi_3_2
