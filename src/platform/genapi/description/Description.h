// A camera description as plain immutable records: what the XML says, node by node, with lines for messages.
// Knows nothing of values, registers or access. Owned by the node map built from it (shared, read-only);
// every string_view here points into the Description and lives as long as it does. Follows GenApi schema 1.0
// and 1.1.
#pragma once

#include "platform/genapi/base/NameTable.h"
#include "platform/genapi/description/DescriptionElements.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace GenApi_3_2 {
namespace Engine {

// Stands for "no such node" wherever a node index is kept.
constexpr std::int32_t NoNode = -1;

// The attribute that qualifies an element: Name of pVariable, Constant and Expression; Index of ValueIndexed
// and pValueIndexed; Offset or pOffset of pIndex.
enum class Qualifier : std::uint8_t { None, Name, Index, Offset, pOffset };

// One element of a node, e.g. <pMax>WidthMax</pMax>. Texts are stripped of blanks and entities are resolved.
struct Element {
    ElementId id = ElementId::Unknown;
    Qualifier qualifier = Qualifier::None;
    std::uint32_t line = 0;
    // References (names that begin with p): the index of the named node, NoNode when there is none (a Problem
    // says so). EnumEntry and IntSwissKnife: the index of the record that the element contains.
    std::int32_t target = NoNode;
    // For Qualifier::pOffset: the index of the node that the attribute names.
    std::int32_t qualifierTarget = NoNode;
    std::string_view text;
    std::string_view qualifierText;
};

// The elements of one node in document order; a view into the Description.
class ElementList {
public:
    ElementList() = default;
    ElementList(const Element* first, std::size_t count) : first_(first), count_(count) {}
    const Element* begin() const { return first_; }
    const Element* end() const { return first_ + count_; }
    std::size_t size() const { return count_; }

private:
    const Element* first_ = nullptr;
    std::size_t count_ = 0;
};

// One node. StructEntry nodes come as MaskedIntReg with the inherited elements already among their own; the
// StructReg and Group around them are gone. Entries of an enumeration and IntSwissKnife nodes inside
// registers are records of their own, directly after their owner.
struct NodeRecord {
    NodeKind kind = NodeKind::Unknown;
    bool isStandardNameSpace = false;
    bool isEmbedded = false; // IntSwissKnife inside a register: part of its owner's address, not a feature
    bool exposeStatic = false;
    std::int32_t mergePriority = 0;
    std::uint32_t line = 0;
    std::int32_t owner = NoNode; // the Enumeration of an EnumEntry, the register of an embedded IntSwissKnife
    std::string_view name;       // unique; "EnumEntry_<Enumeration>_<Entry>" for entries
    std::string_view symbolicName; // EnumEntry: its name inside the enumeration; otherwise as name
    std::uint32_t firstElement = 0;
    std::uint32_t elementCount = 0;
};

// What the RegisterDescription element says of the whole file. Missing attributes are empty or 0.
struct DescriptionHeader {
    std::string_view modelName;
    std::string_view vendorName;
    std::string_view toolTip;
    std::string_view standardNameSpace;
    std::string_view productGuid;
    std::string_view versionGuid;
    int schemaMajorVersion = 0;
    int schemaMinorVersion = 0;
    int schemaSubMinorVersion = 0;
    int majorVersion = 0;
    int minorVersion = 0;
    int subMinorVersion = 0;
};

// Something of one node that was skipped; the rest of the description works.
struct Problem {
    std::uint32_t line = 0;
    std::string node; // empty when it belongs to no node
    std::string text;
};

class Description {
public:
    // Most problems kept; the others are only counted.
    static constexpr std::size_t MaxProblems = 1000;

    // Reads plain or zipped bytes (told apart by their content). `fileName` is used in messages only. Throws
    // GenICam_3_2::InvalidArgumentException, naming file, line and node, when the whole description is
    // unusable.
    static std::shared_ptr<const Description> FromBytes(std::string_view bytes, std::string fileName);
    // Reads plain XML and takes the text over, which saves a copy.
    static std::shared_ptr<const Description> FromXml(std::string xml, std::string fileName);
    // Reads a plain or zipped file; throws as FromBytes when it cannot be read.
    static std::shared_ptr<const Description> FromFile(const std::string& path);

    // Only the functions above can make one.
    class Key {
        friend class Description;
        Key() {}
    };
    Description(Key, std::string fileName) : fileName_(std::move(fileName)) {}
    Description(const Description&) = delete;
    Description& operator=(const Description&) = delete;

    const DescriptionHeader& Header() const { return header_; }
    const std::string& FileName() const { return fileName_; }
    // In document order, owners before what they own. An index into it is what Element::target holds.
    const std::vector<NodeRecord>& Nodes() const { return nodes_; }
    ElementList Elements(const NodeRecord& node) const {
        return {elements_.data() + node.firstElement, node.elementCount};
    }
    // The first element of this kind, null when the node has none.
    const Element* Find(const NodeRecord& node, ElementId id) const;
    // Text of the first element of this kind, `fallback` when the node has none.
    std::string_view Text(const NodeRecord& node, ElementId id, std::string_view fallback = {}) const;
    // Index of the node with this name, NoNode when there is none.
    std::int32_t IndexOf(std::string_view name) const;

    const std::vector<Problem>& Problems() const { return problems_; }
    // Problems found beyond MaxProblems.
    std::size_t SuppressedProblems() const { return suppressedProblems_; }

private:
    friend class DescriptionDraft;

    std::string fileName_;
    std::string text_;              // the XML, parsed in place: texts point into it
    std::deque<std::string> arena_; // texts that do not stand in the XML in one piece
    DescriptionHeader header_;
    std::vector<NodeRecord> nodes_;
    std::vector<Element> elements_;
    NameTable names_;
    std::vector<Problem> problems_;
    std::size_t suppressedProblems_ = 0;
};

// The XML text inside plain or zipped bytes, byte-order mark removed. Throws as Description::FromBytes.
std::string UnpackDescription(std::string_view bytes, const std::string& fileName);

} // namespace Engine
} // namespace GenApi_3_2
