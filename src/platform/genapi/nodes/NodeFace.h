// What a node tells of itself whatever its value is: the node and selector interfaces over the node's record
// and its components. Base of NodeBase only.
#pragma once

#include "GenApi/IValues.h"
#include "platform/genapi/nodes/NodeAccess.h"
#include "platform/genapi/nodes/NodeCallbacks.h"
#include "platform/genapi/nodes/NodeContext.h"
#include "platform/genapi/nodes/NodeLinks.h"
#include "platform/genapi/nodes/NodePolling.h"
#include "platform/genapi/nodes/NodeProperties.h"

namespace GenApi_3_2 {
namespace Engine {

class NodeFace : virtual public INode, public ISelector {
public:
    NodeFace(const NodeFace&) = delete;
    NodeFace& operator=(const NodeFace&) = delete;

    EAccessMode GetAccessMode() const override;
    gcstring GetName(bool FullQualified = false) const override;
    ENameSpace GetNameSpace() const override;
    EVisibility GetVisibility() const override;
    EYesNo IsAccessModeCacheable() const override { return access_.IsCachable() ? Yes : No; }
    std::int64_t GetPollingTime() const override { return polling_.Time(); }
    gcstring GetToolTip() const override { return HelpText(ElementId::ToolTip); }
    gcstring GetDescription() const override { return HelpText(ElementId::Description); }
    gcstring GetDisplayName() const override;
    gcstring GetDeviceName() const override { return context_.DeviceName(); }
    CallbackHandleType RegisterCallback(CNodeCallback* pCallback) override;
    bool DeregisterCallback(CallbackHandleType hCallback) override;
    INodeMap* GetNodeMap() const override { return &context_.Map(); }
    gcstring GetEventID() const override { return Properties().Text(ElementId::EventID); }
    bool IsStreamable() const override { return Properties().Flag(ElementId::Streamable); }
    void GetPropertyNames(gcstring_vector& PropertyNames) const override;
    bool GetProperty(const gcstring& PropertyName, gcstring& ValueStr, gcstring& AttributeStr) override;
    void ImposeVisibility(EVisibility ImposedVisibility) override;
    INode* GetAlias() const override { return links_.Alias(); }
    INode* GetCastAlias() const override { return links_.CastAlias(); }
    gcstring GetDocuURL() const override { return HelpText(ElementId::DocuURL); }
    bool IsDeprecated() const override { return Properties().Flag(ElementId::IsDeprecated); }
    EInterfaceType GetPrincipalInterfaceType() const override { return interfaceType_; }
    bool IsFeature() const override { return isFeature_; }

    bool IsSelector() const override { return !links_.Selected().empty(); }
    void GetSelectedFeatures(FeatureList_t& Features) const override;
    void GetSelectingFeatures(FeatureList_t& Features) const override;

    const NodeRecord& Record() const { return record_; }
    NodeContext& Context() const { return context_; }
    std::string_view Name() const { return record_.name; }
    LinkSpan Links() const { return links_.Of(context_.Links()); }
    void AddSelecting(NodeBase& selector) { links_.AddSelecting(selector); }
    void MarkAsFeature() { isFeature_ = true; }

    // The effective access mode, lock held.
    EAccessMode AccessMode() const;
    void DropAccess() { access_.Drop(); }
    NodePolling& Polling() { return polling_; }
    bool HasCallbacks() const { return !callbacks_.IsEmpty(); }
    void Fire(ECallbackType type);

protected:
    NodeFace(NodeContext& context, const NodeRecord& record, EInterfaceType interfaceType)
        : context_(context), record_(record), interfaceType_(interfaceType) {}
    ~NodeFace() override = default;

    // Runs a public operation under the map's lock.
    template <class Function>
    auto Locked(Function&& function) const {
        const Operation operation(context_);
        return function();
    }

    NodeProperties Properties() const { return {context_.Text(), record_}; }
    gcstring HelpText(ElementId id) const;

    NodeContext& context_;
    const NodeRecord& record_;
    NodeAccess access_;
    NodeLinks links_;
    NodePolling polling_;
    NodeCallbacks callbacks_;

private:
    EInterfaceType interfaceType_;
    EVisibility imposedVisibility_ = _UndefinedVisibility;
    bool isFeature_ = false;
};

} // namespace Engine
} // namespace GenApi_3_2
