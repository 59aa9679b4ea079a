// User illuminants: a lamp that a host has measured, registered under a number of its own. Every colour
// function then takes that number as it takes a built-in one:
//
//   const auto lamp = static_cast<vrxUserIllum>(kFirstUserIlluminant);
//   if (RegisterUserIlluminant(lamp, u"SHOP|Shop lighting", power, 380, 5) != IlluminantError::kNone) ...
//   curve.Tristimulus(IlluminantOf(lamp), kObserver10, xyz);
//
// The weighting tables and white points come from the spectral power by the method that made the built-in
// ones (weighting.h).
//
// The list is process-wide. Registering and removing is for times when no other thread computes; reading is
// safe on any number of threads.

#ifndef VRXMATH_COLORIMETRY_USER_ILLUMINANTS_H_
#define VRXMATH_COLORIMETRY_USER_ILLUMINANTS_H_

#include <cstdint>
#include <span>

#include <vrxmath/colorimetry/illuminant_registry.h>
#include <vrxmath/colorimetry/illuminants.h>
#include <vrxmath/colorimetry/weighting.h>
#include <vrxmath/export.h>
#include <vrxmath/platform/wide_string.h>

namespace vrx {

/// Number of a user illuminant, 1000 to 1255; persistent in records of hosts as a vrxIlluminant is. The
/// range keeps clear of the built-in and reserved numbers and fits into 16 bits.
enum vrxUserIllum : int32_t {};

/// The number as every colour function takes it.
constexpr vrxIlluminant IlluminantOf(vrxUserIllum number) {
  return static_cast<vrxIlluminant>(static_cast<int32_t>(number));
}

/// A list of user illuminants. A new one is empty.
using CUserIllumArray = CArrayVarex<vrxUserIllum, vrxUserIllum>;

/// Why a user illuminant is refused.
enum class IlluminantError : int32_t {
  kNone = 0,
  kNumber,    ///< not 1000 to 1255
  kName,      ///< the code is empty, a whole number, or another illuminant's
  kStep,      ///< not 1, 5 or 10 nm
  kTooShort,  ///< fewer values than 400 to 700 nm take
  kRange,     ///< 400 to 700 nm not covered, or not between 1 and 10000 nm
  kNumeric,   ///< NaN, infinity, or so large that sums overflow
  kNegative,  ///< negative power
  kNoPower,   ///< no power from 400 to 700 nm
};

/// The reason as a sentence for the user; empty for kNone.
[[nodiscard]] VRX_API CString IlluminantErrorText(IlluminantError error);

/// Why a tabulated spectrum cannot be used as RegisterUserIlluminant takes it; kNone when it can.
[[nodiscard]] VRX_API IlluminantError CheckSpectrum(std::span<const double> power, int32_t firstWavelength,
                                                    int32_t step);

/// Registers a user illuminant, or replaces the one of that number in place.
/// In:      `name`: "code|description" as the built-in texts; without a bar the code is the description too.
///          Codes are told apart without regard to case. `power`: relative spectral power in any unit, every
///          `step` (1, 5 or 10) nm from `firstWavelength` on, all of 400 to 700 nm at least; it counts as 0
///          where it is not given. `interpolation`: how it is brought to 1 nm.
/// Formula: ResampleSpectrum and ComputeWeightingTable for both observers.
/// Exact:   the published spectrum of a built-in illuminant gives the weights of its table to the last
///          decimal: by straight lines for D65, by Lagrange for C, D50, D55, D75, the fluorescent and the
///          LED illuminants. The white point is the sum of the weights before rounding, within 0.001 of what
///          ASTM E308 prints.
/// Errors:  the reason; the list is then as it was.
[[nodiscard]] VRX_API IlluminantError RegisterUserIlluminant(
    vrxUserIllum number, WideView name, std::span<const double> power, int32_t firstWavelength, int32_t step,
    SpectralInterpolation interpolation = SpectralInterpolation::kLagrange);

/// Takes a user illuminant off the list; nothing happens when it is not there.
VRX_API void RemoveUserIlluminant(vrxUserIllum number);

/// The registered user illuminants by ascending number.
[[nodiscard]] VRX_API CUserIllumArray RegisteredUserIlluminants();

}  // namespace vrx

#endif  // VRXMATH_COLORIMETRY_USER_ILLUMINANTS_H_
