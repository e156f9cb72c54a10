// The command-line program: finds cameras, reads and writes their features, grabs pictures.
#include "base/Console.h"
#include "base/GlobalOptions.h"
#include "commands/Command.h"

#include <CLI/CLI.hpp>
#include <exception>

namespace {

using namespace VX3::Tool;

constexpr int Failure = 1;
constexpr int WrongUsage = 2;

int RunChosen(const std::vector<std::unique_ptr<Command>>& commands) {
    for (const std::unique_ptr<Command>& command : commands)
        if (command->Chosen())
            return command->Run();
    return WrongUsage;
}

} // namespace

int main(int argc, char** argv) {
    CLI::App app("Finds machine-vision cameras, reads and writes their features, grabs pictures.", "vx3");
    GlobalOptions options;
    Arguments arguments(&app);
    arguments.Flag("--json", options.json, "Print results as JSON");
    arguments.Flag("-v,--verbose", options.verbose, "Show the library's log on standard error");
    arguments.Add("--interface", options.interfaceName, "Look only behind this interface (eth0, ...)");
    arguments.Add("--transport", options.transport, "Look only on this transport")
        .OneOf({"virtual", "gige", "gencp", "grabber", "gentl", "remote"});
    app.require_subcommand(1);
    app.fallthrough();
    const auto commands = CreateCommands(arguments, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : WrongUsage;
    }
    Console& console = Console::Instance();
    console.SetVerbose(options.verbose);
    try {
        return RunChosen(commands);
    } catch (const std::exception& error) {
        console.EndProgress();
        console.Say(PrintableLines(error.what()));
    } catch (const char* text) {
        console.EndProgress();
        console.Say(text);
    }
    return Failure;
}
