// The summary of a run of judgements under each illuminant.

#ifndef TOOLS_VRX_JUDGING_JUDGE_SUMMARY_H_
#define TOOLS_VRX_JUDGING_JUDGE_SUMMARY_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "tools/vrx/judging/distribution.h"
#include "tools/vrx/judging/judge.h"

namespace vrx::tool {

/// Counts by verdict.
using VerdictCounts = std::array<int64_t, 3>;

/// Lots: the trials of one standard and id, which a file with geometries has several of. A lot is as good as its worst trial.
class LotVerdicts {
 public:
  void Add(const std::string& standard, const std::string& trial, Verdict verdict);
  VerdictCounts Counts() const;
  int64_t Lots() const { return static_cast<int64_t>(worst_.size()); }

 private:
  std::unordered_map<std::string, Verdict> worst_;
};

/// Verdicts and total differences under one illuminant.
struct JudgeSummary {
  /// Percent of the trials, for a percentile of the totals that a few bad ones do not move.
  static constexpr double kHighPercentile = 95;

  /// `system`: that of the differences; `haveGeometries`: of the trials, some of which may be of one lot then.
  JudgeSummary(int32_t system, bool haveGeometries);

  VerdictCounts verdicts{};  ///< of the trials, by overall verdict
  LotVerdicts lots;          ///< of trials with geometries
  Distribution totals;       ///< of the trials that have a difference
  Distribution hues;         ///< magnitudes of their hue differences, if the system has them
  std::string hueHeading;    ///< of the hue difference; empty if the system has none
  std::string largestTrial;  ///< the id of the trial with the largest total

  /// Takes what trial has under the illuminant `i`.
  void Add(const TrialJudgement& trial, std::size_t i);
  int64_t Samples() const { return verdicts[kFail] + verdicts[kWarning] + verdicts[kPass]; }
  /// Whether several trials are of one lot, so that the counts of lots say something else.
  bool HasLots() const { return lots.Lots() > 0 && lots.Lots() < Samples(); }

 private:
  bool haveGeometries_;
  std::size_t hueElement_ = 0;
};

/// By illuminant of the settings.
using JudgeSummaries = std::vector<JudgeSummary>;

}  // namespace vrx::tool

#endif  // TOOLS_VRX_JUDGING_JUDGE_SUMMARY_H_
