// Values in a plot, and the round ones along its axes.

#ifndef VRXMATH_SUPPORT_AXIS_TICKS_H_
#define VRXMATH_SUPPORT_AXIS_TICKS_H_

#include <algorithm>
#include <cmath>
#include <cstdint>

#include <vrxmath/foundation/numbers.h>

namespace vrx {

/// True for a value that can be shown: finite and not unset.
[[nodiscard]] inline bool IsShown(double value) {
  return std::isfinite(value) && !IsUnset(value);
}

/// Evenly spaced values that enclose an interval, in the unit of the interval.
struct AxisTicks {
  double first = 0, step = 1;
  int32_t count = 2;     ///< 2 to 1001
  int32_t decimals = 0;  ///< that tell the values apart

  /// A multiple of the step next to zero is zero: 0.1 x 3 - 0.3 is not.
  [[nodiscard]] double At(int32_t i) const {
    const double value = first + step * i;
    return std::fabs(value) < step * 1e-9 ? 0.0 : value;
  }
  [[nodiscard]] double Last() const { return At(count - 1); }
};

/// Ticks at multiples of 1, 2 or 5 times a power of ten (1e-9 to 1e12) that enclose `lower` to `upper`, both finite, in at
/// most `steps` + 2 steps; `steps` is 1 or more. An interval without length is taken for one of length 1.
[[nodiscard]] inline AxisTicks EnclosingTicks(double lower, double upper, int32_t steps) {
  if (!(upper > lower)) upper = lower + 1;
  const double raw = (upper - lower) / std::max(steps, 1);
  double power = 1;
  int32_t decimals = 0;
  for (; power * 10 <= raw && power < 1e12; power *= 10) --decimals;
  for (; power > raw && power > 1e-9; power /= 10) ++decimals;
  double step = 10 * power;
  if (step >= raw && 5 * power < raw) --decimals;
  for (const double factor : {5.0, 2.0, 1.0}) {
    if (factor * power >= raw) step = factor * power;
  }
  const double first = std::floor(lower / step + 1e-9), last = std::ceil(upper / step - 1e-9);
  return {first * step, step, static_cast<int32_t>(std::clamp(last - first, 1.0, 1000.0)) + 1,
          std::max(decimals, 0)};
}

}  // namespace vrx

#endif  // VRXMATH_SUPPORT_AXIS_TICKS_H_
