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

}  // namespace

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
