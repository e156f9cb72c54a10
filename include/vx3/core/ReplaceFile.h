// Writes a file so that it has either its old content or its new one, whatever happens meanwhile.
#pragma once

#include "vx3/core/Export.h"

#include <string>

namespace VX3 {

// Written beside the target, synced and renamed over it; the target's mode stays, a symbolic link is
// followed. Where the folder takes no new file, the target is overwritten in place, with a warning in the
// log; what is no ordinary file (a device, a pipe) is written to, never replaced. The error number of what
// failed, else 0: the old content is left then, unless it was overwritten in place. Any thread.
VX3_API int ReplaceFile(const std::string& path, const std::string& content);

} // namespace VX3
