// Statistics of a stream of numbers that is not kept: mean, standard deviation, percentiles, the largest.

#ifndef TOOLS_VRX_JUDGING_DISTRIBUTION_H_
#define TOOLS_VRX_JUDGING_DISTRIBUTION_H_

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vrx::tool {

/// Of numbers from 0 up. Infinities and NaN are passed over. Statistics of nothing are the unset value.
class Distribution {
 public:
  /// So many numbers are kept, and percentiles of them are exact; beyond, a percentile is within 0.1 %.
  static constexpr std::size_t kExact = 100'000;

  void Add(double value);

  double Mean() const;
  /// Of a sample: the divisor is the count less one. Unset for fewer than two.
  double StandardDeviation() const;
  /// The value below which `percent` of the numbers lie, with straight lines between them in the order of size (as
  /// spreadsheets have it).
  double Percentile(double percent) const;
  double Largest() const;

 private:
  double FromBuckets(double rank) const;

  int64_t count_ = 0;
  double mean_ = 0;
  double squares_ = 0;  // sum of squared deviations from the mean
  double largest_ = 0;
  std::vector<double> values_;
  std::vector<int64_t> buckets_;  // each 0.1 % wide; in use once there are too many values
};

}  // namespace vrx::tool

#endif  // TOOLS_VRX_JUDGING_DISTRIBUTION_H_
