// By what a trial is judged: the options of viewing, of the difference system and of the tolerance, the same for every
// command that gives verdicts, so that no two of them contradict each other.

#ifndef TOOLS_VRX_JUDGING_JUDGING_OPTIONS_H_
#define TOOLS_VRX_JUDGING_JUDGING_OPTIONS_H_

#include <string>

#include "tools/vrx/input/conditions.h"
#include "tools/vrx/judging/judge.h"

namespace vrx::tool {

class Command;

/// Limits of differences, as options give them.
struct LimitOptions {
  std::string tolerance;  ///< the limit of the total, or the seven of a box; empty for the usual one
  std::string limits;     ///< of components by their names: "dL=0.5,db=-0.3:0.6"
  std::string verdict;    ///< how the verdict is formed; empty for the usual way
  double warning = JudgeDefaults::kWarningFactor;
};

struct JudgingOptions : LimitOptions {
  ViewingOptions viewing;
  SystemOptions system;
  std::string tolerances;  ///< a file of boxes
  bool ellipse = false;
  std::string ellipses;         ///< a file of ellipsoids
  std::string grade;            ///< the grey scale: "change" or "staining"; empty for none
  std::string leastGrade;       ///< the lowest grade that passes, such as "4" or "4-5"; empty for no limit
  std::string mostInconstancy;  ///< the largest colour inconstancy that passes; empty for no limit
};

/// Adds the options of viewing, with default illuminants, and of the system, `--tolerance` and `--warning`,
/// `--tolerances`, `--ellipse`, `--ellipses`, `--grade`, `--least-grade` and `--most-inconstancy`.
void AddJudgingOptions(Command& owner, JudgingOptions& options, const std::string& illuminants);

/// The limits that `--tolerance` and `--limits` name, or the usual one of a system whose unit is a dE. One limit is that of the
/// total; components that nobody limits have none. Throws InputError for texts that name none, and when they are not given
/// for another system.
CBoxTolData BoxOf(const LimitOptions& options, int32_t system);
/// The limit of the total difference that holds where nobody gives one.
inline const std::string kUsualTolerance = "1.5";
/// Adds `--tolerance`, `--limits`, `--verdict` and `--warning`; what holds without the first, the third
/// and the last.
void AddToleranceOptions(Command& owner, LimitOptions& options, const std::string& usual,
                         const std::string& usualVerdict = "worse", const std::string& usualWarning = "0.75");
/// Gives the settings the limits, the rule and the warning of the options; where a least grade decides, differences have only
/// the limits that are given. Throws InputError as BoxOf.
void SetLimits(const LimitOptions& options, JudgeSettings& settings);
/// The rule that --verdict names; the worse of both for an empty text. Throws InputError for another one.
VerdictRule RuleOf(const std::string& verdict);
/// Whether limits limit nothing of what a rule looks at, so that everything would pass.
bool LimitsNothing(const JudgeLimits& limits, VerdictRule rule);
/// Refuses a verdict on components that have no limits, which would pass everything. Throws InputError.
void RequireLimitsOfComponents(const JudgeSettings& settings);

/// The settings under the conditions of the options, without limits.
JudgeSettings SettingsUnder(const ViewingOptions& viewing, const SystemOptions& system);

/// Gives the settings, whose conditions are set, the limits of the options and of their files. Throws InputError when they cannot be
/// used; whether they limit what the rule looks at, the caller asks.
void AddLimits(const JudgingOptions& options, JudgeSettings& settings);

/// The settings that the options stand for, with the limits from files. Throws InputError when they cannot be used.
JudgeSettings SettingsOf(const JudgingOptions& options);

/// Says on standard error which rows of a file of limits no judgement of the run made use of: one for "p02" beside "P02"
/// leaves that standard to looser limits. Where the limits are those of a `job`: which of the standards that were judged are for geometries
/// and lights that were not.
void WarnAboutLimits(const JudgingOptions& options, const JudgeSettings& settings,
                     const std::string& job = {});

}  // namespace vrx::tool

#endif  // TOOLS_VRX_JUDGING_JUDGING_OPTIONS_H_
