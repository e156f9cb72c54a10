// vx3 run: executes a command feature.
#include "base/Console.h"
#include "base/ExitCode.h"
#include "base/ToolError.h"
#include "commands/Commands.h"
#include "features/FeatureText.h"
#include "features/FindFeature.h"
#include "search/Connection.h"

namespace VX3::Tool {

namespace {

class RunCommand : public Command {
public:
    RunCommand(Arguments& arguments, const GlobalOptions& options)
        : Command(arguments, options, "run", "Execute a command") {
        AddCameraArgument(camera_);
        Args().Add("COMMAND", command_, "Name of the command").Required();
        Args().AddSeconds("--timeout", timeout_, "How long to wait until it is done (default 5 s)", 0.0,
                          86400.0);
    }

    int Run() override {
        CameraSearch search(Options());
        const Connection connection(search.Find(camera_));
        GenICam::INode& command = FindFeature(*connection.Nodes(), command_);
        if (!Execute(command, static_cast<unsigned int>(timeout_ * 1000.0)))
            throw ToolError(command.GetName() + " was not done in time", Status::TimeOut);
        if (Options().json)
            Console::Instance().PrintJson({{"command", command.GetName()}, {"done", true}});
        return Exit::Done;
    }

private:
    std::string camera_;
    std::string command_;
    double timeout_ = 5.0;
};

} // namespace

std::unique_ptr<Command> CreateRunCommand(Arguments& arguments, const GlobalOptions& options) {
    return std::make_unique<RunCommand>(arguments, options);
}

} // namespace VX3::Tool
