// The cameras that this process publishes: at most four, each on two ports of its own. One a process. Any
// thread.
#pragma once

#include "simulated/publish/GevSimuDevice.h"
#include "vx3/core/Mutex.h"

#include <array>
#include <memory>
#include <string>

namespace VX3 {

class GevSimuDeviceList {
public:
    static constexpr unsigned Slots = 4;
    static constexpr unsigned NoSlot = 0xFFFFFFFF;
    static constexpr std::uint16_t FirstPort =
        56000; // of slot 0; each slot's streams leave from the next one

    static GevSimuDeviceList& Instance();
    ~GevSimuDeviceList();

    // Publishes on the first slot whose port is free; the slot, or NoSlot where there is none or the device
    // cannot be shared.
    unsigned FindEmptyAndinsertSimuDevice(const std::shared_ptr<IDevice>& device) VX3_EXCLUDES(mutex_);
    // By the device's unique name. False when it is not published.
    bool FindAndDestroySimuDevice(const std::string& name) VX3_EXCLUDES(mutex_);

    [[nodiscard]] StatusCode Publish(const std::shared_ptr<IDevice>& device, const PublishOptions& options,
                                     unsigned& slot) VX3_EXCLUDES(mutex_);
    std::shared_ptr<GevSimuDevice> Find(const std::string& name) const VX3_EXCLUDES(mutex_);

private:
    GevSimuDeviceList();

    std::shared_ptr<GevSimuDevice> Start(const std::shared_ptr<IDevice>& device,
                                         const PublishOptions& options, unsigned slot, StatusCode& status)
        VX3_REQUIRES(mutex_);

    mutable Mutex mutex_;
    std::array<std::shared_ptr<GevSimuDevice>, Slots> slots_ VX3_GUARDED_BY(mutex_);
};

} // namespace VX3
