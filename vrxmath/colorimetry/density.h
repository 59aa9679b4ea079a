// Figures of print: densities of a curve, and how much of the paper a tint covers.

#ifndef VRXMATH_COLORIMETRY_DENSITY_H_
#define VRXMATH_COLORIMETRY_DENSITY_H_

#include <array>
#include <cstdint>

#include <vrxmath/colorimetry/color_records.h>
#include <vrxmath/colorimetry/values.h>
#include <vrxmath/export.h>

namespace vrx {

/// The spectral products of ISO 5-3 by which a density is weighed.
enum class DensityStatus : std::int32_t {
  kA,  ///< photographs to look at
  kE,  ///< print in Europe, with a narrow blue
  kM,  ///< photographs to print from
  kT,  ///< print in North America
};

/// Densities by filter, and by the eye's sensitivity under illuminant A (ISO visual density).
struct Densities {
  double red = kUnset, green = kUnset, blue = kUnset, visual = kUnset;
  std::array<double, 3> Filters() const { return {red, green, blue}; }
};

/// The products through red, green and blue, and for the visual density, 40 each, and a hundred times their sums: what light
/// comes back from the perfect diffuser.
struct DensityWeights {
  const double* products[4] = {};
  double whole[4] = {};
};
namespace colorimetry_internal {
DensityWeights DensityWeightsOf(DensityStatus status);
}

/// Densities of a curve, absolute: paper included, 0 for the perfect diffuser.
/// Formula: -log10 of the weighted mean reflectance, with the products of ISO 5-3 at every 10 nm; what these have below 360 and
/// above 750 nm counts at the ends. Unset for an unset curve, and where no light comes back.
[[nodiscard]] VRX_API Densities DensitiesOf(const CReflData& curve, DensityStatus status);

/// How much of the paper a tint covers, in percent, by densities of paper, tint and solid in one filter: Murray and Davies for
/// n = 1; with the Yule-Nielsen factor n above 1 the light that the paper scatters under the dots counts less (ISO 12647-1).
/// Unset for unset densities, a solid no darker than the paper, and n below 1.
[[nodiscard]] VRX_API double ToneValue(double paper, double tint, double solid, double n = 1.0);

/// The tone value of a spot colour in percent by ISO 20654 (SCTV): how far the tint is on its way from the paper to the solid,
/// in cube roots of X, Y and Z. Colours under D50 and 2 degrees with their `white`.
/// Formula: 100 sqrt(sum (V_tint - V_paper)^2 / sum (V_solid - V_paper)^2), V the L* function of X, Y and Z each.
/// Unset for unset colours, and where solid and paper are one colour.
[[nodiscard]] VRX_API double SpotColorToneValue(const Xyz& paper, const Xyz& tint, const Xyz& solid,
                                                const White& white);

}  // namespace vrx

#endif  // VRXMATH_COLORIMETRY_DENSITY_H_
