// A feature by the name that a person typed.
#pragma once

#include "vx3/genicam/INodeMap.h"

#include <string>

namespace VX3::Tool {

// The node of that name, else the only feature whose name differs in case alone. Throws ToolError, naming
// what may have been meant, when there is neither.
GenICam::INode& FindFeature(const GenICam::INodeMap& nodes, const std::string& name);

} // namespace VX3::Tool
