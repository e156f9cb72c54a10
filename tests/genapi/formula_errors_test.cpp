// What formulas refuse, with the place: texts that do not parse and values that have no result.
#include "platform/genapi/formula/Formula.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace GenApi_3_2 {
namespace Engine {
namespace {

struct Refused {
    const char* text;
    std::size_t position;
    const char* reason;
};

template <typename Formula>
void ExpectRefused(const Refused& refused, const FormulaScope& scope = {}) {
    SCOPED_TRACE(refused.text);
    try {
        Formula(refused.text, scope).Evaluate();
        ADD_FAILURE() << "no error";
    } catch (const FormulaError& error) {
        EXPECT_EQ(error.Position(), refused.position);
        EXPECT_NE(std::string(error.what()).find(refused.reason), std::string::npos) << error.what();
    }
}

TEST(FormulaErrors, TextsThatDoNotParse) {
    const Refused cases[] = {
        {"", 0, "value is missing"},
        {"  ", 2, "value is missing"},
        {"1 +", 3, "value is missing"},
        {"* 2", 0, "before '*'"},
        {"1 2", 2, "operator is missing"},
        {"(1", 0, "not closed"},
        {"1)", 1, "without '('"},
        {"(1 ? 2)", 3, "without ':'"},
        {"1 ? 2", 2, "without ':'"},
        {"1 : 2", 2, "without '?'"},
        {"(1 ? 2 : 3 : 4)", 11, "without '?'"},
        {"1, 2", 1, "outside"},
        {"ABS()", 0, "0"},
        {"ABS(1, 2)", 0, "arguments"},
        {"ROUND(1,)", 8, "value is missing"},
        {"ABS", 0, "not known"},
        {"UNKNOWN + 1", 0, "'UNKNOWN'"},
        {"NOFUNCTION(1)", 0, "not known"},
        {"1 $ 2", 2, "'$'"},
        {"1 \xC2\xB5 2", 2, "0xC2"},
        {"0x", 0, "not a number"},
        {"12abc", 2, "runs into"},
        {"1.2.3", 3, "runs into"},
        {"2 < = 3", 4, "before '='"},
    };
    for (const Refused& refused : cases)
        ExpectRefused<FloatFormula>(refused);
}

TEST(FormulaErrors, WhatHasNoIntegerForm) {
    const Refused cases[] = {
        {"1 + 0x10000000000000000", 4, "64-bit"},
        {"18446744073709551616", 0, "64-bit"},
        {"2 * 0.5", 4, "64-bit"},
        {"SIN(1)", 0, "integer form"},
        {"PI", 0, "integer form"},
        {"E()", 0, "integer form"},
    };
    for (const Refused& refused : cases)
        ExpectRefused<IntegerFormula>(refused);
}

TEST(FormulaErrors, ValuesWithoutResult) {
    const Refused integers[] = {
        {"7 + 1 / 0", 6, "division by zero"},
        {"1 % 0", 2, "by zero"},
        {"(0 - 9223372036854775807 - 1) / -1", 30, "does not fit"},
        {"1 << 64", 2, "shift by 64"},
        {"1 >> -1", 2, "shift by -1"},
        {"0 ** -1", 2, "negative power"},
        {"SQRT(-1)", 0, "square root"},
    };
    for (const Refused& refused : integers)
        ExpectRefused<IntegerFormula>(refused);
    const Refused reals[] = {
        {"1 / 0", 2, "division by zero"}, {"1 % 0.0", 2, "division by zero"}, {"SQRT(-1)", 0, "no result"},
        {"LN(0)", 0, "logarithm"},        {"LG(-1)", 0, "logarithm"},         {"ASIN(2)", 0, "no result"},
        {"(-8) ** 0.5", 5, "no result"},  {"1e300 & 1", 6, "64 bits"},        {"~1e19", 0, "64 bits"},
        {"1 << 64", 2, "shift by 64"},
    };
    for (const Refused& refused : reals)
        ExpectRefused<FloatFormula>(refused);
    EXPECT_EQ(IntegerFormula("(0 - 9223372036854775807 - 1) % -1", {}).Evaluate(), 0);
}

TEST(FormulaErrors, ExpressionsThatReferToThemselves) {
    FormulaScope scope;
    scope.expressions = {{"A", "B + 1"}, {"B", "C * 2"}, {"C", "A"}, {"BAD", "1 +"}, {"ZERO", "1 / 0"}};
    ExpectRefused<IntegerFormula>({"1 + A", 4, "refers to itself"}, scope);
    ExpectRefused<IntegerFormula>({"2 * BAD", 4, "expression 'BAD'"}, scope);
    ExpectRefused<IntegerFormula>({"2 * ZERO", 4, "division by zero"}, scope);
    scope.constants = {{"WORD", "abc"}};
    ExpectRefused<FloatFormula>({"1 + WORD", 4, "'abc'"}, scope);
}

TEST(FormulaErrors, DepthAndLengthAreBounded) {
    const auto nested = [](std::size_t depth) {
        std::string text;
        for (std::size_t i = 0; i < depth; ++i)
            text += "(1+";
        return text + "1" + std::string(depth, ')');
    };
    EXPECT_EQ(IntegerFormula(nested(250), {}).Evaluate(), 251);
    EXPECT_THROW(IntegerFormula(nested(300), {}), FormulaError);
    const std::string brackets = std::string(30000, '(') + "7" + std::string(30000, ')');
    EXPECT_EQ(IntegerFormula(brackets, {}).Evaluate(), 7);
    EXPECT_EQ(IntegerFormula(std::string(60000, '-') + "7", {}).Evaluate(), 7);
    EXPECT_THROW(IntegerFormula(std::string(70000, ' ') + "1", {}), FormulaError);
    std::string chain;
    for (int i = 0; i < 2000; ++i)
        chain += "0 ? 1 : ";
    EXPECT_EQ(IntegerFormula(chain + "9", {}).Evaluate(), 9);
}

} // namespace
} // namespace Engine
} // namespace GenApi_3_2
