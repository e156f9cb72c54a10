#include "platform/genapi/nodes/NodeContext.h"

#include "platform/genapi/nodes/NodeBase.h"

#include <utility>

namespace GenApi_3_2 {
namespace Engine {

NodeContext::NodeContext(INodeMap& map, std::shared_ptr<const Description> description,
                         const gcstring& deviceName, bool suppressStrings)
    : map_(map),
      description_(std::move(description)),
      deviceName_(deviceName),
      suppressStrings_(suppressStrings) {
    for (const Problem& problem : description_->Problems())
        problems_.push_back({problem.line, problem.node, problem.text});
}

NodeContext::~NodeContext() = default;

NodeBase* NodeContext::NodeAt(std::int32_t index) const {
    return index < 0 || static_cast<std::size_t>(index) >= nodes_.size()
               ? nullptr
               : nodes_[static_cast<std::size_t>(index)].get();
}

void NodeContext::Report(const NodeRecord& record, std::uint32_t line, const std::string& text) {
    if (problems_.size() < 2 * Description::MaxProblems)
        problems_.push_back({line, std::string(record.name), text});
}

void NodeContext::SetBrokenReason(const NodeBase& node, const std::string& reason) {
    brokenReasons_.emplace(&node, reason);
}

const std::string& NodeContext::BrokenReason(const NodeBase& node) const {
    static const std::string unknown = "switched off";
    const auto found = brokenReasons_.find(&node);
    return found == brokenReasons_.end() ? unknown : found->second;
}

void NodeContext::Begin() const {
    lock_.Lock();
    if (cache_.HasPassing()) {
        try {
            cache_.DropPassing();
        } catch (...) { // no memory for the walk
            lock_.Unlock();
            throw;
        }
    }
    if (depth_++ == outermost_)
        visits_ = 0;
    NextMoment();
}

void NodeContext::End() const noexcept {
    if (--depth_ > 0 || outside_.empty()) {
        lock_.Unlock();
        return;
    }
    const std::vector<NodeBase*> nodes = std::exchange(outside_, {});
    lock_.Unlock();
    Fire(nodes, cbPostOutsideLock);
}

void NodeContext::FireChanged() const {
    if (!cache_.HasChanged())
        return;
    const std::vector<NodeBase*> nodes = cache_.TakeChanged();
    outside_.insert(outside_.end(), nodes.begin(), nodes.end());
    const std::uint32_t visits = visits_;
    const std::uint32_t outermost = std::exchange(outermost_, depth_);
    Fire(nodes, cbPostInsideLock);
    outermost_ = outermost;
    visits_ = visits;
}

void NodeContext::Fire(const std::vector<NodeBase*>& nodes, ECallbackType type) {
    for (NodeBase* node : nodes) {
        try {
            node->Fire(type);
        } catch (...) { // nobody is to be told
        }
    }
}

void NodeContext::InvalidateAll() const {
    const Operation operation(*this);
    cache_.InvalidateAll(nodes_);
    FireChanged();
}

} // namespace Engine
} // namespace GenApi_3_2
