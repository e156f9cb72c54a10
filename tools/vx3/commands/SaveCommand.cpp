// vx3 save: a camera's settings as a text file.
#include "base/Console.h"
#include "base/ToolError.h"
#include "commands/Commands.h"
#include "features/FeatureSaver.h"
#include "search/Connection.h"

#include <fstream>

namespace VX3::Tool {

namespace {

class SaveCommand : public Command {
public:
    SaveCommand(Arguments& arguments, const GlobalOptions& options)
        : Command(arguments, options, "save", "Save a camera's settings to a text file") {
        AddCameraArgument(camera_);
        Args().Add("FILE", file_, "Text file, one feature a line").Required();
        Args().Flag("--all", everything_, "Also features that the camera does not mark as streamable");
    }

    int Run() override {
        CameraSearch search(Options());
        const Connection connection(search.Find(camera_));
        std::ofstream file(file_, std::ios::trunc);
        file << "# Settings of " << Printable(connection.Device().Name()) << ", for 'vx3 load'.\n";
        const FeatureSaver::Result result = FeatureSaver(*connection.Nodes(), file, everything_).Save();
        file.close();
        if (!file)
            throw ToolError(file_ + " cannot be written");
        Console& console = Console::Instance();
        if (result.saved == 0 && !everything_)
            console.Say("the camera marks no feature as streamable; --all saves every writable one");
        for (const std::string& problem : result.problems)
            console.Say(Printable(problem));
        if (Options().json)
            console.PrintJson({{"file", file_}, {"saved", result.saved}, {"problems", result.problems}});
        else
            console.Out() << result.saved << " values saved to " << file_ << '\n';
        return result.problems.empty() ? 0 : 1;
    }

private:
    std::string camera_;
    std::string file_;
    bool everything_ = false;
};

} // namespace

std::unique_ptr<Command> CreateSaveCommand(Arguments& arguments, const GlobalOptions& options) {
    return std::make_unique<SaveCommand>(arguments, options);
}

} // namespace VX3::Tool
