#include "device/DeviceStateMachine.h"

namespace VX3 {

DEVICE_STATE DeviceStateMachine::Next(DEVICE_STATE from, DeviceEvent event) {
    const bool inUse = from == DEVICE_STATE::Connected || from == DEVICE_STATE::Acquiring;
    switch (event) {
    case DeviceEvent::Connected:
        return DEVICE_STATE::Connected;
    case DeviceEvent::AcquisitionStarted:
        return inUse ? DEVICE_STATE::Acquiring : from;
    case DeviceEvent::AcquisitionStopped:
        return inUse ? DEVICE_STATE::Connected : from;
    case DeviceEvent::HeartbeatLost:
        return inUse ? DEVICE_STATE::Lost : from;
    case DeviceEvent::Disconnected:
        return DEVICE_STATE::Available;
    }
    return from;
}

} // namespace VX3
