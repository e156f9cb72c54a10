#include "platform/genapi/kinds/NodeFormula.h"

#include "platform/genapi/nodes/NumberKind.h"

#include <algorithm>
#include <type_traits>

namespace GenApi_3_2 {
namespace Engine {

using GenICam_3_2::RuntimeException;

bool FormulaInputs::Take(const Element& element) {
    switch (element.id) {
    case ElementId::pVariable:
        scope_.variables.push_back(element.qualifierText);
        variables_.push_back(&element);
        return true;
    case ElementId::Constant:
        scope_.constants.emplace_back(element.qualifierText, element.text);
        return true;
    case ElementId::Expression:
        scope_.expressions.emplace_back(element.qualifierText, element.text);
        return true;
    default:
        return false;
    }
}

namespace {

std::int64_t IncrementOf(const IntegerRange& range) {
    return range.inc;
}
double IncrementOf(const FloatRange& range) {
    return range.inc.value_or(0);
}

} // namespace

template <class T>
class NodeFormula<T>::Asker final : public FormulaVariables<T> {
public:
    Asker(const std::vector<Slot>& slots, T argument, bool ignoreCache)
        : slots_(slots), argument_(argument), ignoreCache_(ignoreCache) {}

    T Value(std::size_t index) override {
        const Slot& slot = slots_[index];
        if (slot.kind == Kind::Argument)
            return argument_;
        if (slot.kind != Kind::Value)
            return Bound(slot);
        // Enumerations count by their values here, whatever numbers they show to a Float.
        if constexpr (std::is_same_v<T, double>)
            return slot.node->GetFloat(ignoreCache_);
        else
            return slot.node->GetInteger(ignoreCache_);
    }

private:
    static T Bound(const Slot& slot) {
        const auto range = NumberKind<T>::RangeOf(*slot.node);
        if (slot.kind == Kind::Inc)
            return IncrementOf(range);
        return slot.kind == Kind::Min ? range.min : range.max;
    }

    const std::vector<Slot>& slots_;
    T argument_;
    bool ignoreCache_;
};

template <class T>
void NodeFormula<T>::Compile(NodeBase& owner, const FormulaInputs& inputs, std::string_view argument) {
    if (!element_)
        return owner.SetBroken(nullptr, "has no formula");
    FormulaScope withArgument;
    if (!argument.empty()) {
        withArgument = inputs.scope_;
        withArgument.variables.insert(withArgument.variables.begin(), argument);
    }
    const FormulaScope& scope = argument.empty() ? inputs.scope_ : withArgument;
    try {
        formula_ = std::make_unique<BasicFormula<T>>(element_->text, scope);
    } catch (const FormulaError& error) {
        return owner.SetBroken(element_, "formula '" + std::string(element_->text.substr(0, 200)) +
                                             "': " + error.what());
    }
    for (const FormulaSlot& slot : formula_->Slots())
        if (!Resolve(owner, inputs, slot, argument.empty() ? 0 : 1))
            return;
}

template <class T>
bool NodeFormula<T>::Resolve(NodeBase& owner, const FormulaInputs& inputs, const FormulaSlot& slot,
                             std::size_t firstVariable) {
    if (slot.variable < firstVariable) {
        slots_.push_back({nullptr, Kind::Argument});
        return true;
    }
    const Element& variable = *inputs.variables_[slot.variable - firstVariable];
    NodeBase* node = owner.Context().NodeAt(variable.target);
    if (!node) {
        owner.SetBroken(&variable, "pVariable names the unknown node '" + std::string(variable.text) + "'",
                        false);
        return false;
    }
    Kind kind = Kind::Value;
    if (slot.suffix == "Min" || slot.suffix == "Max" || slot.suffix == "Inc")
        kind = slot.suffix == "Min" ? Kind::Min : slot.suffix == "Max" ? Kind::Max : Kind::Inc;
    else if (slot.suffix.compare(0, 6, "Entry.") == 0)
        node = EntryOf(*node, std::string_view(slot.suffix).substr(6));
    else if (!slot.suffix.empty() && slot.suffix != "Value")
        node = nullptr;
    if (!node) {
        owner.SetBroken(element_, "'" + std::string(variable.text) + "' has no '" + slot.suffix + "'");
        return false;
    }
    owner.AddLink(*node, kind == Kind::Value ? Role::Variable : Role::BoundOf);
    slots_.push_back({node, kind});
    return true;
}

template <class T>
NodeBase* NodeFormula<T>::EntryOf(NodeBase& enumeration, std::string_view entry) const {
    if (entry.size() > 6 && entry.substr(entry.size() - 6) == ".Value")
        entry.remove_suffix(6);
    const std::string name = "EnumEntry_" + std::string(enumeration.Name()) + "_" + std::string(entry);
    return enumeration.Context().NodeAt(enumeration.Context().Text().IndexOf(name));
}

template <class T>
bool NodeFormula<T>::UsesArgument() const {
    return std::any_of(slots_.begin(), slots_.end(),
                       [](const Slot& slot) { return slot.kind == Kind::Argument; });
}

template <class T>
T NodeFormula<T>::Evaluate(const NodeBase& owner, bool ignoreCache, T argument) const {
    Asker asker(slots_, argument, ignoreCache);
    try {
        return formula_->Evaluate(asker);
    } catch (const FormulaError& error) {
        Fail<RuntimeException>(owner, "formula '" + std::string(element_->text.substr(0, 200)) + "' (line " +
                                          std::to_string(element_->line) + "): " + error.what());
    }
}

template class NodeFormula<std::int64_t>;
template class NodeFormula<double>;

} // namespace Engine
} // namespace GenApi_3_2
