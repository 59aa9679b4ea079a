#include "tools/vrx/judging/judge_summary.h"

namespace vrx::tool {

void JudgeSummary::Add(const std::string& trial, const JudgementUnder& judgement) {
  ++verdicts[static_cast<std::size_t>(judgement.verdict)];
  if (!judgement.available) return;
  const double total = judgement.difference.back();
  if (totals.Largest() < total || largestTrial.empty()) largestTrial = trial;
  totals.Add(total);
}

}  // namespace vrx::tool
