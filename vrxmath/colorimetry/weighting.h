// Weighting tables from first principles: how the built-in tables, and those of user illuminants, come
// out of a spectral power distribution and the CIE standard observers (ASTM E2022, ASTM E308).

#ifndef VRXMATH_COLORIMETRY_WEIGHTING_H_
#define VRXMATH_COLORIMETRY_WEIGHTING_H_

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include <vrxmath/colorimetry/values.h>
#include <vrxmath/export.h>
#include <vrxmath/foundation/ks_data.h>

namespace vrx {

/// Doubles of a weighting table: 40 X, 40 Y and 40 Z weights, then the white point Xn, Yn, Zn.
inline constexpr int32_t kTableDoubles = 123;
inline constexpr int32_t kTableWhite = 120;  ///< where the white point begins

using WeightingTable = std::array<double, kTableDoubles>;

/// The wavelengths over which weights are formed: every nanometre from 360 to 780 nm.
inline constexpr int32_t kPowerSamples = 421;

/// Relative spectral power at every nanometre from 360 to 780 nm, in any unit.
using SpectralPower = std::array<double, kPowerSamples>;

/// How a tabulated spectrum is brought to 1 nm.
enum class SpectralInterpolation {
  kLagrange,  ///< cubic, quadratic at the two ends: measured spectra (ASTM E2022)
  kLinear,    ///< straight lines: how the D illuminants are defined between their tabulated values (CIE 15)
};

/// A tabulated spectrum at 1 nm. `values`: relative power at `firstWavelength`, `firstWavelength` + `step`,
/// ... in nm; at least 3 values. The power is 0 outside the tabulated range.
[[nodiscard]] VRX_API SpectralPower ResampleSpectrum(std::span<const double> values, int32_t firstWavelength,
                                                     int32_t step, SpectralInterpolation interpolation);

/// Planck's radiator at `kelvin` > 0, equal to 100 at 560 nm. `c2` is the second radiation constant in nm
/// K: 1.4388e7 today; illuminant A is 2848 K with the 1.435e7 of its definition.
[[nodiscard]] VRX_API SpectralPower PlanckianSpectrum(double kelvin, double c2);

/// Daylight of a correlated colour temperature from 4000 to 25,000 K, in units in which the power at 560 nm is 100; no power outside that
/// range. Formula: CIE 15, from the mean and the first two components (Judd, MacAdam and Wyszecki, J. Opt. Soc. Am. 54, 1964, 1031-1040)
/// with straight lines between their 10 nm. The factors are not rounded: D65 (6504 K) comes within 0.05 of its table, which
/// goes from 46 to 118.
[[nodiscard]] VRX_API SpectralPower DaylightSpectrum(double kelvin);

/// The weighting table of a spectrum for observer 0 (2 degrees) or 1 (10 degrees), for reflectance at 360,
/// 370 ... 750 nm without bandpass correction. Formula: ASTM E2022. At each nanometre the product of power
/// and matching function is shared among the nodes of the 10 nm grid by the coefficients with which the
/// curve itself would be interpolated there; what lies above 750 nm goes to the node at 750 nm. The weights
/// are scaled so that the Y block adds up to 100 and rounded to 3 decimals; the white point is the sums of
/// the unrounded blocks, rounded to 3 decimals. A spectrum without power in the visible gives non-finite
/// weights.
[[nodiscard]] VRX_API WeightingTable ComputeWeightingTable(const SpectralPower& power, int32_t observer);

/// How many samples a curve from 360 to 780 nm every `interval` nm has: 85 at 5 nm, 421 at 1 nm.
constexpr int32_t FineSamples(int32_t interval) {
  return (kPowerSamples - 1) / interval + 1;
}

/// The weights of a spectrum for reflectance from 360 to 780 nm every `interval` nm, a divisor of 420: n X, n Y and n Z weights, n
/// being FineSamples(interval). Formula: the shares of ASTM E2022 as in ComputeWeightingTable, so that at 1 nm a weight is power times
/// matching function, the sum of CIE 15. They are scaled so that the Y block adds up to 100, and not rounded. Their sums are the white
/// point of ComputeWeightingTable before rounding, whatever the interval.
[[nodiscard]] VRX_API std::vector<double> ComputeFineWeights(const SpectralPower& power, int32_t observer,
                                                             int32_t interval);

/// The matching functions of observer 0 (2 degrees) or 1 (10 degrees) at a wavelength from 360 to 780 nm.
[[nodiscard]] VRX_API Xyz MatchingFunctionsAt(int32_t observer, int32_t wavelength);

/// The tristimulus values of a light: the sums over every nanometre of power times matching functions (CIE 15), in the unit of
/// the power.
[[nodiscard]] VRX_API Xyz SpectrumToXyz(const SpectralPower& power, int32_t observer);

}  // namespace vrx

#endif  // VRXMATH_COLORIMETRY_WEIGHTING_H_
