// The access mode of a node: what it says itself, what its conditions, inner nodes and port allow, what was
// imposed. All of that is combined here and nowhere else. Part of every node, used with the map's lock held.
#pragma once

#include "GenApi/Types.h"
#include "platform/genapi/description/Description.h"
#include "platform/genapi/nodes/CachedValue.h"

namespace GenApi_3_2 {
namespace Engine {

class NodeBase;

class NodeAccess {
public:
    // The mode of a node whose description gives none.
    void SetDefault(EAccessMode mode) { own_ = mode; }
    void Take(NodeBase& owner, const Element& element);

    // The effective mode; asks the device where needed: what cannot be asked is not available. Throws only
    // when that would hardly end.
    EAccessMode Mode(const NodeBase& owner) const {
        return known_ != _UndefinedAccesMode ? known_ : Find(owner);
    }
    // Narrows the mode for good.
    void Impose(EAccessMode mode);
    void Drop() {
        known_ = _UndefinedAccesMode;
        moment_ = 0;
    }
    bool IsCachable() const { return isCachable_; }
    void SetCachable(bool isCachable) { isCachable_ = isCachable; }

private:
    EAccessMode Find(const NodeBase& owner) const;
    EAccessMode Evaluate(const NodeBase& owner) const;

    mutable EAccessMode known_ = _UndefinedAccesMode;
    mutable EAccessMode found_ = _UndefinedAccesMode; // in the operation of moment_
    mutable Moment moment_ = 0;
    EAccessMode own_ = RW;
    EAccessMode imposed_ = RW;
    bool isCachable_ = false;
    NodeBase* isImplemented_ = nullptr;
    NodeBase* isAvailable_ = nullptr;
    NodeBase* isLocked_ = nullptr;
};

} // namespace Engine
} // namespace GenApi_3_2
