// The transports that the aggregate manager can build, in the order it builds them. Filled by the composition
// root; the device folder knows none by name.
#pragma once

#include "vx3/core/IntfDevType.h"
#include "vx3/device/IManager.h"

#include <functional>
#include <memory>
#include <vector>

namespace VX3 {

struct TransportEntry {
    IntfDevType family;
    const char* managerName;
    std::function<std::unique_ptr<IManager>(const char* name)> create;
};

using TransportTable = std::vector<TransportEntry>;

} // namespace VX3
