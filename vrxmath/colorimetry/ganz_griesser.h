// Whiteness and tint by Ganz and Griesser, with parameters of the instrument's own, fitted from standards of known whiteness.

#ifndef VRXMATH_COLORIMETRY_GANZ_GRIESSER_H_
#define VRXMATH_COLORIMETRY_GANZ_GRIESSER_H_

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include <vrxmath/colorimetry/values.h>
#include <vrxmath/export.h>
#include <vrxmath/foundation/numbers.h>

namespace vrx {

/// The parameters of W = Y + P x + Q y + C and T = m x + n y + k; the nominal ones of Griesser (Color Res. Appl. 19, 1994,
/// 446-460) for D65 and 10 degrees.
struct GanzGriesser {
  double P = -1868.322, Q = -3695.690, C = 1809.441;
  double m = -1001.223, n = 748.366, k = 68.261;

  /// Whiteness: 100 for the perfect white, above 200 for a strongly brightened paper. Unset without a chromaticity.
  [[nodiscard]] VRX_API double Whiteness(const Xyz& xyz) const;
  /// Tint: above 0 greener, below 0 redder.
  [[nodiscard]] VRX_API double Tint(const Xyz& xyz) const;
};

/// A standard: what was measured, and what its certificate says.
struct WhitenessStandard {
  Xyz xyz;  ///< under D65 and 10 degrees
  double whiteness = kUnset;
  double tint = kUnset;  ///< unset where the certificate has none
};

/// The parameters that belong to an instrument, and what is left.
struct GanzGriesserFit {
  GanzGriesser parameters;
  bool hasWhiteness = false,
       hasTint = false;  ///< what could be fitted; the other parameters are the nominal ones
  /// Nominal minus fitted, one for each standard; unset for one without, and where nothing was fitted.
  std::vector<double> whitenessResiduals, tintResiduals;

  /// Why nothing may be computed by it: whiteness that does not grow with saturation, or tint that does not change in the direction of
  /// tint, as exchanged certificates have it. Empty for a fit that can be used.
  [[nodiscard]] VRX_API std::string Contradiction() const;
  /// What a user is to check: a scale of whiteness that no ultraviolet light explains, as certificates of CIE whiteness have it. Empty
  /// where there is nothing.
  [[nodiscard]] VRX_API std::string Doubt() const;
  /// The standards, from 0, whose residuals an eye can see: beyond 5 units of whiteness or 0.5 of tint.
  [[nodiscard]] VRX_API std::vector<std::size_t> Outlying() const;
};

/// Fits the parameters to standards by least squares. The directions of whiteness and tint in the chromaticity diagram are kept,
/// since the standards of a set lie on nearly one line and say little across it; fitted are a factor (the increase of whiteness
/// with saturation, the width of a step of tint) and the constant. Three standards or more with different saturations; with two, nothing would be left to see.
[[nodiscard]] VRX_API GanzGriesserFit FitGanzGriesser(std::span<const WhitenessStandard> standards);

}  // namespace vrx

#endif  // VRXMATH_COLORIMETRY_GANZ_GRIESSER_H_
