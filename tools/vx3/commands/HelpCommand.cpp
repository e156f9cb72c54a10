// vx3 help: the verbs, or the arguments of one.
#include "base/Console.h"
#include "base/ExitCode.h"
#include "commands/Commands.h"

namespace VX3::Tool {

namespace {

class HelpCommand : public Command {
public:
    HelpCommand(Arguments& arguments, const GlobalOptions& options)
        : Command(arguments, options, "help", "Show the verbs, or the arguments of one"),
          program_(arguments) {
        Args().Add("VERB", verb_, "Name of a verb");
    }

    int Run() override {
        const std::string text = program_.Help(verb_);
        if (Options().json)
            Console::Instance().PrintJson({{"help", text}});
        else
            Console::Instance().Out() << text;
        return Exit::Done;
    }

private:
    const Arguments program_;
    std::string verb_;
};

} // namespace

std::unique_ptr<Command> CreateHelpCommand(Arguments& arguments, const GlobalOptions& options) {
    return std::make_unique<HelpCommand>(arguments, options);
}

} // namespace VX3::Tool
