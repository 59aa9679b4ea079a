#include "tools/vrx/job/job_filter.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include <vrxio/measurement/names.h>
#include <vrxstore/standard_names.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/base/text.h"

namespace vrx::tool {
namespace {

// One that was taken out of use is known by its trials.
void RequireStandard(store::Store& store, const std::string& shown, const std::string& standard) {
  if (store.FindStandard(standard)) return;
  store::StoredTrial trial;
  if (store.Trials({.standard = standard})->Next(trial)) return;
  throw InputError(shown + ": " + store::UnknownStandardText(store, standard));
}

// The complaint about a text that is no beginning of a time as the job keeps it. Times are compared as texts, so that "2026-1" would be
// after each day of February, and "5.11.2026" after all there are.
std::string RefuseMoment(const std::string& text) {
  constexpr std::string_view kForm = "0000-00-00T00:00:00Z";
  constexpr std::size_t kEnds[] = {4, 7, 10, 13, 16, 19, 20};  // of a year, a month, a day, ...
  const auto fits = [&](std::size_t i) {
    return kForm[i] == '0' ? text[i] >= '0' && text[i] <= '9' : text[i] == kForm[i];
  };
  bool isMoment = std::ranges::find(kEnds, text.size()) != std::end(kEnds);
  for (std::size_t i = 0; isMoment && i < text.size(); ++i) isMoment = fits(i);
  const auto isWithin = [&](std::size_t begin, std::string_view first, std::string_view last) {
    const std::string_view part = std::string_view(text).substr(std::min(begin, text.size()), 2);
    return part.empty() || (part >= first && part <= last);
  };
  isMoment = isMoment && isWithin(5, "01", "12") && isWithin(8, "01", "31") && isWithin(11, "00", "23") &&
             isWithin(14, "00", "59") && isWithin(17, "00", "60");
  return isMoment ? "" : "must be a date such as 2026, 2026-11, 2026-11-05 or 2026-11-05T14:30 (UTC)";
}

}  // namespace

store::TrialFilter JobFilterOptions::Filter(store::Store& store) const {
  if (!standard.empty()) RequireStandard(store, job.Shown(), standard);
  if (!since.empty() && !until.empty() && std::string_view(since).substr(0, until.size()) > until)
    throw InputError("--since: " + since + " is after --until " + until);
  store::TrialFilter filter{.standard = standard, .since = since, .until = until};
  if (geometry.empty()) return filter;
  filter.geometry = ParseGeometry(geometry);
  if (filter.geometry < 0) throw InputError("--geometry: " + io::GeometryRefusal(geometry));
  return filter;
}

std::string EarlierText(const store::LastJudgements& last) {
  const std::int64_t earlier = last.Earlier(), decided = last.Decided();
  if (earlier == 0) return "";
  std::string text = std::to_string(earlier);
  text.append(earlier == 1 ? " earlier judgement of a trial that was"
                           : " earlier judgements of trials that were");
  text.append(" stored again ").append(earlier == 1 ? "is" : "are").append(" not counted");
  if (decided > 0) {
    text.append(", nor what people decided on ").append(std::to_string(decided)).append(" of them");
    text.append("; vrx job accept and reject decide on the later ones");
  }
  return text;
}

void TellEarlier(const std::string& shown, const store::LastJudgements& last) {
  const std::string text = EarlierText(last);
  if (!text.empty()) PrintMessage(shown + ": " + text);
}

void AddJobFilterOptions(Command& command, JobFilterOptions& options) {
  command.AddOption("STANDARD", options.standard, "Only trials of this standard");
  command
      .AddOption("--since", options.since,
                 "Only trials stored at this time (UTC) or later, as 2026-11 or 2026-11-05")
      .Shows("DATE")
      .Check(RefuseMoment);
  command
      .AddOption("--until", options.until,
                 "Only trials stored at this time or earlier, to the end of that day or month")
      .Shows("DATE")
      .Check(RefuseMoment);
  command
      .AddOption("--geometry", options.geometry,
                 "Only trials of this geometry, of those that may stand for it, and of none")
      .Shows("NAME");
  AddJobOptions(command, options.job);
  AddFormatOption(command, options.format);
}

}  // namespace vrx::tool
