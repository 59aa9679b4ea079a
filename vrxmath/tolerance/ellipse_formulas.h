// An ellipsoid's value and grade as formulas, one source for a difference and for a pack of them (numeric/lanes.h).

#ifndef VRXMATH_TOLERANCE_ELLIPSE_FORMULAS_H_
#define VRXMATH_TOLERANCE_ELLIPSE_FORMULAS_H_

#include <vrxmath/numeric/lanes.h>
#include <vrxmath/tolerance/ellipse_tolerance.h>
#include <vrxmath/tolerance/verdict.h>

namespace vrx {

/// What an ellipsoid contributes, with the cosine and sine of its angle.
struct EllipseTerms {
  double centreL, centreA, centreB;
  double lightnessAxis, majorAxis, minorAxis;
  double c, s;
};

inline EllipseTerms TermsOf(const CEllipseData& e) {
  const double angle = e[CEllipseData::kAngle] * kRadiansPerDegree;
  return {e[CEllipseData::kCentreL],
          e[CEllipseData::kCentreA],
          e[CEllipseData::kCentreB],
          e[CEllipseData::kLightnessAxis],
          e[CEllipseData::kMajorAxis],
          e[CEllipseData::kMinorAxis],
          Cos(angle),
          Sin(angle)};
}

/// A component in units of a semi-axis; 0 at the centre even of an axis of length 0.
template <class T>
VRX_LANE_INLINE T InAxes(T component, double semiAxis) {
  return Select(component == 0.0, T(0.0), component / semiAxis);
}

/// CEllipseData::Value of dL*, da*, db*.
template <class T>
VRX_LANE_INLINE T EllipseValue(const EllipseTerms& e, T dL, T da, T db) {
  const T a = da - e.centreA, b = db - e.centreB;
  const T p = InAxes(dL - e.centreL, e.lightnessAxis);
  const T q = InAxes(a * e.c + b * e.s, e.majorAxis);
  const T r = InAxes(b * e.c - a * e.s, e.minorAxis);
  return Sqrt(p * p + q * q + r * r);
}

/// The value up to which a difference passes: the warning factor, and 1 for one within the near-equality of 1.
inline double EllipseWarning(double warningFactor) {
  return NearlyEqual(warningFactor, 1.0) ? 1.0 : warningFactor;
}

/// The grade of an ellipsoid's value, as CEllipseData::Judge.
template <class T>
VRX_LANE_INLINE auto EllipseGrade(T value, double warning) {
  return GradeOf<decltype(value <= warning)>{value <= 1.0, value <= warning};
}

}  // namespace vrx

#endif  // VRXMATH_TOLERANCE_ELLIPSE_FORMULAS_H_
