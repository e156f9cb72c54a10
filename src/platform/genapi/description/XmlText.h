// An XML text parsed in place: its tree, the stripped texts of its elements and their lines. Lives while a
// description is read; the texts it gives out live in the string and the arena it was made over.
#pragma once

#include "platform/genapi/description/LineTable.h"

#include <cstdint>
#include <deque>
#include <pugixml.hpp>
#include <string>
#include <string_view>

namespace GenApi_3_2 {
namespace Engine {

class XmlText {
public:
    // Throws GenICam_3_2::InvalidArgumentException when the text is no XML, would cost too much memory or
    // defines entities of its own.
    XmlText(std::string& text, std::deque<std::string>& arena, const std::string& fileName);

    pugi::xml_node Root() const { return document_.document_element(); }
    std::uint32_t LineOf(pugi::xml_node xml) { return LineOf(xml.name()); }
    // Likewise, for a caller who has the element's name already.
    std::uint32_t LineOf(const char* name) {
        return lines_.LineOf(static_cast<std::size_t>(name - text_.data()));
    }
    // The text directly inside the element without blanks around it, comments and CDATA marks taken out.
    std::string_view TextOf(pugi::xml_node xml);
    // Likewise, for a caller who has `firstChild` already.
    std::string_view TextOf(pugi::xml_node xml, pugi::xml_node firstChild);
    // A text that stands nowhere in the file; `line` is named when all such texts grow too large.
    std::string_view Keep(std::string text, std::uint32_t line);
    // Throws when elements nest without end below `xml`, or one of them gives an attribute twice.
    void CheckDepth(pugi::xml_node xml, std::string_view node);
    // Throws when `xml` gives an attribute twice: the parser would take either. Without `node`: xml is one.
    void CheckAttributes(pugi::xml_node xml, std::string_view node) {
        const pugi::xml_attribute first = xml.first_attribute();
        if (first && first.next_attribute())
            CompareAttributes(xml, node);
    }

private:
    void CheckDoctype();
    void CompareAttributes(pugi::xml_node xml, std::string_view node);
    std::string_view JoinedText(pugi::xml_node xml);

    std::string& text_;
    std::deque<std::string>& arena_;
    const std::string& fileName_;
    std::size_t arenaBytes_ = 0;
    LineTable lines_;
    pugi::xml_document document_;
};

// Without a namespace prefix.
std::string_view LocalName(std::string_view name);
// The attribute's text without blanks around it, empty when there is none.
std::string_view AttributeText(pugi::xml_node xml, const char* name);

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

} // namespace Engine
} // namespace GenApi_3_2
