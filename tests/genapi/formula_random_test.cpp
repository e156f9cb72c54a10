// Random formulas, written with as few brackets as C needs and with all of them: both must mean the same.
#include "platform/genapi/formula/Formula.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace GenApi_3_2 {
namespace Engine {
namespace {

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

// With brackets where the levels ask for them, or around everything.
std::string Write(const Tree& tree, std::size_t loosest, bool isBracketed) {
    if (tree.parts.empty())
        return tree.op == "v" ? "V" + std::to_string(tree.number) : std::to_string(tree.number);
    const std::size_t level = LevelOf(tree);
    const auto part = [&](std::size_t index, std::size_t outer) {
        return Write(*tree.parts[index], outer, isBracketed);
    };
    const std::string text = tree.op == "?" ? part(0, 1) + "?" + part(1, 0) + ":" + part(2, 0)
                                            : part(0, level) + tree.op + part(1, level + 1);
    return isBracketed || level < loosest ? "(" + text + ")" : text;
}

// The value for these values of V0 to V2, or why there is none.
std::string Result(const std::string& text, const std::int64_t* values) {
    FormulaScope scope;
    scope.variables = {"V0", "V1", "V2"};
    const IntegerFormula formula(text, scope);
    std::vector<std::int64_t> arranged; // in the order in which the formula mentions them
    for (const FormulaSlot& slot : formula.Slots())
        arranged.push_back(values[slot.variable]);
    try {
        return std::to_string(formula.Evaluate(arranged.data()));
    } catch (const FormulaError& error) {
        return std::string(error.what()).substr(0, 8);
    }
}

TEST(FormulaRandom, BracketsThatTheLevelsMakeNeedlessChangeNothing) {
    Generator generator(20240229);
    int defined = 0;
    for (int round = 0; round < 5000; ++round) {
        const std::unique_ptr<Tree> tree = generator.Make(5);
        const std::int64_t values[] = {round - 2500, 0x123456789ABCDEF, round % 7};
        const std::string text = Write(*tree, 0, false);
        const std::string result = Result(text, values);
        ASSERT_EQ(result, Result(Write(*tree, 0, true), values)) << text;
        defined += result.find(' ') == std::string::npos;
    }
    EXPECT_GT(defined, 2500);
}

} // namespace
} // namespace Engine
} // namespace GenApi_3_2
