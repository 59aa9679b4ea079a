// The report of a judgement: the verdicts, under which conditions, the results as a table, and the pictures of each standard.

#ifndef TOOLS_VRX_REPORT_JUDGE_REPORT_H_
#define TOOLS_VRX_REPORT_JUDGE_REPORT_H_

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/vrx/input/conditions.h"
#include "tools/vrx/judging/judge_summary.h"
#include "tools/vrx/judging/judging_pipeline.h"
#include "tools/vrx/report/judged_trials.h"
#include "tools/vrx/report/report_page.h"

namespace vrx::tool {

/// The files of a run, as its options name them; empty where there is none.
struct JudgeFiles {
  std::string standards, trials;
  std::string limits;   ///< of boxes or ellipsoids
  std::string profile;  ///< the name of the profile that the options came from
};

/// The job of a run, and the head of its trail: that row anchors everything that was stored before it.
struct JudgeJob {
  std::string file, row, digest;
};

/// Takes all judgements of a run and writes the report at the end.
class JudgeReport {
 public:
  /// `options`, `settings` and `comparison` must outlive it. The table has columns for names and geometries when the trials have
  /// them.
  JudgeReport(const ReportOptions& options, const JudgeSettings& settings, JudgeFiles files,
              const Comparison& comparison);

  /// A judged trial, with its standard and the judge that holds it. Throws InputError for too many.
  void Add(const PipelineTrial& judged, const Standard& standard, const Judge& judge) {
    judged_.Add(judged.trial, judged.judgement, standard, judge, judged.standard);
    hasOpenAngle_ = hasOpenAngle_ || !SystemOptions::HasAngle(standard.geometry);
    standardDates_.Take(standard.date);
    trialDates_.Take(judged.trial.date);
  }
  /// For a run whose standards are those of a job.
  void SetJob(JudgeJob job) { job_ = std::move(job); }
  /// Throws InputError or OutputError when the report cannot be written.
  void Finish(const JudgeSummaries& summaries);
  /// The page as text, in place of a file. Once, as Finish.
  std::string FinishText(const JudgeSummaries& summaries);

 private:
  void Compose(const JudgeSummaries& summaries);
  using Counts = std::array<std::size_t, 3>;  // by verdict

  // The first and the last date that was told, as they were written.
  struct Dates {
    std::string from, to;
    void Take(std::string_view date) {
      if (from.empty()) from = date;
      if (!date.empty() && date != to) to = date;
    }
  };

  void AddVerdicts(const JudgeSummaries& summaries);
  void AddLots();
  void AddReasons(std::size_t failed);
  void AddIlluminantCard(const JudgeSummary& summary, std::size_t i);
  void AddConditions();
  std::string SystemText() const;
  std::string ToleranceText() const;
  std::string ScaleText() const;
  void AddMeasured(const CurveReader& rows, const Dates& dates);
  void AddResults();
  void AddColours();
  bool ShowsStandards() const;
  std::vector<ReportColumn> Columns() const;
  void AddRow(ReportTable& table, const JudgedTrial& trial, std::size_t i) const;
  void AddOverview();
  void AddStandards();
  std::vector<std::size_t> ViewsToShow();
  void AddStandard(const std::vector<std::size_t>& views);
  void AddView(std::size_t v, bool withHeading);
  void AddPairs(std::size_t v);
  void AddMetamerism(const JudgedView& view);
  std::string MetamerismOfOne(const JudgedTrial& trial) const;
  std::string MetamerismOfSeveral(const JudgedView& view) const;
  void AddScriptData(const std::vector<std::size_t>& views);
  std::string WordsOf(const JudgedResult& result) const;

  const JudgeSettings& settings_;
  JudgeFiles files_;
  JudgeJob job_;
  const Comparison& comparison_;
  Dates standardDates_, trialDates_;
  bool hasOpenAngle_ = false;  // some geometry says no aspecular angle
  JudgedTrials judged_;
  ReportPage page_;
  bool withName_, withGeometry_;
  bool showsStandards_ = false;  // known once all trials are
};

}  // namespace vrx::tool

#endif  // TOOLS_VRX_REPORT_JUDGE_REPORT_H_
