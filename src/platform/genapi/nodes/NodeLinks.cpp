#include "platform/genapi/nodes/NodeLinks.h"

#include "platform/genapi/nodes/NodeBase.h"

#include <algorithm>

namespace GenApi_3_2 {
namespace Engine {
namespace {

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

void AddDependents(const NodeBase& node, Role except, NodeList_t& list) {
    for (const Link& link : node.Context().GetCache().DependentsOf(node))
        if (link.role != except)
            AddOnce(list, link.node);
}

} // namespace

void NodeLinks::Take(NodeBase& owner, const Element& element) {
    if (element.id == ElementId::pInvalidator) {
        owner.Refer(element, Role::Invalidator);
        return;
    }
    NodeBase* node = owner.Context().NodeAt(element.target);
    if (element.id == ElementId::pAlias) {
        alias_ = node;
    } else if (element.id == ElementId::pCastAlias) {
        castAlias_ = node;
    } else if (node) { // pSelected
        selected_.push_back(node);
        node->AddSelecting(owner);
    }
}

void NodeLinks::GetChildren(const NodeBase& owner, NodeList_t& children, ELinkType type) {
    children.clear();
    if (type == ctParentNodes)
        return GetParents(owner, children);
    if (type == ctTerminalNodes)
        return AddTerminals(owner, children);
    if (type == ctDependingNodes)
        return AddDependents(owner, Role::Feature, children);
    for (const Link& link : owner.Links())
        if (IsWanted(link, type))
            AddOnce(children, link.node);
}

void NodeLinks::GetParents(const NodeBase& owner, NodeList_t& parents) {
    parents.clear();
    AddDependents(owner, Role::Invalidator, parents);
}

} // namespace Engine
} // namespace GenApi_3_2
