#include <vrxstore/rejudge.h>

#include <algorithm>
#include <utility>

namespace vrx::store {
namespace {

CurveBatch CurvesOf(std::span<const double> numbers) {
  return CurveBatch{numbers};
}

// Judges trials of the same conditions, each against the standard that it was judged against.
void JudgeTogether(std::span<const StoredTrial> trials, std::vector<Judgement>& judgements) {
  std::vector<double> standards, samples;
  std::vector<JudgeLimits> limits;
  for (const StoredTrial& trial : trials) {
    standards.insert(standards.end(), trial.standardSamples.begin(), trial.standardSamples.end());
    samples.insert(samples.end(), trial.samples.begin(), trial.samples.end());
    limits.insert(limits.end(), trial.limits.begin(), trial.limits.end());
  }
  const JudgeConditions& conditions = trials.front().conditions;
  const JudgeStandards made(conditions, CurvesOf(standards), std::move(limits));
  JudgementTable table;
  JudgeTrials(conditions, made, {}, CurvesOf(samples), table);
  for (std::size_t i = 0; i < trials.size(); ++i) judgements.push_back(table.Row(i));
}

}  // namespace

std::vector<Judgement> JudgeAgain(std::span<const StoredTrial> trials) {
  std::vector<Judgement> judgements;
  judgements.reserve(trials.size());
  while (!trials.empty()) {
    const JudgeConditions& conditions = trials.front().conditions;
    const auto end = std::ranges::find_if(
        trials, [&](const StoredTrial& trial) { return trial.conditions != conditions; });
    const auto count = static_cast<std::size_t>(end - trials.begin());
    JudgeTogether(trials.first(count), judgements);
    trials = trials.subspan(count);
  }
  return judgements;
}

Judgement JudgeUnder(const StoredTrial& trial, std::span<const JudgeLimits> limits, VerdictRule rule,
                     double warningFactor) {
  StoredTrial other = trial;
  other.limits.assign(limits.begin(), limits.end());
  other.conditions.rule = rule;
  other.conditions.warningFactor = warningFactor;
  return JudgeAgain({&other, 1}).front();
}

}  // namespace vrx::store
