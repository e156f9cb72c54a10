#include "platform/genapi/description/ElementReader.h"

#include "platform/genapi/description/DescriptionError.h"
#include "platform/genapi/description/DescriptionLimits.h"

#include <utility>

namespace GenApi_3_2 {
namespace Engine {

namespace {

bool IsRegister(NodeKind kind) {
    switch (kind) {
    case NodeKind::IntReg:
    case NodeKind::MaskedIntReg:
    case NodeKind::FloatReg:
    case NodeKind::StringReg:
    case NodeKind::Register:
    case NodeKind::StructReg:
    case NodeKind::ConfRom:
        return true;
    default:
        return false;
    }
}

} // namespace

void ElementReader::Read(pugi::xml_node xml, ElementOwner& owner) {
    ForEachElement(xml, [&](pugi::xml_node child) { ReadElement(child, owner); });
}

void ElementReader::ReadElement(pugi::xml_node xml, ElementOwner& owner) {
    xml_.CheckAttributes(xml, owner.name);
    Element element;
    const char* const name = xml.name();
    element.id = Lookup(ElementIdOf, name);
    element.line = xml_.LineOf(name);
    switch (element.id) {
    case ElementId::Unknown:
        draft_.Note(element.line, owner.name, "unknown element " + Quoted(LocalName(name)) + " is skipped");
        break;
    case ElementId::Extension:
        break;
    case ElementId::EnumEntry:
        return ReadEntry(xml, element, owner);
    case ElementId::IntSwissKnife:
        return ReadEmbedded(xml, element, owner);
    case ElementId::StructEntry:
        if (owner.kind != NodeKind::StructReg)
            draft_.Note(element.line, owner.name, "StructEntry outside a StructReg is skipped");
        return;
    default:
        return ReadPlain(xml, element, owner);
    }
    xml_.CheckDepth(xml, owner.name);
}

void ElementReader::ReadPlain(pugi::xml_node xml, Element element, const ElementOwner& owner) {
    const pugi::xml_node inside = xml.first_child();
    if (inside.type() != pugi::node_null)
        xml_.CheckDepth(xml, owner.name);
    element.text = xml_.TextOf(xml, inside);
    if (element.text.empty() && !MayBeEmpty(element.id, owner.kind)) {
        draft_.Note(element.line, owner.name,
                    std::string(ToText(element.id)) + " without a value is skipped");
        return;
    }
    if (!ReadQualifier(xml, element, owner))
        return;
    CountFormula(element, owner.name);
    draft_.Append(element, owner.name);
}

bool ElementReader::ReadQualifier(pugi::xml_node xml, Element& element, const ElementOwner& owner) {
    const auto take = [&](Qualifier qualifier, const char* attribute) {
        element.qualifierText = AttributeText(xml, attribute);
        if (!element.qualifierText.empty())
            element.qualifier = qualifier;
        return !element.qualifierText.empty();
    };
    const char* missing = nullptr;
    switch (element.id) {
    case ElementId::pVariable:
    case ElementId::Constant:
    case ElementId::Expression:
        missing = take(Qualifier::Name, "Name") ? nullptr : "Name";
        break;
    case ElementId::ValueIndexed:
    case ElementId::pValueIndexed:
        missing = take(Qualifier::Index, "Index") ? nullptr : "Index";
        break;
    case ElementId::pIndex:
        if (!take(Qualifier::Offset, "Offset"))
            take(Qualifier::pOffset, "pOffset");
        break;
    default:
        break;
    }
    if (missing != nullptr)
        draft_.Note(element.line, owner.name,
                    std::string(ToText(element.id)) + " without " + missing + " is skipped");
    return missing == nullptr;
}

void ElementReader::ReadEntry(pugi::xml_node xml, Element element, ElementOwner& owner) {
    const std::string_view symbolic = AttributeText(xml, "Name");
    if (owner.kind != NodeKind::Enumeration || symbolic.empty() || !HasValue(xml)) {
        draft_.Note(element.line, owner.name,
                    "EnumEntry " + Quoted(symbolic) +
                        (owner.kind != NodeKind::Enumeration ? " outside an Enumeration"
                         : symbolic.empty()                  ? " without a name"
                                                             : " without a value") +
                        " is skipped");
        return;
    }
    std::string name = "EnumEntry_";
    name.append(owner.name).append("_").append(symbolic);
    element.text = xml_.Keep(std::move(name), element.line);
    element.target = owner.next + static_cast<std::int32_t>(owner.contained.size());
    Contain(xml, NodeKind::EnumEntry, symbolic, element, owner);
}

bool ElementReader::HasValue(pugi::xml_node xml) {
    bool found = false;
    ForEachElement(xml, [&](pugi::xml_node child) {
        found = found || (LocalName(child.name()) == "Value" && !xml_.TextOf(child).empty());
    });
    return found;
}

// Inside a register such a node need not be named; as a record it is.
void ElementReader::ReadEmbedded(pugi::xml_node xml, Element element, ElementOwner& owner) {
    if (!IsRegister(owner.kind) || owner.next == NoNode) {
        draft_.Note(element.line, owner.name, "IntSwissKnife outside a register is skipped");
        return;
    }
    element.target = owner.next + static_cast<std::int32_t>(owner.contained.size());
    element.text = AttributeText(xml, "Name");
    if (element.text.empty() || draft_.IsTaken(element.text)) {
        std::string name(owner.name);
        name.append("_IntSwissKnife_").append(std::to_string(element.line));
        name.append("_").append(std::to_string(owner.contained.size()));
        element.text = xml_.Keep(std::move(name), element.line);
    }
    Contain(xml, NodeKind::IntSwissKnife, element.text, element, owner);
}

// Compiled formulas are many times as large as their texts.
void ElementReader::CountFormula(const Element& element, std::string_view node) {
    const bool isFormula = element.id == ElementId::Formula || element.id == ElementId::FormulaTo ||
                           element.id == ElementId::FormulaFrom || element.id == ElementId::Expression;
    formulaBytes_ += isFormula ? element.text.size() : 0;
    if (formulaBytes_ > MaxFormulaText)
        draft_.Refuse(element.line, node, "formulas are longer than 1 MiB together");
}

void ElementReader::Contain(pugi::xml_node xml, NodeKind kind, std::string_view symbolicName,
                            const Element& element, ElementOwner& owner) {
    if (!draft_.Admit(element.text, ToText(kind), element.target, element.line))
        return;
    owner.contained.push_back({xml, kind, element.text, symbolicName});
    draft_.Append(element, owner.name);
}

} // namespace Engine
} // namespace GenApi_3_2
