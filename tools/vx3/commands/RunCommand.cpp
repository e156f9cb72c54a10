// vx3 run: executes a command feature.
#include "base/ToolError.h"
#include "commands/Commands.h"
#include "features/FeatureText.h"
#include "search/Connection.h"

namespace VX3::Tool {

namespace {

class RunCommand : public Command {
public:
    RunCommand(CLI::App& app, const GlobalOptions& options)
        : Command(app, options, "run", "Execute a command") {
        AddCameraArgument(camera_);
        App()->add_option("COMMAND", command_, "Name of the command")->required();
        App()
            ->add_option("--timeout", timeout_, "Seconds to wait until it is done (default 5)")
            ->check(CLI::Range(0.0, 86400.0));
    }

    int Run() override {
        CameraSearch search(Options());
        const Connection connection(search.Find(camera_));
        if (!Execute(connection.Node(command_), static_cast<unsigned int>(timeout_ * 1000.0)))
            throw ToolError(command_ + " was not done in time", Status::TimeOut);
        return 0;
    }

private:
    std::string camera_;
    std::string command_;
    double timeout_ = 5.0;
};

} // namespace

std::unique_ptr<Command> CreateRunCommand(CLI::App& app, const GlobalOptions& options) {
    return std::make_unique<RunCommand>(app, options);
}

} // namespace VX3::Tool
