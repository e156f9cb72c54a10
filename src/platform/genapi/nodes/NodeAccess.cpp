#include "platform/genapi/nodes/NodeAccess.h"

#include "platform/genapi/base/AccessModes.h"
#include "platform/genapi/nodes/NodeBase.h"

namespace GenApi_3_2 {
namespace Engine {
namespace {

bool IsTrue(NodeBase* condition, bool fallback) {
    return condition ? condition->GetInteger() != 0 : fallback;
}

} // namespace

void NodeAccess::Take(NodeBase& owner, const Element& element) {
    switch (element.id) {
    case ElementId::AccessMode:
    case ElementId::ImposedAccessMode:
        if (const auto mode = AccessModeOfText(element.text))
            (element.id == ElementId::AccessMode ? own_ : imposed_) = *mode;
        else
            owner.Report(element, "access mode '" + std::string(element.text) + "' is unknown");
        break;
    case ElementId::pIsImplemented:
        isImplemented_ = owner.Refer(element, Role::Condition);
        break;
    case ElementId::pIsAvailable:
        isAvailable_ = owner.Refer(element, Role::Condition);
        break;
    default: // pIsLocked
        isLocked_ = owner.Refer(element, Role::Condition);
    }
}

void NodeAccess::Impose(EAccessMode mode) {
    imposed_ = CombineAccess(imposed_, mode);
}

EAccessMode NodeAccess::Find(const NodeBase& owner) const {
    const Moment now = owner.Context().Now();
    if (moment_ == now)
        return found_;
    EAccessMode mode = NA;
    try {
        mode = Evaluate(owner);
        if (isCachable_)
            known_ = mode;
    } catch (const TooManyVisits&) {
        throw;                                       // that is no answer
    } catch (const GenICam_3_2::GenericException&) { // not kept: the device may answer the next time
    }
    found_ = mode;
    moment_ = now;
    return mode;
}

EAccessMode NodeAccess::Evaluate(const NodeBase& owner) const {
    if (owner.IsBroken())
        return NA;
    owner.Visit();
    if (!IsTrue(isImplemented_, true))
        return NI;
    EAccessMode mode = CombineAccess(own_, imposed_);
    mode = CombineAccess(mode, owner.InnerAccess());
    if (mode == NI)
        return NI;
    if (!IsTrue(isAvailable_, true))
        return NA;
    return IsTrue(isLocked_, false) ? LockedAccess(mode) : mode;
}

} // namespace Engine
} // namespace GenApi_3_2
