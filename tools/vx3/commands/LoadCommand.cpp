// vx3 load: a camera's settings from a text file.
#include "base/Console.h"
#include "base/ExitCode.h"
#include "base/Files.h"
#include "base/Interrupt.h"
#include "base/ToolError.h"
#include "commands/Commands.h"
#include "features/FeatureLoader.h"
#include "search/Connection.h"

#include <algorithm>
#include <sstream>

namespace VX3::Tool {

namespace {

class LoadCommand : public Command {
public:
    LoadCommand(Arguments& arguments, const GlobalOptions& options)
        : Command(arguments, options, "load", "Set a camera from a file that 'save' wrote") {
        AddCameraArgument(camera_);
        Args().Add("FILE", file_, "Text file, one feature a line").Required();
    }

    int Run() override {
        std::istringstream file(ReadWholeFile(file_));
        const std::vector<FeatureLine> lines = ReadLines(file);
        CameraSearch search(Options());
        const Connection connection(search.Find(camera_));
        const FeatureWatch watch{[&](const std::string& feature) { return connection.IsGone(feature); },
                                 Interrupted};
        const FeatureLoader::Result result = FeatureLoader(*connection.Nodes(), watch).Load(lines);
        const int status = lines.empty() ? Exit::Nothing : Judge(result);
        Report(result, status);
        return status;
    }

private:
    static int Judge(const FeatureLoader::Result& result) {
        if (result.failures.empty())
            return Exit::Done;
        const bool adjusted = std::all_of(result.failures.begin(), result.failures.end(),
                                          [](const auto& failure) { return failure.adjusted; });
        return adjusted ? Exit::Adjusted : Exit::Failure;
    }

    void Report(const FeatureLoader::Result& result, int status) const {
        Console& console = Console::Instance();
        Json failures = Json::array();
        if (result.gone && !Interrupted())
            console.Say("the camera stopped answering");
        if (result.set == 0 && result.failures.empty())
            console.Say(Printable(file_) + " holds no settings");
        for (const FeatureLoader::Failure& failure : result.failures) {
            console.Say(Printable(file_ + ":" + std::to_string(failure.line.number) + ": " +
                                  failure.line.Label() + ": " + failure.reason));
            failures.push_back({{"feature", failure.line.Label()},
                                {"line", failure.line.number},
                                {"value", failure.line.value},
                                {"reason", failure.reason}});
        }
        if (Options().json)
            console.PrintJson({{"file", file_}, {"set", result.set}, {"failed", failures}, {"code", status}});
        else
            console.Out() << result.set << " values set, " << result.failures.size() << " not\n";
    }

    std::string camera_;
    std::string file_;
};

} // namespace

std::unique_ptr<Command> CreateLoadCommand(Arguments& arguments, const GlobalOptions& options) {
    return std::make_unique<LoadCommand>(arguments, options);
}

} // namespace VX3::Tool
