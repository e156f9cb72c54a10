// vx3 xml: the description that a camera publishes.
#include "base/Console.h"
#include "base/ExitCode.h"
#include "base/Files.h"
#include "base/ToolError.h"
#include "commands/Commands.h"
#include "search/Connection.h"
#include "vx3/genicam/DescriptionCheck.h"

namespace VX3::Tool {

namespace {

class XmlCommand : public Command {
public:
    XmlCommand(Arguments& arguments, const GlobalOptions& options)
        : Command(arguments, options, "xml", "Print a camera's description, unpacked") {
        AddCameraArgument(camera_);
        Args().Add("-o,--output", file_, "Write to this file instead");
        Args().Flag("--original", original_, "The bytes as the camera gave them, perhaps zipped");
    }

    int Run() override {
        if (Options().json && original_ && file_.empty())
            throw ToolError("the camera's own bytes are no JSON text: name a file with --output");
        CameraSearch search(Options());
        const Connection connection(search.Find(camera_), Use::Read);
        const IXmlData* description = connection.Configurer().GetXmlData();
        if (description == nullptr)
            throw ToolError(Describe(connection.Found()) + " gave no description", Status::NotAvailable);
        const auto* bytes = reinterpret_cast<const char*>(description->GetXmlData());
        const std::string text = original_ ? std::string(bytes, description->GetXmlDataSize())
                                           : GenICam::DescriptionText(*description);
        if (text.empty())
            throw ToolError("the description " + description->GetXmlName() +
                            " could not be unpacked; --original gives its bytes");
        if (!file_.empty())
            WriteWholeFile(file_, text);
        if (Options().json)
            PrintAsJson(*description, text);
        else if (file_.empty())
            Console::Instance().Out() << text;
        return Exit::Done;
    }

private:
    void PrintAsJson(const IXmlData& description, const std::string& text) const {
        Json json = {{"name", description.GetXmlName()}, {"bytes", text.size()}};
        if (file_.empty())
            json["text"] = text;
        else
            json["file"] = file_;
        Console::Instance().PrintJson(json);
    }

    std::string camera_;
    std::string file_;
    bool original_ = false;
};

} // namespace

std::unique_ptr<Command> CreateXmlCommand(Arguments& arguments, const GlobalOptions& options) {
    return std::make_unique<XmlCommand>(arguments, options);
}

} // namespace VX3::Tool
