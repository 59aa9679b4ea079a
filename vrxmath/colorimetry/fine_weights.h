// Tristimulus values of curves finer than the library's grid: at every 5 nm by weights of their own, at every nanometre by the sums
// that CIE 15 defines.
//
// A curve for it has samples from 360 to 780 nm. Where a measurement ends before, its last value goes on to the end: the same as adding
// the weights of the missing wavelengths to the last one, as ASTM E308 has it.
//
// The white point is that of the illuminant (weight_tables.h) at every interval. The sums of the weights do not depend on the interval,
// since the shares of a product add up to the product; they differ from the printed white by less than 0.001, but for LB1 at
// 10 degrees, whose kept white is 0.005 away.

#ifndef VRXMATH_COLORIMETRY_FINE_WEIGHTS_H_
#define VRXMATH_COLORIMETRY_FINE_WEIGHTS_H_

#include <cstdint>
#include <span>

#include <vrxmath/colorimetry/illuminants.h>
#include <vrxmath/colorimetry/values.h>
#include <vrxmath/colorimetry/weighting.h>
#include <vrxmath/export.h>

namespace vrx {

/// Whether there are weights for curves at every `interval` nm beside those for 10: for 5 and 1.
constexpr bool IsFineInterval(int32_t interval) {
  return interval == 5 || interval == 1;
}

/// The weights of a pair for curves at every 5 or 1 nm, block by block (ComputeFineWeights). Null, without a message, for a number that no
/// illuminant has and for another interval. Any observer other than 1 is the 2 degree one. They are made on first use and stay in place
/// for the life of the process, those of a user illuminant with the spectrum registered last. Safe on any number of threads.
[[nodiscard]] VRX_API const double* FineWeightTable(vrxIlluminant illuminant, int32_t observer,
                                                    int32_t interval);

/// X, Y, Z of a curve in percent at 360, 360 + `interval` ... 780 nm; each sum runs from the shortest wavelength up. False for
/// an unset curve (its first sample is), a length that is not FineSamples(interval), and where FineWeightTable has none.
[[nodiscard]] VRX_API bool FineTristimulus(std::span<const double> curve, int32_t interval,
                                           vrxIlluminant illuminant, int32_t observer, Xyz& result);

}  // namespace vrx

#endif  // VRXMATH_COLORIMETRY_FINE_WEIGHTS_H_
