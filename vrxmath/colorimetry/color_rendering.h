// How a lamp shows colours, beside the Planckian radiator or the daylight of its colour temperature.

#ifndef VRXMATH_COLORIMETRY_COLOR_RENDERING_H_
#define VRXMATH_COLORIMETRY_COLOR_RENDERING_H_

#include <array>

#include <vrxmath/colorimetry/single_figures.h>
#include <vrxmath/colorimetry/weighting.h>
#include <vrxmath/export.h>
#include <vrxmath/foundation/numbers.h>

namespace vrx {

/// The colour rendering of a lamp. All unset for a lamp without a colour temperature up to 25,000 K.
struct ColorRendering {
  ColorTemperature temperature;
  /// From the reference illuminant, in CIE 1960 u, v.
  double referenceDistance = kUnset;
  double Ra = kUnset;  ///< general index: the mean of the first eight of R; 100 for the reference itself
  std::array<double, 14> R;  ///< special indices R1 to R14; may be negative
};

/// The distance from its reference up to which CIE 13.3 lets the indices of a lamp be stated.
inline constexpr double kFarthestReference = 5.4e-3;

/// Colour rendering indices of a spectrum (CIE 13.3-1995): the 14 test colour samples under the lamp and under a reference of the same
/// colour temperature (Planck's radiator below 5000 K, daylight from there on), with the adaptation of von Kries, in U*V*W*;
/// R = 100 - 4.6 dE. Sums over every nanometre from 360 to 780, between the 5 nm of the samples by straight lines; by sums over 5 nm the
/// fluorescent lamps of CIE 15 have an Ra that differs by at most 0.04.
[[nodiscard]] VRX_API ColorRendering FindColorRendering(const SpectralPower& power);

}  // namespace vrx

#endif  // VRXMATH_COLORIMETRY_COLOR_RENDERING_H_
