// Random formulas, written with as few brackets as C needs, against a direct evaluation of the tree they came
// from.
#include "platform/genapi/formula/Formula.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace GenApi_3_2 {
namespace Engine {
namespace {

struct Undefined {};

struct Tree {
    std::string op; // "" for a number, "v" for a variable, "?" for the conditional
    std::int64_t number = 0;
    std::vector<std::unique_ptr<Tree>> parts;
};

// The levels of C, loosest first.
const std::vector<std::vector<std::string>> Levels = {
    {"?"},        {"||"},     {"&&"},          {"|"}, {"^"}, {"&"}, {"=", "<>"}, {"<", "<=", ">", ">="},
    {"<<", ">>"}, {"+", "-"}, {"*", "/", "%"},
};

std::size_t LevelOf(const Tree& tree) {
    for (std::size_t level = 0; level < Levels.size(); ++level)
        for (const std::string& op : Levels[level])
            if (op == tree.op)
                return level;
    return Levels.size();
}

class Generator {
public:
    explicit Generator(unsigned seed) : random_(seed) {}

    std::unique_ptr<Tree> Make(int depth) {
        auto tree = std::make_unique<Tree>();
        if (depth == 0 || Below(5) == 0) {
            tree->op = Below(2) == 0 ? "v" : "";
            tree->number = tree->op == "v" ? Below(3) : Below(40);
            return tree;
        }
        const auto& level = Levels[static_cast<std::size_t>(Below(static_cast<int>(Levels.size())))];
        tree->op = level[static_cast<std::size_t>(Below(static_cast<int>(level.size())))];
        for (int i = tree->op == "?" ? 3 : 2; i > 0; --i)
            tree->parts.push_back(Make(depth - 1));
        return tree;
    }

private:
    int Below(int end) { return std::uniform_int_distribution<int>(0, end - 1)(random_); }
    std::mt19937 random_;
};

std::string Write(const Tree& tree, std::size_t loosest) {
    if (tree.parts.empty())
        return tree.op == "v" ? "V" + std::to_string(tree.number) : std::to_string(tree.number);
    const std::size_t level = LevelOf(tree);
    std::string text;
    if (tree.op == "?")
        text = Write(*tree.parts[0], 1) + "?" + Write(*tree.parts[1], 0) + ":" + Write(*tree.parts[2], 0);
    else
        text = Write(*tree.parts[0], level) + tree.op + Write(*tree.parts[1], level + 1);
    return level < loosest ? "(" + text + ")" : text;
}

// Results beside those of C: sums wrap around, comparisons give 0 or 1.
std::int64_t Apply(const std::string& op, std::int64_t a, std::int64_t b) {
    using U = std::uint64_t;
    static const std::map<std::string, std::int64_t (*)(std::int64_t, std::int64_t)> Ops = {
        {"+", [](auto x, auto y) { return std::int64_t(U(x) + U(y)); }},
        {"-", [](auto x, auto y) { return std::int64_t(U(x) - U(y)); }},
        {"*", [](auto x, auto y) { return std::int64_t(U(x) * U(y)); }},
        {"/", [](auto x, auto y) { return x / y; }},
        {"%", [](auto x, auto y) { return y == -1 ? 0 : x % y; }},
        {"<<", [](auto x, auto y) { return std::int64_t(U(x) << y); }},
        {">>", [](auto x, auto y) { return x >> y; }},
        {"&", [](auto x, auto y) { return x & y; }},
        {"|", [](auto x, auto y) { return x | y; }},
        {"^", [](auto x, auto y) { return x ^ y; }},
        {"=", [](auto x, auto y) { return std::int64_t(x == y); }},
        {"<>", [](auto x, auto y) { return std::int64_t(x != y); }},
        {"<", [](auto x, auto y) { return std::int64_t(x < y); }},
        {"<=", [](auto x, auto y) { return std::int64_t(x <= y); }},
        {">", [](auto x, auto y) { return std::int64_t(x > y); }},
        {">=", [](auto x, auto y) { return std::int64_t(x >= y); }},
        {"&&", [](auto, auto y) { return std::int64_t(y != 0); }}, // the first has not decided it
        {"||", [](auto, auto y) { return std::int64_t(y != 0); }},
    };
    return Ops.at(op)(a, b);
}

std::int64_t Compute(const Tree& tree, const std::int64_t* values) {
    const std::string& op = tree.op;
    if (tree.parts.empty())
        return op == "v" ? values[tree.number] : tree.number;
    const std::int64_t a = Compute(*tree.parts[0], values);
    if (op == "?")
        return Compute(*tree.parts[a != 0 ? 1 : 2], values);
    if ((op == "&&" && a == 0) || (op == "||" && a != 0))
        return op == "||";
    const std::int64_t b = Compute(*tree.parts[1], values);
    if (((op == "/" || op == "%") && b == 0) || (op == "/" && b == -1 && a == INT64_MIN) ||
        ((op == "<<" || op == ">>") && (b < 0 || b > 63)))
        throw Undefined();
    return Apply(op, a, b);
}

// The variables in the order in which the formula mentions them.
std::vector<std::int64_t> Arrange(const IntegerFormula& formula, const std::int64_t* values) {
    std::vector<std::int64_t> arranged;
    for (const FormulaSlot& slot : formula.Slots())
        arranged.push_back(values[slot.variable]);
    return arranged;
}

TEST(FormulaRandom, AgreesWithADirectEvaluation) {
    FormulaScope scope;
    scope.variables = {"V0", "V1", "V2"};
    Generator generator(20240229);
    int defined = 0;
    for (int round = 0; round < 5000; ++round) {
        const std::unique_ptr<Tree> tree = generator.Make(5);
        const std::int64_t values[] = {round - 2500, 0x123456789ABCDEF, round % 7};
        const std::string text = Write(*tree, 0);
        const IntegerFormula formula(text, scope);
        try {
            const std::int64_t expected = Compute(*tree, values);
            ASSERT_EQ(formula.Evaluate(Arrange(formula, values).data()), expected) << text;
            ++defined;
        } catch (const Undefined&) {
            ASSERT_THROW(formula.Evaluate(Arrange(formula, values).data()), FormulaError) << text;
        }
    }
    EXPECT_GT(defined, 2500);
}

} // namespace
} // namespace Engine
} // namespace GenApi_3_2
