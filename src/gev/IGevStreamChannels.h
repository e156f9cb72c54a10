// What a stream needs of its camera. The device implements it, so that streams know nothing of devices.
#pragma once

#include "vx3/core/Status.h"
#include "vx3/gev/NetParam.h"

#include <cstdint>

namespace VX3 {

class IGevStreamChannels {
public:
    // What a receiver of the channel needs to know; asks the camera.
    [[nodiscard]] virtual StatusCode StreamParam(unsigned int channel, GevStreamParam& param) = 0;
    // Where the channel sends; port 0 disables it, and does nothing on a lost device.
    [[nodiscard]] virtual StatusCode SetStreamDest(unsigned int channel, std::uint32_t ip,
                                                   std::uint32_t port) = 0;

protected:
    ~IGevStreamChannels() = default; // nobody owns a device through it
};

} // namespace VX3
