#include "platform/genapi/description/DescriptionElements.h"

#include "platform/genapi/base/NameTable.h"

#include <cstddef>

namespace GenApi_3_2 {
namespace Engine {

namespace {

constexpr const char* KindNames[] = {
    "",
    "Node",
    "Category",
    "Integer",
    "IntReg",
    "MaskedIntReg",
    "Float",
    "FloatReg",
    "Boolean",
    "Command",
    "Enumeration",
    "EnumEntry",
    "String",
    "StringReg",
    "Register",
    "SwissKnife",
    "IntSwissKnife",
    "Converter",
    "IntConverter",
    "Port",
    "ConfRom",
    "IntKey",
    "TextDesc",
    "DcamLock",
    "AdvFeatureLock",
    "SmartFeature",
    "StructReg",
    "StructEntry",
    "Group",
    "Extension",
};

constexpr const char* ElementNames[] = {"",
#define GENAPI_ELEMENT(name) #name,
                                        GENAPI_ELEMENTS(GENAPI_ELEMENT)
#undef GENAPI_ELEMENT
};

template <std::size_t Count>
NameTable TableOf(const char* const (&names)[Count]) {
    NameTable table;
    table.Reserve(Count);
    for (std::size_t i = 1; i < Count; ++i)
        table.Insert(names[i], static_cast<std::int32_t>(i));
    return table;
}

static_assert(sizeof(KindNames) / sizeof(KindNames[0]) == static_cast<std::size_t>(NodeKind::Extension) + 1,
              "every node type has a name");

} // namespace

const char* ToText(NodeKind kind) {
    return KindNames[static_cast<std::size_t>(kind)];
}
const char* ToText(ElementId id) {
    return ElementNames[static_cast<std::size_t>(id)];
}

NodeKind NodeKindOf(std::string_view name) {
    static const NameTable table = TableOf(KindNames);
    const std::int32_t found = table.Find(name);
    return found == NameTable::Missing ? NodeKind::Unknown : static_cast<NodeKind>(found);
}

ElementId ElementIdOf(std::string_view name) {
    static const NameTable table = TableOf(ElementNames);
    const std::int32_t found = table.Find(name);
    return found == NameTable::Missing ? ElementId::Unknown : static_cast<ElementId>(found);
}

// The enumerators stand in alphabetical order, capitals first: the references are the last ones.
bool IsReference(ElementId id) {
    return id >= ElementId::p1212Parser;
}

bool MayBeEmpty(ElementId id, NodeKind kind) {
    switch (id) {
    case ElementId::ToolTip:
    case ElementId::Description:
    case ElementId::DisplayName:
    case ElementId::DocuURL:
    case ElementId::Unit:
        return true;
    case ElementId::Value:
        return kind == NodeKind::String;
    default:
        return false;
    }
}

} // namespace Engine
} // namespace GenApi_3_2
