#include "tools/vrx/judging/judge_summary.h"

#include <algorithm>
#include <cmath>

#include <vrxio/measurement/names.h>

namespace vrx::tool {

JudgeSummary::JudgeSummary(int32_t system) {
  const std::vector<DifferenceColumn> columns = DifferenceColumnsOf(system);
  const auto hue = std::ranges::find_if(
      columns, [](const DifferenceColumn& column) { return column.heading.starts_with("\xCE\x94H"); });
  if (hue == columns.end()) return;
  hueHeading = hue->heading;
  hueElement_ = static_cast<std::size_t>(hue->element);
}

void JudgeSummary::Add(const std::string& trial, const JudgementUnder& judgement) {
  ++verdicts[static_cast<std::size_t>(judgement.verdict)];
  if (!judgement.available) return;
  const double total = judgement.difference.back();
  if (totals.Largest() < total || largestTrial.empty()) largestTrial = trial;
  totals.Add(total);
  if (!hueHeading.empty()) hues.Add(std::fabs(judgement.difference[hueElement_]));
}

}  // namespace vrx::tool
