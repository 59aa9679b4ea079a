
#include "tools/vrx/judging/judge.h"

#include <algorithm>

#include <vrxmath/colorimetry/color_differences.h>
#include <vrxmath/colorimetry/color_spaces.h>
#include <vrxmath/foundation/numbers.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/input/conditions.h"

namespace vrx::tool {

Judge::Judge(const JudgeSettings& settings) : settings_(settings) {
  CIllumArray illuminants;
  illuminants.SetSize(static_cast<int32_t>(settings.illuminants.size()));
  std::ranges::copy(settings.illuminants, illuminants.begin());
  calc_.SetConditions(illuminants, settings.observer);
  calc_.method = settings.difference.system;
  calc_.methodSettings = settings.difference;
  calc_.warningFactor = settings.warningFactor;
  calc_.judgeByEllipse = settings.ByEllipse();
  calc_.boxTolerances.SetAngleCount(1);
  calc_.boxTolerances[0][0].SetSize(illuminants.GetSize());
  calc_.ellipseTolerances.SetAngleCount(1);
  calc_.ellipseTolerances[0][0].SetSize(illuminants.GetSize());
  curve_.SetSize(1);
}

Verdict Judgement::Overall() const {
  Verdict worst = kPass;
  for (const IlluminantJudgement& judgement : under) worst = std::min(worst, judgement.overall);
  return worst;
}

// L*a*b* that was given stays as it is; the library would come back to it from tristimulus values only nearly.
void Judge::TakeColors(const Sample& sample, CColorValuesIllDataArray& values) const {
  const auto illuminants = static_cast<int32_t>(settings_.illuminants.size());
  values.SetSize(1);
  values[0].SetSize(illuminants);
  for (int32_t i = 0; i < illuminants; ++i) {
    const vrxIlluminant illuminant = settings_.illuminants[static_cast<std::size_t>(i)];
    CColorValues& color = values[0][i];
    if (sample.kind == Sample::kXyz) {
      std::ranges::copy(sample.color, color.tristimulus.begin());
      FillCoordinates(vrxSystemLab, illuminant, settings_.observer, color);
    } else {
      std::ranges::copy(sample.color, color.lab.begin());
      ChromaHue(color.lab);
      LabToXyz(illuminant, settings_.observer, color.lab, color.tristimulus);
    }
  }
}

void Judge::SetStandard(std::string_view id, int32_t geometry, const Sample& standard) {
  id_ = id;
  if (geometry != geometry_) {
    geometry_ = geometry;
    const uint8_t code = static_cast<uint8_t>(std::max(geometry, 0));
    calc_.angles.SetCodes({&code, 1});
  }
  standard_ = standard.curve;
  if (standard.kind == Sample::kCurve) {
    curve_[0] = standard.curve;
    calc_.SetStandard(curve_);
  } else {
    calc_.reflectanceB.RemoveAll();
    TakeColors(standard, calc_.valuesB);
  }
  if (calc_.judgeByEllipse) {
    SetEllipses();
  } else if (!hasBoxes_ || !settings_.boxes.IsEmpty()) {
    SetBoxes();
  }
}

void Judge::SetBoxes() {
  hasBoxes_ = true;
  for (std::size_t i = 0; i < settings_.illuminants.size(); ++i) {
    const CBoxTolData* box = settings_.boxes.Find(id_, geometry_, settings_.illuminants[i]);
    calc_.boxTolerances[0][0][static_cast<std::ptrdiff_t>(i)] = box != nullptr ? *box : settings_.box;
  }
}

void Judge::SetEllipses() {
  if (settings_.buildEllipses) calc_.BuildEllipses();
  if (settings_.ellipses.IsEmpty()) return;
  for (std::size_t i = 0; i < settings_.illuminants.size(); ++i) {
    const CEllipseData* ellipse = settings_.ellipses.Find(id_, geometry_, settings_.illuminants[i]);
    if (ellipse != nullptr) {
      calc_.ellipseTolerances[0][0][static_cast<std::ptrdiff_t>(i)] = *ellipse;
    } else if (!settings_.buildEllipses) {
      throw InputError("--ellipses: no row is for standard \"" + id_ + "\" under " +
                       CodeOf(settings_.illuminants[i]));
    }
  }
}

double Judge::EllipseValue(std::size_t i) const {
  if (!Result(i).available) return kUnset;
  return calc_.ellipseTolerances[0][0][static_cast<std::ptrdiff_t>(i)].Value(LabDifference(i));
}

IlluminantJudgement JudgementOf(const CEvaluation& evaluation, const CDeltaValues& difference,
                                bool byEllipse) {
  IlluminantJudgement judgement;
  judgement.available = evaluation.available;
  std::ranges::copy(difference, judgement.difference.begin());
  std::ranges::copy(evaluation.shade.words, judgement.words.begin());
  judgement.components = byEllipse ? evaluation.ellipse : evaluation.box;
  judgement.total = evaluation.total;
  judgement.overall = evaluation.overall;
  return judgement;
}

void Judge::Evaluate(const Sample& trial) {
  if (trial.kind == Sample::kCurve) {
    curve_[0] = trial.curve;
    calc_.Evaluate(curve_, results_);
  } else {
    calc_.reflectanceA.RemoveAll();
    TakeColors(trial, calc_.valuesA);
    calc_.Judge(results_);
  }
}

void Judge::TakeSettings(Judgement& judgement) const {
  judgement.standard = id_;
  judgement.under.resize(settings_.illuminants.size());
}

void Judge::Take(Judgement& judgement) const {
  TakeSettings(judgement);
  for (std::size_t i = 0; i < judgement.under.size(); ++i) {
    IlluminantJudgement& under = judgement.under[i];
    under = JudgementOf(Result(i), Difference(i), calc_.judgeByEllipse);
    under.ellipseValue = calc_.judgeByEllipse ? EllipseValue(i) : kUnset;
  }
}

}  // namespace vrx::tool
