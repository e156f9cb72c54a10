// The transport manager of CameraLink cameras that speak GenCP: one interface device, over every serial port
// that the configuration lists.
#pragma once

#include "device/ManagerAbs.h"

namespace VX3 {

class GenCpManager final : public ManagerAbs {
public:
    explicit GenCpManager(const char* name);

    StatusCode EnumDevices() override;
};

} // namespace VX3
