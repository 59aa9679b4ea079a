// vrx judge: trials against standards, as differences, words and verdicts.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include <vrxstore/digest/digest.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/commands/commands.h"
#include "tools/vrx/input/threads_option.h"
#include "tools/vrx/job/job_run.h"
#include "tools/vrx/judging/comparison.h"
#include "tools/vrx/judging/judge_output.h"
#include "tools/vrx/judging/judging_options.h"
#include "tools/vrx/judging/judging_pipeline.h"
#include "tools/vrx/output/output.h"
#include "tools/vrx/report/judge_report.h"

namespace vrx::tool {
namespace {

struct JudgeOptions {
  ComparisonOptions comparison;
  JudgingOptions judging;
  JobRunOptions job;
  bool summary = false;
  std::string only;
  bool worstFirst = false;
  bool strict = false;
  bool verdictNumbers = false;
  ThreadsOption threads;
  Format format = Format::kTable;
  ReportOptions report;
};

// Lets through what the user asked to see, in the order that was asked for.
class TrialSelection {
 public:
  TrialSelection(const JudgeOptions& options, JudgeOutput* output)
      : options_(options), only_(VerdictsOf(options.only)), output_(output) {}

  void Add(const CurveReader& trials, const PipelineTrial& judged) {
    const TrialJudgement& judgement = judged.judgement;
    constexpr std::size_t kMost = 200'000;
    if (output_ == nullptr || !only_[static_cast<std::size_t>(judgement.Worst())]) return;
    if (!options_.worstFirst)
      return judged.text.empty() ? output_->Add(judgement) : output_->AddText(judged.text);
    if (held_.size() == kMost) {
      throw InputError(trials.Source().Name() +
                       ": more than 200000 trials to sort; --only fail leaves fewer");
    }
    Hold(judgement);
  }

  void Finish() {
    std::ranges::stable_sort(held_, std::greater<>(),
                             [](const Held& held) { return LargestTotal(held.judgement); });
    for (Held& held : held_) {
      held.judgement.standard = *held.standard;
      output_->Add(held.judgement);
      held.judgement = {};
    }
  }

 private:
  // A trial that waits for its place. Its standard's name is one for all trials of the standard, whatever its length.
  struct Held {
    TrialJudgement judgement;
    const std::string* standard;
  };

  void Hold(const TrialJudgement& judgement) {
    if (held_.empty() || *held_.back().standard != judgement.standard) {
      standard_ = &*standards_.insert(judgement.standard).first;
    }
    TrialJudgement kept;
    kept.under = judgement.under;
    kept.trial = judgement.trial;
    kept.name = judgement.name;
    kept.geometry = judgement.geometry;
    held_.push_back({std::move(kept), standard_});
  }

  static std::array<bool, 3> VerdictsOf(const std::string& list) {
    if (list.empty()) return {true, true, true};
    std::array<bool, 3> verdicts{};
    for (const std::string& name : SplitList(list, ',')) {
      if (name != "fail" && name != "warning")
        throw InputError("--only: must be fail, warning or fail,warning");
      verdicts[name == "fail" ? kFail : kWarning] = true;
    }
    return verdicts;
  }
  // Under any illuminant; what has no difference goes first.
  static double LargestTotal(const TrialJudgement& judgement) {
    double largest = 0;
    for (const JudgementUnder& under : judgement.under) {
      const double total = under.difference.back();
      largest = std::max(largest, under.available && !std::isnan(total) ? total : HUGE_VAL);
    }
    return largest;
  }

  const JudgeOptions& options_;
  std::array<bool, 3> only_;  // by verdict
  JudgeOutput* output_;       // none for a summary alone
  std::unordered_set<std::string> standards_;
  const std::string* standard_ = nullptr;  // of the trial that was held last
  std::vector<Held> held_;
};

JudgeColumns ColumnsOf(const JudgeOptions& judging, const CurveReader& trials) {
  const ComparisonOptions& options = judging.comparison;
  JudgeColumns columns;
  columns.verdictNumbers = judging.verdictNumbers;
  columns.standards = trials.HasStandards() ? JudgeColumns::kNamed
                      : options.pairs       ? JudgeColumns::kSameId
                                            : JudgeColumns::kOne;
  columns.name = trials.HasIdsAndNames();
  columns.geometry = trials.HasGeometries();
  return columns;
}

// The report that was asked for; null for none.
std::unique_ptr<JudgeReport> MakeReport(const JudgeOptions& options, const JudgeSettings& settings,
                                        const Comparison& comparison) {
  if (!options.report.IsWanted()) return nullptr;
  const JudgeFiles files{
      options.comparison.standard, options.comparison.trials,
      options.judging.tolerances.empty() ? options.judging.ellipses : options.judging.tolerances,
      options.comparison.input.profile};
  return std::make_unique<JudgeReport>(options.report, settings, files, comparison);
}

// The job of the run; null where the standards come from a file. One file beside a job has the trials; VRX_JOB alone does not
// turn a run with two files into one with a job.
std::unique_ptr<JobRun> OpenJobOf(JudgeOptions& options, const Command& command) {
  ComparisonOptions& comparison = options.comparison;
  const bool isNamed = !options.job.file.empty();
  if (!comparison.trials.empty() && isNamed)
    throw InputError("--job: the standards come from the job; name the file of the trials alone");
  if (!comparison.trials.empty() || options.job.File().empty()) {
    if (comparison.trials.empty())
      throw InputError(comparison.standard.empty() ? "STANDARD is required" : "TRIALS is required");
    for (const char* name : {"--nearest", "--again"})
      if (command.IsGiven(name)) throw InputError(std::string(name) + " needs --job");
    return nullptr;
  }
  if (comparison.standard.empty()) throw InputError("TRIALS is required");
  if (comparison.input.sums != CurveInputOptions::Sums::kTen)
    throw InputError("--interval: a job keeps curves at 10 nm, and judges them so");
  comparison.trials = std::exchange(comparison.standard, {});
  return std::make_unique<JobRun>(options.job, comparison, options.judging, command);
}

JudgeJob ForReport(JobRun& job) {
  const store::TrailRow head = job.Head();
  return {job.File(), std::to_string(head.number), store::HexText(head.digest)};
}

ExitStatus RunJudge(JudgeOptions& options, const Command& command) {
  const std::unique_ptr<JobRun> job = OpenJobOf(options, command);
  Comparison comparison(options.comparison, options.judging.viewing);
  JudgeSettings settings = job ? job->Settings() : SettingsOf(options.judging);
  settings.interval = options.comparison.input.Interval();
  OutputStream output;
  const auto results = options.summary ? nullptr
                                       : MakeJudgeOutput(options.format, output, settings,
                                                         ColumnsOf(options, comparison.Trials()));
  const auto report = MakeReport(options, settings, comparison);
  TrialSelection selection(options, results.get());
  JudgeSummaries summaries(settings.illuminants.size(),
                           JudgeSummary(settings.difference.system, comparison.Trials().HasGeometries()));
  bool areAnglesKnown = true;
  JudgingPipeline pipeline(comparison, settings, options.worstFirst ? nullptr : results.get(),
                           [&](const PipelineTrial& judged, const Standard& standard, const Judge& judge) {
                             areAnglesKnown = areAnglesKnown && SystemOptions::HasAngle(standard.geometry);
                             const TrialJudgement& judgement = judged.judgement;
                             for (std::size_t i = 0; i < summaries.size(); ++i) {
                               summaries[i].Add(judgement, i);
                             }
                             selection.Add(comparison.Trials(), judged);
                             if (report) report->Add(judged, standard, judge);
                             if (job) job->Add(judged, standard, judge, comparison.Trials());
                           });
  constexpr std::size_t kChunk = 128;
  pipeline.Run(options.threads.Count(), kChunk);
  if (job) job->Commit();
  selection.Finish();
  if (report && job) report->SetJob(ForReport(*job));
  if (report) report->Finish(summaries);
  results ? results->Finish(summaries) : WriteSummaries(options.format, output, settings, summaries);
  output.Finish();
  comparison.WarnAboutInput();
  WarnAboutLimits(options.judging, settings, job ? job->File() : "");
  options.judging.system.WarnAboutAngle(areAnglesKnown);
  const bool allPass = std::ranges::all_of(
      summaries, [](const JudgeSummary& summary) { return summary.verdicts[kPass] == summary.Samples(); });
  return options.strict && !allPass ? kExitNotPassed : kExitPass;
}

void AddOptions(Command& command, JudgeOptions& options) {
  AddComparisonOptions(command, options.comparison, Content::kCurvesOrColors, false);
  AddIntervalOption(command, options.comparison.input);
  AddJudgingOptions(command, options.judging, UsualIlluminants());
  command.AddFlag("--summary", options.summary, "Write only the summary for each illuminant");
  command.AddOption("--only", options.only, "Write only the trials whose worst verdict is one of these")
      .Shows("fail|warning|fail,warning");
  command.AddFlag("--worst-first", options.worstFirst,
                  "Write the trials with the largest total differences first");
  command.AddFlag("--strict", options.strict, "Exit with status 1 if any trial does not pass");
  command.AddFlag("--verdict-numbers", options.verdictNumbers,
                  "Write verdicts in csv as 0 (fail), 1 (warning) or 2 (pass)");
  AddJobRunOptions(command, options.job);
  AddThreadsOption(command, options.threads);
  AddFormatOption(command, options.format);
  AddReportOptions(command, options.report);
}

}  // namespace

void AddJudge(Command& tool) {
  const auto options = std::make_shared<JudgeOptions>();
  Command command = tool.AddCommand("judge", "Judge trials against a standard");
  AddOptions(command, *options);
  command.SetNotes(
      "Under each illuminant, each trial gets its difference from the standard, three words for the shade,\n"
      "and a verdict on the box or ellipsoid, on the total difference, and on both, with the limit that was\n"
      "broken and by how much. A single --tolerance limits only the total.\n\n"
      "Examples:\n"
      "  vrx judge standard.csv batch.csv                      # the first row of standard.csv, CMC (2:1)\n"
      "  vrx judge master.csv lot.csv --pairs --strict         # each row against the row with the same id\n"
      "  vrx judge std.csv batch.csv --system cie2000 --tolerance 0.8 --illuminants D65,T84\n"
      "  vrx judge std.csv batch.csv --tolerance 1 --limits dL=0.8,db=-0.3:0.6\n"
      "  vrx judge std.csv batch.csv --tolerance 1,1,0.6,0.6,0.6,0.6,1.2 --format json\n"
      "  cat batch.csv | vrx judge std.csv - --tolerances limits.csv --format csv\n"
      "  vrx judge std.csv batch.csv --ellipse --tolerance 0.8   # the CMC ellipsoid with cf = 0.8\n"
      "  vrx judge --job plant.vrxjob lot.csv --standard-id P01  # a standard of the job, which keeps the "
      "trials\n");
  command.SetAction([options, command] { return RunJudge(*options, command); });
}

}  // namespace vrx::tool
