// The nodes of one description over one device, as clients see them: makes them, finds them, connects them to
// the device's port. Created by CNodeMapFactory, ends its own life in Destroy.
#pragma once

#include "platform/genapi/nodes/NodeContext.h"

#include <memory>
#include <string_view>
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
    gcstring GetDeviceName() const override { return context_.DeviceName(); }
    void Poll(std::int64_t ElapsedTime) override;
    CLock& GetLock() const override { return context_.Lock(); }
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

    // The shortest of its nodes, in milliseconds; -1 without any.
    std::int64_t PollingTime() const { return pollingTime_; }
    const std::vector<vx3::NodeMapProblem>& Problems() const { return context_.Problems(); }

private:
    void MakeNodes();
    void MarkFeatures();
    NodeBase* Find(std::string_view name) const;

    NodeContext context_;
    std::int64_t pollingTime_ = -1;
};

} // namespace Engine
} // namespace GenApi_3_2
