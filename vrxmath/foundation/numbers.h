// The two conventions about numbers that every record shares: the unset value and near-equality.

#ifndef VRXMATH_FOUNDATION_NUMBERS_H_
#define VRXMATH_FOUNDATION_NUMBERS_H_

#include <cmath>
#include <cstdint>

#include <vrxmath/export.h>

namespace vrx {

/// The value of a quantity that is not measured or computed yet, and of a calculation that has no answer.
inline constexpr double kUnset = 1e-5;

/// Default tolerance of near-equality: the spacing of doubles at 1.
inline constexpr double kDoubleEpsilon = 2.220446049250313e-16;

/// True when `value` means "not measured": strictly between 9.99e-6 and 1.001e-5. NaN is never unset.
[[nodiscard]] inline bool IsUnset(double value) {
  return value > 9.99e-6 && value < 1.001e-5;
}

/// True when |b - a| < `tolerance`, strictly. An absolute test: above 2 it is the exact comparison. NaN
/// equals nothing.
[[nodiscard]] inline bool NearlyEqual(double a, double b, double tolerance = kDoubleEpsilon) {
  return std::fabs(b - a) < tolerance;
}

/// The nearest whole number, halves away from zero. The C library's function of this purpose is not the same
/// everywhere: some add one half first, which turns 0.49999999999999994 into 1.
inline double RoundToWhole(double value) {
  constexpr double kTwoTo52 = 4503599627370496.0;  // from here on every double is whole
  const double size = std::fabs(value);
  if (!(size < kTwoTo52)) return value;
  const auto below = static_cast<double>(static_cast<int64_t>(size));
  return std::copysign(size - below < 0.5 ? below : below + 1.0, value);
}

}  // namespace vrx

#endif  // VRXMATH_FOUNDATION_NUMBERS_H_
