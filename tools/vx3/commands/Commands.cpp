#include "commands/Commands.h"

namespace VX3::Tool {

std::vector<std::unique_ptr<Command>> CreateCommands(Arguments& arguments, const GlobalOptions& options) {
    std::vector<std::unique_ptr<Command>> commands;
    commands.push_back(CreateListCommand(arguments, options));
    commands.push_back(CreateInfoCommand(arguments, options));
    commands.push_back(CreateFeaturesCommand(arguments, options));
    commands.push_back(CreateGetCommand(arguments, options));
    commands.push_back(CreateSetCommand(arguments, options));
    commands.push_back(CreateRunCommand(arguments, options));
    commands.push_back(CreateGrabCommand(arguments, options));
    commands.push_back(CreateServeCommand(arguments, options));
    commands.push_back(CreateMonitorCommand(arguments, options));
    commands.push_back(CreateXmlCommand(arguments, options));
    commands.push_back(CreateDescriptionCommand(arguments, options));
    commands.push_back(CreateSaveCommand(arguments, options));
    commands.push_back(CreateLoadCommand(arguments, options));
    commands.push_back(CreateForceIpCommand(arguments, options));
    commands.push_back(CreateVersionCommand(arguments, options));
    commands.push_back(CreateHelpCommand(arguments, options));
    return commands;
}

} // namespace VX3::Tool
