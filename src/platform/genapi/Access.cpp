#include "platform/genapi/Access.h"

#include "platform/genapi/NodeBase.h"
#include "platform/genapi/NodeMap.h"

namespace GenApi_3_2 {
namespace Engine {

using GenICam_3_2::AccessException;

EAccessMode CombineAccess(EAccessMode left, EAccessMode right) {
    if (left == NI || right == NI)
        return NI;
    const bool canRead = IsReadable(left) && IsReadable(right);
    const bool canWrite = IsWritable(left) && IsWritable(right);
    if (canRead)
        return canWrite ? RW : RO;
    return canWrite ? WO : NA;
}

EAccessMode LockedAccess(EAccessMode mode) {
    if (mode == RW)
        return RO;
    return mode == WO ? NA : mode;
}

std::optional<EAccessMode> AccessModeOfText(std::string_view text) {
    // The usual ones first: each description has thousands of them.
    for (const EAccessMode mode : {RO, RW, WO, NA, NI})
        if (text == std::string_view(AccessText(mode), 2))
            return mode;
    return std::nullopt;
}

const char* AccessText(EAccessMode mode) {
    switch (mode) {
    case NI:
        return "NI";
    case WO:
        return "WO";
    case RO:
        return "RO";
    case RW:
        return "RW";
    default:
        return "NA";
    }
}

bool AccessRules::IsTrue(NodeBase* condition, bool fallback) {
    return condition ? condition->GetInteger() != 0 : fallback;
}

EAccessMode AccessRules::Evaluate(const NodeBase& node) {
    if (node.broken_ || !node.map_.CountVisit())
        return NA;
    if (!IsTrue(node.isImplemented_, true))
        return NI;
    EAccessMode mode = CombineAccess(node.ownMode_, node.imposedMode_);
    mode = CombineAccess(mode, node.InnerAccess());
    if (mode == NI)
        return NI;
    if (!IsTrue(node.isAvailable_, true))
        return NA;
    return IsTrue(node.isLocked_, false) ? LockedAccess(mode) : mode;
}

EAccessMode NodeBase::AccessMode() const {
    if (accessCache_ != _UndefinedAccesMode)
        return accessCache_;
    try {
        const EAccessMode mode = AccessRules::Evaluate(*this);
        if (accessCachable_)
            accessCache_ = mode;
        return mode;
    } catch (const GenICam_3_2::GenericException&) {
        return NA; // not kept: the device may answer the next time
    }
}

EAccessMode NodeBase::GetAccessMode() const {
    return Locked([&] { return AccessMode(); });
}

void NodeBase::ImposeAccessMode(EAccessMode ImposedAccessMode) {
    Locked([&] {
        imposedMode_ = CombineAccess(imposedMode_, ImposedAccessMode);
        map_.GetCache().Invalidate(*this);
        map_.FireChanged();
    });
}

void NodeBase::ImposeVisibility(EVisibility ImposedVisibility) {
    Locked([&] { imposedVisibility_ = ImposedVisibility; });
}

void NodeBase::InvalidateNode() {
    Locked([&] {
        map_.GetCache().Invalidate(*this);
        map_.FireChanged();
    });
}

void NodeBase::RequireReadable() const {
    Enter();
    const EAccessMode mode = AccessMode();
    if (!IsReadable(mode))
        Fail<AccessException>(*this, std::string("is not readable (access mode ") + AccessText(mode) + ")");
}

void NodeBase::RequireWritable() const {
    Enter();
    const EAccessMode mode = AccessMode();
    if (!IsWritable(mode))
        Fail<AccessException>(*this, std::string("is not writable (access mode ") + AccessText(mode) + ")");
}

} // namespace Engine
} // namespace GenApi_3_2
