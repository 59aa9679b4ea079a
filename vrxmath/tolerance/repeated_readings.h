// How sure the mean of repeated readings is, and how many readings a wanted certainty needs.

#ifndef VRXMATH_TOLERANCE_REPEATED_READINGS_H_
#define VRXMATH_TOLERANCE_REPEATED_READINGS_H_

#include <cstdint>

#include <vrxmath/export.h>

namespace vrx {

/// Student's t that a share of all samples keeps within on both sides: 2.776 for 95 percent and 4 degrees of freedom.
/// In:   certainty above 0 and below 1; one degree of freedom or more (beyond 10,000 they count as 10,000, where t has come
///       within 0.0003 of its limit).
/// Method: bisection of the finite series of Abramowitz and Stegun 26.7.3 and 26.7.4. Unset for other arguments.
[[nodiscard]] VRX_API double StudentT(double certainty, std::int64_t degreesOfFreedom);

/// How far the mean of readings may be from that of very many, with a certainty: t s / sqrt(n) for n readings, where s is
/// known from `known` readings. Unset for fewer than two of those.
[[nodiscard]] VRX_API double UncertaintyOfMean(double deviation, std::int64_t known, std::int64_t readings,
                                               double certainty);

/// How many readings bring the mean within `within` of that of very many, with a certainty: the least n of
/// t s / sqrt(n) <= within (the reasoning of ASTM E1345).
/// In:   `deviation`: the standard deviation s of `known` readings, 2 or more; of colours the root of the sum of the
///       variances of L*, a*, b*. `within` above 0, in the same unit.
/// Out:  1 or more; 0 where it cannot be said, and for more than a thousand million.
[[nodiscard]] VRX_API std::int64_t ReadingsNeeded(double deviation, std::int64_t known, double within,
                                                  double certainty);

}  // namespace vrx

#endif  // VRXMATH_TOLERANCE_REPEATED_READINGS_H_
