#include "tools/vrx/report/judge_report_text.h"

#include "tools/vrx/report/judge_report.h"

namespace vrx::tool {

std::string JudgeReportText(const ComparisonOptions& options, JudgingOptions judging,
                            const ReportOptions& report) {
  Comparison comparison(options, judging.viewing);
  const JudgeSettings settings = SettingsOf(judging);
  JudgeReport page(
      report, settings,
      {options.standard, options.trials, judging.tolerances.empty() ? judging.ellipses : judging.tolerances,
       options.input.profile},
      comparison);
  JudgeSummaries summaries(settings.illuminants.size(),
                           JudgeSummary(settings.difference.system, comparison.Trials().HasGeometries()));
  JudgingPipeline pipeline(comparison, settings, nullptr,
                           [&](const PipelineTrial& judged, const Standard& standard, const Judge& judge) {
                             for (std::size_t i = 0; i < summaries.size(); ++i)
                               summaries[i].Add(judged.judgement, i);
                             page.Add(judged, standard, judge);
                           });
  constexpr std::size_t kChunk = 128;
  pipeline.Run(1, kChunk);
  return page.FinishText(summaries);
}

}  // namespace vrx::tool
