// vx3 load: a camera's settings from a text file.
#include "base/Console.h"
#include "base/ToolError.h"
#include "commands/Commands.h"
#include "features/FeatureLoader.h"
#include "search/Connection.h"

#include <fstream>

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
        std::ifstream file(file_);
        if (!file)
            throw ToolError(file_ + " cannot be read");
        const std::vector<FeatureLine> lines = ReadLines(file);
        CameraSearch search(Options());
        const Connection connection(search.Find(camera_));
        const FeatureLoader::Result result = FeatureLoader(*connection.Nodes()).Load(lines);
        Report(result);
        return result.failures.empty() ? 0 : 1;
    }

private:
    void Report(const FeatureLoader::Result& result) const {
        Console& console = Console::Instance();
        Json failures = Json::array();
        for (const FeatureLoader::Failure& failure : result.failures) {
            console.Say(Printable(file_ + ":" + std::to_string(failure.line.number) + ": " +
                                  failure.line.Label() + ": " + failure.reason));
            failures.push_back({{"feature", failure.line.Label()},
                                {"line", failure.line.number},
                                {"value", failure.line.value},
                                {"reason", failure.reason}});
        }
        if (Options().json)
            console.PrintJson({{"file", file_}, {"set", result.set}, {"failed", failures}});
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
