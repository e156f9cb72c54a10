// Looks at the links between nodes before anything is evaluated: nodes that depend on themselves and chains
// without a sane end are switched off, and it is found out which values may be cached. One pass without
// recursion (strongly connected components after Tarjan) over four vertices a node, since a node's value may
// rightly depend on what depends on its own bounds.
#pragma once

#include "platform/genapi/nodes/NodeBase.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace GenApi_3_2 {
namespace Engine {

class LinkCheck {
public:
    explicit LinkCheck(const std::vector<std::unique_ptr<NodeBase>>& nodes);
    void Run();

private:
    // Longest chain of nodes that one read may go through.
    static constexpr std::uint32_t MaxDepth = 200;
    enum Aspect : std::uint8_t { Value, Bounds, Access, Writing, None };
    struct Vertex {
        std::uint32_t order = 0; // of the first visit; 0 before it
        std::uint32_t low = 0;
        std::uint32_t depth = 0;
        bool isOnStack = false;
        bool isCachable = true;
    };
    struct Frame {
        std::uint32_t vertex;
        std::uint32_t nextLink;
    };

    static Aspect Leads(Aspect from, Role role);
    std::uint32_t VertexOf(const NodeBase& node, Aspect aspect) const;
    NodeBase& NodeOf(std::uint32_t vertex) const { return *nodes_[vertex / 4]; }
    bool SettleLeaf(std::uint32_t vertex);
    void Visit(std::uint32_t root);
    void Enter(std::uint32_t vertex);
    bool NextNeighbour(Frame& frame, std::uint32_t& neighbour) const;
    void Close(std::uint32_t vertex);
    void Settle(std::uint32_t vertex);
    bool NamesItself(std::uint32_t vertex) const;
    void BreakCircle(std::size_t first);

    const std::vector<std::unique_ptr<NodeBase>>& nodes_;
    const NodeRecord* firstRecord_;
    std::vector<Vertex> vertices_;
    std::vector<Frame> path_;
    std::vector<std::uint32_t> stack_;
    std::uint32_t order_ = 0;
};

} // namespace Engine
} // namespace GenApi_3_2
