// The plain values that colour formulas work on: tristimulus values, coordinates, differences, whites.
//
// Each is a few numbers with the names that the literature gives them, and nothing else: no memory of its own, no index,
// no check. The records (color_records.h) hold the same numbers for hosts that store, archive and address them by index.
// The number type is double, or a pack of lanes for many colours at once; a formula is one template over it.
//
//   const Lab standard = XyzToLab(Xyz{41.2, 35.8, 20.1}, white);   // space_formulas.h
//   const Difference d = EabDifference(standard, sample);          // difference_formulas.h
//
// Hues are in degrees here, whatever unit the process-wide flag (hue.h) gives to records.

#ifndef VRXMATH_COLORIMETRY_VALUES_H_
#define VRXMATH_COLORIMETRY_VALUES_H_

#include <vrxmath/foundation/numbers.h>

namespace vrx {

/// Tristimulus values on the scale on which the perfect white has Y = 100.
template <class T>
struct XyzOf {
  T X, Y, Z;
};
using Xyz = XyzOf<double>;

/// The white point of an illuminant and observer, Yn = 100.
struct White {
  double X, Y, Z;
};

/// The part of an illuminant and observer in a formula.
struct Viewing {
  White white;
  bool classicHunter = false;  ///< C and 2 degrees, for which Hunter Lab has fixed coefficients
};

/// Chromaticity coordinates.
template <class T>
struct XyOf {
  T x, y;
};
using Xy = XyOf<double>;

/// Coordinates of a lightness-based space with chroma and hue in degrees in [0, 360): L*, a*, b*, C*ab, hab, or L*, u*, v*,
/// C*uv, huv, or those of a uniform space (uniform_space_formulas.h), or Hunter L, a, b, whose C and h are unset.
template <class T>
struct LabOf {
  T L, a, b, C, h;
};
using Lab = LabOf<double>;

/// The spaces in which difference systems work.
enum class CoordinateSpace {
  kLab,
  kLuv,
  kHunter,
  kDin99o,
  kDin99b,
  kDin99c,
  kDin99d,
  kCam02Ucs,
  kCam16Ucs,
  kOklab,
  kItp,
};

/// A colour in both forms; the coordinates are those of the space in which it is judged.
template <class T>
struct ColorOf {
  XyzOf<T> xyz;
  LabOf<T> lab;
};
using Color = ColorOf<double>;

/// A colour difference, sample minus standard. The first three are the differences of the first three coordinates: dL,
/// da, db; or dL, du, dv; or dX, dY, dZ where a system says so.
template <class T>
struct DifferenceOf {
  T dL, da, db;
  T weightedL;  ///< lightness difference as the system weights it
  T dC;         ///< chroma difference
  T dH;         ///< hue difference, negative when the sample lies clockwise from the standard
  T dE;         ///< total difference
};
using Difference = DifferenceOf<double>;

/// The three weights of a difference system at the standard.
template <class T>
struct WeightsOf {
  T SL, SC, SH;
};
using DifferenceWeights = WeightsOf<double>;

/// A difference that was not computed.
inline constexpr Difference kUnsetDifference{kUnset, kUnset, kUnset, kUnset, kUnset, kUnset, kUnset};

/// True where all three values are unset.
template <class T>
inline auto IsUnset(const XyzOf<T>& xyz) {
  const auto x = IsUnset(xyz.X), y = IsUnset(xyz.Y), z = IsUnset(xyz.Z);
  const decltype(x) all = x & y & z;
  return all;
}

}  // namespace vrx

#endif  // VRXMATH_COLORIMETRY_VALUES_H_
