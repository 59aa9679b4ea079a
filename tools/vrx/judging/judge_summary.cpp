#include "tools/vrx/judging/judge_summary.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include <vrxio/measurement/names.h>

namespace vrx::tool {

void LotVerdicts::Add(const std::string& standard, const std::string& trial, Verdict verdict) {
  std::string lot = std::to_string(standard.size());
  lot.append(" ").append(standard).append(trial);
  Verdict& worst = worst_.try_emplace(std::move(lot), verdict).first->second;
  worst = std::min(worst, verdict);
}

VerdictCounts LotVerdicts::Counts() const {
  VerdictCounts counts{};
  for (const auto& [lot, verdict] : worst_) ++counts[static_cast<std::size_t>(verdict)];
  return counts;
}

JudgeSummary::JudgeSummary(int32_t system, bool haveGeometries) : haveGeometries_(haveGeometries) {
  const std::vector<DifferenceColumn> columns = DifferenceColumnsOf(system);
  const auto hue = std::ranges::find_if(
      columns, [](const DifferenceColumn& column) { return column.heading.starts_with("\xCE\x94H"); });
  if (hue == columns.end()) return;
  hueHeading = hue->heading;
  hueElement_ = static_cast<std::size_t>(hue->element);
}

void JudgeSummary::Add(const TrialJudgement& trial, std::size_t i) {
  const JudgementUnder& judgement = trial.under[i];
  if (haveGeometries_) lots.Add(trial.standard, trial.trial, judgement.verdict);
  ++verdicts[static_cast<std::size_t>(judgement.verdict)];
  if (!judgement.available) return;
  const double total = judgement.difference.back();
  if (totals.Largest() < total || largestTrial.empty()) largestTrial = trial.trial;
  totals.Add(total);
  if (!hueHeading.empty()) hues.Add(std::fabs(judgement.difference[hueElement_]));
}

}  // namespace vrx::tool
