// The command-line program: finds cameras, reads and writes their features, grabs pictures.
#include "base/Console.h"
#include "base/ExitCode.h"
#include "base/GlobalOptions.h"
#include "base/Interrupt.h"
#include "base/ToolError.h"
#include "base/Usage.h"
#include "commands/Command.h"
#include "commands/Commands.h"

#include <CLI/CLI.hpp>
#include <exception>

namespace {

using namespace VX3::Tool;

int Fail(const std::string& text, int status, bool json) {
    Console& console = Console::Instance();
    console.EndProgress();
    console.Say(PrintableLines(text));
    if (json && !console.HasPrintedJson())
        console.PrintJson(ErrorJson(text, status));
    return status;
}

int Help(const std::string& text, bool json) {
    Console& console = Console::Instance();
    if (json)
        console.PrintJson({{"help", text}});
    else
        console.Out() << text;
    return Exit::Done;
}

// What a verb that was interrupted did is not what was asked, unless it was to go on until then.
int RunCommand(Command& command, bool json) {
    try {
        const int status = command.Run();
        if (!Interrupted() || status == Exit::Interrupted || command.EndsByInterrupt())
            return status;
        return Fail("interrupted", Exit::Interrupted, json);
    } catch (const std::exception& error) {
        return Interrupted() ? Fail(std::string("interrupted: ") + error.what(), Exit::Interrupted, json)
                             : Fail(error.what(), Exit::Failure, json);
    } catch (const char* text) {
        return Fail(text, Exit::Failure, json);
    }
}

int RunChosen(const std::vector<std::unique_ptr<Command>>& commands, bool json) {
    for (const std::unique_ptr<Command>& command : commands)
        if (command->Chosen())
            return RunCommand(*command, json);
    return Exit::WrongUsage;
}

int ParseAndRun(int argc, char** argv) {
    CLI::App app("Finds machine-vision cameras, reads and writes their features, grabs pictures.", "vx3");
    app.footer(ExitTable);
    app.ignore_case();
    GlobalOptions options;
    Arguments arguments(&app);
    arguments.Flag("--json", options.json, "Print results as JSON");
    arguments.Flag("-v,--verbose", options.verbose, "Show the library's log on standard error");
    arguments.Add("--interface", options.interfaceName, "Look only behind this interface (eth0, ...)");
    arguments.Add("--transport", options.transport, "Look only on this transport")
        .OneOf({"virtual", "gige", "gencp", "grabber", "gentl", "remote"});
    app.set_version_flag("--version", std::string("vx3"));
    app.require_subcommand(1);
    app.fallthrough();
    const auto commands = CreateCommands(arguments, options);
    const bool json = WantsJson(argc, argv);
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForVersion&) {
        PrintVersion(json);
        return Exit::Done;
    } catch (const CLI::Success&) {
        return Help(app.help(), json);
    } catch (const CLI::ParseError& error) {
        return Fail(UsageWords(app, error, argc, argv), Exit::WrongUsage, json);
    }
    Console::Instance().SetVerbose(options.verbose);
    CatchInterrupts();
    return RunChosen(commands, options.json);
}

} // namespace

int main(int argc, char** argv) {
    const int status = ParseAndRun(argc, argv);
    return Console::Instance().Finish() ? status : Graver(status, Exit::Failure);
}
