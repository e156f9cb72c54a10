// Reads the XML of one description into its records: one pass over the tree, then one over the references.
// Lives for one description and is used by it only.
#pragma once

#include "platform/genapi/description/Description.h"
#include "platform/genapi/description/XmlText.h"

#include <string>
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
    // An element whose content becomes a record of its own once its owner is complete.
    struct Contained {
        pugi::xml_node xml;
        NodeKind kind = NodeKind::Unknown;
        std::string_view name;
        std::string_view symbolicName;
    };
    // The node whose elements are being read.
    struct Context {
        NodeKind kind = NodeKind::Unknown;
        std::string_view name;
        std::int32_t next = NoNode; // index of the first record contained
        std::vector<Contained> contained;
    };

    void Reserve();
    void ReadHeader(pugi::xml_node root);
    void ReadNodes(pugi::xml_node parent, int depth);
    void ReadAny(pugi::xml_node xml, int depth);
    void ReadNode(pugi::xml_node xml, NodeKind kind);
    void ReadStructure(pugi::xml_node xml);
    void ReadStructEntry(pugi::xml_node xml, const std::vector<Element>& common, bool isStandard);
    void ReadContained(const Context& context, std::int32_t owner);

    // False, with a problem noted, when the name is missing, too long or taken.
    bool Admit(std::string_view name, std::string_view what, std::int32_t index, std::uint32_t line);
    std::int32_t BeginRecord(pugi::xml_node xml, NodeKind kind, std::string_view name);
    void EndRecord(std::int32_t index);

    void ReadElements(pugi::xml_node xml, Context& context);
    void ReadElement(pugi::xml_node xml, Context& context);
    void ReadPlain(pugi::xml_node xml, Element element, const Context& context);
    bool ReadQualifier(pugi::xml_node xml, Element& element, const Context& context);
    void ReadEntry(pugi::xml_node xml, Element element, Context& context);
    void ReadEmbedded(pugi::xml_node xml, Element element, Context& context);
    void Append(const Element& element, std::string_view node);
    void CountFormula(const Element& element, std::string_view node);
    bool HasValue(pugi::xml_node xml);

    void ResolveReferences();

    void Note(std::uint32_t line, std::string_view node, std::string text);
    [[noreturn]] void Refuse(std::uint32_t line, std::string_view node, std::string_view reason) const;
    std::int32_t NextIndex() const { return static_cast<std::int32_t>(description_.nodes_.size()); }

    Description& description_;
    XmlText xml_;
    std::size_t formulaBytes_ = 0;
};

} // namespace Engine
} // namespace GenApi_3_2
