// Colour spaces as formulas over values: CIE L*a*b*, L*u*v* and Hunter Lab in both directions, chromaticity
// (CIE 15, ASTM E308). One source for a colour and for a pack of them; color_spaces.h has the same over records.
//
// Nothing is checked: a zero denominator gives an infinity or NaN.

#ifndef VRXMATH_COLORIMETRY_SPACE_FORMULAS_H_
#define VRXMATH_COLORIMETRY_SPACE_FORMULAS_H_

#include <vrxmath/colorimetry/hue.h>
#include <vrxmath/colorimetry/values.h>
#include <vrxmath/numeric/lanes.h>

namespace vrx {
namespace space_constants {

// Up to this ratio to white the cube root gives way to a straight line (CIE 15, in its four-digit form).
inline constexpr double kLinearLimit = 0.008856;
inline constexpr double kLinearSlope = 7.787;
inline constexpr double kLinearOffset = 0.13793103448275862;     // 16/116
inline constexpr double kInverseOffset = 0.137931;               // the inverse has always used six digits
inline constexpr double kLinearRootLimit = 0.20689655172413793;  // 6/29
inline constexpr double kLuvSlope = 903.29;

}  // namespace space_constants

/// Fills C = sqrt(a^2 + b^2) and h (degrees) of coordinates whose L, a and b are set.
template <class T>
VRX_LANE_INLINE void FillChromaHue(LabOf<T>& lab) {
  lab.C = Sqrt(lab.a * lab.a + lab.b * lab.b);
  lab.h = HueDegrees(lab.a, lab.b);
}

/// The response f(t) of CIE L*a*b* to a ratio t to white, its inverse, and its derivative f'(t).
template <class T>
VRX_LANE_INLINE T LightnessResponse(T t) {
  using namespace space_constants;
  return Branch(
      t > kLinearLimit, [&] { return CubeRoot(t); }, [&] { return kLinearSlope * t + kLinearOffset; });
}
template <class T>
VRX_LANE_INLINE T InverseLightnessResponse(T f) {
  using namespace space_constants;
  return Select(f > kLinearRootLimit, f * f * f, (f - kInverseOffset) / kLinearSlope);
}
template <class T>
VRX_LANE_INLINE T LightnessResponseDerivative(T t) {
  using namespace space_constants;
  return Branch(
      t <= kLinearLimit, [&] { return T(kLinearSlope); },
      [&] {
        const T root = CubeRoot(t);
        return 1.0 / (3.0 * root * root);
      });
}

/// XYZ to CIE L*a*b*; C* and h are unset. Formula: CIE 15, with the linear branch 7.787 t + 16/116 up to t = 0.008856.
template <class T>
VRX_LANE_INLINE LabOf<T> XyzToLabOnly(const XyzOf<T>& xyz, const White& n) {
  const T x = xyz.X / n.X, y = xyz.Y / n.Y, z = xyz.Z / n.Z;
  const auto isRoot = [](T t) VRX_LANE_LAMBDA { return (t > space_constants::kLinearLimit) & (t < 1e300); };
  T fx, fy, fz;
  if (All(isRoot(x) & isRoot(y) & isRoot(z))) {  // nearly always, and then without a question for each
    fx = CubeRootOfNormal(x), fy = CubeRootOfNormal(y), fz = CubeRootOfNormal(z);
  } else {
    fx = LightnessResponse(x), fy = LightnessResponse(y), fz = LightnessResponse(z);
  }
  return {116.0 * fy - 16.0, 500.0 * (fx - fy), 200.0 * (fy - fz), T(kUnset), T(kUnset)};
}

/// XyzToLabOnly with C* and h.
template <class T>
VRX_LANE_INLINE LabOf<T> XyzToLab(const XyzOf<T>& xyz, const White& n) {
  LabOf<T> lab = XyzToLabOnly(xyz, n);
  FillChromaHue(lab);
  return lab;
}

/// CIE L*a*b* to XYZ. The linear branch uses 0.137931, so a round trip through it moves a dark colour by some 4e-7.
template <class T>
VRX_LANE_INLINE XyzOf<T> LabToXyz(const LabOf<T>& lab, const White& n) {
  const T fy = (lab.L + 16.0) / 116.0;
  const T fx = fy + lab.a / 500.0;
  const T fz = fy - lab.b / 200.0;
  return {n.X * InverseLightnessResponse(fx), n.Y * InverseLightnessResponse(fy),
          n.Z * InverseLightnessResponse(fz)};
}

/// XYZ to CIE L*u*v*; C*uv and huv are unset. Formula: CIE 15, with 903.29 as the slope of the linear branch.
template <class T>
VRX_LANE_INLINE LabOf<T> XyzToLuvOnly(const XyzOf<T>& xyz, const White& n) {
  using namespace space_constants;
  const T y = xyz.Y / n.Y;
  const T L = Branch(
      y <= kLinearLimit, [&] { return kLuvSlope * y; }, [&] { return 116.0 * CubeRoot(y) - 16.0; });
  const T d = xyz.X + 15.0 * xyz.Y + 3.0 * xyz.Z;
  const double dn = n.X + 15.0 * n.Y + 3.0 * n.Z;
  return {L, 13.0 * L * (4.0 * xyz.X / d - 4.0 * n.X / dn), 13.0 * L * (9.0 * xyz.Y / d - 9.0 * n.Y / dn),
          T(kUnset), T(kUnset)};
}

/// XyzToLuvOnly with C*uv and huv.
template <class T>
VRX_LANE_INLINE LabOf<T> XyzToLuv(const XyzOf<T>& xyz, const White& n) {
  LabOf<T> luv = XyzToLuvOnly(xyz, n);
  FillChromaHue(luv);
  return luv;
}

/// CIE L*u*v* to XYZ. L* = 0 gives NaN.
template <class T>
VRX_LANE_INLINE XyzOf<T> LuvToXyz(const LabOf<T>& luv, const White& n) {
  using namespace space_constants;
  const double dn = n.X + 15.0 * n.Y + 3.0 * n.Z;
  const T L = luv.L;
  const T u = luv.a / (13.0 * L) + 4.0 * n.X / dn;
  const T v = luv.b / (13.0 * L) + 9.0 * n.Y / dn;
  const T linear = L / kLuvSlope, f = (L + 16.0) / 116.0;
  const T y = Select(linear > kLinearLimit, f * f * f, linear);
  const T Y = y * n.Y;
  const T X = 9.0 * Y * u / (4.0 * v);
  return {X, Y, (4.0 * X / u - X - 15.0 * Y) / 3.0};
}

/// XYZ to Hunter L, a, b, scaled by the white; C and h are unset.
template <class T>
VRX_LANE_INLINE LabOf<T> XyzToHunter(const XyzOf<T>& xyz, const White& n) {
  const T y = xyz.Y / n.Y;
  return {100.0 * Sqrt(y), 175.0 * Sqrt(0.0102 * n.X / y) * (xyz.X / n.X - y),
          70.0 * Sqrt(0.00847 * n.Z / y) * (y - xyz.Z / n.Z), T(kUnset), T(kUnset)};
}

/// XYZ to Hunter L, a, b by the fixed coefficients of the original instrument's scale, for C and 2 degrees.
template <class T>
VRX_LANE_INLINE LabOf<T> XyzToClassicHunter(const XyzOf<T>& xyz) {
  const T root = Sqrt(xyz.Y);
  return {10.0 * root, 17.5 * (1.02 * xyz.X - xyz.Y) / root, 7.0 * (xyz.Y - 0.847 * xyz.Z) / root, T(kUnset),
          T(kUnset)};
}

/// Hunter L, a, b to XYZ, scaled by the white. Black has no colour: Y = 0 gives X = Z = 0.
template <class T>
VRX_LANE_INLINE XyzOf<T> HunterToXyz(const LabOf<T>& lab, const White& n) {
  const T Y = lab.L * lab.L / 10000.0 * n.Y;
  const T y = Y / n.Y;
  const auto black = NearlyEqual(y, T(0.0));
  const T X = (lab.a / (175.0 * Sqrt(0.0102 * n.X / y)) + y) * n.X;
  const T Z = (y - lab.b / (70.0 * Sqrt(0.00847 * n.Z / y))) * n.Z;
  return {Select(black, T(0.0), X), Y, Select(black, T(0.0), Z)};
}

/// The inverse of XyzToClassicHunter.
template <class T>
VRX_LANE_INLINE XyzOf<T> ClassicHunterToXyz(const LabOf<T>& lab) {
  const T q = lab.L / 10.0;
  const T Y = q * q;
  return {(lab.a * q / 17.5 + Y) / 1.02, Y, (lab.b * q / 7.0 - Y) / -0.847};
}

/// Hunter Lab of an illuminant and observer, in both directions: the classic scale where they have it.
template <class T>
VRX_LANE_INLINE LabOf<T> XyzToHunter(const XyzOf<T>& xyz, const Viewing& viewing) {
  return viewing.classicHunter ? XyzToClassicHunter(xyz) : XyzToHunter(xyz, viewing.white);
}
template <class T>
VRX_LANE_INLINE XyzOf<T> HunterToXyz(const LabOf<T>& lab, const Viewing& viewing) {
  return viewing.classicHunter ? ClassicHunterToXyz(lab) : HunterToXyz(lab, viewing.white);
}

/// The change dL*, da*, db* that a small change of X, Y, Z makes: the first derivative. C and h are unset.
template <class T>
VRX_LANE_INLINE LabOf<T> LabDerivative(const XyzOf<T>& xyz, const XyzOf<T>& change, const White& n) {
  const T dx = LightnessResponseDerivative(xyz.X / n.X) * change.X / n.X;
  const T dy = LightnessResponseDerivative(xyz.Y / n.Y) * change.Y / n.Y;
  const T dz = LightnessResponseDerivative(xyz.Z / n.Z) * change.Z / n.Z;
  return {116.0 * dy, 500.0 * (dx - dy), 200.0 * (dy - dz), T(kUnset), T(kUnset)};
}

/// Chromaticity u, v of CIE 1960, in which colour temperature and colour rendering are defined.
struct Uv1960 {
  double u, v;
};
inline Uv1960 Cie1960(const Xyz& xyz) {
  const double d = xyz.X + 15.0 * xyz.Y + 3.0 * xyz.Z;
  return {4.0 * xyz.X / d, 6.0 * xyz.Y / d};
}

/// Chromaticity x = X / (X + Y + Z), y likewise; both unset where the values are unset or the sum is 0.
template <class T>
VRX_LANE_INLINE XyOf<T> Chromaticity(const XyzOf<T>& xyz) {
  const T sum = xyz.X + xyz.Y + xyz.Z;
  const auto isBlack = NearlyEqual(sum, T(0.0));
  const auto isUnset = IsUnset(xyz);
  const auto none = isBlack | isUnset;
  return {Select(none, T(kUnset), xyz.X / sum), Select(none, T(kUnset), xyz.Y / sum)};
}

}  // namespace vrx

#endif  // VRXMATH_COLORIMETRY_SPACE_FORMULAS_H_
