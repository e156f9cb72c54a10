// Whether anybody reads messages of a level: what is logged very often is built for readers only.
#pragma once

#include "vx3/core/Logger.h"

namespace VX3 {

// The log's back end takes this level, or a callback is registered. Any thread; allocates nothing.
bool HasLogListener(LogLevel level);

} // namespace VX3
