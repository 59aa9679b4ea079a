// Fastness grades as formulas over values: the step of the grey scale that shows the same contrast as a colour difference
// (ISO 105-A05 for a change of colour, ISO 105-A04 for the staining of an adjacent fabric). 5 is the best grade, 1 the worst.

#ifndef VRXMATH_COLORIMETRY_GRADE_FORMULAS_H_
#define VRXMATH_COLORIMETRY_GRADE_FORMULAS_H_

#include <cstdint>

#include <vrxmath/colorimetry/difference_formulas.h>
#include <vrxmath/colorimetry/values.h>
#include <vrxmath/numeric/lanes.h>

namespace vrx {

/// Which grey scale a difference is graded by.
enum class GreyScale : int32_t {
  kChange,    ///< of colour: ISO 105-A02, computed by ISO 105-A05
  kStaining,  ///< ISO 105-A03, computed by ISO 105-A04
};

/// The difference dE_F of ISO 105-A05: dC* and dH* corrected by the mean chroma and hue. Chroma and hue of both colours must
/// be filled.
template <class T>
VRX_LANE_INLINE T FastnessDifference(const LabOf<T>& standard, const LabOf<T>& sample) {
  const DifferenceOf<T> d = EabDifference(standard, sample);
  const T meanC = (standard.C + sample.C) / 2.0;
  const T sum = standard.h + sample.h;
  const T wrapped = Select(sum < 360.0, sum / 2.0 + 180.0, sum / 2.0 - 180.0);
  const T between = Select(Abs(standard.h - sample.h) > 180.0, wrapped, sum / 2.0);
  const auto oneIsGrey = (standard.C == 0.0) | (sample.C == 0.0);  // the hue of the other, a grey's being 0
  const T meanHue = Select(oneIsGrey, sum, between);
  const T fromBlue = Abs(meanHue - 280.0);
  const T x = Square(Select(fromBlue > 180.0, 360.0 - fromBlue, fromBlue) / 30.0);
  const T D = d.dC * meanC * Exp(-x) / 100.0;
  const T dC = (d.dC - D) / (1.0 + Square(20.0 * meanC / 1000.0));
  const T dH = (d.dH - D) / (1.0 + Square(10.0 * meanC / 1000.0));
  return RootSumOfSquares(d.dL, dC, dH);
}

/// The grade of a change of colour: 5 - dE_F / 1.7 up to 3.4, then 5 - log2(dE_F / 0.85); not below 1 (ISO 105-A05).
template <class T>
VRX_LANE_INLINE T ChangeGrade(const LabOf<T>& standard, const LabOf<T>& sample) {
  constexpr double kLn2 = 0.6931471805599453;
  const T dE = FastnessDifference(standard, sample);
  const T grade = Select(dE <= 3.4, 5.0 - dE / 1.7, 5.0 - Log(dE / 0.85) / kLn2);
  return Select(grade < 1.0, T(1.0), grade);
}

/// The grade of staining, from dE_GS = dE*ab - 0.4 sqrt(dE*ab^2 - dL*^2): 5 - 0.23 dE_GS where that is above 4, else
/// 6.1 - 1.45 ln dE_GS; not below 1 (ISO 105-A04).
template <class T>
VRX_LANE_INLINE T StainingGrade(const LabOf<T>& standard, const LabOf<T>& sample) {
  const DifferenceOf<T> d = EabDifference(standard, sample);
  const T chromatic = d.da * d.da + d.db * d.db;
  const T dE = d.dE - 0.4 * Sqrt(chromatic);
  const T nearWhite = 5.0 - 0.23 * dE;
  const T grade = Select(nearWhite > 4.0, nearWhite, 6.1 - 1.45 * Log(dE));
  return Select(grade < 1.0, T(1.0), grade);
}

/// The grade by one of the scales, 1 to 5.
template <class T>
VRX_LANE_INLINE T GreyScaleGrade(GreyScale scale, const LabOf<T>& standard, const LabOf<T>& sample) {
  return scale == GreyScale::kChange ? ChangeGrade(standard, sample) : StainingGrade(standard, sample);
}

/// A grade to the nearest half step, halves of a half step upwards: 4.25 is 4.5, which is reported as 4-5.
inline double HalfStepGrade(double grade) {
  return RoundToWhole(2.0 * grade) / 2.0;
}

}  // namespace vrx

#endif  // VRXMATH_COLORIMETRY_GRADE_FORMULAS_H_
