// The part of NodeBase that answers from the record: names, texts, links, properties.
#include "platform/genapi/NodeBase.h"
#include "platform/genapi/NodeMap.h"
#include "platform/genapi/NumberText.h"

#include <algorithm>

namespace GenApi_3_2 {
namespace Engine {
namespace {

gcstring ToGc(std::string_view text) {
    return gcstring(text.data(), text.size());
}

EVisibility VisibilityOfText(std::string_view text) {
    if (text == "Expert")
        return Expert;
    if (text == "Guru")
        return Guru;
    return text == "Invisible" ? Invisible : Beginner;
}

bool IsReadRole(Role role) {
    return role == Role::Target || role == Role::Variable || role == Role::Index || role == Role::Bound ||
           role == Role::BoundOf || role == Role::Condition;
}

// What ends a chain of references: values that lie in the device or in the description.
bool IsTerminal(const NodeBase& node) {
    return std::none_of(node.Links().begin(), node.Links().end(),
                        [](const Link& link) { return link.role == Role::Target; });
}

bool IsWanted(const Link& link, ELinkType type) {
    switch (type) {
    case ctReadingChildren:
        return IsReadRole(link.role) || link.role == Role::Feature || link.role == Role::Entry;
    case ctWritingChildren:
        return link.role == Role::Target || link.role == Role::Copy;
    case ctInvalidatingChildren:
        return link.role == Role::Invalidator;
    default:
        return false;
    }
}

void AddOnce(NodeList_t& list, NodeBase* node) {
    if (std::find(list.begin(), list.end(), node) == list.end())
        list.push_back(node);
}

void AddTerminals(const NodeBase& start, NodeList_t& list) {
    std::vector<const NodeBase*> seen{&start};
    for (std::size_t i = 0; i < seen.size(); ++i)
        for (const Link& link : seen[i]->Links()) {
            if (link.role != Role::Target && link.role != Role::Copy)
                continue;
            if (IsTerminal(*link.node))
                AddOnce(list, link.node);
            else if (std::find(seen.begin(), seen.end(), link.node) == seen.end())
                seen.push_back(link.node);
        }
}

} // namespace

gcstring NodeBase::TextProperty(ElementId id, bool isHelp) const {
    return isHelp && map_.SuppressStrings() ? gcstring() : ToGc(map_.Text().Text(record_, id));
}

gcstring NodeBase::GetName(bool FullQualified) const {
    const gcstring name = ToGc(record_.name);
    if (!FullQualified)
        return name;
    return (record_.isStandardNameSpace ? gcstring("Std::") : gcstring("Cust::")) + name;
}

ENameSpace NodeBase::GetNameSpace() const {
    return record_.isStandardNameSpace ? Standard : Custom;
}

EVisibility NodeBase::GetVisibility() const {
    return Locked([&] {
        const EVisibility own = VisibilityOfText(map_.Text().Text(record_, ElementId::Visibility));
        const EVisibility described =
            std::max(own, VisibilityOfText(map_.Text().Text(record_, ElementId::ImposedVisibility)));
        return imposedVisibility_ == _UndefinedVisibility ? described
                                                          : std::max(described, imposedVisibility_);
    });
}

ECachingMode NodeBase::GetCachingMode() const {
    return cachable_ ? OwnCaching() : NoCache;
}

gcstring NodeBase::GetToolTip() const {
    return TextProperty(ElementId::ToolTip, true);
}
gcstring NodeBase::GetDescription() const {
    return TextProperty(ElementId::Description, true);
}
gcstring NodeBase::GetDisplayName() const {
    const gcstring text = TextProperty(ElementId::DisplayName, true);
    return text.empty() ? GetName() : text;
}
gcstring NodeBase::GetDeviceName() const {
    return map_.GetDeviceName();
}
gcstring NodeBase::GetEventID() const {
    return TextProperty(ElementId::EventID, false);
}
gcstring NodeBase::GetDocuURL() const {
    return TextProperty(ElementId::DocuURL, true);
}
INodeMap* NodeBase::GetNodeMap() const {
    return &map_;
}

bool NodeBase::IsStreamable() const {
    return ParseBoolean(map_.Text().Text(record_, ElementId::Streamable)).value_or(false);
}

bool NodeBase::IsDeprecated() const {
    return ParseBoolean(map_.Text().Text(record_, ElementId::IsDeprecated)).value_or(false);
}

void NodeBase::GetChildren(NodeList_t& Children, ELinkType LinkType) const {
    Children.clear();
    if (LinkType == ctParentNodes)
        return GetParents(Children);
    if (LinkType == ctTerminalNodes)
        return AddTerminals(*this, Children);
    if (LinkType == ctDependingNodes) {
        for (const Link& link : map_.GetCache().DependentsOf(*this))
            if (link.role != Role::Feature)
                AddOnce(Children, link.node);
        return;
    }
    for (const Link& link : Links())
        if (IsWanted(link, LinkType))
            AddOnce(Children, link.node);
}

void NodeBase::GetParents(NodeList_t& Parents) const {
    Parents.clear();
    for (const Link& link : map_.GetCache().DependentsOf(*this))
        if (link.role != Role::Invalidator)
            AddOnce(Parents, link.node);
}

void NodeBase::GetPropertyNames(gcstring_vector& PropertyNames) const {
    PropertyNames.clear();
    PropertyNames.push_back("Name");
    for (const Element& element : map_.Elements(record_)) {
        const gcstring name = ToText(element.id);
        if (std::find(PropertyNames.begin(), PropertyNames.end(), name) == PropertyNames.end())
            PropertyNames.push_back(name);
    }
}

bool NodeBase::GetProperty(const gcstring& PropertyName, gcstring& ValueStr, gcstring& AttributeStr) {
    ValueStr.clear();
    AttributeStr.clear();
    if (PropertyName == "Name") {
        ValueStr = GetName();
        return true;
    }
    const ElementId id = ElementIdOf(PropertyName.c_str());
    if (id == ElementId::Unknown)
        return false;
    bool isFound = false;
    for (const Element& element : map_.Elements(record_)) {
        if (element.id != id)
            continue;
        if (isFound) {
            ValueStr += '\t';
            AttributeStr += '\t';
        }
        const NodeBase* inner = element.text.empty() ? map_.NodeAt(element.target) : nullptr;
        ValueStr += ToGc(inner ? inner->Name() : element.text);
        AttributeStr += ToGc(element.qualifierText);
        isFound = true;
    }
    return isFound;
}

void NodeBase::GetSelectedFeatures(FeatureList_t& Features) const {
    Features.assign(selected_.begin(), selected_.end());
}

void NodeBase::GetSelectingFeatures(FeatureList_t& Features) const {
    Features.assign(selecting_.begin(), selecting_.end());
}

} // namespace Engine
} // namespace GenApi_3_2
