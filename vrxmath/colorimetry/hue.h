// Hue and angle: the library's own pi, the unit in which records keep hues, and the hue of a point in a chroma plane.

#ifndef VRXMATH_COLORIMETRY_HUE_H_
#define VRXMATH_COLORIMETRY_HUE_H_

#include <vrxmath/export.h>
#include <vrxmath/numeric/lanes.h>

namespace vrx {

/// The library's own pi. Results rest on its twelve digits: hues, and the mean hue of CIEDE2000, are
/// computed with it.
inline constexpr double kPi = 3.14159265359;
inline constexpr double kTwoPi = 6.28318530718;
/// kPi / 180 and 180 / kPi.
inline constexpr double kRadiansPerDegree = 0.017453292519944444;
inline constexpr double kDegreesPerRadian = 57.29577951307855;

/// The hue-unit flag, process-wide: true (from the start) keeps the hues of records in degrees in [0, 360), false in
/// radians in [0, 2 pi).
[[nodiscard]] VRX_API bool HueInDegrees();
VRX_API void SetHueInDegrees(bool degrees);

/// Sine and cosine of an angle in degrees.
template <class T>
VRX_LANE_INLINE T SinDegrees(T degrees) {
  return Sin(degrees * kRadiansPerDegree);
}
template <class T>
VRX_LANE_INLINE T CosDegrees(T degrees) {
  return Cos(degrees * kRadiansPerDegree);
}

/// Hue of the point (a, b) in radians in [0, 2 pi]; 0 for a grey. On the axes the hue is exactly a multiple of pi / 2.
template <class T>
VRX_LANE_INLINE T HueRadians(T a, T b) {
  constexpr double kHalfPi = 1.570796326795, kThreeHalvesPi = 4.7123889803850005;
  const auto aIsZero = Abs(a) < kDoubleEpsilon, bIsZero = Abs(b) < kDoubleEpsilon;
  return Branch(
      aIsZero | bIsZero,
      [&] {
        const T vertical = Select(bIsZero, T(0.0), Select(b >= 0.0, T(kHalfPi), T(kThreeHalvesPi)));
        return Select(aIsZero, vertical, Select(a < 0.0, T(kPi), T(0.0)));
      },
      [&] {
        const T h = Atan2(b, a);
        return Select(h < 0.0, h + kTwoPi, h);
      });
}

/// The same in degrees in [0, 360). A hue less than 0.005 below 360 becomes 0.
template <class T>
VRX_LANE_INLINE T HueDegrees(T a, T b) {
  constexpr double kFullCircleMargin = 0.005;
  const T h = HueRadians(a, b) * kDegreesPerRadian;
  return Select(360.0 - h < kFullCircleMargin, T(0.0), h);
}

}  // namespace vrx

#endif  // VRXMATH_COLORIMETRY_HUE_H_
