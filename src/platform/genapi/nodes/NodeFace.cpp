#include "platform/genapi/nodes/NodeFace.h"

#include "platform/genapi/nodes/NodeBase.h"

#include <algorithm>

namespace GenApi_3_2 {
namespace Engine {

EAccessMode NodeFace::AccessMode() const {
    return access_.Mode(static_cast<const NodeBase&>(*this));
}

EAccessMode NodeFace::GetAccessMode() const {
    return Locked([&] { return AccessMode(); });
}

gcstring NodeFace::GetName(bool FullQualified) const {
    return Properties().Name(FullQualified);
}

ENameSpace NodeFace::GetNameSpace() const {
    return record_.isStandardNameSpace ? Standard : Custom;
}

EVisibility NodeFace::GetVisibility() const {
    return Locked([&] {
        const EVisibility described = Properties().Visibility();
        return imposedVisibility_ == _UndefinedVisibility ? described
                                                          : std::max(described, imposedVisibility_);
    });
}

void NodeFace::ImposeVisibility(EVisibility ImposedVisibility) {
    Locked([&] { imposedVisibility_ = ImposedVisibility; });
}

gcstring NodeFace::HelpText(ElementId id) const {
    return context_.SuppressStrings() ? gcstring() : Properties().Text(id);
}

gcstring NodeFace::GetDisplayName() const {
    const gcstring text = HelpText(ElementId::DisplayName);
    return text.empty() ? GetName() : text;
}

void NodeFace::GetPropertyNames(gcstring_vector& PropertyNames) const {
    Properties().GetNames(PropertyNames);
}

bool NodeFace::GetProperty(const gcstring& PropertyName, gcstring& ValueStr, gcstring& AttributeStr) {
    return Properties().Get(PropertyName, ValueStr, AttributeStr);
}

void NodeFace::GetSelectedFeatures(FeatureList_t& Features) const {
    Features.assign(links_.Selected().begin(), links_.Selected().end());
}

void NodeFace::GetSelectingFeatures(FeatureList_t& Features) const {
    Features.assign(links_.Selecting().begin(), links_.Selecting().end());
}

CallbackHandleType NodeFace::RegisterCallback(CNodeCallback* pCallback) {
    if (!pCallback)
        return 0;
    return Locked([&] { return callbacks_.Add(pCallback); });
}

bool NodeFace::DeregisterCallback(CallbackHandleType hCallback) {
    // Destroyed at the end, without the lock.
    const auto ended = Locked([&] { return callbacks_.Remove(hCallback); });
    return ended != nullptr;
}

void NodeFace::Fire(ECallbackType type) {
    // A copy: callbacks may come and go while they run.
    const auto callbacks = Locked([&] { return callbacks_.All(); });
    NodeCallbacks::Fire(callbacks, type);
}

} // namespace Engine
} // namespace GenApi_3_2
