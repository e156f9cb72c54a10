// Reads the XML of one description into its records: one pass over the tree, node by node, then one over the
// references.
// Lives for one description and is used by it only.
#pragma once

#include "platform/genapi/description/ElementReader.h"

#include <string_view>
#include <vector>

namespace GenApi_3_2 {
namespace Engine {

class DescriptionReader {
public:
    // Parses the description's text. Throws GenICam_3_2::InvalidArgumentException.
    explicit DescriptionReader(Description& description);
    // Fills the description. Throws likewise when nothing of it can be used.
    void Read();

private:
    void ReadHeader(pugi::xml_node root);
    void ReadNodes(pugi::xml_node parent, int depth);
    void ReadAny(pugi::xml_node xml, int depth);
    void ReadNode(pugi::xml_node xml, NodeKind kind);
    void ReadStructure(pugi::xml_node xml);
    void ReadStructEntry(pugi::xml_node xml, const std::vector<Element>& common, bool isStandard);
    void ReadContained(const ElementOwner& outer, std::int32_t owner);
    std::int32_t BeginRecord(pugi::xml_node xml, NodeKind kind, std::string_view name);

    DescriptionDraft draft_;
    ElementReader elements_;
    XmlText& xml_;
};

} // namespace Engine
} // namespace GenApi_3_2
