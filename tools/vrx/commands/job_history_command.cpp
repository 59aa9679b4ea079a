// vrx job history, rejudge: what became of the trials of a job, and what other limits would make of them.

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <vrxstore/rejudge.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/base/text.h"
#include "tools/vrx/commands/job_commands.h"
#include "tools/vrx/job/job_filter.h"
#include "tools/vrx/judging/judging_options.h"
#include "tools/vrx/judging/verdict_texts.h"
#include "tools/vrx/output/output.h"
#include "tools/vrx/report/result_report.h"

namespace vrx::tool {
namespace {

std::string DecisionText(const store::StoredTrial& trial) {
  return !trial.decision ? "" : trial.decision->isAccepted ? "accepted" : "rejected";
}

struct HistoryOptions : JobFilterOptions {
  ReportOptions report;
};

void RunHistory(const HistoryOptions& options) {
  const auto job = OpenJob(options.job);
  ResultReport report(options.report, ReportText::kJobTrials);
  report.AddJob(job->Info());
  const store::TrialFilter filter = options.Filter(*job);
  const store::LastJudgements last(*job, filter);
  const auto cursor = job->Trials(filter);
  OutputStream output;
  const auto rows = report.Rows(options.format, output,
                                {{"number"},
                                 {.name = "taken", .room = Room::kSpare},
                                 {"standard"},
                                 {.name = "version", .room = Room::kSpare},
                                 {"trial"},
                                 {.name = "geometry", .room = Room::kSpare},
                                 {"illuminant"},
                                 {.name = "observer", .room = Room::kSpare},
                                 {.name = "system", .room = Room::kSpare},
                                 {.name = "dL", .room = Room::kSpare},
                                 {.name = "da", .room = Room::kSpare},
                                 {.name = "db", .room = Room::kSpare},
                                 {"difference"},
                                 {"verdict"},
                                 {"reason"},
                                 {.name = "excess", .room = Room::kSpare},
                                 {"decision"},
                                 {.name = "by", .room = Room::kSpare},
                                 {.name = "why", .room = Room::kSpare},
                                 {"later"}});
  for (store::StoredTrial trial; cursor->Next(trial);) {
    const std::int64_t later = last.LastOf(trial);
    for (std::size_t i = 0; i < trial.judgement.under.size(); ++i) {
      const JudgementUnder& under = trial.judgement.under[i];
      rows->Integer(trial.number);
      rows->Text(trial.taken);
      rows->Text(trial.standard);
      rows->Integer(trial.standardVersion);
      rows->Text(trial.name);
      rows->Text(GeometryName(trial.geometry));
      rows->Text(CodeOf(trial.conditions.illuminants[i]));
      rows->Integer(DegreesOf(trial.conditions.observer));
      rows->Text(ShortNameOf(trial.conditions.difference.system));
      for (std::size_t k = 0; k < 3; ++k) rows->Number(under.labDifference[k]);
      rows->Number(under.difference.back());
      const VerdictLook look = LookOf(under.verdict);
      rows->Text(look.text, look.tint);
      rows->Text(NameOfLimit(under.breach.limit, trial.conditions.difference.system));
      rows->Number(under.breach.Excess());
      rows->Text(DecisionText(trial));
      rows->Text(trial.decision ? trial.decision->by : "");
      rows->Text(trial.decision ? trial.decision->why : "");
      rows->Text(later == trial.number ? "" : "#" + std::to_string(later));
      rows->EndRow();
    }
  }
  rows->Finish();
  report.Save();
  output.Finish();
}

struct RejudgeOptions : JobFilterOptions {
  LimitOptions limits;
};

// A trial as other options judge it, which keep what they do not name.
class OtherJudge {
 public:
  OtherJudge(const LimitOptions& options, const Command& command)
      : options_(options),
        givesLimits_(!options.tolerance.empty() || !options.limits.empty()),
        givesWarning_(command.IsGiven("--warning")) {
    if (!givesLimits_ && !givesWarning_ && options.verdict.empty())
      throw InputError(
          "name other limits by --tolerance or --limits, or what else is to change by --verdict or "
          "--warning");
    if (!(options.warning >= 0 && options.warning <= 1))
      throw InputError("--warning: must be a factor from 0 to 1");
  }

  Verdict Judge(const store::StoredTrial& trial) const {
    const JudgeConditions& conditions = trial.conditions;
    std::vector<JudgeLimits> limits = trial.limits;
    if (givesLimits_) std::ranges::fill(limits, BoxOf(options_, conditions.difference.system));
    const VerdictRule rule = options_.verdict.empty() ? conditions.rule : RuleOf(options_.verdict);
    RequireLimits(trial, limits, rule);
    const double warning = givesWarning_ ? options_.warning : conditions.warningFactor;
    return store::JudgeUnder(trial, limits, rule, warning).Worst();
  }

 private:
  // What a rule looks at and nothing limits passes, whatever the trial.
  void RequireLimits(const store::StoredTrial& trial, const std::vector<JudgeLimits>& limits,
                     VerdictRule rule) const {
    const auto isNothing = [rule](const JudgeLimits& limit) { return LimitsNothing(limit, rule); };
    const bool hasOthers = trial.conditions.grade || trial.conditions.inconstancy;
    if (rule == VerdictRule::kWorse || hasOthers || std::ranges::none_of(limits, isNothing)) return;
    const bool isBox = rule == VerdictRule::kComponents;
    throw InputError("trial #" + std::to_string(trial.number) +
                     (options_.verdict.empty() ? " was" : " would be") + " judged by its " +
                     (isBox ? "components" : "total") + ", which nothing limits: give limits by " +
                     (isBox ? "--limits" : "--tolerance") + ", or another --verdict");
  }

  const LimitOptions& options_;
  bool givesLimits_, givesWarning_;
};

// The verdicts that other limits would have given, of those trials whose verdict they change.
void RunRejudge(const RejudgeOptions& options, const Command& command) {
  const OtherJudge other(options.limits, command);
  const auto job = OpenJob(options.job);
  const store::TrialFilter filter = options.Filter(*job);
  const store::LastJudgements last(*job, filter);
  const auto cursor = job->Trials(filter);
  OutputStream output;
  const auto rows = MakeRowWriter(options.format, output,
                                  {{"number"},
                                   {.name = "taken", .room = Room::kSpare},
                                   {"standard"},
                                   {"trial"},
                                   {"verdict"},
                                   {.name = "new", .heading = "new verdict"},
                                   {"decision"}});
  int64_t all = 0, changed = 0;
  for (store::StoredTrial trial; cursor->Next(trial);) {
    if (!last.Counts(trial)) continue;
    ++all;
    const Verdict before = trial.judgement.Worst();
    const Verdict after = other.Judge(trial);
    if (before == after) continue;
    ++changed;
    rows->Integer(trial.number);
    rows->Text(trial.taken);
    rows->Text(trial.standard);
    rows->Text(trial.name);
    for (const Verdict verdict : {before, after}) rows->Text(LookOf(verdict).text, LookOf(verdict).tint);
    rows->Text(DecisionText(trial));
    rows->EndRow();
  }
  rows->Finish();
  output.Finish();
  PrintMessage(options.job.Shown() + ": " + std::to_string(changed) + " of " + std::to_string(all) +
               " trials would have another verdict; none was changed");
  TellEarlier(options.job.Shown(), last);
}

}  // namespace

void AddJobHistory(Command& job) {
  const auto options = std::make_shared<HistoryOptions>();
  Command history = job.AddCommand("history", "List the trials of a job with their verdicts and decisions");
  AddJobFilterOptions(history, *options);
  AddReportOptions(history, options->report);
  SetAction(history, options, RunHistory);
  history.SetNotes("Example:\n  vrx job history P01 --job plant.vrxjob --since 2026-11\n");
}

void AddJobRejudge(Command& job) {
  const auto options = std::make_shared<RejudgeOptions>();
  Command rejudge =
      job.AddCommand("rejudge", "Show which verdicts other limits would change; changes nothing");
  AddJobFilterOptions(rejudge, *options);
  AddToleranceOptions(rejudge, options->limits, "those that judged", "the one that judged",
                      "the one that judged");
  rejudge.SetAction([options, rejudge] {
    RunRejudge(*options, rejudge);
    return kExitPass;
  });
  rejudge.SetNotes("Example:\n  vrx job rejudge P01 --job plant.vrxjob --tolerance 0.8\n");
}

}  // namespace vrx::tool
