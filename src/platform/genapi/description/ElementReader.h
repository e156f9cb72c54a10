// Reads the elements of one node into the draft of its description. Lives for one reading and is used by
// DescriptionReader only.
#pragma once

#include "platform/genapi/description/DescriptionDraft.h"

#include <string_view>
#include <vector>

namespace GenApi_3_2 {
namespace Engine {

// An element whose content becomes a record of its own once its owner is complete.
struct ContainedNode {
    pugi::xml_node xml;
    NodeKind kind = NodeKind::Unknown;
    std::string_view name;
    std::string_view symbolicName;
};

// The node whose elements are being read.
struct ElementOwner {
    NodeKind kind = NodeKind::Unknown;
    std::string_view name;
    std::int32_t next = NoNode; // index of the first record contained
    std::vector<ContainedNode> contained;
};

class ElementReader {
public:
    explicit ElementReader(DescriptionDraft& draft) : draft_(draft), xml_(draft.Xml()) {}
    // All elements directly inside `xml`; what they contain is left in `owner`.
    void Read(pugi::xml_node xml, ElementOwner& owner);

private:
    void ReadElement(pugi::xml_node xml, ElementOwner& owner);
    void ReadPlain(pugi::xml_node xml, Element element, const ElementOwner& owner);
    bool ReadQualifier(pugi::xml_node xml, Element& element, const ElementOwner& owner);
    void ReadEntry(pugi::xml_node xml, Element element, ElementOwner& owner);
    void ReadEmbedded(pugi::xml_node xml, Element element, ElementOwner& owner);
    void Contain(pugi::xml_node xml, NodeKind kind, std::string_view symbolicName, const Element& element,
                 ElementOwner& owner);
    void CountFormula(const Element& element, std::string_view node);
    bool HasValue(pugi::xml_node xml);

    DescriptionDraft& draft_;
    XmlText& xml_;
    std::size_t formulaBytes_ = 0;
};

} // namespace Engine
} // namespace GenApi_3_2
