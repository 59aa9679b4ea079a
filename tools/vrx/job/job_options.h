// The job of a run: which one, who works with it, and how it is opened.

#ifndef TOOLS_VRX_JOB_JOB_OPTIONS_H_
#define TOOLS_VRX_JOB_JOB_OPTIONS_H_

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include <vrxstore/store.h>

#include "tools/vrx/input/curve_input.h"

namespace vrx::tool {

class Command;

struct JobOptions {
  std::string file;  ///< or a URL; empty where no option names one
  std::string by, why;
  double wait = store::kUsualWait;

  store::Author Author() const { return {by, why}; }
  /// The file, or the URL, that --job or the environment variable VRX_JOB names; empty for none.
  std::string File() const;
  /// The same as messages and reports call it: without a password.
  std::string Shown() const;
};

/// The complaint about a text that is no number of 0 or more, for Option::Check; empty for one that is.
std::string RefuseNegative(const std::string& text);

/// Adds `--job` and `--wait`.
void AddJobOptions(Command& owner, JobOptions& options);
/// Adds those, and `--by` and `--why`, for commands that change something.
void AddJobChangeOptions(Command& owner, JobOptions& options);

/// The number of a row of a job as commands name it, "#12"; none for any other text.
std::optional<int64_t> NumberInJob(std::string_view text);

/// Whether a file begins as a job does, whatever its name, or is the URL of one.
bool IsJobFile(const std::string& file);

/// A curve of a row with how it was measured, as a job keeps it.
store::MeasuredCurve MeasuredCurveOf(const CurveReader& curves, const CurveRow& row);

/// Opens the job of the options. Throws InputError where none is named or it cannot be used.
std::unique_ptr<store::Store> OpenJob(const JobOptions& options);
/// Opens the job of a file or a URL; a message says what that changed in it.
std::unique_ptr<store::Store> OpenJobFile(const std::string& file, double wait = store::kUsualWait);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_JOB_JOB_OPTIONS_H_
