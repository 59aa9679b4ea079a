// A closed interval, as a pair of limits leaves it open, and its scaling about its centre.

#ifndef VRXMATH_TOLERANCE_INTERVAL_H_
#define VRXMATH_TOLERANCE_INTERVAL_H_

#include <vrxmath/foundation/numbers.h>
#include <vrxmath/numeric/lanes.h>

namespace vrx {

/// An interval, both ends inclusive. NaN lies outside.
struct Interval {
  double lower;
  double upper;
  /// For a number or a pack of them (numeric/lanes.h).
  template <class T>
  VRX_LANE_INLINE auto Contains(T value) const {
    const auto above = lower <= value, below = value <= upper;
    const decltype(above) both = above & below;
    return both;
  }
};

/// An interval scaled about its own centre. A factor within the near-equality of 1 leaves it as it is, to the last bit.
[[nodiscard]] inline Interval ScaledAboutCentre(Interval interval, double factor) {
  if (NearlyEqual(factor, 1.0)) return interval;
  const double width = (interval.upper - interval.lower) * factor;
  const double lower = (interval.lower + interval.upper - width) / 2.0;
  return {lower, lower + width};
}

}  // namespace vrx

#endif  // VRXMATH_TOLERANCE_INTERVAL_H_
