// One verb of the program: its arguments and what it does.
#pragma once

#include "base/GlobalOptions.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <vector>

namespace VX3::Tool {

class Command {
public:
    Command(CLI::App& parent, const GlobalOptions& options, const std::string& name, const std::string& help)
        : app_(parent.add_subcommand(name, help)), options_(options) {}
    virtual ~Command() = default;
    Command(const Command&) = delete;
    Command& operator=(const Command&) = delete;

    // The program's exit status; failures are thrown.
    virtual int Run() = 0;
    CLI::App* App() const { return app_; }

protected:
    // The positional argument that most verbs begin with.
    void AddCameraArgument(std::string& camera) {
        app_->add_option("CAMERA", camera, "Name, serial number, user name, unique name or address")
            ->required();
    }
    const GlobalOptions& Options() const { return options_; }

private:
    CLI::App* app_;
    const GlobalOptions& options_;
};

// Every verb in the order of the help text.
std::vector<std::unique_ptr<Command>> CreateCommands(CLI::App& app, const GlobalOptions& options);

} // namespace VX3::Tool
