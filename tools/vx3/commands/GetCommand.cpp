// vx3 get: values of features.
#include "base/Console.h"
#include "base/ExitCode.h"
#include "base/Interrupt.h"
#include "base/ToolError.h"
#include "commands/Commands.h"
#include "features/Feature.h"
#include "features/FeatureText.h"
#include "features/FindFeature.h"
#include "search/Connection.h"

namespace VX3::Tool {

namespace {

class GetCommand : public Command {
public:
    GetCommand(Arguments& arguments, const GlobalOptions& options)
        : Command(arguments, options, "get", "Read features") {
        AddCameraArgument(camera_);
        Args().Add("FEATURE", features_, "Names of features").Required();
    }

    // Reads what can be read before it complains about the rest.
    int Run() override {
        CameraSearch search(Options());
        const Connection connection(search.Find(camera_), Use::Read);
        const std::shared_ptr<GenICam::INodeMap> nodes = connection.Nodes();
        Json json = Json::object();
        std::string failures;
        for (const std::string& name : features_) {
            try {
                Read(FindFeature(*nodes, name), json);
            } catch (const ToolError& error) {
                Console::Instance().Say(Printable(error.what()));
                failures += (failures.empty() ? "" : "\n") + std::string(error.what());
            }
            if (Interrupted())
                throw ToolError(failures.empty() ? "not everything was read" : failures);
        }
        if (!failures.empty())
            json.update(ErrorJson(failures, Exit::Failure));
        if (Options().json)
            Console::Instance().PrintJson(json);
        return failures.empty() ? Exit::Done : Exit::Failure;
    }

private:
    void Read(GenICam::INode& node, Json& json) const {
        const Feature feature = ReadFeature(node);
        if (!feature.problem.empty())
            throw ToolError(feature.name + ": " + feature.problem, Status::NodeFailed);
        if (!HasValue(feature.type))
            throw ToolError(feature.name + " is a " + TypeText(feature.type) + " and has no value");
        if (!GenICam::IsReadable(feature.access))
            throw ToolError(feature.name + " cannot be read now", Status::NodeFailed);
        if (Options().json)
            json[feature.name] = feature.value;
        else if (features_.size() == 1)
            Console::Instance().Out() << ValueLines(feature) << '\n';
        else
            Console::Instance().Out() << feature.name << " = " << ValueLines(feature) << '\n';
    }

    std::string camera_;
    std::vector<std::string> features_;
};

} // namespace

std::unique_ptr<Command> CreateGetCommand(Arguments& arguments, const GlobalOptions& options) {
    return std::make_unique<GetCommand>(arguments, options);
}

} // namespace VX3::Tool
