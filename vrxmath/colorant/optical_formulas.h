// The optical transforms as formulas over a number or a pack of lanes (numeric/lanes.h); optical_transforms.h states what
// each computes.

#ifndef VRXMATH_COLORANT_OPTICAL_FORMULAS_H_
#define VRXMATH_COLORANT_OPTICAL_FORMULAS_H_

#include <vrxmath/colorant/optical_transforms.h>
#include <vrxmath/numeric/lanes.h>

namespace vrx {
namespace optical_constants {

inline constexpr double kDarkest = 0.01;        // percent: below it a reflectance carries no information
inline constexpr double kLargestKs = 9999.0;    // of such a reflectance
inline constexpr double kLargestDensity = 4.3;  // of such a reflectance
inline constexpr double kLeastDenominator = 1e-5;
inline constexpr double kLargestInternal = 2000.0;  // a fraction

}  // namespace optical_constants

/// K/S of a reflectance in percent (KubelkaMunkKs).
template <class T>
VRX_LANE_INLINE T KsOfReflectance(T R) {
  using namespace optical_constants;
  const T r = R / 100.0;
  return Select(R >= kDarkest, (1.0 - r) * (1.0 - r) / (2.0 * r), T(kLargestKs));
}

/// Optical density of a reflectance in percent (Absorbance).
template <class T>
VRX_LANE_INLINE T DensityOfReflectance(T R) {
  using namespace optical_constants;
  const auto usual = (R >= kDarkest) & (R <= 100.0);
  const T density = Log10(100.0 / Select(usual, R, T(100.0)));  // 0 above 100
  return Select(R >= kDarkest, density, T(kLargestDensity));
}

/// Internal reflectance of a measured one, both fractions (SaundersonToInternal).
template <class T>
VRX_LANE_INLINE T InternalReflectance(T Rm, double k1, double k2, SaundersonMode mode) {
  using namespace optical_constants;
  if (mode == SaundersonMode::kNone) return Rm;
  if (mode == SaundersonMode::kExcluded) {
    return Rm / Max((1.0 - k1) * (1.0 - k2) + k2 * Rm, T(kLeastDenominator));
  }
  const T d = 1.0 - k1 - (1.0 - Rm) * k2;
  return (Rm - k1) / Select(d >= kLeastDenominator, d, T(kLeastDenominator));
}

/// Measured reflectance of an internal one, both fractions (SaundersonToMeasured).
template <class T>
VRX_LANE_INLINE T MeasuredReflectance(T Ri, double k1, double k2, SaundersonMode mode) {
  using namespace optical_constants;
  if (mode == SaundersonMode::kNone) return Ri;
  const T returned = Ri * (1.0 - k2) * (1.0 - k1) / Max(1.0 - Ri * k2, T(kLeastDenominator));
  return mode == SaundersonMode::kIncluded ? k1 + returned : returned;
}

/// A sample of a corrected curve, moved into its range; an unset value stays unset (SetCorrectedSample).
template <class T>
VRX_LANE_INLINE T CorrectedSample(T value) {
  using namespace optical_constants;
  const T raised = Select(value >= kLeastInternal, value, T(kLeastInternal));
  return Select(IsUnset(value), value, Min(raised, T(kLargestInternal)));
}

}  // namespace vrx

#endif  // VRXMATH_COLORANT_OPTICAL_FORMULAS_H_
