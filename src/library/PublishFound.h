// Cameras that come and go while the configuration key "CreateRemoteDevice" is true: they are published as
// long as they are there. The observer of the transports that tell of them.
#pragma once

#include "vx3/device/Types.h"

#include <memory>

namespace VX3 {

void PublishFound(SUB_DEVICE_EVENT event, const std::shared_ptr<IDevice>& camera);

} // namespace VX3
