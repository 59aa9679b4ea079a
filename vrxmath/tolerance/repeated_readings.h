// Repeated readings of one sample: how far they scatter, which lie apart, how sure their mean is, and how many readings a wanted
// certainty needs.

#ifndef VRXMATH_TOLERANCE_REPEATED_READINGS_H_
#define VRXMATH_TOLERANCE_REPEATED_READINGS_H_

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include <vrxmath/export.h>
#include <vrxmath/tolerance/averaging_stats.h>

namespace vrx {

/// How the readings of a sample scatter, in colours.
struct ReadingStatistics {
  CAveragingStats stats;  ///< of L*, a*, b*: standard deviation, range; the setting is the number of readings
  double meanDifference = 0;          ///< dE*ab of the readings from the mean, on average
  double largestDifference = 0;       ///< the largest of those
  std::vector<std::size_t> outliers;  ///< readings, from 0, that lie apart from the others

  /// The root of the sum of the variances of L*, a* and b*.
  [[nodiscard]] double Deviation() const {
    return std::sqrt(stats.FirstSquared(0) + stats.FirstSquared(1) + stats.FirstSquared(2));
  }
};

/// The scatter of readings in L*, a*, b* about their mean, which is the colour of the mean curve and not quite the mean of the
/// colours. A reading lies apart when it is further from the median colour, in dE*ab, than three times what half of the readings keep
/// within, and further than 0.1, which instruments repeat within. Of three readings one lies apart when it is sixteen times as
/// far from the median as the nearer other one (Dixon's Q of 0.941 for three values, 90 percent sure), or three times 0.1
/// where those two agree within that. Fewer have no outlier.
/// In:   one reading or more. The deviation of a single one is 0.
[[nodiscard]] VRX_API ReadingStatistics StatisticsOfReadings(std::span<const std::array<double, 3>> readings,
                                                             const std::array<double, 3>& mean);

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
