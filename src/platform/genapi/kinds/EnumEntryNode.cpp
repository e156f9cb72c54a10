#include "platform/genapi/kinds/EnumEntryNode.h"

#include "platform/genapi/base/NumberText.h"

namespace GenApi_3_2 {
namespace Engine {

bool EnumEntryNode::Take(const Element& element) {
    switch (element.id) {
    case ElementId::Value:
        if (const auto value = ParseInteger(element.text)) {
            value_ = *value;
            hasValue_ = true;
        } else {
            SetBroken(&element, "Value '" + std::string(element.text) + "' is no integer");
        }
        return true;
    case ElementId::NumericValue:
        numeric_ = ParseFloat(element.text);
        if (!numeric_)
            Report(element, "NumericValue '" + std::string(element.text) + "' is no number");
        return true;
    case ElementId::Symbolic:
        symbolic_ = element.text;
        return true;
    case ElementId::IsSelfClearing:
        isSelfClearing_ = ParseBoolean(element.text).value_or(false);
        return true;
    default:
        return false;
    }
}

void EnumEntryNode::Finish() {
    if (!hasValue_)
        SetBroken(nullptr, "has no value");
    if (symbolic_.empty())
        symbolic_ = Record().symbolicName;
}

std::int64_t EnumEntryNode::GetValue() {
    return Locked([&] { return GetInteger(); });
}

gcstring EnumEntryNode::GetSymbolic() const {
    const std::string_view name = symbolic_.empty() ? Record().symbolicName : symbolic_;
    return gcstring(name.data(), name.size());
}

gcstring EnumEntryNode::GetDisplayName() const {
    const gcstring text = NodeBase::GetDisplayName();
    return text == GetName() ? GetSymbolic() : text;
}

} // namespace Engine
} // namespace GenApi_3_2
