// A formula whose variables are nodes. Part of the SwissKnife and Converter nodes. T is std::int64_t where
// all is calculated in integers, double otherwise.
#pragma once

#include "platform/genapi/formula/Formula.h"
#include "platform/genapi/nodes/NodeBase.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace GenApi_3_2 {
namespace Engine {

// The pVariable, Constant and Expression elements of a node, gathered before its formulas are compiled.
class FormulaInputs {
public:
    bool Take(const Element& element);

private:
    template <class T>
    friend class NodeFormula;
    FormulaScope scope_;
    std::vector<const Element*> variables_; // as in scope_
};

template <class T>
class NodeFormula {
public:
    void SetText(const Element& element) { element_ = &element; }

    // `argument` is the name of the value given to Evaluate, empty for none. Switches the owner off when the
    // formula does not parse or uses what does not exist.
    void Compile(NodeBase& owner, const FormulaInputs& inputs, std::string_view argument = {});
    // The result depends on the value given to Evaluate.
    bool UsesArgument() const;
    // Throws RuntimeException when there is no result.
    T Evaluate(const NodeBase& owner, bool ignoreCache, T argument = T()) const;

private:
    enum class Kind : std::uint8_t { Argument, Value, Min, Max, Inc };
    struct Slot {
        NodeBase* node;
        Kind kind;
    };
    class Asker;
    bool Resolve(NodeBase& owner, const FormulaInputs& inputs, const FormulaSlot& slot,
                 std::size_t firstVariable);
    NodeBase* EntryOf(NodeBase& enumeration, std::string_view entry) const;

    const Element* element_ = nullptr;
    std::unique_ptr<BasicFormula<T>> formula_;
    std::vector<Slot> slots_;
};

extern template class NodeFormula<std::int64_t>;
extern template class NodeFormula<double>;

} // namespace Engine
} // namespace GenApi_3_2
