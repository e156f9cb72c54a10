// The transport manager of remote devices: one interface device for every usable network interface, behind
// which are the cameras that other hosts publish.
#pragma once

#include "device/ManagerAbs.h"

namespace VX3 {

class RemoteDeviceManager final : public ManagerAbs {
public:
    explicit RemoteDeviceManager(const char* name);

    // The number of interface devices made; 0 leaves an earlier list alone.
    StatusCode EnumDevices() override;
};

} // namespace VX3
