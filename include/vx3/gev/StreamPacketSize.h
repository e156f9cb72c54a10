// The packet size of a GigE Vision camera's streams, for cameras whose description has no feature for it.
#pragma once

#include "vx3/device/IDevice.h"

namespace VX3 {

// Bytes of a packet of that stream channel, IP and UDP headers included, up to 65535. Set it before the
// stream opens. NotSupported: not a GigE Vision camera; NotFound: too large a size, or no such channel.
VX3_API StatusCode SetStreamPacketSize(IDevice& camera, unsigned int channel, unsigned int size);

} // namespace VX3
