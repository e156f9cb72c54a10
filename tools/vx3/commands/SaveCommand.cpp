// vx3 save: a camera's settings as a text file.
#include "base/Console.h"
#include "base/ExitCode.h"
#include "base/Files.h"
#include "base/Interrupt.h"
#include "base/ToolError.h"
#include "commands/Commands.h"
#include "features/FeatureSaver.h"
#include "search/Connection.h"

#include <sstream>

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

    // The file is written once everything is read: whatever happens to the camera costs no old settings.
    int Run() override {
        CameraSearch search(Options());
        const Connection connection(search.Find(camera_));
        std::ostringstream text;
        text << "# Settings of " << Printable(connection.Device().Name()) << ", for 'vx3 load'.\n";
        const FeatureWatch watch{[&](const std::string& feature) { return connection.IsGone(feature); },
                                 Interrupted};
        const FeatureSaver::Result result =
            FeatureSaver(*connection.Nodes(), text, everything_, watch, {}).Save();
        const std::string left = "; " + file_ + " is left as it was";
        if (result.interrupted)
            throw ToolError("the settings were not read to the end" + left);
        if (result.gone)
            throw ToolError("the camera stopped answering: " + result.problems.back() + left);
        const bool written = result.saved != 0;
        if (written)
            WriteWholeFile(file_, text.str());
        Report(result, left);
        if (!written)
            return Exit::Nothing;
        return result.problems.empty() && result.omitted.empty() ? Exit::Done : Exit::Incomplete;
    }

private:
    void Report(const FeatureSaver::Result& result, const std::string& left) const {
        Console& console = Console::Instance();
        if (result.saved == 0)
            console.Say((everything_
                             ? "the camera has no feature that could be saved"
                             : "the camera marks no feature as streamable (--all saves every writable "
                               "one)") +
                        left);
        for (const std::string& problem : result.problems)
            console.Say(Printable(problem));
        for (const std::string& omitted : result.omitted)
            console.Say(Printable(omitted));
        if (Options().json)
            console.PrintJson({{"file", file_},
                               {"saved", result.saved},
                               {"problems", result.problems},
                               {"omitted", result.omitted}});
        else if (result.saved != 0)
            console.Out() << result.saved << " values saved to " << file_ << '\n';
    }

    std::string camera_;
    std::string file_;
    bool everything_ = false;
};

} // namespace

std::unique_ptr<Command> CreateSaveCommand(Arguments& arguments, const GlobalOptions& options) {
    return std::make_unique<SaveCommand>(arguments, options);
}

} // namespace VX3::Tool
