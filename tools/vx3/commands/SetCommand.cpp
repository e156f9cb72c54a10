// vx3 set: writes features, in the order given.
#include "base/Console.h"
#include "base/ExitCode.h"
#include "base/ToolError.h"
#include "commands/Assignments.h"
#include "commands/Commands.h"
#include "features/Feature.h"

namespace VX3::Tool {

namespace {

class SetCommand : public Command {
public:
    SetCommand(Arguments& arguments, const GlobalOptions& options)
        : Command(arguments, options, "set", "Write features; enumerations by symbolic name or number") {
        AddCameraArgument(camera_);
        Args().Add("FEATURE=VALUE", texts_, "What to write").Required().Check(AssignmentFault);
    }

    // In the order given, up to the first that fails.
    int Run() override {
        const std::vector<Assignment> assignments = ParseAssignments(texts_);
        CameraSearch search(Options());
        const Connection connection(search.Find(camera_));
        Json json = Json::object();
        int status = Exit::Done;
        try {
            for (const Assignment& assignment : assignments)
                status = Graver(status, Set(connection, assignment, json));
        } catch (const ToolError& error) {
            json.update(ErrorJson(error.what(), Exit::Failure));
            Console::Instance().Say(PrintableLines(error.what()));
            status = Exit::Failure;
        }
        if (Options().json)
            Console::Instance().PrintJson(json);
        return status;
    }

private:
    int Set(const Connection& connection, const Assignment& assignment, Json& json) const {
        const AssignResult result = Assign(connection, assignment);
        const Feature feature = ReadFeature(result.node);
        json[feature.name] = feature.value;
        if (result.adjusted)
            json["adjusted"].push_back(feature.name);
        if (!Options().json)
            Console::Instance().Out() << feature.name << " = " << Printable(feature.text) << '\n';
        return result.adjusted ? Exit::Adjusted : Exit::Done;
    }

    std::string camera_;
    std::vector<std::string> texts_;
};

} // namespace

std::unique_ptr<Command> CreateSetCommand(Arguments& arguments, const GlobalOptions& options) {
    return std::make_unique<SetCommand>(arguments, options);
}

} // namespace VX3::Tool
