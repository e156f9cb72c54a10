// The registers of a simulated camera as they are after power-up: identity, capabilities, defaults, and its
// GenICam description.
#pragma once

#include "simulated/camera/RegisterFile.h"
#include "vx3/simulated/CameraConfig.h"

namespace VX3 {
namespace Simulated {

// Channels that really stream, and have registers.
constexpr unsigned MaxChannels = 4;

void PowerUp(RegisterFile& registers, const CameraConfig& config);

// The camera's own description: the features a host needs to stream, and a few of each kind to read and
// write.
const char* OwnDescription();

} // namespace Simulated
} // namespace VX3
