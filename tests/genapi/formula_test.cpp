// What formulas compute and refuse: numbers, operators and functions in both variants, names, and what is
// read.
#include "NodeScript.h"

#include "platform/genapi/formula/Formula.h"

namespace GenApi_3_2::Engine {
namespace {

// Each part is "formula => result" or "formula => !position reason".
template <class Formula>
void ExpectAll(const std::string& parts, const FormulaScope& scope = {}) {
    VX3::Test::ForEachPart(parts, [&](const std::string& part) {
        const std::size_t arrow = part.find("=> ");
        std::string actual;
        try {
            actual = VX3::Test::Shown(Formula(part.substr(0, arrow), scope).Evaluate());
        } catch (const FormulaError& error) {
            actual = "!" + std::to_string(error.Position()) + " " + error.what();
        }
        std::string expected = part.substr(arrow + 3);
        if (expected[0] == '!') // the reason is a part of the message
            expected.replace(expected.find(' '), 1, " ~");
        EXPECT_TRUE(VX3::Test::Matches(expected, actual)) << part << " gave " << actual;
    });
}

TEST(Formula, IntegersStayInSixtyFourBits) {
    ExpectAll<IntegerFormula>(R"(
010 => 10 ; 0x7FFFFFFFFFFFFFFF => 9223372036854775807 ; 0xFFFFFFFFFFFFFFFF => -1 ; 0X10 + 0xaB => 0xBB
9007199254740993 + 0 => 9007199254740993 ; -9223372036854775808 => -9223372036854775808 ; 1e3 + 2.0 => 1002
2 + 3 * 4 - 6 / 2 => 11 ; 10 - 4 - 3 => 3 ; 1 << 2 + 1 => 8 ; 8 > 1 << 2 => 1 ; 1 < 2 = 1 => 1 ; 6 & 2 = 2 => 0
2 ^ 3 & 4 => 2 ; 1 | 3 ^ 3 => 1 ; 1 | 0 && 0 => 0 ; 4 || 0 && 0 => 1 ; 0 || 1 ? 2 : 3 => 2 ; 16 / 4 * 2 % 5 => 3
2 ** 3 ** 2 => 512 ; -2 ** 2 => -4 ; 2 * -3 + ~0 => -7 ; !0 + !5 => 1 ; 1 ? 2 : 0 ? 3 : 4 => 2 ; 1 = 1 ? 7 : 8 => 7
0 ? 1 ? 2 : 3 : 1 ? 4 : 5 => 4 ; (3 = 3) + (3 == 3) + (3 <> 4) + (3 != 4) => 4 ; 0 || 0 => 0
(3 = 4) + (3 == 4) + (3 <> 3) + (3 != 3) => 0 ; (2<=2)+(2>=3)+(2>1) => 2 ; 1 / 2 => 0 ; -7 / 2 => -3 ; -7 % 3 => -1
-8 >> 1 => -4 ; 1 << 63 => -9223372036854775808 ; 9223372036854775807 + 1 => -9223372036854775808 ; 2 ** -1 => 0
(-1) ** -3 => -1 ; (-1) ** -2 => 1 ; 1 ** -5 => 1 ; 3 ** 39 => 4052555153018976267 ; SQRT(17) => 4
ROUND(1250, -2) + ROUND(-1250, -2) + ROUND(1249, -2) => 1200 ; SGN(-3) + NEG(2) + ABS(-4) => 1 ; ROUND(7, 1) => 7
SQRT(9223372036854775807) => 3037000499 ; (0 - 9223372036854775807 - 1) % -1 => 0 ; ROUND(5, -19) => 0 ; 5 >> 1 => 2
1 + 0x10000000000000000 => !4 64-bit ; 18446744073709551616 => !0 64-bit ; 2 * 0.5 => !4 64-bit ; SIN(1) => !0 integer form
PI => !0 integer form ; E() => !0 integer form ; 7 + 1 / 0 => !6 division by zero ; 1 % 0 => !2 by zero
(0 - 9223372036854775807 - 1) / -1 => !30 does not fit ; 1 << 64 => !2 shift by 64 ; 1 >> -1 => !2 shift by -1
0 ** -1 => !2 negative power ; SQRT(-1) => !0 square root)");
}

TEST(Formula, FloatsStayInDoubles) {
    ExpectAll<FloatFormula>(R"(
1.5e-3 => 0.0015 ; .5 + 2. => 2.5 ; 0x10 => 16 ; 1 / 2 => 0.5 ; -7 % 3 => -1 ; 2 ** -1 => 0.5 ; (6.9 & 3) + (1 << 4) => 18
ROUND(2.5) => 3 ; ROUND(-2.5) => -3 ; ROUND(1.2345, 2) => 1.23 ; ROUND(1250, -2) => 1300 ; ~2.9 => -3 ; SGN(0.0) => 0
TRUNC(-1.7) + FLOOR(-1.2) + CEIL(1.2) => -1 ; SGN(-3.5) + NEG(2) + ABS(-4) => 1 ; SIN(PI / 2) + COS(0) + TAN(0) => 2
ASIN(1) => 1.5707963267948966 ; ACOS(-1) => 3.1415926535897931 ; ATAN(1) => 0.78539816339744828 ; !0.5 => 0
ATAN2(1, -1) => 2.3561944901923448 ; LN(E()) + LG(1000) + EXP(0) => 5 ; sqrt(2) ** 2 => 2.0000000000000004 ; 1 < 1.5 => 1
(3.5 = 4) + (3.5 == 4) + (3.5 <> 3.5) + (3.5 != 3.5) + (2.5<=2.5) + (2.5>=3) + (2.5>1) => 2 ; 7 - 2.5 => 4.5
1 / 0 => !2 division by zero ; 1 % 0.0 => !2 division by zero ; SQRT(-1) => !0 no result ; LN(0) => !0 logarithm
LG(-1) => !0 logarithm ; ASIN(2) => !0 no result ; (-8) ** 0.5 => !5 no result ; 1e300 & 1 => !6 64 bits ; ~1e19 => !0 64 bits
1 << 64 => !2 shift by 64 ; 0 ** -1 => !2 negative power)");
}

TEST(Formula, TextsThatDoNotParse) {
    ExpectAll<FloatFormula>(R"(
1 + => !4 value is missing ; * 2 => !0 before '*' ; 1 2 => !2 operator is missing ; (1 => !0 not closed ; 1) => !1 without '('
(1 ? 2) => !3 without ':' ; 1 ? 2 => !2 without ':' ; 1 : 2 => !2 without '?' ; (1 ? 2 : 3 : 4) => !11 without '?'
1, 2 => !1 outside ; ABS() => !0 0 ; ABS(1, 2) => !0 arguments ; ROUND(1,) => !8 value is missing ; ABS => !0 not known
UNKNOWN + 1 => !0 'UNKNOWN' ; NOFUNCTION(1) => !0 not known ; 1 $ 2 => !2 '$' ; 0x => !0 not a number ; 12abc => !2 runs into
1.2.3 => !3 runs into ; 2 < = 3 => !4 before '=')"
                            "\n1 \xC2\xB5 2 => !2 0xC2");
    EXPECT_THROW(FloatFormula("", {}), FormulaError);
}

TEST(Formula, DepthAndLengthAreBounded) {
    const auto nested = [](std::size_t depth) {
        std::string text = "1" + std::string(depth, ')');
        for (std::size_t i = 0; i < depth; ++i)
            text.insert(0, "(1+");
        return text;
    };
    EXPECT_EQ(IntegerFormula(nested(250), {}).Evaluate(), 251);
    EXPECT_THROW(IntegerFormula(nested(300), {}), FormulaError);
    EXPECT_EQ(IntegerFormula(std::string(30000, '(') + "7" + std::string(30000, ')'), {}).Evaluate(), 7);
    EXPECT_EQ(IntegerFormula(std::string(60000, '-') + "7", {}).Evaluate(), 7);
    EXPECT_THROW(IntegerFormula(std::string(70000, ' ') + "1", {}), FormulaError);
    std::string chain;
    for (int i = 0; i < 2000; ++i)
        chain += "0 ? 1 : ";
    EXPECT_EQ(IntegerFormula(chain + "9", {}).Evaluate(), 9);
}

TEST(Formula, NamesComeFromTheScope) {
    FormulaScope scope;
    scope.variables = {"A", "B", "A.Max", "E"};
    scope.constants = {{"C", " 0x10 "}, {"HALF", "5e-1"}};
    scope.expressions = {{"SUM", "A + B"}, {"TWICE", "SUM * 2"}};
    const IntegerFormula formula("A.Min + A.Max + B.Entry.Mono8 + C + E + B.Min + B.Min", scope);
    std::string slots;
    for (const FormulaSlot& slot : formula.Slots())
        slots += std::to_string(slot.variable) + slot.suffix + " ";
    EXPECT_EQ(slots, "0Min 2Max 1Entry.Mono8 3 1Min "); // A.Max as it was declared
    const std::int64_t values[] = {1, 2, 4, 8, 32};
    EXPECT_EQ(formula.Evaluate(values), 1 + 2 + 4 + 16 + 8 + 32 + 32);
    const double reals[] = {1, 2};
    EXPECT_DOUBLE_EQ(FloatFormula("TWICE * 10 + SUM * HALF + TWICE", scope).Evaluate(reals), 67.5);
    scope = {};
    scope.constants = {{"WORD", "abc"}};
    scope.expressions = {{"A", "B + 1"}, {"B", "C * 2"},    {"C", "A"},
                         {"BAD", "1 +"}, {"ZERO", "1 / 0"}, {"X0", "3"}};
    ExpectAll<IntegerFormula>(
        "1 + A => !4 refers to itself ; 2 * BAD => !4 expression 'BAD' ; 2 * ZERO => !4 division by zero\n"
        "1 + WORD => !4 'abc'",
        scope);
    std::vector<std::string> names, texts;
    for (int i = 1; i < 60; ++i) {
        names.push_back("X" + std::to_string(i));
        texts.push_back("X" + std::to_string(i - 1) + " + X" + std::to_string(i - 1));
    }
    for (std::size_t i = 0; i < names.size(); ++i)
        scope.expressions.emplace_back(names[i], texts[i]);
    EXPECT_EQ(IntegerFormula("X59", scope).Evaluate(),
              std::int64_t{3} << 59); // each expression is computed once
}

// Gives fixed values and remembers what was asked for.
struct Recorder final : FormulaVariables<std::int64_t> {
    explicit Recorder(std::vector<std::int64_t> v) : values(std::move(v)) {}
    std::int64_t Value(std::size_t slot) override {
        asked += std::to_string(slot);
        return values.at(slot);
    }
    std::vector<std::int64_t> values;
    std::string asked;
};

// Reading a variable may be a transfer to the camera, or be refused by it.
TEST(Formula, OnlyWhatTheResultNeedsIsRead) {
    FormulaScope scope;
    scope.variables = {"A", "B", "C"};
    scope.expressions = {{"RATIO", "B / A"}};
    const auto asked = [&scope](const std::string& text, std::vector<std::int64_t> values) {
        Recorder recorder(std::move(values));
        IntegerFormula(text, scope).Evaluate(recorder);
        return recorder.asked;
    };
    EXPECT_EQ(asked("A = 0 ? C : B / A", {0, 5, 7}), "01");
    EXPECT_EQ(asked("A <> 0 ? RATIO : C", {0, 5, 7}), "02");
    EXPECT_EQ(asked("A && B / A > 2", {0, 5, 7}), "0");
    EXPECT_EQ(asked("A = 0 || B / A > 2", {0, 5, 7}), "0");
    EXPECT_EQ(asked("A + B * A - (C ? A : B)", {3, 5, 7}), "012"); // each once
    std::vector<std::string> names;
    std::string text = "0";
    for (int i = 0; i < 100; ++i) {
        names.push_back("V" + std::to_string(i));
        text += " + V" + std::to_string(i);
    }
    scope.variables.assign(names.begin(), names.end());
    EXPECT_EQ(IntegerFormula(text, scope).Evaluate(std::vector<std::int64_t>(100, 1).data()), 100);
    EXPECT_THROW(asked(text, std::vector<std::int64_t>(50, 1)), std::out_of_range);
}

} // namespace
} // namespace GenApi_3_2::Engine
