#include "platform/genapi/description/DescriptionReader.h"

#include "platform/genapi/base/NumberText.h"
#include "platform/genapi/description/DescriptionError.h"
#include "platform/genapi/description/DescriptionLimits.h"

#include <algorithm>
#include <bitset>
#include <limits>

namespace GenApi_3_2 {
namespace Engine {

namespace {

int IntegerOf(std::string_view text) {
    const std::int64_t value = ParseInteger(text).value_or(0);
    constexpr std::int64_t Most = std::numeric_limits<int>::max();
    return static_cast<int>(std::clamp(value, -Most, Most));
}

// Where bits lie is one statement: an entry with a Bit does not inherit LSB and MSB, nor the other way round.
bool IsBitPosition(ElementId id) {
    return id == ElementId::Bit || id == ElementId::LSB || id == ElementId::MSB;
}

} // namespace

DescriptionReader::DescriptionReader(Description& description)
    : draft_(description), elements_(draft_), xml_(draft_.Xml()) {}

void DescriptionReader::Read() {
    const pugi::xml_node root = xml_.Root();
    if (LocalName(root.name()) != "RegisterDescription")
        draft_.Refuse(xml_.LineOf(root), {},
                      "root element is " + Quoted(root.name()) + ", not 'RegisterDescription'");
    xml_.CheckAttributes(root, {});
    ReadHeader(root);
    ReadNodes(root, 0);
    draft_.ResolveReferences();
}

void DescriptionReader::ReadHeader(pugi::xml_node root) {
    DescriptionHeader& header = draft_.Header();
    const auto number = [root](const char* name) { return IntegerOf(AttributeText(root, name)); };
    header.modelName = AttributeText(root, "ModelName");
    header.vendorName = AttributeText(root, "VendorName");
    header.toolTip = AttributeText(root, "ToolTip");
    header.standardNameSpace = AttributeText(root, "StandardNameSpace");
    header.productGuid = AttributeText(root, "ProductGuid");
    header.versionGuid = AttributeText(root, "VersionGuid");
    header.schemaMajorVersion = number("SchemaMajorVersion");
    if (const std::string_view major = AttributeText(root, "SchemaMajorVersion");
        root.attribute("SchemaMajorVersion") && header.schemaMajorVersion != 1)
        draft_.Refuse(xml_.LineOf(root), {}, "schema version " + Quoted(major) + " is none that is known: 1");
    header.schemaMinorVersion = number("SchemaMinorVersion");
    header.schemaSubMinorVersion = number("SchemaSubMinorVersion");
    header.majorVersion = number("MajorVersion");
    header.minorVersion = number("MinorVersion");
    header.subMinorVersion = number("SubMinorVersion");
}

void DescriptionReader::ReadNodes(pugi::xml_node parent, int depth) {
    if (depth > MaxDescriptionDepth)
        draft_.Refuse(xml_.LineOf(parent), {}, "groups nest too deeply");
    ForEachElement(parent, [&](pugi::xml_node xml) { ReadAny(xml, depth); });
}

void DescriptionReader::ReadAny(pugi::xml_node xml, int depth) {
    xml_.CheckAttributes(xml, {});
    const NodeKind kind = Lookup(NodeKindOf, xml.name());
    switch (kind) {
    case NodeKind::Group:
        ReadNodes(xml, depth + 1);
        break;
    case NodeKind::StructReg:
        ReadStructure(xml);
        break;
    case NodeKind::Extension:
        xml_.CheckDepth(xml, {});
        break;
    case NodeKind::Unknown:
    case NodeKind::EnumEntry:
    case NodeKind::StructEntry:
        xml_.CheckDepth(xml, {});
        draft_.Note(xml_.LineOf(xml), AttributeText(xml, "Name"),
                    "unknown node type " + Quoted(LocalName(xml.name())) + " is skipped");
        break;
    default:
        ReadNode(xml, kind);
    }
}

void DescriptionReader::ReadNode(pugi::xml_node xml, NodeKind kind) {
    const std::string_view name = AttributeText(xml, "Name");
    if (!draft_.Admit(name, ToText(kind), draft_.NextIndex(), xml_.LineOf(xml)))
        return;
    const std::int32_t index = BeginRecord(xml, kind, name);
    ElementOwner owner{kind, name, index + 1, {}};
    elements_.Read(xml, owner);
    draft_.EndRecord(index);
    ReadContained(owner, index);
}

// The structure's own elements are read once, taken off again and given to each of its entries.
void DescriptionReader::ReadStructure(pugi::xml_node xml) {
    const std::size_t mark = draft_.Elements().size();
    const std::string_view name = AttributeText(xml, "Name");
    ElementOwner owner{NodeKind::StructReg, name, draft_.NextIndex(), {}};
    elements_.Read(xml, owner);
    const auto first = draft_.Elements().begin() + static_cast<std::ptrdiff_t>(mark);
    const std::vector<Element> common(first, draft_.Elements().end());
    draft_.Elements().erase(first, draft_.Elements().end());
    ReadContained(owner, NoNode);
    const bool isStandard = AttributeText(xml, "NameSpace") == "Standard";
    ForEachElement(xml, [&](pugi::xml_node child) {
        if (LocalName(child.name()) == "StructEntry")
            ReadStructEntry(child, common, isStandard);
    });
}

void DescriptionReader::ReadStructEntry(pugi::xml_node xml, const std::vector<Element>& common,
                                        bool isStandard) {
    const std::string_view name = AttributeText(xml, "Name");
    if (!draft_.Admit(name, "StructEntry", draft_.NextIndex(), xml_.LineOf(xml)))
        return;
    const std::int32_t index = BeginRecord(xml, NodeKind::MaskedIntReg, name);
    NodeRecord& record = draft_.Record(index);
    if (!xml.attribute("NameSpace"))
        record.isStandardNameSpace = isStandard;
    const std::size_t firstOwn = record.firstElement;
    ElementOwner owner{NodeKind::MaskedIntReg, name, index + 1, {}};
    elements_.Read(xml, owner);
    std::bitset<256> own;
    for (std::size_t i = firstOwn; i < draft_.Elements().size(); ++i)
        own.set(static_cast<std::size_t>(draft_.Elements()[i].id));
    const auto gives = [&own](ElementId id) { return own.test(static_cast<std::size_t>(id)); };
    const bool givesBits = gives(ElementId::Bit) || gives(ElementId::LSB) || gives(ElementId::MSB);
    for (const Element& element : common)
        if (!gives(element.id) && !(givesBits && IsBitPosition(element.id)))
            draft_.Append(element, name);
    draft_.EndRecord(index);
    ReadContained(owner, index);
}

void DescriptionReader::ReadContained(const ElementOwner& outer, std::int32_t owner) {
    for (const ContainedNode& contained : outer.contained) {
        const std::int32_t index = BeginRecord(contained.xml, contained.kind, contained.name);
        ElementOwner inner{contained.kind, contained.name, NoNode, {}};
        elements_.Read(contained.xml, inner);
        draft_.EndRecord(index);
        NodeRecord& record = draft_.Record(index);
        record.owner = owner;
        record.isEmbedded = contained.kind == NodeKind::IntSwissKnife;
        record.symbolicName = draft_.Text(record, ElementId::Symbolic, contained.symbolicName);
    }
}

std::int32_t DescriptionReader::BeginRecord(pugi::xml_node xml, NodeKind kind, std::string_view name) {
    NodeRecord record;
    record.kind = kind;
    for (pugi::xml_attribute at = xml.first_attribute(); at; at = at.next_attribute()) {
        const std::string_view attribute = at.name();
        if (attribute == "NameSpace")
            record.isStandardNameSpace = Strip(at.value()) == "Standard";
        else if (attribute == "ExposeStatic")
            record.exposeStatic = ParseBoolean(at.value()).value_or(false);
        else if (attribute == "MergePriority")
            record.mergePriority = IntegerOf(at.value());
    }
    record.line = xml_.LineOf(xml);
    record.name = name;
    record.symbolicName = name;
    return draft_.BeginRecord(record);
}

} // namespace Engine
} // namespace GenApi_3_2
