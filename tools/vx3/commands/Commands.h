// One maker a verb; each stands in its verb's own file.
#pragma once

#include "commands/Command.h"

namespace VX3::Tool {

std::unique_ptr<Command> CreateListCommand(CLI::App& app, const GlobalOptions& options);
std::unique_ptr<Command> CreateInfoCommand(CLI::App& app, const GlobalOptions& options);
std::unique_ptr<Command> CreateFeaturesCommand(CLI::App& app, const GlobalOptions& options);
std::unique_ptr<Command> CreateGetCommand(CLI::App& app, const GlobalOptions& options);
std::unique_ptr<Command> CreateSetCommand(CLI::App& app, const GlobalOptions& options);
std::unique_ptr<Command> CreateRunCommand(CLI::App& app, const GlobalOptions& options);
std::unique_ptr<Command> CreateGrabCommand(CLI::App& app, const GlobalOptions& options);
std::unique_ptr<Command> CreateMonitorCommand(CLI::App& app, const GlobalOptions& options);
std::unique_ptr<Command> CreateXmlCommand(CLI::App& app, const GlobalOptions& options);
std::unique_ptr<Command> CreateDescriptionCommand(CLI::App& app, const GlobalOptions& options);
std::unique_ptr<Command> CreateSaveCommand(CLI::App& app, const GlobalOptions& options);
std::unique_ptr<Command> CreateLoadCommand(CLI::App& app, const GlobalOptions& options);
std::unique_ptr<Command> CreateForceIpCommand(CLI::App& app, const GlobalOptions& options);
std::unique_ptr<Command> CreateVersionCommand(CLI::App& app, const GlobalOptions& options);

} // namespace VX3::Tool
