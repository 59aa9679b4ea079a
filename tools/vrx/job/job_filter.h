// Which trials of a job a command is about.

#ifndef TOOLS_VRX_JOB_JOB_FILTER_H_
#define TOOLS_VRX_JOB_JOB_FILTER_H_

#include <string>

#include <vrxstore/last_judgements.h>

#include "tools/vrx/job/job_options.h"
#include "tools/vrx/output/output.h"

namespace vrx::tool {

struct JobFilterOptions {
  JobOptions job;
  std::string standard, since, until, geometry;
  Format format = Format::kTable;

  /// Throws InputError for a geometry that is unknown, and for a standard that the store has neither in use nor with trials.
  store::TrialFilter Filter(store::Store& store) const;
};

/// Adds STANDARD, `--since`, `--until`, `--geometry`, the options of a job and `--format`.
void AddJobFilterOptions(Command& command, JobFilterOptions& options);

/// That earlier judgements of measurements that were judged again do not count, in words; empty where there are none.
std::string EarlierText(const store::LastJudgements& last);
/// Says so on standard error.
void TellEarlier(const std::string& shown, const store::LastJudgements& last);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_JOB_JOB_FILTER_H_
