// vx3 set: writes features, in the order given.
#include "base/Console.h"
#include "commands/Assignments.h"
#include "commands/Commands.h"

namespace VX3::Tool {

namespace {

class SetCommand : public Command {
public:
    SetCommand(Arguments& arguments, const GlobalOptions& options)
        : Command(arguments, options, "set", "Write features; enumerations by symbolic name or number") {
        AddCameraArgument(camera_);
        Args().Add("FEATURE=VALUE", texts_, "What to write").Required().Check(IsAssignment);
    }

    int Run() override {
        const std::vector<Assignment> assignments = ParseAssignments(texts_);
        CameraSearch search(Options());
        const Connection connection(search.Find(camera_));
        Json json = Json::object();
        for (const Assignment& assignment : assignments) {
            const SetResult result = Assign(connection, assignment);
            json[assignment.first] = result.held;
            if (!Options().json)
                Console::Instance().Out() << assignment.first << " = " << Printable(result.held) << '\n';
        }
        if (Options().json)
            Console::Instance().PrintJson(json);
        return 0;
    }

private:
    static std::string IsAssignment(const std::string& text) {
        const std::size_t equals = text.find('=');
        return equals == std::string::npos || equals == 0 ? "\"" + text + "\" is not FEATURE=VALUE" : "";
    }

    std::string camera_;
    std::vector<std::string> texts_;
};

} // namespace

std::unique_ptr<Command> CreateSetCommand(Arguments& arguments, const GlobalOptions& options) {
    return std::make_unique<SetCommand>(arguments, options);
}

} // namespace VX3::Tool
