// vx3 features: a camera's features by category.
#include "base/Console.h"
#include "commands/Commands.h"
#include "features/FeatureTree.h"
#include "search/Connection.h"

namespace VX3::Tool {

namespace {

class FeaturesCommand : public Command {
public:
    FeaturesCommand(CLI::App& app, const GlobalOptions& options)
        : Command(app, options, "features", "Show a camera's features by category") {
        AddCameraArgument(camera_);
        App()
            ->add_option("--visibility", visibility_, "Show features up to this visibility (default guru)")
            ->transform(CLI::IsMember({"beginner", "expert", "guru", "invisible"}, CLI::ignore_case));
    }

    int Run() override {
        CameraSearch search(Options());
        const Connection connection(search.Find(camera_));
        const FeatureTree tree = ReadTree(*connection.Nodes(), {ParseVisibility(visibility_), false});
        if (Options().json)
            Console::Instance().PrintJson(ToJson(tree));
        else
            PrintTree(Console::Instance().Out(), tree);
        return 0;
    }

private:
    std::string camera_;
    std::string visibility_ = "guru";
};

} // namespace

std::unique_ptr<Command> CreateFeaturesCommand(CLI::App& app, const GlobalOptions& options) {
    return std::make_unique<FeaturesCommand>(app, options);
}

} // namespace VX3::Tool
