// vx3 version: versions of the library.
#include "base/Console.h"
#include "base/ExitCode.h"
#include "commands/Commands.h"
#include "vx3/library/System.h"

namespace VX3::Tool {

namespace {

class VersionCommand : public Command {
public:
    VersionCommand(Arguments& arguments, const GlobalOptions& options)
        : Command(arguments, options, "version", "Show the library's version") {}

    int Run() override {
        PrintVersion(Options().json);
        return Exit::Done;
    }
};

} // namespace

void PrintVersion(bool json) {
    Console& console = Console::Instance();
    if (json)
        console.PrintJson({{"version", System::SDKVersion()},
                           {"build", System::SDKBuildVersion()},
                           {"library", System::GetCurrentPath()}});
    else
        console.Out() << "vx3 " << System::SDKVersion() << " build " << System::SDKBuildVersion() << ", "
                      << System::GetCurrentPath() << '\n';
}

std::unique_ptr<Command> CreateVersionCommand(Arguments& arguments, const GlobalOptions& options) {
    return std::make_unique<VersionCommand>(arguments, options);
}

} // namespace VX3::Tool
