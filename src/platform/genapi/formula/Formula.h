// GenApi formulas, compiled once into a flat program and evaluated without allocation. IntegerFormula is for
// IntSwissKnife, IntConverter: 64-bit integers throughout. FloatFormula is for SwissKnife, Converter: doubles
// throughout. Both are immutable after construction and may be evaluated by several threads at once.
#pragma once

#include "platform/genapi/formula/FormulaProgram.h"

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace GenApi_3_2 {
namespace Engine {

// A formula that does not parse, or whose evaluation has no result (division by zero, a shift by 64, the root
// of -1). what() tells the reason and the place; who evaluates adds the node's name.
class FormulaError : public std::runtime_error {
public:
    FormulaError(const std::string& reason, std::size_t position);
    // Offset in the formula's text, from 0. Inside an Expression: where the formula mentions it.
    std::size_t Position() const { return position_; }

private:
    std::size_t position_;
};

// The names that a formula may use besides functions, PI and E. They are looked up before those, letter by
// letter, in the order variables, constants, expressions.
struct FormulaScope {
    std::vector<std::string_view> variables;                                // e.g. "FROM", "VAR_A", "W.Max"
    std::vector<std::pair<std::string_view, std::string_view>> constants;   // name and number
    std::vector<std::pair<std::string_view, std::string_view>> expressions; // name and formula
};

// Where an evaluation gets its values. Asked at most once a slot and evaluation (formulas of more than 64
// slots: at each mention), and only for what the result needs: not for the untaken branch of ?: nor behind a
// decided
// && or ||. What it throws passes through.
template <typename T>
class FormulaVariables {
public:
    virtual T Value(std::size_t slot) = 0;

protected:
    ~FormulaVariables() = default;
};

template <typename T>
class BasicFormula {
public:
    // Throws FormulaError when `text` does not parse, uses an unknown name or is too deep or too long.
    BasicFormula(std::string_view text, const FormulaScope& scope);

    // The values that the formula mentions, each once; Value(i) is asked for Slots()[i].
    const std::vector<FormulaSlot>& Slots() const { return program_.slots; }

    // Throws FormulaError when there is no result.
    T Evaluate(FormulaVariables<T>& variables) const;
    // For formulas without slots and tests: values in the order of Slots().
    T Evaluate(const T* values = nullptr) const;

private:
    FormulaProgram program_;
};

using IntegerFormula = BasicFormula<std::int64_t>;
using FloatFormula = BasicFormula<double>;

extern template class BasicFormula<std::int64_t>;
extern template class BasicFormula<double>;

} // namespace Engine
} // namespace GenApi_3_2
