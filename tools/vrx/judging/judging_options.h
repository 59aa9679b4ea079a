// By what a trial is judged: the options of viewing, of the difference system and of the tolerance, the same for every
// command that gives verdicts, so that no two of them contradict each other.

#ifndef TOOLS_VRX_JUDGING_JUDGING_OPTIONS_H_
#define TOOLS_VRX_JUDGING_JUDGING_OPTIONS_H_

#include <string>

#include "tools/vrx/input/conditions.h"
#include "tools/vrx/judging/judge.h"

namespace vrx::tool {

class Command;

struct JudgingOptions {
  ViewingOptions viewing;
  SystemOptions system;
  std::string tolerance;  ///< one limit, or the seven of a box; empty for the usual one
  double warning = 0.75;
  std::string tolerances;  ///< a file of boxes
  bool ellipse = false;
  std::string ellipses;  ///< a file of ellipsoids
};

/// Adds the options of viewing, with default illuminants, and of the system, `--tolerance` and `--warning`,
/// `--tolerances`, `--ellipse` and `--ellipses`.
void AddJudgingOptions(Command& command, JudgingOptions& options, const std::string& illuminants);

/// The limits that `--tolerance` names, or the usual ones of a system whose unit is a dE. Throws InputError for texts that
/// name none, and when they are not given for another system.
CBoxTolData BoxOf(const std::string& tolerance, int32_t system);
/// Adds `--tolerance` and `--warning` alone; `usual` is what holds without the former.
void AddToleranceOptions(Command& command, std::string& tolerance, double& warning, const std::string& usual);
/// Throws InputError for a factor that is none.
double CheckedWarning(double warning);

/// The settings that the options stand for, with the limits from files. Throws InputError when they cannot be used.
JudgeSettings SettingsOf(const JudgingOptions& options);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_JUDGING_JUDGING_OPTIONS_H_
