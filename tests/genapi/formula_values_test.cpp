// What formulas compute: numbers, operators and functions in both variants, names, and which values are read.
#include "platform/genapi/formula/Formula.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace GenApi_3_2 {
namespace Engine {
namespace {

constexpr std::int64_t Lowest = std::numeric_limits<std::int64_t>::min();

std::int64_t Integer(const std::string& text) {
    return IntegerFormula(text, {}).Evaluate();
}
double Float(const std::string& text) {
    return FloatFormula(text, {}).Evaluate();
}

// Gives fixed values and remembers what was asked for.
template <typename T>
class Recorder final : public FormulaVariables<T> {
public:
    explicit Recorder(std::vector<T> values) : values_(std::move(values)) {}
    T Value(std::size_t slot) override {
        asked.push_back(slot);
        return values_.at(slot);
    }
    std::vector<std::size_t> asked;

private:
    std::vector<T> values_;
};

TEST(FormulaValues, NumbersKeepAllTheirBits) {
    EXPECT_EQ(Integer("010"), 10);
    EXPECT_EQ(Integer("0x7FFFFFFFFFFFFFFF"), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(Integer("0xFFFFFFFFFFFFFFFF"), -1);
    EXPECT_EQ(Integer("0X10 + 0xaB"), 0xBB);
    EXPECT_EQ(Integer("9007199254740993 + 0"), 9007199254740993); // 2^53 + 1 is no double
    EXPECT_EQ(Integer("-9223372036854775808"), Lowest);
    EXPECT_EQ(Integer("1e3 + 2.0"), 1002);
    EXPECT_DOUBLE_EQ(Float("1.5e-3"), 0.0015);
    EXPECT_DOUBLE_EQ(Float(".5 + 2."), 2.5);
    EXPECT_DOUBLE_EQ(Float("0x10"), 16);
}

TEST(FormulaValues, OperatorsBindAsInC) {
    EXPECT_EQ(Integer("2 + 3 * 4 - 6 / 2"), 11);
    EXPECT_EQ(Integer("10 - 4 - 3"), 3);
    EXPECT_EQ(Integer("1 | 2 ^ 3 & 4"), 1 | (2 ^ (3 & 4)));
    EXPECT_EQ(Integer("6 & 3 = 3"), 0); // equality before bits, as in C
    EXPECT_EQ(Integer("1 << 2 + 1"), 8);
    EXPECT_EQ(Integer("1 < 2 = 1"), 1);
    EXPECT_EQ(Integer("2 ** 3 ** 2"), 512);
    EXPECT_EQ(Integer("-2 ** 2"), -4);
    EXPECT_EQ(Integer("2 * -3 + ~0"), -7);
    EXPECT_EQ(Integer("!0 + !5"), 1);
    EXPECT_EQ(Integer("1 ? 2 : 0 ? 3 : 4"), 2);
    EXPECT_EQ(Integer("0 ? 1 ? 2 : 3 : 1 ? 4 : 5"), 4);
    EXPECT_EQ(Integer("1 = 1 ? 7 : 8"), 7);
    EXPECT_EQ(Integer("2 && 0 || 4"), 1);
}

TEST(FormulaValues, BothSpellingsOfEqualityCount) {
    EXPECT_EQ(Integer("(3 = 3) + (3 == 3) + (3 <> 4) + (3 != 4)"), 4);
    EXPECT_EQ(Float("(3 = 4) + (3 == 4) + (3 <> 3) + (3 != 3)"), 0);
    EXPECT_EQ(Integer("(2<=2)+(2>=3)+(2>1)"), 2);
}

TEST(FormulaValues, IntegersTruncateAndFloatsDoNot) {
    EXPECT_EQ(Integer("1 / 2"), 0);
    EXPECT_DOUBLE_EQ(Float("1 / 2"), 0.5);
    EXPECT_EQ(Integer("-7 / 2"), -3);
    EXPECT_EQ(Integer("-7 % 3"), -1);
    EXPECT_DOUBLE_EQ(Float("-7 % 3"), -1);
    EXPECT_EQ(Integer("-8 >> 1"), -4);
    EXPECT_EQ(Integer("1 << 63"), Lowest);
    EXPECT_EQ(Integer("9223372036854775807 + 1"), Lowest);
    EXPECT_EQ(Integer("2 ** -1"), 0);
    EXPECT_EQ(Integer("(-1) ** -3"), -1);
    EXPECT_EQ(Integer("3 ** 39"), 4052555153018976267);
    EXPECT_DOUBLE_EQ(Float("2 ** -1"), 0.5);
    EXPECT_DOUBLE_EQ(Float("(6.9 & 3) + (1 << 4)"), 18);
}

TEST(FormulaValues, FunctionsRoundHalvesAwayFromZero) {
    EXPECT_DOUBLE_EQ(Float("ROUND(2.5)"), 3);
    EXPECT_DOUBLE_EQ(Float("ROUND(-2.5)"), -3);
    EXPECT_DOUBLE_EQ(Float("ROUND(1.2345, 2)"), 1.23);
    EXPECT_DOUBLE_EQ(Float("ROUND(1250, -2)"), 1300);
    EXPECT_EQ(Integer("ROUND(1250, -2) + ROUND(-1250, -2) + ROUND(1249, -2)"), 1200);
    EXPECT_DOUBLE_EQ(Float("TRUNC(-1.7) + FLOOR(-1.2) + CEIL(1.2)"), -1);
    EXPECT_DOUBLE_EQ(Float("SGN(-3.5) + NEG(2) + ABS(-4)"), 1);
    EXPECT_EQ(Integer("SGN(-3) + NEG(2) + ABS(-4) + SQRT(17)"), 5);
    EXPECT_EQ(Integer("SQRT(9223372036854775807)"), 3037000499);
}

TEST(FormulaValues, TranscendentalFunctions) {
    EXPECT_DOUBLE_EQ(Float("SIN(PI / 2) + COS(0) + TAN(0)"), 2);
    EXPECT_DOUBLE_EQ(Float("ASIN(1) + ACOS(1) + ATAN(1)"), std::asin(1.0) + std::atan(1.0));
    EXPECT_DOUBLE_EQ(Float("ATAN2(1, -1)"), std::atan2(1.0, -1.0));
    EXPECT_DOUBLE_EQ(Float("LN(E()) + LG(1000) + EXP(0)"), 5);
    EXPECT_DOUBLE_EQ(Float("sqrt(2) ** 2 * PI() / E"), 2 * std::acos(-1.0) / std::exp(1.0));
}

TEST(FormulaValues, NamesComeFromTheScope) {
    FormulaScope scope;
    scope.variables = {"A", "B", "A.Max", "E"};
    scope.constants = {{"C", " 0x10 "}, {"HALF", "5e-1"}};
    scope.expressions = {{"SUM", "A + B"}, {"TWICE", "SUM * 2"}};
    const IntegerFormula formula("A.Min + A.Max + B.Entry.Mono8 + C + E + B.Min + B.Min", scope);
    ASSERT_EQ(formula.Slots().size(), 5u);
    EXPECT_EQ(formula.Slots()[0].variable, 0u);
    EXPECT_EQ(formula.Slots()[0].suffix, "Min");
    EXPECT_EQ(formula.Slots()[1].variable, 2u);
    EXPECT_EQ(formula.Slots()[1].suffix, "Max"); // declared with it
    EXPECT_EQ(formula.Slots()[2].suffix, "Entry.Mono8");
    EXPECT_EQ(formula.Slots()[3].variable, 3u);
    const std::int64_t values[] = {1, 2, 4, 8, 32};
    EXPECT_EQ(formula.Evaluate(values), 1 + 2 + 4 + 16 + 8 + 32 + 32);
    const double reals[] = {1, 2};
    EXPECT_DOUBLE_EQ(FloatFormula("TWICE * 10 + SUM * HALF + TWICE", scope).Evaluate(reals), 67.5);
}

// Reading a variable may be a transfer to the camera, or be refused by it.
TEST(FormulaValues, OnlyWhatTheResultNeedsIsRead) {
    FormulaScope scope;
    scope.variables = {"A", "B", "C"};
    scope.expressions = {{"RATIO", "B / A"}};
    const auto asked = [&scope](const std::string& text, std::vector<std::int64_t> values) {
        Recorder<std::int64_t> recorder(std::move(values));
        IntegerFormula(text, scope).Evaluate(recorder);
        return recorder.asked;
    };
    using Slots = std::vector<std::size_t>;
    EXPECT_EQ(asked("A = 0 ? C : B / A", {0, 5, 7}), (Slots{0, 1}));
    EXPECT_EQ(asked("A <> 0 ? RATIO : C", {0, 5, 7}), (Slots{0, 2}));
    EXPECT_EQ(asked("A && B / A > 2", {0, 5, 7}), (Slots{0}));
    EXPECT_EQ(asked("A = 0 || B / A > 2", {0, 5, 7}), (Slots{0}));
    EXPECT_EQ(asked("A + B * A - (C ? A : B)", {3, 5, 7}), (Slots{0, 1, 2})); // each once
}

TEST(FormulaValues, ExpressionsAreComputedOnce) {
    FormulaScope scope;
    scope.variables = {"A"};
    std::vector<std::string> names;
    std::vector<std::string> texts;
    for (int i = 0; i < 60; ++i) {
        names.push_back("X" + std::to_string(i));
        texts.push_back(i == 0 ? "A" : "X" + std::to_string(i - 1) + " + X" + std::to_string(i - 1));
    }
    for (std::size_t i = 0; i < names.size(); ++i)
        scope.expressions.emplace_back(names[i], texts[i]);
    const std::int64_t value = 3;
    EXPECT_EQ(IntegerFormula("X59", scope).Evaluate(&value), std::int64_t{3} << 59);
}

TEST(FormulaValues, ManySlotsAndExceptionsOfTheSource) {
    std::vector<std::string> names;
    std::string text = "0";
    for (int i = 0; i < 100; ++i) {
        names.push_back("V" + std::to_string(i));
        text += " + V" + std::to_string(i);
    }
    FormulaScope scope;
    scope.variables.assign(names.begin(), names.end());
    const IntegerFormula formula(text, scope);
    const std::vector<std::int64_t> ones(100, 1);
    EXPECT_EQ(formula.Evaluate(ones.data()), 100);
    Recorder<std::int64_t> tooFew(std::vector<std::int64_t>(50, 1));
    EXPECT_THROW(formula.Evaluate(tooFew), std::out_of_range);
}

} // namespace
} // namespace Engine
} // namespace GenApi_3_2
