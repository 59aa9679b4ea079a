// Numbers as decimal text: rounding to decimals, and the digits.

#ifndef VRXMATH_FOUNDATION_DECIMAL_TEXT_H_
#define VRXMATH_FOUNDATION_DECIMAL_TEXT_H_

#include <cstdint>

#include <vrxmath/export.h>
#include <vrxmath/platform/wide_string.h>

namespace vrx {

/// Most decimals that a number text can have: as many as a double of magnitude 1 determines.
inline constexpr int32_t kMaxDecimals = 15;

/// The multiple of 1 / `scale` nearest to `value`, halves away from zero. `scale` is 10 to the power of the
/// decimals wanted. A value of 2^51 / `scale` or more comes back as it is, since there the step is close to
/// the spacing of doubles; so does any value when `scale` is not a positive number.
[[nodiscard]] VRX_API double RoundToScale(double value, double scale);

/// `value` rounded to `decimals` (0 to kMaxDecimals, others are taken as the nearest of these) and written
/// with that many, with `decimalSeparator` before them. A result without a digit other than 0 has no sign.
/// Infinities and NaN are "inf", "-inf" and "nan".
[[nodiscard]] VRX_API CString DecimalText(double value, int32_t decimals, WideView decimalSeparator);

}  // namespace vrx

#endif  // VRXMATH_FOUNDATION_DECIMAL_TEXT_H_
