// Manager of the virtual transport: one interface with two cameras that need no hardware.
#pragma once

#include "device/ManagerAbs.h"

namespace VX3 {

class VirtualManager final : public ManagerAbs {
public:
    explicit VirtualManager(const char* name);

    StatusCode EnumDevices() override;
};

} // namespace VX3
