// FEATURE=VALUE arguments, as several verbs take them.
#pragma once

#include "search/Connection.h"

#include <string>
#include <utility>
#include <vector>

namespace VX3::Tool {

using Assignment = std::pair<std::string, std::string>;

// What is wrong with an argument that should be FEATURE=VALUE; empty when nothing is.
std::string AssignmentFault(const std::string& text);
// Throws ToolError for a text without '='.
std::vector<Assignment> ParseAssignments(const std::vector<std::string>& texts);
struct AssignResult {
    GenICam::INode& node;
    bool adjusted; // the camera holds another value than the one asked for
};

// Finds the feature and writes it. A value that the camera adjusts is said on standard error; one that it
// does not take throws ToolError.
AssignResult Assign(const Connection& connection, const Assignment& assignment);

} // namespace VX3::Tool
