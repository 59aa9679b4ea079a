// A run of `vrx judge` with a job: its standards, with their conditions and limits, in place of a file, and its memory.

#ifndef TOOLS_VRX_JOB_JOB_RUN_H_
#define TOOLS_VRX_JOB_JOB_RUN_H_

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <vrxstore/store.h>

#include "tools/vrx/job/job_options.h"
#include "tools/vrx/judging/comparison.h"
#include "tools/vrx/judging/judging_options.h"
#include "tools/vrx/judging/judging_pipeline.h"

namespace vrx::tool {

/// How a run uses its job.
struct JobRunOptions : JobOptions {
  bool nearest = false;
  bool again = false;
};

/// Adds `--nearest` and `--again` to the options of a job that is changed.
void AddJobRunOptions(Command& owner, JobRunOptions& options);

/// The settings of the options over the conditions that a standard has of its own. `keepsLimits`: its limits take the place of
/// those that the options leave open. Throws InputError where they cannot be used.
JudgeSettings SettingsOver(const std::optional<JudgeConditions>& own, const JudgingOptions& options,
                           const Command& command, bool keepsLimits);

/// Throws InputError where the limits of a standard, which are for differences of `own`, would be held against others.
void RequireSystemOfLimits(const std::string& standard, const CDifferenceSettings& own,
                           const CDifferenceSettings& asked);

/// Throws InputError where the rule that --verdict names looks at nothing that the limits of a standard limit. `verdict`: what is
/// given; nothing is asked where it is empty.
void RequireLimitsOfRule(const store::Standard& standard, const std::string& verdict, VerdictRule rule);

/// The settings by which trials of a job's standards are judged: the conditions and limits of the standards where the options name
/// none. `standard`: the only one that takes part; empty for all of them. Throws InputError where standards that take part
/// disagree, which only options can settle.
JudgeSettings SettingsOfJob(store::Store& store, const std::string& file, const std::string& standard,
                            const JudgingOptions& options, const Command& command);

class JobRun {
 public:
  /// Opens the job and begins a batch; from then on `comparison` has its standards from there. All arguments must outlive it.
  JobRun(const JobRunOptions& options, ComparisonOptions& comparison, const JudgingOptions& judging,
         const Command& command);

  const JudgeSettings& Settings() const { return settings_; }
  /// Takes a judged trial, with its standard.
  void Add(const PipelineTrial& judged, const Standard& standard, const Judge& judge,
           const CurveReader& trials);
  /// Stores the batch, and says on standard error what became of it, and how many verdicts of a batch that is there already are
  /// others. Throws InputError where trials were measured under different conditions: a batch has one description of them.
  void Commit();
  const std::string& File() const { return file_; }
  /// The head of the trail: what was stored last.
  store::TrailRow Head() { return store_->Info().head; }

 private:
  std::int64_t CountOtherVerdicts(std::int64_t batch);

  const JobRunOptions& options_;
  std::string file_;
  std::unique_ptr<store::Store> store_;
  std::unique_ptr<store::BatchWriter> batch_;
  JudgeSettings settings_;
  JudgeConditions conditions_;  // of the trial that was added last, with its angle
  std::vector<JudgeLimits> limits_;
  std::vector<store::Curve> readings_;
  std::optional<std::string> measuring_;
  std::vector<Verdict> verdicts_;  // of all trials, one an illuminant
  const CurveReader* trials_ = nullptr;
};

}  // namespace vrx::tool

#endif  // TOOLS_VRX_JOB_JOB_RUN_H_
