#include "commands/Commands.h"

namespace VX3::Tool {

std::vector<std::unique_ptr<Command>> CreateCommands(CLI::App& app, const GlobalOptions& options) {
    std::vector<std::unique_ptr<Command>> commands;
    commands.push_back(CreateListCommand(app, options));
    commands.push_back(CreateInfoCommand(app, options));
    commands.push_back(CreateFeaturesCommand(app, options));
    commands.push_back(CreateGetCommand(app, options));
    commands.push_back(CreateSetCommand(app, options));
    commands.push_back(CreateRunCommand(app, options));
    commands.push_back(CreateGrabCommand(app, options));
    commands.push_back(CreateMonitorCommand(app, options));
    commands.push_back(CreateXmlCommand(app, options));
    commands.push_back(CreateDescriptionCommand(app, options));
    commands.push_back(CreateSaveCommand(app, options));
    commands.push_back(CreateLoadCommand(app, options));
    commands.push_back(CreateForceIpCommand(app, options));
    commands.push_back(CreateVersionCommand(app, options));
    return commands;
}

} // namespace VX3::Tool
