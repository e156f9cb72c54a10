// One verb of the program: its arguments and what it does.
#pragma once

#include "base/Arguments.h"
#include "base/GlobalOptions.h"

#include <memory>
#include <string>
#include <vector>

namespace VX3::Tool {

class Command {
public:
    Command(Arguments& program, const GlobalOptions& options, const std::string& name,
            const std::string& help)
        : arguments_(program.Verb(name, help)), options_(options) {}
    virtual ~Command() = default;
    Command(const Command&) = delete;
    Command& operator=(const Command&) = delete;

    // The program's exit status (base/ExitCode.h); failures are thrown.
    virtual int Run() = 0;
    // True when this verb was to go on until it is interrupted.
    virtual bool EndsByInterrupt() const { return false; }
    // True when the command line names this verb.
    bool Chosen() const { return arguments_.Chosen(); }

protected:
    // The positional argument that most verbs begin with.
    void AddCameraArgument(std::string& camera) {
        arguments_.Add("CAMERA", camera, "Name, serial number, user name, unique name or address").Required();
    }
    Arguments& Args() { return arguments_; }
    const GlobalOptions& Options() const { return options_; }

private:
    Arguments arguments_;
    const GlobalOptions& options_;
};

// Every verb in the order of the help text.
std::vector<std::unique_ptr<Command>> CreateCommands(Arguments& arguments, const GlobalOptions& options);

} // namespace VX3::Tool
