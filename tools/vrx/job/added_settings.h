// Conditions and limits of standards on their way into a job: what the options name, and for the rest what the version before has.

#ifndef TOOLS_VRX_JOB_ADDED_SETTINGS_H_
#define TOOLS_VRX_JOB_ADDED_SETTINGS_H_

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include <vrxstore/store.h>

#include "tools/vrx/judging/judging_options.h"

namespace vrx::tool {

class AddedSettings {
 public:
  /// `shown`: the job as messages call it. Both references must outlive it.
  AddedSettings(store::Store& job, std::string shown, const JudgingOptions& options, const Command& command);

  /// Gives a standard its conditions and limits. Throws InputError where limits of the version before would be judged in
  /// another system than theirs.
  void Give(store::Standard& standard);
  /// Says on standard error what was taken from versions before.
  void SayWhatWasKept() const;

 private:
  struct Made {
    std::optional<JudgeConditions> own;
    bool keepsLimits;
    JudgeSettings settings;
    bool keepsConditions = false;
  };
  const Made& SettingsOver(const std::optional<JudgeConditions>& own, bool keepsLimits);
  bool GivesLimitsTo(const JudgeSettings& settings, const std::string& name) const;
  void KeepLimits(const store::Standard& before, store::Standard& standard) const;
  void NoteKept(const store::Standard& before, bool conditions, bool limits);

  store::Store& job_;
  std::string shown_;
  const JudgingOptions& options_;
  const Command& command_;
  bool givesConditions_, givesLimits_, limitsAll_;
  std::set<std::string> existing_;
  std::optional<Made> made_;  // for the standard before, with which others mostly share their conditions
  std::map<std::string, std::vector<std::string>> kept_;  // names of standards by what they kept
};

}  // namespace vrx::tool

#endif  // TOOLS_VRX_JOB_ADDED_SETTINGS_H_
