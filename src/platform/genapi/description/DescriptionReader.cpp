#include "platform/genapi/description/DescriptionReader.h"

#include "platform/genapi/base/NumberText.h"
#include "platform/genapi/description/DescriptionError.h"
#include "platform/genapi/description/DescriptionLimits.h"

#include <algorithm>
#include <bitset>
#include <limits>
#include <unordered_set>

namespace GenApi_3_2 {
namespace Engine {

namespace {

int IntegerOf(std::string_view text) {
    const std::int64_t value = ParseInteger(text).value_or(0);
    constexpr std::int64_t most = std::numeric_limits<int>::max();
    return static_cast<int>(std::clamp(value, -most, most));
}

// Names and texts of the file, quoted in messages that stay readable.
std::string Quoted(std::string_view text) {
    constexpr std::size_t longest = 100;
    std::string quoted = "'";
    quoted.append(text.substr(0, longest)).append(text.size() > longest ? "...'" : "'");
    return quoted;
}

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

// Calls `visit` for each element directly inside `parent`.
template <typename Visit>
void ForEachElement(pugi::xml_node parent, Visit visit) {
    for (pugi::xml_node xml = parent.first_child();; xml = xml.next_sibling()) {
        const pugi::xml_node_type type = xml.type();
        if (type == pugi::node_null)
            return;
        if (type == pugi::node_element)
            visit(xml);
    }
}

// Prefixes of namespaces are rare: only a name that is not found is searched for one.
template <typename Known>
Known Lookup(Known (*find)(std::string_view), const char* name) {
    const Known known = find(name);
    return known == Known::Unknown ? find(LocalName(name)) : known;
}

// Where bits lie is one statement: an entry with a Bit does not inherit LSB and MSB, nor the other way round.
bool IsBitPosition(ElementId id) {
    return id == ElementId::Bit || id == ElementId::LSB || id == ElementId::MSB;
}

} // namespace

DescriptionReader::DescriptionReader(Description& description)
    : description_(description), xml_(description.text_, description.arena_, description.fileName_) {}

void DescriptionReader::Read() {
    const pugi::xml_node root = xml_.Root();
    if (LocalName(root.name()) != "RegisterDescription")
        Refuse(xml_.LineOf(root), {},
               "root element is " + Quoted(root.name()) + ", not 'RegisterDescription'");
    ReadHeader(root);
    Reserve();
    ReadNodes(root, 0);
    ResolveReferences();
}

// A little more than descriptions of this length usually have, so that the tables rarely move.
void DescriptionReader::Reserve() {
    constexpr std::size_t bytesPerElement = 40;
    constexpr std::size_t bytesPerNode = 180;
    const std::size_t bytes = description_.text_.size();
    description_.elements_.reserve(std::min(bytes / bytesPerElement, MaxDescriptionElements));
    description_.nodes_.reserve(std::min(bytes / bytesPerNode, MaxDescriptionNodes));
    description_.names_.Reserve(std::min(bytes / bytesPerNode, MaxDescriptionNodes));
}

void DescriptionReader::ReadHeader(pugi::xml_node root) {
    DescriptionHeader& header = description_.header_;
    const auto number = [root](const char* name) { return IntegerOf(AttributeText(root, name)); };
    header.modelName = AttributeText(root, "ModelName");
    header.vendorName = AttributeText(root, "VendorName");
    header.toolTip = AttributeText(root, "ToolTip");
    header.standardNameSpace = AttributeText(root, "StandardNameSpace");
    header.productGuid = AttributeText(root, "ProductGuid");
    header.versionGuid = AttributeText(root, "VersionGuid");
    header.schemaMajorVersion = number("SchemaMajorVersion");
    header.schemaMinorVersion = number("SchemaMinorVersion");
    header.schemaSubMinorVersion = number("SchemaSubMinorVersion");
    header.majorVersion = number("MajorVersion");
    header.minorVersion = number("MinorVersion");
    header.subMinorVersion = number("SubMinorVersion");
}

void DescriptionReader::ReadNodes(pugi::xml_node parent, int depth) {
    if (depth > MaxDescriptionDepth)
        Refuse(xml_.LineOf(parent), {}, "groups nest too deeply");
    ForEachElement(parent, [&](pugi::xml_node xml) { ReadAny(xml, depth); });
}

void DescriptionReader::ReadAny(pugi::xml_node xml, int depth) {
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
        Note(xml_.LineOf(xml), AttributeText(xml, "Name"),
             "unknown node type " + Quoted(LocalName(xml.name())) + " is skipped");
        break;
    default:
        ReadNode(xml, kind);
    }
}

void DescriptionReader::ReadNode(pugi::xml_node xml, NodeKind kind) {
    const std::string_view name = AttributeText(xml, "Name");
    if (!Admit(name, ToText(kind), NextIndex(), xml_.LineOf(xml)))
        return;
    const std::int32_t index = BeginRecord(xml, kind, name);
    Context context{kind, name, index + 1, {}};
    ReadElements(xml, context);
    EndRecord(index);
    ReadContained(context, index);
}

// The structure's own elements are read once, taken off again and given to each of its entries.
void DescriptionReader::ReadStructure(pugi::xml_node xml) {
    const std::size_t mark = description_.elements_.size();
    const std::string_view name = AttributeText(xml, "Name");
    Context context{NodeKind::StructReg, name, NextIndex(), {}};
    ReadElements(xml, context);
    const auto first = description_.elements_.begin() + static_cast<std::ptrdiff_t>(mark);
    const std::vector<Element> common(first, description_.elements_.end());
    description_.elements_.erase(first, description_.elements_.end());
    ReadContained(context, NoNode);
    const bool isStandard = AttributeText(xml, "NameSpace") == "Standard";
    ForEachElement(xml, [&](pugi::xml_node child) {
        if (LocalName(child.name()) == "StructEntry")
            ReadStructEntry(child, common, isStandard);
    });
}

void DescriptionReader::ReadStructEntry(pugi::xml_node xml, const std::vector<Element>& common,
                                        bool isStandard) {
    const std::string_view name = AttributeText(xml, "Name");
    if (!Admit(name, "StructEntry", NextIndex(), xml_.LineOf(xml)))
        return;
    const std::int32_t index = BeginRecord(xml, NodeKind::MaskedIntReg, name);
    NodeRecord& record = description_.nodes_.back();
    if (!xml.attribute("NameSpace"))
        record.isStandardNameSpace = isStandard;
    const std::size_t firstOwn = record.firstElement;
    Context context{NodeKind::MaskedIntReg, name, index + 1, {}};
    ReadElements(xml, context);
    std::bitset<256> own;
    for (std::size_t i = firstOwn; i < description_.elements_.size(); ++i)
        own.set(static_cast<std::size_t>(description_.elements_[i].id));
    const auto gives = [&own](ElementId id) { return own.test(static_cast<std::size_t>(id)); };
    const bool givesBits = gives(ElementId::Bit) || gives(ElementId::LSB) || gives(ElementId::MSB);
    for (const Element& element : common)
        if (!gives(element.id) && !(givesBits && IsBitPosition(element.id)))
            Append(element, name);
    EndRecord(index);
    ReadContained(context, index);
}

void DescriptionReader::ReadContained(const Context& context, std::int32_t owner) {
    for (const Contained& contained : context.contained) {
        const std::int32_t index = BeginRecord(contained.xml, contained.kind, contained.name);
        Context inner{contained.kind, contained.name, NoNode, {}};
        ReadElements(contained.xml, inner);
        EndRecord(index);
        NodeRecord& record = description_.nodes_[static_cast<std::size_t>(index)];
        record.owner = owner;
        record.isEmbedded = contained.kind == NodeKind::IntSwissKnife;
        record.symbolicName = description_.Text(record, ElementId::Symbolic, contained.symbolicName);
    }
}

bool DescriptionReader::Admit(std::string_view name, std::string_view what, std::int32_t index,
                              std::uint32_t line) {
    if (name.empty() || name.size() > MaxNodeName) {
        Note(line, {},
             std::string(what) + (name.empty() ? " without a name" : " with a name too long") +
                 " is skipped");
        return false;
    }
    if (description_.names_.Insert(name, index))
        return true;
    Note(line, name, "another node has this name already; this one is skipped");
    return false;
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
    record.firstElement = static_cast<std::uint32_t>(description_.elements_.size());
    if (description_.nodes_.size() >= MaxDescriptionNodes)
        Refuse(record.line, name,
               "description has more than " + std::to_string(MaxDescriptionNodes) + " nodes");
    description_.nodes_.push_back(record);
    return NextIndex() - 1;
}

void DescriptionReader::EndRecord(std::int32_t index) {
    NodeRecord& record = description_.nodes_[static_cast<std::size_t>(index)];
    record.elementCount = static_cast<std::uint32_t>(description_.elements_.size() - record.firstElement);
}

void DescriptionReader::ReadElements(pugi::xml_node xml, Context& context) {
    ForEachElement(xml, [&](pugi::xml_node child) { ReadElement(child, context); });
}

void DescriptionReader::ReadElement(pugi::xml_node xml, Context& context) {
    Element element;
    const char* const name = xml.name();
    element.id = Lookup(ElementIdOf, name);
    element.line = xml_.LineOf(name);
    switch (element.id) {
    case ElementId::Unknown:
        Note(element.line, context.name, "unknown element " + Quoted(LocalName(name)) + " is skipped");
        break;
    case ElementId::Extension:
        break;
    case ElementId::EnumEntry:
        return ReadEntry(xml, element, context);
    case ElementId::IntSwissKnife:
        return ReadEmbedded(xml, element, context);
    case ElementId::StructEntry:
        if (context.kind != NodeKind::StructReg)
            Note(element.line, context.name, "StructEntry outside a StructReg is skipped");
        return;
    default:
        return ReadPlain(xml, element, context);
    }
    xml_.CheckDepth(xml, context.name);
}

void DescriptionReader::ReadPlain(pugi::xml_node xml, Element element, const Context& context) {
    const pugi::xml_node inside = xml.first_child();
    if (inside.type() != pugi::node_null)
        xml_.CheckDepth(xml, context.name);
    element.text = xml_.TextOf(xml, inside);
    if (element.text.empty() && !MayBeEmpty(element.id, context.kind)) {
        Note(element.line, context.name, std::string(ToText(element.id)) + " without a value is skipped");
        return;
    }
    if (!ReadQualifier(xml, element, context))
        return;
    CountFormula(element, context.name);
    Append(element, context.name);
}

bool DescriptionReader::ReadQualifier(pugi::xml_node xml, Element& element, const Context& context) {
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
        Note(element.line, context.name,
             std::string(ToText(element.id)) + " without " + missing + " is skipped");
    return missing == nullptr;
}

void DescriptionReader::ReadEntry(pugi::xml_node xml, Element element, Context& context) {
    const std::string_view symbolic = AttributeText(xml, "Name");
    if (context.kind != NodeKind::Enumeration || symbolic.empty() || !HasValue(xml)) {
        Note(element.line, context.name,
             "EnumEntry " + Quoted(symbolic) +
                 (context.kind != NodeKind::Enumeration ? " outside an Enumeration"
                  : symbolic.empty()                    ? " without a name"
                                                        : " without a value") +
                 " is skipped");
        return;
    }
    std::string name = "EnumEntry_";
    name.append(context.name).append("_").append(symbolic);
    element.text = xml_.Keep(std::move(name), element.line);
    element.target = context.next + static_cast<std::int32_t>(context.contained.size());
    if (!Admit(element.text, "EnumEntry", element.target, element.line))
        return;
    context.contained.push_back({xml, NodeKind::EnumEntry, element.text, symbolic});
    Append(element, context.name);
}

bool DescriptionReader::HasValue(pugi::xml_node xml) {
    bool found = false;
    ForEachElement(xml, [&](pugi::xml_node child) {
        found = found || (LocalName(child.name()) == "Value" && !xml_.TextOf(child).empty());
    });
    return found;
}

// Inside a register such a node need not be named; as a record it is.
void DescriptionReader::ReadEmbedded(pugi::xml_node xml, Element element, Context& context) {
    if (!IsRegister(context.kind) || context.next == NoNode) {
        Note(element.line, context.name, "IntSwissKnife outside a register is skipped");
        return;
    }
    element.target = context.next + static_cast<std::int32_t>(context.contained.size());
    element.text = AttributeText(xml, "Name");
    if (element.text.empty() || description_.names_.Find(element.text) != NameTable::Missing) {
        std::string name(context.name);
        name.append("_IntSwissKnife_").append(std::to_string(element.line));
        name.append("_").append(std::to_string(context.contained.size()));
        element.text = xml_.Keep(std::move(name), element.line);
    }
    if (!Admit(element.text, "IntSwissKnife", element.target, element.line))
        return;
    context.contained.push_back({xml, NodeKind::IntSwissKnife, element.text, element.text});
    Append(element, context.name);
}

void DescriptionReader::Append(const Element& element, std::string_view node) {
    if (description_.elements_.size() >= MaxDescriptionElements)
        Refuse(element.line, node, "description has too many elements");
    description_.elements_.push_back(element);
}

// Compiled formulas are many times as large as their texts.
void DescriptionReader::CountFormula(const Element& element, std::string_view node) {
    const bool isFormula = element.id == ElementId::Formula || element.id == ElementId::FormulaTo ||
                           element.id == ElementId::FormulaFrom || element.id == ElementId::Expression;
    formulaBytes_ += isFormula ? element.text.size() : 0;
    if (formulaBytes_ > MaxFormulaText)
        Refuse(element.line, node, "formulas are longer than 1 MiB together");
}

// Inherited elements stand in several records; what is wrong with them is said once.
void DescriptionReader::ResolveReferences() {
    std::unordered_set<const char*> reported;
    const auto resolve = [&](const NodeRecord& node, const Element& element, std::string_view name,
                             std::int32_t& target) {
        target = description_.IndexOf(name);
        if (target == NoNode && reported.insert(name.data()).second)
            Note(element.line, node.name,
                 std::string(ToText(element.id)) + " names " + Quoted(name) + ", which does not exist");
    };
    for (const NodeRecord& node : description_.nodes_)
        for (std::uint32_t i = 0; i < node.elementCount; ++i) {
            Element& element = description_.elements_[node.firstElement + i];
            if (IsReference(element.id))
                resolve(node, element, element.text, element.target);
            if (element.qualifier == Qualifier::pOffset)
                resolve(node, element, element.qualifierText, element.qualifierTarget);
        }
}

void DescriptionReader::Note(std::uint32_t line, std::string_view node, std::string text) {
    if (description_.problems_.size() < Description::MaxProblems)
        description_.problems_.push_back({line, std::string(node.substr(0, MaxNodeName)), std::move(text)});
    else
        ++description_.suppressedProblems_;
}

void DescriptionReader::Refuse(std::uint32_t line, std::string_view node, std::string_view reason) const {
    ThrowDescriptionError(description_.fileName_, line, node, reason);
}

} // namespace Engine
} // namespace GenApi_3_2
