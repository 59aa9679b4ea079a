// Numbers as the user reads and types them, in the conventions of the user's locale (platform/locale.h).
//
// The unset value (foundation/numbers.h) is an empty text, both ways. Rounding is to the nearest, halves away
// from zero, and a zero never has a sign.

#ifndef VRXMATH_SUPPORT_NUMBER_TEXT_H_
#define VRXMATH_SUPPORT_NUMBER_TEXT_H_

#include <cstdint>
#include <optional>

#include <vrxmath/export.h>
#include <vrxmath/foundation/numbers.h>
#include <vrxmath/foundation/value_range.h>
#include <vrxmath/platform/wide_string.h>

namespace vrx {

/// `value` with the range's decimals. The limits take no part: a value that lies outside is shown as it is.
[[nodiscard]] VRX_API CString NumberText(double value, const CValueRange& range = {});

enum class NumberError {
  kNone,
  kNotANumber,  ///< the unit at the position cannot follow what stands before it
  kBelowRange,  ///< a number, but less than the lower limit
  kAboveRange,  ///< a number, but more than the upper limit
};

/// The meaning of a typed text.
struct ParsedNumber {
  double value = kUnset;  ///< rounded to the range's decimals; kUnset for an empty text or kNotANumber
  NumberError error = NumberError::kNone;
  int32_t position = 0;  ///< with an error: the unit where the text, or the number in it, went wrong
};

/// Reads a number: an optional sign, digits, and the locale's decimal separator followed by digits, with
/// blanks around it. Nothing else is taken: no separator of thousands, which in one locale is what the decimal
/// separator is in another, and no exponent. NumberText and ParseNumber are inverse up to the rounding.
[[nodiscard]] VRX_API ParsedNumber ParseNumber(WideView text, const CValueRange& range = {});

/// `value` moved by `steps` increments, rounded to the range's decimals and kept within the limits: what the
/// arrow keys of an edit field do. An unset value starts from zero, or from the limit nearest to it.
[[nodiscard]] VRX_API double StepValue(double value, int32_t steps, const CValueRange& range);

/// `value` by a picture such as "##0.00", "#,##0" or "0.0##'%'":
///   0   a digit, shown in any case
///   #   a digit, shown when it counts; behind the point: unless it is a trailing zero
///   ,   between digits before the point: groups of digits are set apart as the locale does it
///   .   the locale's decimal separator
/// Text before and behind is copied, between apostrophes whatever it is. Digits that have no place before the
/// point are shown all the same. None for a picture without a digit or with more than kMaxDecimals decimals.
[[nodiscard]] VRX_API std::optional<CString> PictureText(WideView picture, double value);

/// A unit in which amounts of a formula are given: weight units are numbered 0 to 5, volume units 0 to 24.
struct AmountUnit {
  enum Kind { kWeight, kVolume };
  Kind kind = kWeight;
  int32_t index = 0;
};

/// The unit's name, such as "Grams"; empty for a number that is no unit's.
[[nodiscard]] VRX_API CString AmountUnitName(AmountUnit unit);

/// The decimals that amounts in the unit are shown with: enough to tell 0.05 g or 0.05 ml, one drop, apart.
[[nodiscard]] VRX_API int32_t AmountDecimals(AmountUnit unit);

/// An amount with its unit: "12.50 Grams".
[[nodiscard]] VRX_API CString AmountText(double amount, AmountUnit unit);

}  // namespace vrx

#endif  // VRXMATH_SUPPORT_NUMBER_TEXT_H_
