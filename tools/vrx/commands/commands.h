// The list of subcommands. A new one is a source file of its own and a line in each table here and in
// commands.cpp.

#ifndef TOOLS_VRX_COMMANDS_COMMANDS_H_
#define TOOLS_VRX_COMMANDS_COMMANDS_H_

#include <span>

#include "tools/vrx/commands/command.h"

namespace vrx::tool {

void AddJudge(CLI::App& app, int& status);
void AddColor(CLI::App& app, int& status);
void AddDelta(CLI::App& app, int& status);
void AddFitTolerance(CLI::App& app, int& status);
void AddStrength(CLI::App& app, int& status);
void AddColorants(CLI::App& app, int& status);
void AddPredict(CLI::App& app, int& status);
void AddIndex(CLI::App& app, int& status);
void AddSwatch(CLI::App& app, int& status);
void AddTables(CLI::App& app, int& status);
void AddCondition(CLI::App& app, int& status);
void AddSettings(CLI::App& app, int& status);
void AddLog(CLI::App& app, int& status);
void AddXml(CLI::App& app, int& status);

std::span<const CommandEntry> AllCommands();

}  // namespace vrx::tool

#endif  // TOOLS_VRX_COMMANDS_COMMANDS_H_
