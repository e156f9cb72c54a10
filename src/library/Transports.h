// Every transport this library is built with, in the order the aggregate manager asks them.
#pragma once

#include "device/TransportTable.h"

namespace VX3 {

const TransportTable& Transports();

} // namespace VX3
