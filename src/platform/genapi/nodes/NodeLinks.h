// The references from one node to others, and the answers about them: children, parents, selectors, aliases.
// Part of every node.
#pragma once

#include "GenApi/INode.h"
#include "platform/genapi/description/Description.h"
#include "platform/genapi/nodes/Links.h"

#include <vector>

namespace GenApi_3_2 {
namespace Engine {

class NodeLinks {
public:
    // The map keeps the links of all nodes in one array, node after node.
    void Begin(std::size_t first) { first_ = static_cast<std::uint32_t>(first); }
    void End(std::size_t end) { count_ = static_cast<std::uint32_t>(end) - first_; }
    LinkSpan Of(const std::vector<Link>& all) const { return {all.data() + first_, count_}; }

    void Take(NodeBase& owner, const Element& element);

    static void GetChildren(const NodeBase& owner, NodeList_t& children, ELinkType type);
    static void GetParents(const NodeBase& owner, NodeList_t& parents);
    const std::vector<NodeBase*>& Selected() const { return selected_; }
    const std::vector<NodeBase*>& Selecting() const { return selecting_; }
    void AddSelecting(NodeBase& selector) { selecting_.push_back(&selector); }
    INode* Alias() const { return alias_; }
    INode* CastAlias() const { return castAlias_; }

private:
    std::uint32_t first_ = 0;
    std::uint32_t count_ = 0;
    INode* alias_ = nullptr;
    INode* castAlias_ = nullptr;
    std::vector<NodeBase*> selected_;
    std::vector<NodeBase*> selecting_;
};

} // namespace Engine
} // namespace GenApi_3_2
