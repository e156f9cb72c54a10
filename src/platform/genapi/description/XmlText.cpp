#include "platform/genapi/description/XmlText.h"

#include "platform/genapi/base/NumberText.h"
#include "platform/genapi/description/ByteCount.h"
#include "platform/genapi/description/DescriptionError.h"
#include "platform/genapi/description/DescriptionLimits.h"

#include <array>
#include <cstring>

namespace GenApi_3_2 {
namespace Engine {

namespace {

// Bytes that tree and records may take for each opening tag, closing tag, attribute and line, at worst.
constexpr std::size_t OpeningCost = 300;
constexpr std::size_t ClosingCost = 64;
constexpr std::size_t AttributeCost = 40;
constexpr std::size_t LineCost = 8;
// The most that a byte can cost, by elements as short as <a/>.
constexpr std::size_t ByteCost = 80;

// Cameras may fill up the file's memory with NUL bytes; anywhere else they are damage. Returns the text.
std::string& Checked(std::string& text, const std::string& fileName) {
    text.erase(text.find_last_not_of('\0') + 1);
    if (text.size() > MaxDescriptionText)
        ThrowDescriptionError(fileName, 0, {}, "description is larger than 16 MiB");
    const std::size_t nul = text.find('\0');
    if (nul != std::string::npos)
        ThrowDescriptionError(fileName, 0, {}, "NUL byte at offset " + std::to_string(nul));
    if (text.size() * ByteCost <= MaxDescriptionMemory)
        return text;
    const std::size_t closings = CountPair(text, '<', '/');
    const std::size_t cost = text.size() + (CountByte(text, '<') - closings) * OpeningCost +
                             closings * ClosingCost + CountByte(text, '=') * AttributeCost +
                             CountByte(text, '\n') * LineCost;
    if (cost > MaxDescriptionMemory)
        ThrowDescriptionError(fileName, 0, {}, "description has too many elements");
    return text;
}

} // namespace

std::string_view LocalName(std::string_view name) {
    const std::size_t colon = name.find(':');
    return colon == std::string_view::npos ? name : name.substr(colon + 1);
}

std::string_view AttributeText(pugi::xml_node xml, const char* name) {
    return Strip(xml.attribute(name).value());
}

XmlText::XmlText(std::string& text, std::deque<std::string>& arena, const std::string& fileName)
    : text_(text), arena_(arena), fileName_(fileName), lines_(Checked(text, fileName)) {
    const pugi::xml_parse_result result = document_.load_buffer_inplace(
        &text_[0], text_.size(), pugi::parse_default | pugi::parse_embed_pcdata | pugi::parse_doctype,
        pugi::encoding_utf8);
    if (!result)
        ThrowDescriptionError(fileName_, lines_.LineOf(static_cast<std::size_t>(result.offset)), {},
                              std::string("XML is damaged: ") + result.description());
    CheckDoctype();
}

// Entities of their own are never expanded by the parser, but the texts that use them would be wrong.
void XmlText::CheckDoctype() {
    for (pugi::xml_node xml : document_.children())
        if (xml.type() == pugi::node_doctype && std::strstr(xml.value(), "<!ENTITY") != nullptr)
            ThrowDescriptionError(fileName_, 0, {}, "definitions of entities are not allowed");
}

std::string_view XmlText::TextOf(pugi::xml_node xml) {
    return TextOf(xml, xml.first_child());
}

std::string_view XmlText::TextOf(pugi::xml_node xml, pugi::xml_node child) {
    if (child.type() == pugi::node_null)
        return Strip(xml.value());
    if (child.type() == pugi::node_cdata && !child.next_sibling() && *xml.value() == '\0')
        return Strip(child.value());
    return JoinedText(xml);
}

std::string_view XmlText::JoinedText(pugi::xml_node xml) {
    std::string joined = xml.value();
    for (pugi::xml_node child : xml.children())
        if (child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata)
            joined += child.value();
    return Strip(joined).empty() ? std::string_view() : Strip(Keep(std::move(joined), LineOf(xml)));
}

std::string_view XmlText::Keep(std::string text, std::uint32_t line) {
    arenaBytes_ += text.size();
    if (arenaBytes_ > MaxDescriptionArena)
        ThrowDescriptionError(fileName_, line, {}, "description's names and texts are too long");
    return arena_.emplace_back(std::move(text));
}

void XmlText::CompareAttributes(pugi::xml_node xml, std::string_view node) {
    std::array<const char*, MaxElementAttributes> names;
    std::size_t count = 0;
    const auto fail = [&](const std::string& reason) {
        ThrowDescriptionError(fileName_, LineOf(xml), node.empty() ? AttributeText(xml, "Name") : node,
                              reason);
    };
    for (pugi::xml_attribute at = xml.first_attribute(); at; at = at.next_attribute()) {
        const char* const name = at.name();
        if (count == names.size())
            fail("more than " + std::to_string(names.size()) + " attributes");
        for (std::size_t i = 0; i < count; ++i)
            if (*names[i] == *name && std::strcmp(names[i], name) == 0)
                fail("XML is damaged: attribute " + Quoted(name) + " is given twice");
        names[count++] = name;
    }
}

void XmlText::CheckDepth(pugi::xml_node xml, std::string_view node) {
    int depth = 0;
    for (pugi::xml_node at = xml.first_child(); at && depth >= 0;) {
        CheckAttributes(at, node);
        if (at.first_child()) {
            at = at.first_child();
            if (++depth > MaxDescriptionDepth)
                ThrowDescriptionError(fileName_, LineOf(xml), node, "elements nest too deeply");
            continue;
        }
        while (!at.next_sibling() && --depth >= 0)
            at = at.parent();
        at = at.next_sibling();
    }
}

} // namespace Engine
} // namespace GenApi_3_2
