// The state a device shows to its clients. Any thread: heartbeat threads report losses while clients work.
//
//   Available, Unreachable,      AcquisitionStarted
//   Controlled, GenTL,
//   Unknown            --Connected--> Connected <=====> Acquiring
//        ^                               |  AcquisitionStopped |
//        |                               +-----HeartbeatLost---+--> Lost
//        +--------------------- Disconnected (from any state) ------+
//
// Lost stays until the device is disconnected: stopping the stream of a camera that has gone must not make it
// look alive again.
#pragma once

#include "vx3/device/Types.h"

#include <atomic>

namespace VX3 {

enum class DeviceEvent { Connected, AcquisitionStarted, AcquisitionStopped, HeartbeatLost, Disconnected };

class DeviceStateMachine {
public:
    DEVICE_STATE Get() const { return state_; }
    // What discovery found out before anyone connected.
    void SetInitial(DEVICE_STATE state) { state_ = state; }
    // The same later, for a state that nobody knew; any other stays.
    void Learn(DEVICE_STATE state) {
        DEVICE_STATE unknown = DEVICE_STATE::Unknown;
        state_.compare_exchange_strong(unknown, state);
    }
    void Apply(DeviceEvent event) {
        DEVICE_STATE from = state_;
        while (!state_.compare_exchange_weak(from, Next(from, event))) {
        }
    }
    static DEVICE_STATE Next(DEVICE_STATE from, DeviceEvent event);

private:
    std::atomic<DEVICE_STATE> state_{DEVICE_STATE::Available};
};

} // namespace VX3
