// Standards on their way into a job: their conditions and limits are what the options name, and for the rest what the version before
// has; curves under geometries that a file does not have are a question.

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
  /// `shown`: the job as messages call it. `missing`: what becomes of curves of the version before whose geometry the new one does not
  /// have, "keep" or "drop"; empty to ask. All references must outlive it. Throws InputError for another word.
  AddedSettings(store::Store& job, std::string shown, const JudgingOptions& options,
                const std::string& missing, const Command& command);

  /// Gives a standard its conditions and limits. Throws InputError where limits of the version before would be judged in
  /// another system than theirs, or by a rule for which they limit nothing, and where it has fewer geometries than before and nobody
  /// said what is to become of the others.
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
  void GiveCurves(const store::Standard& before, store::Standard& standard);
  void KeepLimits(const store::Standard& before, store::Standard& standard) const;
  void NoteKept(const store::Standard& before, bool conditions, bool limits);

  store::Store& job_;
  std::string shown_;
  const JudgingOptions& options_;
  const std::string& missing_;
  const Command& command_;
  bool givesConditions_, givesLimits_, limitsAll_;
  std::set<std::string> existing_;
  std::optional<Made> made_;  // for the standard before, with which others mostly share their conditions
  std::map<std::string, std::vector<std::string>> kept_;  // names of standards by what they kept
};

}  // namespace vrx::tool

#endif  // TOOLS_VRX_JOB_ADDED_SETTINGS_H_
