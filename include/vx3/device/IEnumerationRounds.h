// How often an interface device has looked for cameras. Interface devices implement it beside IDevice
// (reached by a dynamic cast), so that a client can tell "none found" from "not looked yet".
#pragma once

#include "vx3/core/Export.h"

namespace VX3 {

class VX3_API IEnumerationRounds {
public:
    // Rounds finished since construction, the cameras of each published in SubDevices(). Any thread.
    virtual unsigned int FinishedRounds() const = 0;
    virtual ~IEnumerationRounds() = default;
};

} // namespace VX3
