#include "tools/vrx/judging/verdict_fit.h"

#include <algorithm>
#include <optional>
#include <string>

#include "tools/vrx/base/command.h"
#include "tools/vrx/base/terminal.h"

namespace vrx::tool {
namespace {

constexpr std::size_t kMostVerdicts = 200'000;

// 1 for accepted, 0 for rejected; none for another text.
std::optional<std::uint8_t> VerdictFrom(std::string_view text) {
  for (const char* yes : {"accept", "accepted", "pass", "yes", "1"}) {
    if (EqualsIgnoringCase(text, yes)) return std::uint8_t{1};
  }
  for (const char* no : {"reject", "rejected", "fail", "no", "0"}) {
    if (EqualsIgnoringCase(text, no)) return std::uint8_t{0};
  }
  return std::nullopt;
}

std::uint8_t VerdictOf(const CurveReader& trials, const CurveRow& trial) {
  if (trial.extras.empty() || trial.extras[0].empty())
    trials.Source().FailRow("there is no verdict: a column \"verdict\" has to say accept or reject");
  const std::optional<std::uint8_t> verdict = VerdictFrom(trial.extras[0]);
  if (!verdict)
    trials.Source().FailRow("the verdict \"" + trial.extras[0] + "\" is neither accept nor reject");
  return *verdict;
}

// Totals by choice and illuminant, trial after trial, and the verdicts on them.
class Collected {
 public:
  Collected(const JudgeSettings& conditions, const std::vector<CDifferenceSettings>& choices)
      : choices_(choices) {
    settings_.reserve(choices.size());
    for (const CDifferenceSettings& choice : choices) {
      settings_.push_back(conditions);
      settings_.back().difference = choice;
    }
    for (const JudgeSettings& settings : settings_) judges_.emplace_back(settings);
    totals_.resize(choices.size() * conditions.illuminants.size());
  }

  void Add(const CurveReader& trials, const Standard& standard, const CurveRow& trial) {
    if (accepted_.size() == kMostVerdicts) trials.Source().FailRow("more than 200000 verdicts to fit");
    accepted_.push_back(VerdictOf(trials, trial));
    std::size_t place = 0;
    for (Judge& judge : judges_) {
      judge.Evaluate(standard, trial);
      for (const JudgementUnder& under : judge.Row().under) {
        if (!under.available) trials.Source().FailRow("there is no difference from the standard");
        totals_[place++].push_back(under.difference.back());
      }
    }
  }

  VerdictFits Fit() const {
    VerdictFits result;
    result.accepted = static_cast<std::size_t>(std::ranges::count(accepted_, std::uint8_t{1}));
    result.rejected = accepted_.size() - result.accepted;
    result.fits = FitLimits(choices_, totals_, accepted_);
    return result;
  }

 private:
  const std::vector<CDifferenceSettings>& choices_;
  std::vector<JudgeSettings> settings_;
  std::vector<Judge> judges_;
  std::vector<std::vector<double>> totals_;
  std::vector<std::uint8_t> accepted_;
};

}  // namespace

bool IsVerdictHeading(std::string_view heading) {
  return EqualsIgnoringCase(heading, "verdict");
}

VerdictFits FitVerdicts(CurveReader& trials, Standards& standards, const JudgeSettings& conditions,
                        const std::vector<CDifferenceSettings>& choices, bool skipsStandard) {
  Collected collected(conditions, choices);
  ProgressBar progress(trials.Source().Size());
  CurveRow trial;
  while (trials.Next(trial)) {
    const Standard& standard = standards.Of(trial);
    if (skipsStandard && standard.id == trial.id) continue;
    collected.Add(trials, standard, trial);
    progress.Update(trials.Source().Position());
  }
  standards.EndTrials();
  VerdictFits result = collected.Fit();
  if (result.accepted == 0 || result.rejected == 0) {
    throw InputError(trials.Source().Name() +
                     ": a limit lies between what was accepted and what was rejected: there are " +
                     std::to_string(result.accepted) + " accepted and " + std::to_string(result.rejected) +
                     " rejected trials");
  }
  return result;
}

}  // namespace vrx::tool
