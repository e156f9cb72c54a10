// What every node wrapper has: the GenApi node behind it and its callbacks. Owned by the node map's wrapper.
#pragma once

#include "GenApi/GenApi.h"
#include "genicam/Callback.h"
#include "vx3/genicam/INode.h"
#include "vx3/genicam/INodeMap.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace VX3::GenICam {

class NodeA : public virtual INode {
public:
    // `map` owns this wrapper and `node` belongs to the GenApi map beneath it. `callback` is the map's.
    NodeA(const INodeMap* map, GenApi_3_2::INode* node, const std::function<void(INode*)>& callback);
    ~NodeA() override;
    NodeA(const NodeA&) = delete;
    NodeA& operator=(const NodeA&) = delete;

    EAccessMode GetAccessMode() const override;
    std::string GetName() const override { return name_; }
    ENameSpace GetNameSpace() const override;
    EVisibility GetVisibility() const override;
    void InvalidateNode() override;
    bool IsCachable() const override;
    bool IsAccessModeCacheable() const override;
    ECachingMode GetCachingMode() const override;
    std::int64_t GetPollingTime() const override;
    std::string GetToolTip() const override;
    std::string GetDescription() const override;
    std::string GetDisplayName() const override;
    std::string GetDeviceName() const override;
    std::vector<INode*> GetChildren(ELinkType type) const override;
    std::vector<INode*> GetParents() const override;
    std::string GetEventID() const override;
    bool IsStreamable() const override;
    bool GetProperty(const std::string& name, std::string& value, std::string& attribute) const override;
    std::string GetRepresentation(const std::string& unused) const override;
    std::vector<std::string> GetPropertyNames() const override;
    EInterfaceType GetPrincipalInterfaceType() const override;
    bool IsFeature() const override;
    long RegisterCallback(std::function<void(INode*)> callback) override;
    bool DeregisterCallback(long& handle) override;

protected:
    // The wrapper of a GenApi node of the same map; null where that node has none (ports).
    INode* WrapperOf(const GenApi_3_2::INode* node) const;

private:
    void NodeCallBack(GenApi_3_2::INode* changed);
    std::vector<INode*> WrappersOf(const GenApi_3_2::NodeList_t& nodes) const;

    const INodeMap* map_;
    GenApi_3_2::INode* node_;
    const Callback mapCallback_;
    // Shared with the call that runs it, so that a callback may replace or remove itself. Guarded by the
    // GenApi map's lock.
    std::shared_ptr<Callback> userCallback_;
    GenApi_3_2::CallbackHandleType handle_ = 0;
    const std::string name_;
};

} // namespace VX3::GenICam
