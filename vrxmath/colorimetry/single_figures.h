// Single figures of a colour or of a light: dominant wavelength and purity, correlated colour temperature and distance from the
// Planckian locus, the inconstancy of a colour from lamp to lamp.
//
// A figure is unset where it is not defined: for unset values, a grey, a light off the locus, a pair without a weighting table.

#ifndef VRXMATH_COLORIMETRY_SINGLE_FIGURES_H_
#define VRXMATH_COLORIMETRY_SINGLE_FIGURES_H_

#include <cstdint>
#include <span>
#include <string_view>

#include <vrxmath/colorimetry/adaptation_formulas.h>
#include <vrxmath/colorimetry/color_records.h>
#include <vrxmath/colorimetry/difference_systems.h>
#include <vrxmath/colorimetry/illuminants.h>
#include <vrxmath/colorimetry/indices.h>
#include <vrxmath/export.h>

namespace vrx {

/// Where the line from the white through a colour ends on the border of the chromaticity diagram (CIE 15).
struct DominantWavelengthResult {
  double wavelength =
      kUnset;  ///< in nm; that of the complementary colour, negative, where the line ends among the purples
  double purity =
      kUnset;  ///< excitation purity: the colour's distance from the white as a part of the border's
};

/// Dominant wavelength and excitation purity of a chromaticity. The spectral locus is that of every nanometre from 360 to
/// 700 nm with straight lines between. Both unset for a colour with the chromaticity of the white, and
/// for one without a chromaticity, unset or black.
[[nodiscard]] VRX_API DominantWavelengthResult FindDominantWavelength(const Xy& color, const Xy& white,
                                                                      int32_t observer);

/// The same of tristimulus values against the white of their illuminant.
[[nodiscard]] VRX_API double DominantWavelength(vrxIlluminant illuminant, int32_t observer,
                                                const CTrisValues& xyz);
[[nodiscard]] VRX_API double ExcitationPurity(vrxIlluminant illuminant, int32_t observer,
                                              const CTrisValues& xyz);

/// The nearest Planckian radiator in the CIE 1960 diagram (CIE 15).
struct ColorTemperature {
  double kelvin = kUnset;  ///< correlated colour temperature
  double Duv = kUnset;     ///< distance from the locus, positive above it, towards green
};

/// Colour temperature of a chromaticity of the 2 degree observer, from 1000 to 100,000 K. Unset farther than 0.05 from the
/// locus, where CIE 15 does not define it. Planck's law has c2 = 1.4388e7 nm K.
[[nodiscard]] VRX_API ColorTemperature FindColorTemperature(const Xy& color);

/// The same of the light that a colour sends under its illuminant; unset for the 10 degree observer.
[[nodiscard]] VRX_API double CorrelatedColorTemperature(vrxIlluminant illuminant, int32_t observer,
                                                        const CTrisValues& xyz);
[[nodiscard]] VRX_API double PlanckianDistance(vrxIlluminant illuminant, int32_t observer,
                                               const CTrisValues& xyz);

/// A figure of tristimulus values: its name for command lines, its label with the unit, what it is, decimals that mean something.
struct ColorFigure {
  std::string_view name;  ///< "dominant"
  std::string_view label;
  IndexFunction function;
  std::string_view text;
  int32_t decimals;
};
/// The figures above in the order in which they are offered.
[[nodiscard]] VRX_API std::span<const ColorFigure> ColorFigures();

/// Colour inconstancy of a curve: the difference of its colour under `reference` from the corresponding colour that its colour
/// under `test` becomes by complete adaptation to the white of `reference`. 0 for a curve that looks the same under both, as a
/// grey does. `settings`: the difference system. No standard's index: those fix a transform and weights of their own.
/// Unset when the curve is or a pair has no weighting table.
[[nodiscard]] VRX_API double InconstancyIndex(vrxIlluminant reference, vrxIlluminant test, int32_t observer,
                                              const CReflData& curve, const CDifferenceSettings& settings,
                                              AdaptationTransform transform = AdaptationTransform::kCat16);

/// Whether CIE whiteness and tint lie where they mean something (CIE 15.2:1986): 40 < W < 5 Y - 280 and -3 < T < 3.
[[nodiscard]] constexpr bool IsCieWhite(double whiteness, double tint, double Y) {
  return whiteness > 40.0 && whiteness < 5.0 * Y - 280.0 && tint > -3.0 && tint < 3.0;
}

/// The same of tristimulus values, by WhitenessCie and TintCie.
[[nodiscard]] VRX_API bool IsWithinCieLimits(vrxIlluminant illuminant, int32_t observer,
                                             const CTrisValues& xyz);

}  // namespace vrx

#endif  // VRXMATH_COLORIMETRY_SINGLE_FIGURES_H_
