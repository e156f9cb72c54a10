// FEATURE=VALUE arguments, as several verbs take them.
#pragma once

#include "features/FeatureText.h"
#include "search/Connection.h"

#include <string>
#include <utility>
#include <vector>

namespace VX3::Tool {

using Assignment = std::pair<std::string, std::string>;

// Throws ToolError for a text without '='.
std::vector<Assignment> ParseAssignments(const std::vector<std::string>& texts);
// Writes them in order. A value that the camera adjusts is said on standard error; one that it does not take
// throws ToolError.
SetResult Assign(const Connection& connection, const Assignment& assignment);

} // namespace VX3::Tool
