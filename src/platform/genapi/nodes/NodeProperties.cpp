#include "platform/genapi/nodes/NodeProperties.h"

#include "platform/genapi/base/NumberText.h"

#include <algorithm>

namespace GenApi_3_2 {
namespace Engine {
namespace {

EVisibility VisibilityOfText(std::string_view text) {
    if (text == "Expert")
        return Expert;
    if (text == "Guru")
        return Guru;
    return text == "Invisible" ? Invisible : Beginner;
}

} // namespace

gcstring ToGc(std::string_view text) {
    return gcstring(text.data(), text.size());
}

gcstring NodeProperties::Name(bool isFullyQualified) const {
    gcstring name = ToGc(record_.name);
    if (!isFullyQualified)
        return name;
    return (record_.isStandardNameSpace ? gcstring("Std::") : gcstring("Cust::")) + name;
}

bool NodeProperties::Flag(ElementId id) const {
    return ParseBoolean(description_.Text(record_, id)).value_or(false);
}

EVisibility NodeProperties::Visibility() const {
    return std::max(VisibilityOfText(description_.Text(record_, ElementId::Visibility)),
                    VisibilityOfText(description_.Text(record_, ElementId::ImposedVisibility)));
}

void NodeProperties::GetNames(gcstring_vector& names) const {
    names.clear();
    names.push_back("Name");
    for (const Element& element : description_.Elements(record_)) {
        const gcstring name = ToText(element.id);
        if (std::find(names.begin(), names.end(), name) == names.end())
            names.push_back(name);
    }
}

bool NodeProperties::Get(const gcstring& name, gcstring& value, gcstring& attribute) const {
    value.clear();
    attribute.clear();
    if (name == "Name") {
        value = Name(false);
        return true;
    }
    const ElementId id = ElementIdOf(name.c_str());
    if (id == ElementId::Unknown)
        return false;
    bool isFound = false;
    for (const Element& element : description_.Elements(record_)) {
        if (element.id != id)
            continue;
        if (isFound) {
            value += '\t';
            attribute += '\t';
        }
        value += ToGc(ValueOf(element));
        attribute += ToGc(element.qualifierText);
        isFound = true;
    }
    return isFound;
}

// Elements that contain a node are shown by its name.
std::string_view NodeProperties::ValueOf(const Element& element) const {
    const bool isInner = element.text.empty() && element.target >= 0 &&
                         static_cast<std::size_t>(element.target) < description_.Nodes().size();
    return isInner ? description_.Nodes()[static_cast<std::size_t>(element.target)].name : element.text;
}

} // namespace Engine
} // namespace GenApi_3_2
