// The wrapped node map of one owner: GenApi's map, a wrapper a node, and the port to the owner's registers.
// Shared by the owner's GenICam access object and its callers.
#pragma once

#include "GenApi/GenApi.h"
#include "vx3/genicam/DescriptionCheck.h"
#include "vx3/genicam/INodeMap.h"

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace VX3::GenICam {

class GenIDevicePort;

// Gives a GenApi map back the way its interface asks for.
struct NodeMapDestroyer {
    void operator()(GenApi_3_2::INodeMap* map) const;
};
using GenApiNodeMap = std::unique_ptr<GenApi_3_2::INodeMap, NodeMapDestroyer>;

// The wrappers are made on the first look-up, once. Any thread; Connect is for the thread that creates the
// map.
class NodeMapA : public INodeMap {
public:
    // `callback` runs inside the map's lock for every node that changes.
    NodeMapA(GenApiNodeMap map, std::function<void(INode*)> callback);
    ~NodeMapA() override;
    NodeMapA(const NodeMapA&) = delete;
    NodeMapA& operator=(const NodeMapA&) = delete;

    const std::vector<INode*>& GetNodes() const override;
    INode* GetNode(const std::string& name) const override;
    void InvalidateNodes() const override;
    std::string GetDeviceName() override;
    void Poll(long elapsedMs) override;
    std::uint64_t GetNumNodes() const override;
    bool Connect(std::weak_ptr<IGenIObj> owner, const std::string& portName) const override;
    bool Connect(std::weak_ptr<IGenIObj> owner) const override;

    std::vector<std::string> GetPortNames() const;
    // What the engine skipped or switched off; empty with an engine that does not tell.
    std::vector<DescriptionProblem> GetProblems() const;

private:
    void BuildWrappers() const;
    std::unique_ptr<INode> CreateWrapper(GenApi_3_2::INode* node) const;

    // Declared in the order that keeps what others point to alive longest: wrappers go first, ports last.
    // One port a name, the empty name being GenApi's own choice; replaced by a later Connect of that name.
    mutable std::map<std::string, std::unique_ptr<GenIDevicePort>> ports_;
    std::function<void(INode*)> callback_;
    GenApiNodeMap map_;
    mutable std::vector<std::unique_ptr<INode>> wrappers_;
    mutable std::vector<INode*> nodes_; // GenApi's order; null where a node has no wrapper
    mutable std::map<std::string, unsigned int> indexes_;
    mutable std::atomic<bool> built_{false};
};

} // namespace VX3::GenICam
