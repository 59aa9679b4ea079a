
#include "tools/vrx/judge.h"

#include <algorithm>

#include <vrxmath/colorimetry/color_differences.h>
#include <vrxmath/foundation/numbers.h>

#include "tools/vrx/commands/command.h"
#include "tools/vrx/conditions.h"

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

void Judge::SetStandard(std::string_view id, int32_t geometry, const CReflData& curve) {
  id_ = id;
  if (geometry != geometry_) {
    geometry_ = geometry;
    const uint8_t code = static_cast<uint8_t>(std::max(geometry, 0));
    calc_.angles.SetCodes({&code, 1});
  }
  standard_ = curve;
  curve_[0] = curve;
  calc_.SetStandard(curve_);
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

void Judge::Evaluate(const CReflData& trial) {
  curve_[0] = trial;
  calc_.Evaluate(curve_, results_);
  if (settings_.difference.system == vrxSystemDin99) JudgeDin99();
}

// The context's own answer for DIN99 is dE*ab; what the tool shows under the name is the DIN99 difference.
void Judge::JudgeDin99() {
  for (CEvaluation& result : results_) {
    if (!result.available) continue;
    const int32_t i = result.illuminant;
    CDeltaValues& difference = calc_.differences[0][i];
    DeltaDin99(calc_.valuesB[0][i].lab, calc_.valuesA[0][i].lab, settings_.difference.parameters[0],
               settings_.difference.parameters[1], difference);
    result.box = calc_.JudgeBox(0, 0, i, difference);
    result.total = calc_.JudgeTotal(0, 0, i, difference);
    result.overall = std::min(calc_.judgeByEllipse ? result.ellipse : result.box, result.total);
  }
}

}  // namespace vrx::tool
