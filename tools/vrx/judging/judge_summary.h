// The summary of a run of judgements under each illuminant.

#ifndef TOOLS_VRX_JUDGING_JUDGE_SUMMARY_H_
#define TOOLS_VRX_JUDGING_JUDGE_SUMMARY_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tools/vrx/judging/distribution.h"
#include "tools/vrx/judging/judge.h"

namespace vrx::tool {

/// Verdicts and total differences under one illuminant.
struct JudgeSummary {
  /// Percent of the trials, for a percentile of the totals that a few bad ones do not move.
  static constexpr double kHighPercentile = 95;

  /// `system`: that of the differences.
  explicit JudgeSummary(int32_t system);

  std::array<int64_t, 3> verdicts{};  ///< counts by overall verdict
  Distribution totals;                ///< of the trials that have a difference
  Distribution hues;                  ///< magnitudes of their hue differences, if the system has them
  std::string hueHeading;             ///< of the hue difference; empty if the system has none
  std::string largestTrial;           ///< the id of the trial with the largest total

  void Add(const std::string& trial, const JudgementUnder& judgement);
  int64_t Samples() const { return verdicts[kFail] + verdicts[kWarning] + verdicts[kPass]; }

 private:
  std::size_t hueElement_ = 0;
};

/// By illuminant of the settings.
using JudgeSummaries = std::vector<JudgeSummary>;

}  // namespace vrx::tool

#endif  // TOOLS_VRX_JUDGING_JUDGE_SUMMARY_H_
