// vx3 get: values of features.
#include "base/Console.h"
#include "base/ToolError.h"
#include "commands/Commands.h"
#include "features/Feature.h"
#include "features/FeatureText.h"
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
        const Connection connection(search.Find(camera_));
        Json json = Json::object();
        int status = 0;
        for (const std::string& name : features_) {
            try {
                Read(connection.Node(name), json);
            } catch (const ToolError& error) {
                Console::Instance().Say(Printable(error.what()));
                status = 1;
            }
        }
        if (Options().json)
            Console::Instance().PrintJson(json);
        return status;
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
            Console::Instance().Out() << Printable(feature.text) << '\n';
        else
            Console::Instance().Out() << feature.name << " = " << Printable(feature.text) << '\n';
    }

    std::string camera_;
    std::vector<std::string> features_;
};

} // namespace

std::unique_ptr<Command> CreateGetCommand(Arguments& arguments, const GlobalOptions& options) {
    return std::make_unique<GetCommand>(arguments, options);
}

} // namespace VX3::Tool
