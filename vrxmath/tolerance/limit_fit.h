// The limit of a total difference that agrees best with what people decided, and how well a difference system agrees with
// them at all.

#ifndef VRXMATH_TOLERANCE_LIMIT_FIT_H_
#define VRXMATH_TOLERANCE_LIMIT_FIT_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include <vrxmath/colorimetry/difference_systems.h>
#include <vrxmath/export.h>
#include <vrxmath/foundation/numbers.h>

namespace vrx {

/// A limit and the decisions that it gets wrong.
struct LimitFit {
  double limit = kUnset;            ///< totals up to it are accepted; unset without a total
  std::size_t wronglyAccepted = 0;  ///< that people rejected
  std::size_t wronglyRejected = 0;  ///< that people accepted
  std::size_t Wrong() const { return wronglyAccepted + wronglyRejected; }
};

/// Whether some were accepted (1) and some rejected (0): only then does a limit lie between them.
[[nodiscard]] inline bool HasBothVerdicts(std::span<const std::uint8_t> accepted) {
  return std::adjacent_find(accepted.begin(), accepted.end(), std::not_equal_to<>()) != accepted.end();
}

/// The limit with the fewest wrong decisions over totals that people accepted (1) or rejected (0).
/// In:   totals of one system, 0 or more, in any order; as many verdicts.
/// Out:  halfway between the two totals that it separates; of limits with as few wrong decisions the one that accepts fewest of
///       what people rejected, and of those the lowest. Of what everybody accepted it is the largest total.
/// Errors:  CInvalidArgException for counts that differ, and for a total that is negative or no number.
[[nodiscard]] VRX_API LimitFit FitLimit(std::span<const double> totals,
                                        std::span<const std::uint8_t> accepted);

/// The standardised residual sum of squares of computed and visual differences, in percent: 0 where they are proportional, 100
/// where they have nothing in common. Of verdicts the visual difference is 0 for accepted and 1 for rejected, or the share of
/// the people that rejected a pair. Formula: Garcia, Huertas, Melgosa and Cui, J. Opt. Soc. Am. A 24, 2007, 1823-1829.
/// Unset without numbers, and where all differences of one kind are 0. Errors: CInvalidArgException for counts that differ.
[[nodiscard]] VRX_API double Stress(std::span<const double> computed, std::span<const double> visual);

/// A difference system under one illuminant, and the limit that agrees best with the verdicts.
struct SystemLimitFit {
  CDifferenceSettings difference;
  std::size_t illuminant = 0;  ///< its place among those of the totals
  LimitFit fit;                ///< its limit is unset where the system has no total for some trial
  double stress = kUnset;
};

/// Every difference system as people use it, those with a factor of lightness with 1, 1.5 and 2.
[[nodiscard]] VRX_API std::vector<CDifferenceSettings> UsualLimitChoices();

/// The limits of several choices of a system, the best first: by wrong decisions, then by STRESS.
/// In:  totals by choice and within it by illuminant, of every trial; a verdict of each, 1 for accepted and 0 for rejected.
[[nodiscard]] VRX_API std::vector<SystemLimitFit> FitLimits(std::span<const CDifferenceSettings> choices,
                                                            std::span<const std::vector<double>> totals,
                                                            std::span<const std::uint8_t> accepted);

}  // namespace vrx

#endif  // VRXMATH_TOLERANCE_LIMIT_FIT_H_
