// One maker a verb; each stands in its verb's own file.
#pragma once

#include "commands/Command.h"

namespace VX3::Tool {

std::unique_ptr<Command> CreateListCommand(Arguments& arguments, const GlobalOptions& options);
std::unique_ptr<Command> CreateInfoCommand(Arguments& arguments, const GlobalOptions& options);
std::unique_ptr<Command> CreateFeaturesCommand(Arguments& arguments, const GlobalOptions& options);
std::unique_ptr<Command> CreateGetCommand(Arguments& arguments, const GlobalOptions& options);
std::unique_ptr<Command> CreateSetCommand(Arguments& arguments, const GlobalOptions& options);
std::unique_ptr<Command> CreateRunCommand(Arguments& arguments, const GlobalOptions& options);
std::unique_ptr<Command> CreateGrabCommand(Arguments& arguments, const GlobalOptions& options);
std::unique_ptr<Command> CreateServeCommand(Arguments& arguments, const GlobalOptions& options);
std::unique_ptr<Command> CreateMonitorCommand(Arguments& arguments, const GlobalOptions& options);
std::unique_ptr<Command> CreateXmlCommand(Arguments& arguments, const GlobalOptions& options);
std::unique_ptr<Command> CreateDescriptionCommand(Arguments& arguments, const GlobalOptions& options);
std::unique_ptr<Command> CreateSaveCommand(Arguments& arguments, const GlobalOptions& options);
std::unique_ptr<Command> CreateLoadCommand(Arguments& arguments, const GlobalOptions& options);
std::unique_ptr<Command> CreateForceIpCommand(Arguments& arguments, const GlobalOptions& options);
std::unique_ptr<Command> CreateVersionCommand(Arguments& arguments, const GlobalOptions& options);
std::unique_ptr<Command> CreateHelpCommand(Arguments& arguments, const GlobalOptions& options);

void PrintVersion(bool json);

} // namespace VX3::Tool
