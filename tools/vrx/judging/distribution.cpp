#include "tools/vrx/judging/distribution.h"

#include <algorithm>
#include <cmath>

#include <vrxmath/foundation/numbers.h>
#include <vrxmath/numeric/elementary.h>

namespace vrx::tool {
namespace {

constexpr double kSmallest = 1e-3;  // what is less goes into the first bucket
constexpr double kLogOfStep = 0.001;
constexpr std::size_t kBuckets = 21'000;  // up to 1e6

std::size_t BucketOf(double value) {
  if (!(value > kSmallest)) return 0;
  const double place = 1.0 + Log(value / kSmallest) / kLogOfStep;
  return std::min(kBuckets - 1, static_cast<std::size_t>(place));
}

double MiddleOf(std::size_t bucket) {
  return bucket == 0 ? 0.0 : kSmallest * Exp((static_cast<double>(bucket) - 0.5) * kLogOfStep);
}

}  // namespace

void Distribution::Add(double value) {
  if (!std::isfinite(value)) return;
  ++count_;
  const double deviation = value - mean_;
  mean_ += deviation / static_cast<double>(count_);
  squares_ += deviation * (value - mean_);
  largest_ = std::max(largest_, value);
  if (buckets_.empty() && values_.size() == kExact) {
    buckets_.resize(kBuckets);
    for (const double kept : values_) ++buckets_[BucketOf(kept)];
    values_ = {};
  }
  if (buckets_.empty()) {
    values_.push_back(value);
  } else {
    ++buckets_[BucketOf(value)];
  }
}

double Distribution::Mean() const {
  return count_ > 0 ? mean_ : kUnset;
}

double Distribution::StandardDeviation() const {
  return count_ > 1 ? std::sqrt(squares_ / static_cast<double>(count_ - 1)) : kUnset;
}

double Distribution::Largest() const {
  return count_ > 0 ? largest_ : kUnset;
}

double Distribution::FromBuckets(double rank) const {
  double below = 0;
  for (std::size_t i = 0; i < buckets_.size(); ++i) {
    below += static_cast<double>(buckets_[i]);
    if (below > rank) return MiddleOf(i);
  }
  return largest_;
}

double Distribution::Percentile(double percent) const {
  if (count_ == 0) return kUnset;
  const double rank = percent / 100.0 * static_cast<double>(count_ - 1);
  if (!buckets_.empty()) return FromBuckets(rank);
  std::vector<double> values = values_;
  const auto lower = values.begin() + static_cast<std::ptrdiff_t>(rank);
  std::nth_element(values.begin(), lower, values.end());
  const double below = *lower;
  if (lower + 1 == values.end()) return below;
  const double above = *std::min_element(lower + 1, values.end());
  return below + (above - below) * (rank - std::floor(rank));
}

}  // namespace vrx::tool
