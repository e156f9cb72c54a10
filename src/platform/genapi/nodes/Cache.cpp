#include "platform/genapi/nodes/Cache.h"

#include "platform/genapi/nodes/NodeBase.h"

#include <algorithm>
#include <utility>

namespace GenApi_3_2 {
namespace Engine {
namespace {

bool IsReadForValue(Role role) {
    return role == Role::Target || role == Role::Variable;
}

} // namespace

void Cache::Build(const std::vector<std::unique_ptr<NodeBase>>& nodes, const std::vector<Link>& links) {
    firstRecord_ = nodes.empty() ? nullptr : &nodes.front()->Record();
    first_.assign(nodes.size() + 1, 0);
    groupOf_.resize(nodes.size(), 0);
    const auto indexOf = [&](const NodeBase& node) {
        return static_cast<std::size_t>(&node.Record() - firstRecord_);
    };
    for (const Link& link : links)
        ++first_[indexOf(*link.node) + 1];
    for (std::size_t i = 1; i < first_.size(); ++i)
        first_[i] += first_[i - 1];
    std::vector<std::uint32_t> next(first_.begin(), first_.end() - 1);
    dependents_.resize(links.size());
    for (const auto& node : nodes) {
        for (const Link& link : node->Links())
            dependents_[next[indexOf(*link.node)]++] = {node.get(), link.role};
        if (node->GetPollingTime() > 0)
            polled_.push_back(node.get());
    }
}

void Cache::ShareAddress(std::uint32_t group, NodeBase& node) {
    if (groups_.size() <= group)
        groups_.resize(group + 1);
    groups_[group].push_back(&node);
    const std::size_t index =
        static_cast<std::size_t>(&node.Record() - &node.Context().Text().Nodes().front());
    if (groupOf_.size() <= index)
        groupOf_.resize(node.Context().Text().Nodes().size(), 0);
    groupOf_[index] = group;
}

LinkSpan Cache::DependentsOf(const NodeBase& node) const {
    const std::size_t index = static_cast<std::size_t>(&node.Record() - firstRecord_);
    return {dependents_.data() + first_[index], first_[index + 1] - first_[index]};
}

void Cache::Push(NodeBase& node, bool isDown, bool isSeed) {
    VisitMarks& marks = node.Marks();
    if (marks.down == epoch_ || (!isDown && marks.up == epoch_))
        return;
    (isDown ? marks.down : marks.up) = epoch_;
    queue_.push_back({&node, isDown, isSeed});
}

void Cache::VisitNeighbours(const Step& step) {
    for (const Link& link : DependentsOf(*step.node))
        if (link.role != Role::Feature)
            Push(*link.node, link.role == Role::Invalidator);
    const std::size_t index = static_cast<std::size_t>(&step.node->Record() - firstRecord_);
    if (const std::uint32_t group = groupOf_[index])
        for (NodeBase* other : groups_[group])
            if (other != step.node && other->SharesBitsWith(*step.node))
                Push(*other, false);
    if (step.isDown)
        for (const Link& link : step.node->Links())
            if (IsReadForValue(link.role))
                Push(*link.node, true);
}

void Cache::Run(bool notify) {
    while (!queue_.empty()) {
        const Step step = queue_.back();
        queue_.pop_back();
        step.node->DropAccess();
        if (!step.isSeed)
            step.node->DropValue();
        if (notify && step.node->HasCallbacks())
            changed_.push_back(step.node);
        VisitNeighbours(step);
    }
}

void Cache::Changed(NodeBase& node) {
    NextEpoch();
    Push(node, false, true);
    Run(true);
}

void Cache::Refreshed(NodeBase& node) {
    NextEpoch();
    Push(node, false, true);
    Run(false);
}

void Cache::Invalidate(NodeBase& node) {
    NextEpoch();
    Push(node, true);
    Run(true);
}

void Cache::SetPassing(NodeBase& node, bool isPassing) {
    const auto found = std::find(passing_.begin(), passing_.end(), &node);
    if (isPassing && found == passing_.end())
        passing_.push_back(&node);
    else if (!isPassing && found != passing_.end())
        passing_.erase(found);
    hasPassing_ = !passing_.empty();
}

void Cache::DropPassing() {
    NextEpoch();
    for (NodeBase* node : passing_)
        Push(*node, true);
    Run(false);
}

void Cache::InvalidateAll(const std::vector<std::unique_ptr<NodeBase>>& nodes) {
    for (const auto& node : nodes) {
        node->DropAccess();
        node->DropValue();
        if (node->HasCallbacks())
            changed_.push_back(node.get());
    }
}

void Cache::Poll(std::int64_t elapsed) {
    // Asking whether a node's polling is blocked may itself walk the links: first ask, then walk.
    std::vector<NodeBase*> due;
    for (NodeBase* node : polled_)
        if (node->Polling().Advance(elapsed))
            due.push_back(node);
    NextEpoch();
    for (NodeBase* node : due)
        Push(*node, true);
    Run(true);
}

std::vector<NodeBase*> Cache::TakeChanged() {
    std::sort(changed_.begin(), changed_.end(),
              [](const NodeBase* left, const NodeBase* right) { return &left->Record() < &right->Record(); });
    changed_.erase(std::unique(changed_.begin(), changed_.end()), changed_.end());
    return std::exchange(changed_, {});
}

} // namespace Engine
} // namespace GenApi_3_2
