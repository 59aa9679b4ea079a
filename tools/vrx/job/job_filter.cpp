#include "tools/vrx/job/job_filter.h"

#include <vrxio/measurement/names.h>
#include <vrxstore/standard_names.h>

#include "tools/vrx/base/command.h"

namespace vrx::tool {
namespace {

// One that was taken out of use is known by its trials.
void RequireStandard(store::Store& store, const std::string& shown, const std::string& standard) {
  if (store.FindStandard(standard)) return;
  store::StoredTrial trial;
  if (store.Trials({.standard = standard})->Next(trial)) return;
  throw InputError(shown + ": " + store::UnknownStandardText(store, standard));
}

}  // namespace

store::TrialFilter JobFilterOptions::Filter(store::Store& store) const {
  if (!standard.empty()) RequireStandard(store, job.Shown(), standard);
  store::TrialFilter filter{.standard = standard, .since = since, .until = until};
  if (geometry.empty()) return filter;
  filter.geometry = ParseGeometry(geometry);
  if (filter.geometry < 0) throw InputError("--geometry: \"" + geometry + "\" is unknown");
  return filter;
}

void AddJobFilterOptions(Command& command, JobFilterOptions& options) {
  command.AddOption("STANDARD", options.standard, "Only trials of this standard");
  command
      .AddOption("--since", options.since,
                 "Only trials stored at this time (UTC) or later, as 2026-11 or 2026-11-05")
      .Shows("DATE");
  command
      .AddOption("--until", options.until,
                 "Only trials stored at this time or earlier, to the end of that day or month")
      .Shows("DATE");
  command
      .AddOption("--geometry", options.geometry,
                 "Only trials of this geometry, of those that may stand for it, and of none")
      .Shows("NAME");
  AddJobOptions(command, options.job);
  AddFormatOption(command, options.format);
}

}  // namespace vrx::tool
