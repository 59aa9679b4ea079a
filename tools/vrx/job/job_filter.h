// Which trials of a job a command is about.

#ifndef TOOLS_VRX_JOB_JOB_FILTER_H_
#define TOOLS_VRX_JOB_JOB_FILTER_H_

#include <string>

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

}  // namespace vrx::tool

#endif  // TOOLS_VRX_JOB_JOB_FILTER_H_
