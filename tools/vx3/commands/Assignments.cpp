#include "commands/Assignments.h"

#include "base/Console.h"
#include "base/ToolError.h"
#include "features/FeatureText.h"
#include "features/FindFeature.h"

namespace VX3::Tool {

std::string AssignmentFault(const std::string& text) {
    const std::size_t equals = text.find('=');
    return equals == std::string::npos || equals == 0 ? "\"" + text + "\" is not FEATURE=VALUE" : "";
}

std::vector<Assignment> ParseAssignments(const std::vector<std::string>& texts) {
    std::vector<Assignment> assignments;
    for (const std::string& text : texts) {
        if (const std::string fault = AssignmentFault(text); !fault.empty())
            throw ToolError(fault);
        const std::size_t equals = text.find('=');
        assignments.emplace_back(text.substr(0, equals), text.substr(equals + 1));
    }
    return assignments;
}

AssignResult Assign(const Connection& connection, const Assignment& assignment) {
    GenICam::INode& node = FindFeature(*connection.Nodes(), assignment.first);
    const SetResult result = WriteText(node, assignment.second);
    const std::string name = node.GetName();
    if (result.kind == SetResult::Kind::Refused)
        throw ToolError(name + ": the camera keeps " + result.held + " and does not take " +
                            assignment.second,
                        Status::NodeFailed);
    const bool adjusted = result.kind == SetResult::Kind::Adjusted;
    if (adjusted)
        Console::Instance().Say(Printable(result.held.empty() ? result.told
                                                              : name + ": asked for " + assignment.second +
                                                                    ", the camera took " + result.held));
    return {node, adjusted};
}

} // namespace VX3::Tool
