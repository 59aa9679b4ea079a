#include <vrxmath/foundation/decimal_text.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string>

#include <vrxmath/foundation/numbers.h>

namespace vrx {
namespace {

constexpr double kPowersOfTen[kMaxDecimals + 1] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                   1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};

// Up to here value x scale is near enough to the whole number that it stands for: beyond, its own rounding is
// half a unit, and rounding twice would not give the same.
constexpr double kTwoTo51 = 2251799813685248.0;

}  // namespace

double RoundToScale(double value, double scale) {
  const double scaled = value * scale;
  if (!(scale > 0.0) || !(std::fabs(scaled) < kTwoTo51)) return value;
  return RoundToWhole(scaled) / scale;
}

CString DecimalText(double value, int32_t decimals, WideView decimalSeparator) {
  const int32_t places = std::clamp(decimals, int32_t{0}, kMaxDecimals);
  const double rounded = RoundToScale(value, kPowersOfTen[places]);
  if (!std::isfinite(rounded)) return std::isnan(rounded) ? u"nan" : rounded > 0.0 ? u"inf" : u"-inf";
  char buffer[340];  // the largest double has 309 digits before its point
  const auto end =
      std::to_chars(buffer, buffer + sizeof buffer, rounded, std::chars_format::fixed, places).ptr;
  std::string digits(buffer, end);
  if (digits[0] == '-' && digits.find_first_of("123456789") == std::string::npos) digits.erase(0, 1);
  const std::size_t point = std::min(digits.find('.'), digits.size());
  CString text = CString::FromUtf8(digits.substr(0, point));
  if (places > 0) {
    text += decimalSeparator;
    text += CString::FromUtf8(digits.substr(point + 1));
  }
  return text;
}

}  // namespace vrx
