#include "platform/genapi/map/LinkCheck.h"

#include <algorithm>

namespace GenApi_3_2 {
namespace Engine {

LinkCheck::LinkCheck(const std::vector<std::unique_ptr<NodeBase>>& nodes)
    : nodes_(nodes),
      firstRecord_(nodes.empty() ? nullptr : &nodes.front()->Record()),
      vertices_(4 * nodes.size()) {}

std::uint32_t LinkCheck::VertexOf(const NodeBase& node, Aspect aspect) const {
    return static_cast<std::uint32_t>(&node.Record() - firstRecord_) * 4 + aspect;
}

// Which aspect of the linked node is needed for `from` of the linking one.
LinkCheck::Aspect LinkCheck::Leads(Aspect from, Role role) {
    switch (role) {
    case Role::Target:
        return from;
    case Role::Copy:
        return from != Value ? from : None;
    case Role::Variable:
        return from != Access ? Value : None;
    case Role::Index:
        return Value;
    case Role::Bound:
        return from == Bounds || from == Writing ? Value : None;
    case Role::BoundOf:
        return from != Access ? Bounds : None;
    case Role::Condition:
        return from == Access ? Value : None;
    case Role::Entry:
        return from == Bounds || from == Writing ? Access : None;
    case Role::Port:
        return from == Access ? Access : None;
    case Role::Written:
        return from == Writing ? Value : None;
    default:
        return None;
    }
}

void LinkCheck::Run() {
    for (std::uint32_t vertex = 0; vertex < vertices_.size(); ++vertex)
        if (vertices_[vertex].order == 0 && !SettleLeaf(vertex))
            Visit(vertex);
    for (const auto& node : nodes_)
        node->SetCachable(!node->IsBroken() && vertices_[VertexOf(*node, Value)].isCachable,
                          vertices_[VertexOf(*node, Access)].isCachable);
}

void LinkCheck::Enter(std::uint32_t vertex) {
    vertices_[vertex].order = vertices_[vertex].low = ++order_;
    vertices_[vertex].isOnStack = true;
    stack_.push_back(vertex);
    path_.push_back({vertex, 0});
}

bool LinkCheck::NextNeighbour(Frame& frame, std::uint32_t& neighbour) const {
    const LinkSpan links = NodeOf(frame.vertex).Links();
    const Aspect from = static_cast<Aspect>(frame.vertex % 4);
    while (frame.nextLink < links.count) {
        const Link& link = links.first[frame.nextLink++];
        const Aspect aspect = Leads(from, link.role);
        if (aspect != None) {
            neighbour = VertexOf(*link.node, aspect);
            return true;
        }
    }
    return false;
}

// Most nodes mention no other; they need no place on the stack.
bool LinkCheck::SettleLeaf(std::uint32_t vertex) {
    if (NodeOf(vertex).Links().count != 0)
        return false;
    vertices_[vertex].order = vertices_[vertex].low = ++order_;
    Settle(vertex);
    return true;
}

void LinkCheck::Visit(std::uint32_t root) {
    Enter(root);
    while (!path_.empty()) {
        std::uint32_t neighbour = 0;
        if (!NextNeighbour(path_.back(), neighbour)) {
            const std::uint32_t vertex = path_.back().vertex;
            path_.pop_back();
            Close(vertex);
            if (!path_.empty()) {
                Vertex& parent = vertices_[path_.back().vertex];
                parent.low = std::min(parent.low, vertices_[vertex].low);
            }
            continue;
        }
        Vertex& current = vertices_[path_.back().vertex];
        if (vertices_[neighbour].order == 0) {
            if (!SettleLeaf(neighbour))
                Enter(neighbour);
        } else if (vertices_[neighbour].isOnStack)
            current.low = std::min(current.low, vertices_[neighbour].order);
    }
}

// All that `vertex` leads to has been visited; if it is the first of its component, the component is
// complete.
void LinkCheck::Close(std::uint32_t vertex) {
    if (vertices_[vertex].low != vertices_[vertex].order)
        return;
    std::size_t first = stack_.size();
    do
        vertices_[stack_[--first]].isOnStack = false;
    while (stack_[first] != vertex);
    if (stack_.size() - first > 1 || NamesItself(vertex))
        BreakCircle(first);
    for (std::size_t i = first; i < stack_.size(); ++i)
        Settle(stack_[i]);
    stack_.resize(first);
}

bool LinkCheck::NamesItself(std::uint32_t vertex) const {
    Frame frame{vertex, 0};
    std::uint32_t neighbour = 0;
    while (NextNeighbour(frame, neighbour))
        if (neighbour == vertex)
            return true;
    return false;
}

// Depth and caching follow from the neighbours, which are settled before.
void LinkCheck::Settle(std::uint32_t vertex) {
    Vertex& own = vertices_[vertex];
    NodeBase& node = NodeOf(vertex);
    if (node.IsBroken()) {
        own.isCachable = vertex % 4 != Value;
        return;
    }
    own.isCachable = vertex % 4 != Value || node.OwnCaching() != NoCache;
    Frame frame{vertex, 0};
    std::uint32_t neighbour = 0;
    while (NextNeighbour(frame, neighbour)) {
        own.isCachable = own.isCachable && vertices_[neighbour].isCachable;
        own.depth = std::max(own.depth, vertices_[neighbour].depth + 1);
    }
    if (own.depth <= MaxDepth)
        return;
    own.depth = 0;
    node.SetBroken(nullptr, "depends on a chain of more than " + std::to_string(MaxDepth) + " nodes");
}

void LinkCheck::BreakCircle(std::size_t first) {
    std::vector<NodeBase*> members;
    for (std::size_t i = first; i < stack_.size(); ++i)
        if (members.size() > 8 ||
            std::find(members.begin(), members.end(), &NodeOf(stack_[i])) == members.end())
            members.push_back(&NodeOf(stack_[i]));
    std::string names;
    for (std::size_t i = 0; i < members.size() && i < 5; ++i)
        names += (i > 0 ? ", '" : "'") + std::string(members[i]->Name()) + "'";
    if (members.size() > 5)
        names += ", ...";
    for (NodeBase* member : members)
        member->SetBroken(nullptr, "refers to itself in a circle (" + names + ")");
}

} // namespace Engine
} // namespace GenApi_3_2
