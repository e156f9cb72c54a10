// The way up the object tree. A device owns one for its children (cameras, streams) and cuts it when it is
// destroyed, so that a child that a client still holds finds no parent instead of a dead one.
#pragma once

#include "vx3/core/Mutex.h"
#include "vx3/device/IDevice.h"

#include <memory>

namespace VX3 {

class ParentLink {
public:
    explicit ParentLink(IDevice* parent) : parent_(parent) {}

    // The link that children of `parent` share; a link of its own for a foreign implementation or null.
    static std::shared_ptr<ParentLink> To(IDevice* parent);

    IDevice* Get() const VX3_EXCLUDES(mutex_) {
        MutexLock lock(mutex_);
        return parent_;
    }
    // SubDeviceLost of the parent, which cannot be destroyed meanwhile. NotFound when it is gone.
    StatusCode TellLost(IDevice* child) VX3_EXCLUDES(mutex_) {
        MutexLock lock(mutex_);
        return parent_ ? parent_->SubDeviceLost(child) : Status::NotFound;
    }
    void Cut() VX3_EXCLUDES(mutex_) {
        MutexLock lock(mutex_);
        parent_ = nullptr;
    }

private:
    mutable Mutex mutex_;
    IDevice* parent_ VX3_GUARDED_BY(mutex_);
};

} // namespace VX3
