// Cameras that the program makes itself to serve them: out of nothing, or from a folder of recorded frames.
#pragma once

#include "vx3/device/IDevice.h"

#include <memory>
#include <string>

namespace VX3::Tool {

// "640x480@100": width, height and frames a second (30 where it is not said). Throws ToolError for any other
// text.
std::shared_ptr<IDevice> PatternCamera(const std::string& text);

// The folder's pictures and raw files in the order of their names, and the values of its file
// "settings.txt", as `vx3 save` writes it. `framesPerSecond` 0: as recorded, else 30. Throws ToolError.
std::shared_ptr<IDevice> ReplayCamera(const std::string& folder, double framesPerSecond);

} // namespace VX3::Tool
