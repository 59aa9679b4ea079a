// The job of a run: which one, who works with it, and how it is opened.

#ifndef TOOLS_VRX_JOB_JOB_OPTIONS_H_
#define TOOLS_VRX_JOB_JOB_OPTIONS_H_

#include <memory>
#include <string>

#include <vrxstore/store.h>

namespace vrx::tool {

class Command;

struct JobOptions {
  std::string file;  ///< empty where no option names one
  std::string by, why;
  double wait = store::kUsualWait;

  store::Author Author() const { return {by, why}; }
  /// The file that --job or the environment variable VRX_JOB names; empty for none.
  std::string File() const;
};

/// The complaint about a text that is no number of 0 or more, for Option::Check; empty for one that is.
std::string RefuseNegative(const std::string& text);

/// Adds `--job` and `--wait`.
void AddJobOptions(Command& owner, JobOptions& options);
/// Adds those, and `--by` and `--why`, for commands that change something.
void AddJobChangeOptions(Command& owner, JobOptions& options);

/// Opens the job of the options. Throws InputError where none is named or it cannot be used.
std::unique_ptr<store::Store> OpenJob(const JobOptions& options);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_JOB_JOB_OPTIONS_H_
