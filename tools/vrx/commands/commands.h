// The list of subcommands. A new one is a source file of its own and a line in each table here and in
// commands.cpp.

#ifndef TOOLS_VRX_COMMANDS_COMMANDS_H_
#define TOOLS_VRX_COMMANDS_COMMANDS_H_

#include <span>

#include "tools/vrx/base/command.h"

namespace vrx::tool {

void AddJob(Command& tool);
void AddJudge(Command& tool);
void AddColor(Command& tool);
void AddDelta(Command& tool);
void AddSearch(Command& tool);
void AddAverage(Command& tool);
void AddSort(Command& tool);
void AddFitTolerance(Command& tool);
void AddStrength(Command& tool);
void AddColorants(Command& tool);
void AddPlot(Command& tool);
void AddPredict(Command& tool);
void AddCalibrate(Command& tool);
void AddMatch(Command& tool);
void AddCorrect(Command& tool);
void AddInfo(Command& tool);
void AddConvert(Command& tool);
void AddIndex(Command& tool);
void AddSwatch(Command& tool);
void AddTables(Command& tool);
void AddCondition(Command& tool);
void AddDensity(Command& tool);
void AddFitWhiteness(Command& tool);
void AddInstruments(Command& tool);
void AddLamp(Command& tool);
void AddMunsell(Command& tool);
void AddSettings(Command& tool);
void AddLog(Command& tool);
void AddWatch(Command& tool);
void AddXml(Command& tool);
void AddManual(Command& tool);

/// The subcommands, in the order of the help.
std::span<const CommandEntry> AllCommands();

}  // namespace vrx::tool

#endif  // TOOLS_VRX_COMMANDS_COMMANDS_H_
