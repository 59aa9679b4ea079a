#include <vrxmath/tolerance/repeated_readings.h>

#include <algorithm>
#include <cmath>

#include <vrxmath/foundation/numbers.h>
#include <vrxmath/numeric/elementary.h>

namespace vrx {
namespace {

constexpr std::int64_t kMostDegrees = 10'000;

// The probability of |T| <= t: sums of powers of the cosine of the angle whose tangent is t / sqrt(degrees).
double ShareWithin(double t, std::int64_t degrees) {
  constexpr double kPi = 3.141592653589793;
  const double n = static_cast<double>(degrees);
  const double sine = t / std::sqrt(n + t * t), squaredCosine = n / (n + t * t);
  const bool isOdd = degrees % 2 != 0;
  double term = isOdd ? std::sqrt(squaredCosine) : 1.0, sum = degrees == 1 ? 0.0 : term;
  for (std::int64_t k = isOdd ? 3 : 2; k <= degrees - 2; k += 2) {
    const double at = static_cast<double>(k);
    term *= squaredCosine * (at - 1.0) / at;
    sum += term;
  }
  if (!isOdd) return sine * sum;
  return 2.0 / kPi * (Atan2(sine, std::sqrt(squaredCosine)) + sine * sum);
}

using Reading = std::array<double, 3>;
using Readings = std::span<const Reading>;

double Distance(const Reading& a, const Reading& b) {
  double sum = 0;
  for (std::size_t k = 0; k < a.size(); ++k) sum += (a[k] - b[k]) * (a[k] - b[k]);
  return std::sqrt(sum);
}

// Of an even count the lower of the two in the middle.
double Median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>((values.size() - 1) / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

std::vector<double> Coordinate(Readings readings, std::size_t k) {
  std::vector<double> values;
  values.reserve(readings.size());
  for (const Reading& reading : readings) values.push_back(reading[k]);
  return values;
}

constexpr double kApart = 3.0;
constexpr double kRepeatability = 0.1;

// The limit of three distances. With so few the spread is hardly known: the quotient of the gap and the range must come to
// Dixon's Q (Rorabacher 1991), so the farther distance to Q / (1 - Q) of the nearer one.
double LimitOfThree(const std::vector<double>& distances) {
  constexpr double kQ = 0.941;
  const double nearer = Median(distances);
  return nearer <= kRepeatability ? kApart * kRepeatability : kQ / (1 - kQ) * nearer;
}

std::vector<std::size_t> Outliers(Readings readings) {
  constexpr std::size_t kFewest = 3;
  if (readings.size() < kFewest) return {};
  const Reading centre{Median(Coordinate(readings, 0)), Median(Coordinate(readings, 1)),
                       Median(Coordinate(readings, 2))};
  std::vector<double> distances;
  distances.reserve(readings.size());
  for (const Reading& reading : readings) distances.push_back(Distance(reading, centre));
  const double limit = readings.size() == kFewest ? LimitOfThree(distances)
                                                  : std::max(kRepeatability, kApart * Median(distances));
  std::vector<std::size_t> outliers;
  for (std::size_t i = 0; i < distances.size(); ++i) {
    if (distances[i] > limit) outliers.push_back(i);
  }
  return outliers;
}

}  // namespace

ReadingStatistics StatisticsOfReadings(Readings readings, const Reading& mean) {
  ReadingStatistics statistics;
  const auto count = static_cast<double>(readings.size());
  for (std::size_t k = 0; k < mean.size(); ++k) {
    const std::vector<double> values = Coordinate(readings, k);
    const auto [lowest, highest] = std::ranges::minmax(values);
    double sum = 0, squares = 0;
    for (const double value : values) sum += value;
    for (const double value : values) squares += (value - sum / count) * (value - sum / count);
    statistics.stats.SetFirst(static_cast<std::int32_t>(k),
                              count > 1 ? std::sqrt(squares / (count - 1)) : 0.0);
    statistics.stats.SetSecond(static_cast<std::int32_t>(k), highest - lowest);
  }
  for (const Reading& reading : readings) {
    const double difference = Distance(reading, mean);
    statistics.meanDifference += difference / count;
    statistics.largestDifference = std::max(statistics.largestDifference, difference);
  }
  statistics.stats.SetSetting(static_cast<std::int32_t>(readings.size()));
  statistics.outliers = Outliers(readings);
  return statistics;
}

double StudentT(double certainty, std::int64_t degreesOfFreedom) {
  if (!(certainty > 0.0 && certainty < 1.0) || degreesOfFreedom < 1) return kUnset;
  const std::int64_t degrees = std::min(degreesOfFreedom, kMostDegrees);
  double low = 0.0, high = 1.0;
  while (ShareWithin(high, degrees) < certainty && high < 1e15) high *= 2.0;
  constexpr int kHalvings = 64;
  for (int i = 0; i < kHalvings; ++i) {
    const double middle = (low + high) / 2.0;
    (ShareWithin(middle, degrees) < certainty ? low : high) = middle;
  }
  return (low + high) / 2.0;
}

double UncertaintyOfMean(double deviation, std::int64_t known, std::int64_t readings, double certainty) {
  if (known < 2 || readings < 1 || !(deviation >= 0.0)) return kUnset;
  const double t = StudentT(certainty, known - 1);
  return IsUnset(t) ? kUnset : t * deviation / std::sqrt(static_cast<double>(readings));
}

std::int64_t ReadingsNeeded(double deviation, std::int64_t known, double within, double certainty) {
  constexpr double kMost = 1e9;
  const double ofOne = UncertaintyOfMean(deviation, known, 1, certainty);
  if (IsUnset(ofOne) || !(within > 0.0)) return 0;
  const double least = (ofOne / within) * (ofOne / within);
  if (!(least <= kMost)) return 0;
  auto whole = static_cast<std::int64_t>(least);
  if (static_cast<double>(whole) < least) ++whole;
  return std::max<std::int64_t>(whole, 1);
}

}  // namespace vrx
