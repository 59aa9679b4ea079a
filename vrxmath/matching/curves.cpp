#include <vrxmath/matching/curves.h>

#include <algorithm>
#include <cmath>

#include <vrxmath/colorimetry/color_differences.h>
#include <vrxmath/colorimetry/color_spaces.h>

namespace vrx {

bool IsMeasured(const CReflData& curve) {
  return std::all_of(curve.begin(), curve.end(),
                     [](double percent) { return std::isfinite(percent) && !IsUnset(percent); });
}

double CurveDifference(const CReflData& standard, const CReflData& trial, vrxIlluminant illuminant,
                       int32_t observer) {
  const auto labOf = [&](const CReflData& curve) {
    CTrisValues xyz;
    CLabValues lab;
    curve.Tristimulus(illuminant, observer, xyz);
    XyzToLab(illuminant, observer, xyz, lab);
    return lab;
  };
  CDeltaValues delta;
  DeltaCie2000(labOf(standard), labOf(trial), 1.0, 1.0, 1.0, delta);
  return delta[CDeltaValues::kTotal];
}

}  // namespace vrx
