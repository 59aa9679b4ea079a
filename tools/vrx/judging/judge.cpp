#include "tools/vrx/judging/judge.h"

#include <algorithm>
#include <stdexcept>

#include "tools/vrx/base/command.h"
#include "tools/vrx/base/text.h"
#include "tools/vrx/input/conditions.h"

namespace vrx::tool {

// Its own, that of its geometry, else the usual one.
double Judge::AngleOf(const Standard& standard) const {
  if (standard.angle) return *standard.angle;
  const auto code = static_cast<uint8_t>(std::max(standard.geometry, 0));
  return FamilyOfAngle(code) == AngleFamily::kOther ? AngleOfCode(code) : settings_.angle;
}

void SampleBuffer::Add(const Sample& sample) {
  if (numbers_.empty()) kind_ = sample.kind, interval_ = sample.Interval();
  if (sample.kind != kind_ || sample.Interval() != interval_) throw std::logic_error("samples of two kinds");
  if (!sample.fine.empty()) {
    numbers_.insert(numbers_.end(), sample.fine.begin(), sample.fine.end());
  } else if (kind_ == Sample::kCurve) {
    numbers_.insert(numbers_.end(), sample.curve.begin(), sample.curve.end());
  } else {
    numbers_.insert(numbers_.end(), sample.color.begin(), sample.color.end());
  }
}

Samples SampleBuffer::View() {
  if (interval_ != kWavelengthStep) return FineCurveBatch{numbers_, interval_};
  if (kind_ == Sample::kCurve) return CurveBatch{numbers_};
  colors_ = BatchView<const double, 3>(std::span<const double>(numbers_));
  if (kind_ == Sample::kXyz) return XyzSamples{{&colors_, 1}};
  return LabSamples{{&colors_, 1}};
}

JudgeLimits Judge::GivenLimits(const Standard& standard, vrxIlluminant illuminant) const {
  if (!settings_.ByEllipse()) {
    const CBoxTolData* box = settings_.boxes.Find(standard.id, standard.geometry, illuminant);
    return box != nullptr ? *box : settings_.box;
  }
  const CEllipseData* ellipse = settings_.ellipses.Find(standard.id, standard.geometry, illuminant);
  if (ellipse != nullptr) return *ellipse;
  if (settings_.buildEllipses) return SystemEllipsoid();
  throw InputError("--ellipses: there is no row for standard \"" + standard.id + "\" under " +
                   ShownIlluminant(illuminant));
}

// A component that nothing limits passes, whatever the trial.
bool Judge::IsLimited(const Standard& standard, vrxIlluminant illuminant) const {
  if (settings_.ByEllipse())
    return settings_.buildEllipses ||
           settings_.ellipses.Find(standard.id, standard.geometry, illuminant) != nullptr;
  return settings_.rule != VerdictRule::kComponents || LimitsComponents(GivenLimits(standard, illuminant));
}

bool Judge::MayLackLimits() const {
  return settings_.ByEllipse() ? !settings_.buildEllipses : settings_.rule == VerdictRule::kComponents;
}

std::size_t Judge::CountLimited(std::span<const Standard> standards) const {
  if (!MayLackLimits()) return standards.size();
  const auto isLimited = [this](const Standard& standard) {
    return std::ranges::all_of(settings_.illuminants,
                               [&](vrxIlluminant illuminant) { return IsLimited(standard, illuminant); });
  };
  return static_cast<std::size_t>(std::ranges::find_if_not(standards, isLimited) - standards.begin());
}

void Judge::RequireLimits(std::span<const Standard> standards) const {
  if (CountLimited(standards) == standards.size()) return;
  std::vector<std::string> lacking;
  for (const Standard& standard : standards) {
    for (const vrxIlluminant illuminant : settings_.illuminants) {
      if (IsLimited(standard, illuminant)) continue;
      std::string text = "\"";
      text.append(standard.id).append("\"");
      if (standard.geometry != kNoGeometry) text.append(", ").append(GeometryName(standard.geometry));
      text.append(" under ").append(ShownIlluminant(illuminant));
      if (std::ranges::find(lacking, text) == lacking.end()) lacking.push_back(std::move(text));
    }
  }
  if (settings_.ByEllipse())
    throw InputError("--ellipses: there is no row for standard " + FirstOf(lacking, "; "));
  throw InputError("--verdict box: no component has a limit for standard " + FirstOf(lacking, "; ") +
                   "; give rows of --tolerances, or --limits for what these do not name");
}

std::vector<JudgeLimits> Judge::AllLimits(std::span<const Standard> standards) const {
  RequireLimits(standards);
  if (settings_.boxes.IsEmpty() && settings_.ellipses.IsEmpty()) {
    return {GivenLimits(standards.front(), settings_.illuminants.front())};
  }
  std::vector<JudgeLimits> limits;
  for (const Standard& standard : standards) {
    for (const vrxIlluminant illuminant : settings_.illuminants) {
      limits.push_back(GivenLimits(standard, illuminant));
    }
  }
  return limits;
}

void Judge::SetStandards(std::span<const Standard> standards) {
  const std::uint64_t stamp = standards.size() == 1 ? standards.front().stamp : 0;
  if (stamp != 0 && stamp == stamp_) return;
  stamp_ = 0;
  samples_.Clear();
  std::vector<double> angles;
  for (const Standard& standard : standards) {
    samples_.Add(standard.sample);
    angles.push_back(AngleOf(standard));
  }
  standards_.emplace(settings_, samples_.View(), AllLimits(standards), std::move(angles));
  stamp_ = stamp;
}

void Judge::Evaluate(std::span<const Standard> standards, std::span<const Sample* const> trials,
                     std::span<const std::size_t> standardOf) {
  if (trials.empty()) return table_.Resize(0, settings_.illuminants.size());
  SetStandards(standards);
  samples_.Clear();
  for (const Sample* trial : trials) samples_.Add(*trial);
  JudgeTrials(settings_, *standards_, standardOf, samples_.View(), table_);
}

void Judge::Evaluate(const Standard& standard, const Sample& trial) {
  const Sample* const only = &trial;
  Evaluate({&standard, 1}, {&only, 1});
}

void Judge::Take(std::size_t trial, Judgement& judgement) const {
  judgement.under.resize(table_.IlluminantCount());
  for (std::size_t i = 0; i < judgement.under.size(); ++i) judgement.under[i] = table_.At(trial, i);
}

}  // namespace vrx::tool
