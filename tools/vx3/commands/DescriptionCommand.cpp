// vx3 description: loads a description file without a camera and shows what is in it and what is wrong with
// it.
#include "base/Console.h"
#include "base/ExitCode.h"
#include "base/ToolError.h"
#include "commands/Commands.h"
#include "features/FeatureTree.h"
#include "vx3/genicam/DescriptionCheck.h"

namespace VX3::Tool {

namespace {

class DescriptionCommand : public Command {
public:
    DescriptionCommand(Arguments& arguments, const GlobalOptions& options)
        : Command(arguments, options, "description", "Check a description file without a camera") {
        Args().Add("FILE", file_, "GenApi description, .xml or .zip").Required();
        Args()
            .Add("--visibility", visibility_, "Show features up to this visibility (default invisible)")
            .OneOf({"beginner", "expert", "guru", "invisible"});
        Args().Flag("--problems", onlyProblems_, "Leave the tree out");
    }

    // Over registers that read as zeros; a file that works but has problems is a success.
    int Run() override {
        const GenICam::DescriptionCheck check(file_);
        const std::shared_ptr<GenICam::INodeMap> nodes = check.GetNodeMap();
        FeatureTree tree;
        if (nodes && !onlyProblems_)
            tree = ReadTree(*nodes, {ParseVisibility(visibility_), true});
        if (Options().json)
            PrintAsJson(check, tree);
        else
            PrintAsText(check, tree);
        return nodes ? Exit::Done : Exit::Failure;
    }

private:
    void PrintAsJson(const GenICam::DescriptionCheck& check, const FeatureTree& tree) const {
        Json json = {{"file", file_}, {"usable", check.Error().empty()}};
        if (!check.Error().empty())
            json.update(ErrorJson(check.Error(), Exit::Failure));
        if (const auto nodes = check.GetNodeMap())
            json["nodes"] = nodes->GetNumNodes();
        json["problems"] = Json::array();
        for (const GenICam::DescriptionProblem& problem : check.Problems())
            json["problems"].push_back(
                {{"line", problem.line}, {"node", problem.node}, {"text", problem.text}});
        if (check.Error().empty() && !onlyProblems_)
            json["features"] = ToJson(tree);
        Console::Instance().PrintJson(json);
    }

    void PrintAsText(const GenICam::DescriptionCheck& check, const FeatureTree& tree) const {
        Console& console = Console::Instance();
        if (!check.Error().empty()) {
            console.Say(Printable(check.Error()));
            return;
        }
        PrintTree(console.Out(), tree);
        for (const GenICam::DescriptionProblem& problem : check.Problems()) {
            console.Out() << file_ << ':';
            if (problem.line != 0)
                console.Out() << problem.line << ':';
            console.Out() << ' ' << (problem.node.empty() ? "" : Printable(problem.node) + ": ")
                          << Printable(problem.text) << '\n';
        }
        console.Out() << check.GetNodeMap()->GetNumNodes() << " nodes, " << CountFeatures(tree)
                      << " features shown, " << check.Problems().size() << " problems\n";
    }

    std::string file_;
    std::string visibility_ = "invisible";
    bool onlyProblems_ = false;
};

} // namespace

std::unique_ptr<Command> CreateDescriptionCommand(Arguments& arguments, const GlobalOptions& options) {
    return std::make_unique<DescriptionCommand>(arguments, options);
}

} // namespace VX3::Tool
