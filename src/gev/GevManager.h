// The transport manager of GigE Vision: one interface device for every usable network interface.
#pragma once

#include "device/ManagerAbs.h"

namespace VX3 {

class GevManager : public ManagerAbs {
public:
    explicit GevManager(const char* name);

    // The number of interface devices made; 0 leaves an earlier list alone.
    StatusCode EnumDevices() override;
};

} // namespace VX3
