// A Description while it is read: takes records and elements, keeps their limits and notes what is wrong with
// them. Lives for one reading and is shared by the readers of nodes and of elements.
#pragma once

#include "platform/genapi/description/Description.h"
#include "platform/genapi/description/XmlText.h"

#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace GenApi_3_2 {
namespace Engine {

class DescriptionDraft {
public:
    // Parses the description's text. Throws GenICam_3_2::InvalidArgumentException.
    explicit DescriptionDraft(Description& description);

    XmlText& Xml() { return xml_; }
    DescriptionHeader& Header() { return description_.header_; }
    NodeRecord& Record(std::int32_t index) { return description_.nodes_[static_cast<std::size_t>(index)]; }
    std::string_view Text(const NodeRecord& record, ElementId id, std::string_view fallback) const {
        return description_.Text(record, id, fallback);
    }
    std::vector<Element>& Elements() { return description_.elements_; }
    bool IsTaken(std::string_view name) const { return description_.names_.Find(name) != NameTable::Missing; }
    // The index that the next record gets.
    std::int32_t NextIndex() const { return static_cast<std::int32_t>(description_.nodes_.size()); }

    // False, with a problem noted, when the name is missing, too long or taken.
    bool Admit(std::string_view name, std::string_view what, std::int32_t index, std::uint32_t line);
    // The record begins with the elements appended from now on, until EndRecord. Gives its index.
    std::int32_t BeginRecord(NodeRecord record);
    void EndRecord(std::int32_t index);
    void Append(const Element& element, std::string_view node);
    // Finds the nodes that references name; called once, at the end.
    void ResolveReferences();

    void Note(std::uint32_t line, std::string_view node, std::string text);
    [[noreturn]] void Refuse(std::uint32_t line, std::string_view node, std::string_view reason) const;

private:
    void Reserve();
    void Resolve(const NodeRecord& node, const Element& element, std::string_view name, std::int32_t& target);

    Description& description_;
    XmlText xml_;
    std::unordered_set<const char*> unresolved_;
};

} // namespace Engine
} // namespace GenApi_3_2
