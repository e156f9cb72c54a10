#include "commands/Assignments.h"

#include "base/Console.h"
#include "base/ToolError.h"

namespace VX3::Tool {

std::vector<Assignment> ParseAssignments(const std::vector<std::string>& texts) {
    std::vector<Assignment> assignments;
    for (const std::string& text : texts) {
        const std::size_t equals = text.find('=');
        if (equals == std::string::npos || equals == 0)
            throw ToolError("\"" + text + "\" is not FEATURE=VALUE");
        assignments.emplace_back(text.substr(0, equals), text.substr(equals + 1));
    }
    return assignments;
}

SetResult Assign(const Connection& connection, const Assignment& assignment) {
    const SetResult result = WriteText(connection.Node(assignment.first), assignment.second);
    if (result.kind == SetResult::Kind::Refused)
        throw ToolError(assignment.first + ": the camera keeps " + result.held + " and does not take " +
                            assignment.second,
                        Status::NodeFailed);
    if (result.kind == SetResult::Kind::Adjusted)
        Console::Instance().Say(Printable(assignment.first + ": asked for " + assignment.second +
                                          ", the camera took " + result.held));
    return result;
}

} // namespace VX3::Tool
