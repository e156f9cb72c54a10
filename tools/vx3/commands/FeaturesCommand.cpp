// vx3 features: a camera's features by category.
#include "base/Console.h"
#include "base/ExitCode.h"
#include "commands/Commands.h"
#include "features/FeatureTree.h"
#include "search/Connection.h"

namespace VX3::Tool {

namespace {

class FeaturesCommand : public Command {
public:
    FeaturesCommand(Arguments& arguments, const GlobalOptions& options)
        : Command(arguments, options, "features", "Show a camera's features by category") {
        AddCameraArgument(camera_);
        Args()
            .Add("--visibility", visibility_, "Show features up to this visibility (default guru)")
            .OneOf({"beginner", "expert", "guru", "invisible"});
    }

    int Run() override {
        CameraSearch search(Options());
        const Connection connection(search.Find(camera_), Use::Read);
        const FeatureTree tree = ReadTree(*connection.Nodes(), {ParseVisibility(visibility_), false});
        if (Options().json)
            Console::Instance().PrintJson(ToJson(tree));
        else
            PrintTree(Console::Instance().Out(), tree);
        const std::size_t problems = CountProblems(tree);
        if (problems == 0)
            return Exit::Done;
        Console::Instance().Say(std::to_string(problems) + " features could not be read");
        return Exit::Incomplete;
    }

private:
    std::string camera_;
    std::string visibility_ = "guru";
};

} // namespace

std::unique_ptr<Command> CreateFeaturesCommand(Arguments& arguments, const GlobalOptions& options) {
    return std::make_unique<FeaturesCommand>(arguments, options);
}

} // namespace VX3::Tool
