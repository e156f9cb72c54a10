// The nodes of one description over one device: owns them, their lock, their cache and the way to the port.
// Created by CNodeMapFactory, ends its own life in Destroy.
#pragma once

#include "GenApi/vx3/Problems.h"
#include "platform/genapi/Cache.h"
#include "platform/genapi/Description.h"
#include "platform/genapi/NodeBase.h"

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace GenApi_3_2 {
namespace Engine {

class NodeMap final : public INodeMap, public IDestroy, public IDeviceInfo {
public:
    NodeMap(std::shared_ptr<const Description> description, const gcstring& deviceName, bool suppressStrings);
    ~NodeMap() override;
    NodeMap(const NodeMap&) = delete;
    NodeMap& operator=(const NodeMap&) = delete;

    // INodeMap
    void GetNodes(NodeList_t& Nodes) const override;
    INode* GetNode(const gcstring& Name) const override;
    void InvalidateNodes() const override;
    bool Connect(IPort* pPort, const gcstring& PortName) const override;
    bool Connect(IPort* pPort) const override;
    gcstring GetDeviceName() const override { return deviceName_; }
    void Poll(std::int64_t ElapsedTime) override;
    CLock& GetLock() const override { return lock_; }
    std::uint64_t GetNumNodes() const override;

    void Destroy() override { std::unique_ptr<NodeMap>(this).reset(); }

    // IDeviceInfo
    gcstring GetModelName() override;
    gcstring GetVendorName() override;
    gcstring GetToolTip() override;
    gcstring GetStandardNameSpace() override;
    void GetGenApiVersion(Version_t& Version, std::uint16_t& Build) override;
    void GetSchemaVersion(Version_t& Version) override;
    void GetDeviceVersion(Version_t& Version) override;
    gcstring GetProductGuid() override;
    gcstring GetVersionGuid() override;

    // For the nodes.
    const Description& Text() const { return *description_; }
    ElementList Elements(const NodeRecord& record) const { return description_->Elements(record); }
    NodeBase* NodeAt(std::int32_t index) const;
    bool SuppressStrings() const { return suppressStrings_; }
    void Report(const NodeRecord& record, std::uint32_t line, const std::string& text);
    const std::vector<vx3::NodeMapProblem>& Problems() const { return problems_; }
    // Why a node was switched off.
    const std::string& BrokenReason(const NodeBase& node) const;
    void SetBrokenReason(const NodeBase& node, const std::string& reason);
    std::vector<Link>& Links() { return links_; }
    const std::vector<Link>& Links() const { return links_; }
    Cache& GetCache() const { return cache_; }
    const std::vector<std::unique_ptr<NodeBase>>& Nodes() const { return nodes_; }

    // Bracket every public operation. Begin takes the lock; End gives it back and then fires the callbacks
    // that wait for that.
    void Begin() const;
    void End() const noexcept;
    // Counts a visited node; false when the operation has visited absurdly many.
    bool CountVisit() const { return ++visits_ <= MaxVisits; }
    // Fires the callbacks of what changed so far, lock held; those for outside wait for End of the outermost.
    void FireChanged() const;

private:
    static constexpr std::uint32_t MaxVisits = 200000;

    void MakeNodes();
    void MarkFeatures();
    void FireOutside(const std::vector<NodeBase*>& nodes) const;

    std::shared_ptr<const Description> description_;
    gcstring deviceName_;
    bool suppressStrings_;
    std::vector<std::unique_ptr<NodeBase>> nodes_; // in the order of the description's records
    std::vector<Link> links_;
    std::vector<vx3::NodeMapProblem> problems_;
    std::unordered_map<const NodeBase*, std::string> brokenReasons_;
    mutable CLock lock_;
    // Guarded by lock_.
    mutable Cache cache_;
    mutable std::uint32_t depth_ = 0;
    mutable std::uint32_t visits_ = 0;
    mutable std::vector<NodeBase*> outside_;
};

// Holds a map's lock for one operation.
class Operation {
public:
    explicit Operation(const NodeMap& map) : map_(map) { map_.Begin(); }
    ~Operation() { map_.End(); }
    Operation(const Operation&) = delete;
    Operation& operator=(const Operation&) = delete;

private:
    const NodeMap& map_;
};

template <class Function>
auto NodeBase::Locked(Function&& function) const {
    const Operation operation(map_);
    return function();
}

template <class Function>
void NodeBase::Write(bool verify, Function&& write) {
    const Operation operation(map_);
    try {
        if (verify)
            RequireWritable();
        write();
        Changed();
        CheckDeviceError();
    } catch (...) {
        // What was written before the failure has changed all the same.
        map_.FireChanged();
        throw;
    }
    map_.FireChanged();
}

} // namespace Engine
} // namespace GenApi_3_2
