// What a connection holds of a camera: its control privilege, kept alive by a heartbeat; or, with monitor
// access, only the knowledge that it still answers. Owned by the camera's device, which hands it the control
// channel of each connection.
#pragma once

#include "gev/GevHeartBeat.h"
#include "gev/control/GevCmdHelper.h"
#include "vx3/core/Mutex.h"
#include "vx3/core/Status.h"

#include <functional>
#include <memory>

namespace VX3 {

class GevControl {
public:
    // `lost`: the camera does not answer any more, or obeys somebody else. Called on the heart's thread.
    explicit GevControl(std::function<void()> lost);

    // Takes the privilege. An error of the camera's is returned; nothing is held then.
    [[nodiscard]] StatusCode Take(std::shared_ptr<GevCmdHelper> helper) VX3_EXCLUDES(mutex_);
    // Only asks whether the camera lets itself be read.
    [[nodiscard]] StatusCode Watch(std::shared_ptr<GevCmdHelper> helper) VX3_EXCLUDES(mutex_);
    void StartHeartBeat() { heartBeat_.Start(); }
    void StopHeartBeat() { heartBeat_.Stop(); }
    // `tell` the camera, unless it is lost. 0 where nothing is held.
    StatusCode Release(bool tell) VX3_EXCLUDES(mutex_);

private:
    struct Hold {
        std::shared_ptr<GevCmdHelper> helper;
        bool controls = false;
        // The camera tells whom it obeys, and it was us.
        bool tellsPrimary = false;
    };

    Hold Held() const VX3_EXCLUDES(mutex_);
    void SetTimes(GevCmdHelper& helper, std::uint32_t reportedTimeoutMs);
    GevHeartBeat::Beat AskCamera() const;
    static StatusCode AskPrimary(GevCmdHelper& helper, bool& isPrimary);
    static GevHeartBeat::Beat Renew(GevCmdHelper& helper);

    mutable Mutex mutex_;
    Hold hold_ VX3_GUARDED_BY(mutex_);
    GevHeartBeat heartBeat_;
};

} // namespace VX3
