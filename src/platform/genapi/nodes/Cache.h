// Which nodes' values are known, and what becomes unknown when one changes. Part of a map's NodeContext, used
// under its lock. Walks the links between nodes in both directions and copes with circles.
#pragma once

#include "platform/genapi/description/Description.h"
#include "platform/genapi/nodes/Links.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace GenApi_3_2 {
namespace Engine {

class Cache {
public:
    // Turns the nodes' links round; called once after they were read.
    void Build(const std::vector<std::unique_ptr<NodeBase>>& nodes, const std::vector<Link>& links);
    // Nodes at one address in the device.
    void ShareAddress(std::uint32_t group, NodeBase& node);

    // `node` has a new value of its own: all that depends on it becomes unknown.
    void Changed(NodeBase& node);
    // The same without callbacks, for a value that turned out new when it was read.
    void Refreshed(NodeBase& node);
    // Nothing is known of `node`, what it reads and what depends on it.
    void Invalidate(NodeBase& node);
    void InvalidateAll(const std::vector<std::unique_ptr<NodeBase>>& nodes);
    // Milliseconds since the last call.
    void Poll(std::int64_t elapsed);
    // Nodes with a polling time; any thread once the cache is built.
    const std::vector<NodeBase*>& Polled() const { return polled_; }

    // The device will replace the value of `node` by itself: until it has, each operation begins with nothing
    // known of it, what it reads and what depends on it.
    void SetPassing(NodeBase& node, bool isPassing);
    bool HasPassing() const { return hasPassing_; }
    // Without callbacks: nobody knows yet whether anything has changed.
    void DropPassing();

    // The nodes with callbacks that changed since the last call, each once.
    std::vector<NodeBase*> TakeChanged();
    bool HasChanged() const { return !changed_.empty(); }

    // The nodes that mention `node`.
    LinkSpan DependentsOf(const NodeBase& node) const;

private:
    struct Step {
        NodeBase* node;
        bool isDown;
        bool isSeed;
    };
    void Push(NodeBase& node, bool isDown, bool isSeed = false);
    void Run(bool notify);
    void VisitNeighbours(const Step& step);
    void NextEpoch() { ++epoch_; }

    std::vector<std::uint32_t> first_; // by record index; one more than nodes
    std::vector<Link> dependents_;
    std::vector<std::vector<NodeBase*>> groups_;
    std::vector<std::uint32_t> groupOf_; // by record index, 0 for none
    std::vector<Step> queue_;
    std::vector<NodeBase*> changed_;
    std::vector<NodeBase*> polled_;
    std::vector<NodeBase*> passing_; // few, mostly none
    bool hasPassing_ = false;
    std::uint32_t epoch_ = 0;
    const NodeRecord* firstRecord_ = nullptr;
};

} // namespace Engine
} // namespace GenApi_3_2
