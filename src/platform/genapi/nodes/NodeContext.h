// What the nodes of one map share: the description they come from, each other, their links, their cache,
// their lock. Owned by the NodeMap, which fills it; the nodes know the map only through it.
#pragma once

#include "GenApi/INodeMap.h"
#include "GenApi/vx3/Problems.h"
#include "platform/genapi/description/Description.h"
#include "platform/genapi/nodes/Cache.h"
#include "platform/genapi/nodes/CachedValue.h"
#include "platform/genapi/nodes/Links.h"

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace GenApi_3_2 {
namespace Engine {

class NodeContext {
public:
    NodeContext(INodeMap& map, std::shared_ptr<const Description> description, const gcstring& deviceName,
                bool suppressStrings);
    ~NodeContext();
    NodeContext(const NodeContext&) = delete;
    NodeContext& operator=(const NodeContext&) = delete;

    INodeMap& Map() const { return map_; }
    const gcstring& DeviceName() const { return deviceName_; }
    bool SuppressStrings() const { return suppressStrings_; }
    const Description& Text() const { return *description_; }
    ElementList Elements(const NodeRecord& record) const { return description_->Elements(record); }

    // In the order of the description's records; complete before any node's elements are read.
    std::vector<std::unique_ptr<NodeBase>>& Nodes() { return nodes_; }
    const std::vector<std::unique_ptr<NodeBase>>& Nodes() const { return nodes_; }
    NodeBase* NodeAt(std::int32_t index) const;
    std::vector<Link>& Links() { return links_; }
    const std::vector<Link>& Links() const { return links_; }
    Cache& GetCache() const { return cache_; }

    void Report(const NodeRecord& record, std::uint32_t line, const std::string& text);
    const std::vector<vx3::NodeMapProblem>& Problems() const { return problems_; }
    // Why a node was switched off.
    const std::string& BrokenReason(const NodeBase& node) const;
    void SetBrokenReason(const NodeBase& node, const std::string& reason);

    CLock& Lock() const { return lock_; }
    // Bracket every public operation. Begin takes the lock; End gives it back and then fires the callbacks
    // that wait for that.
    void Begin() const;
    void End() const noexcept;
    // What was read at one moment holds for the operation.
    Moment Now() const { return now_; }
    // The device was written: what was read before is no longer sure.
    void NextMoment() const { ++now_; }
    // Counts a visited node; false when the operation has visited absurdly many.
    bool CountVisit() const { return ++visits_ <= MaxVisits; }
    // Fires the callbacks of what changed so far, lock held; those for outside wait for End of the outermost.
    // What a callback throws is dropped: the operation itself has happened, and its caller must know.
    void FireChanged() const;
    // Forgets all values and modes.
    void InvalidateAll() const;

private:
    static constexpr std::uint32_t MaxVisits = 200000;

    static void Fire(const std::vector<NodeBase*>& nodes, ECallbackType type);

    INodeMap& map_;
    std::shared_ptr<const Description> description_;
    gcstring deviceName_;
    bool suppressStrings_;
    std::vector<std::unique_ptr<NodeBase>> nodes_;
    std::vector<Link> links_;
    std::vector<vx3::NodeMapProblem> problems_;
    std::unordered_map<const NodeBase*, std::string> brokenReasons_;
    mutable CLock lock_;
    // Guarded by lock_.
    mutable Cache cache_;
    mutable std::uint32_t depth_ = 0;
    mutable std::uint32_t outermost_ = 0; // depth at which operations count their own visits
    mutable std::uint32_t visits_ = 0;
    mutable Moment now_ = 1;
    mutable std::vector<NodeBase*> outside_;
};

// Holds a map's lock for one operation.
class Operation {
public:
    explicit Operation(const NodeContext& context) : context_(context) { context_.Begin(); }
    ~Operation() { context_.End(); }
    Operation(const Operation&) = delete;
    Operation& operator=(const Operation&) = delete;

private:
    const NodeContext& context_;
};

} // namespace Engine
} // namespace GenApi_3_2
