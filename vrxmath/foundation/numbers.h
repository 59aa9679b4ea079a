// The two conventions about numbers that every record shares: the unset value and near-equality.

#ifndef VRXMATH_FOUNDATION_NUMBERS_H_
#define VRXMATH_FOUNDATION_NUMBERS_H_

#include <cmath>

namespace vrx {

/// What a quantity holds until it is measured or computed, and what a calculation returns that has no answer.
inline constexpr double kUnset = 1e-5;

/// Default tolerance of near-equality: the spacing of doubles at 1.
inline constexpr double kDoubleEpsilon = 2.220446049250313e-16;

/// True when `value` means "not measured": strictly between 9.99e-6 and 1.001e-5. NaN is never unset.
inline bool IsUnset(double value) {
  return value > 9.99e-6 && value < 1.001e-5;
}

/// True when |b - a| < `tolerance`, strictly. An absolute test: above 2 it is the exact comparison. NaN
/// equals nothing.
inline bool NearlyEqual(double a, double b, double tolerance = kDoubleEpsilon) {
  return std::fabs(b - a) < tolerance;
}

}  // namespace vrx

#endif  // VRXMATH_FOUNDATION_NUMBERS_H_
