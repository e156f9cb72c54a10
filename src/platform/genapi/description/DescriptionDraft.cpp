#include "platform/genapi/description/DescriptionDraft.h"

#include "platform/genapi/description/DescriptionError.h"
#include "platform/genapi/description/DescriptionLimits.h"

#include <algorithm>
#include <utility>

namespace GenApi_3_2 {
namespace Engine {

DescriptionDraft::DescriptionDraft(Description& description)
    : description_(description), xml_(description.text_, description.arena_, description.fileName_) {
    Reserve();
}

// A little more than descriptions of this length usually have, so that the tables rarely move.
void DescriptionDraft::Reserve() {
    constexpr std::size_t BytesPerElement = 40;
    constexpr std::size_t BytesPerNode = 180;
    const std::size_t bytes = description_.text_.size();
    description_.elements_.reserve(std::min(bytes / BytesPerElement, MaxDescriptionElements));
    description_.nodes_.reserve(std::min(bytes / BytesPerNode, MaxDescriptionNodes));
    description_.names_.Reserve(std::min(bytes / BytesPerNode, MaxDescriptionNodes));
}

bool DescriptionDraft::Admit(std::string_view name, std::string_view what, std::int32_t index,
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

std::int32_t DescriptionDraft::BeginRecord(NodeRecord record) {
    if (description_.nodes_.size() >= MaxDescriptionNodes)
        Refuse(record.line, record.name,
               "description has more than " + std::to_string(MaxDescriptionNodes) + " nodes");
    record.firstElement = static_cast<std::uint32_t>(description_.elements_.size());
    description_.nodes_.push_back(record);
    return NextIndex() - 1;
}

void DescriptionDraft::EndRecord(std::int32_t index) {
    NodeRecord& record = description_.nodes_[static_cast<std::size_t>(index)];
    record.elementCount = static_cast<std::uint32_t>(description_.elements_.size() - record.firstElement);
}

void DescriptionDraft::Append(const Element& element, std::string_view node) {
    if (description_.elements_.size() >= MaxDescriptionElements)
        Refuse(element.line, node, "description has too many elements");
    description_.elements_.push_back(element);
}

void DescriptionDraft::ResolveReferences() {
    for (const NodeRecord& node : description_.nodes_)
        for (std::uint32_t i = 0; i < node.elementCount; ++i) {
            Element& element = description_.elements_[node.firstElement + i];
            if (IsReference(element.id))
                Resolve(node, element, element.text, element.target);
            if (element.qualifier == Qualifier::pOffset)
                Resolve(node, element, element.qualifierText, element.qualifierTarget);
        }
}

// Inherited elements stand in several records; what is wrong with them is said once.
void DescriptionDraft::Resolve(const NodeRecord& node, const Element& element, std::string_view name,
                               std::int32_t& target) {
    target = description_.IndexOf(name);
    if (target == NoNode && unresolved_.insert(name.data()).second)
        Note(element.line, node.name,
             std::string(ToText(element.id)) + " names " + Quoted(name) + ", which does not exist");
}

void DescriptionDraft::Note(std::uint32_t line, std::string_view node, std::string text) {
    if (description_.problems_.size() < Description::MaxProblems)
        description_.problems_.push_back({line, std::string(node.substr(0, MaxNodeName)), std::move(text)});
    else
        ++description_.suppressedProblems_;
}

void DescriptionDraft::Refuse(std::uint32_t line, std::string_view node, std::string_view reason) const {
    ThrowDescriptionError(description_.fileName_, line, node, reason);
}

} // namespace Engine
} // namespace GenApi_3_2
