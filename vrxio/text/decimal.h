// Decimal texts to doubles, exactly rounded and fast for the short numbers of measurement files, and back.

#ifndef VRXIO_TEXT_DECIMAL_H_
#define VRXIO_TEXT_DECIMAL_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace vrx::io {

/// Reads the number that `text` is made of, all of it: an optional sign, digits with at most one decimal
/// separator, which is a point or `separator`, and an optional exponent. The result is the double nearest to
/// the number. False for everything else ("inf", "nan" and the empty text included) and for magnitudes beyond
/// the normal range of doubles.
bool ParseDecimal(std::string_view text, char separator, double& value);

/// Up to this power ten is a double, and so is every whole number of as many digits.
inline constexpr std::size_t kExactDigits = 15;
inline constexpr std::array<double, kExactDigits + 1> kPowersOfTen{
    1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};

/// A number as whole / 10^decimals.
struct ShortDecimal {
  double whole = 0;
  std::size_t decimals = 0;
};

/// The quick half of ParseDecimal, for numbers without an exponent and with at most `digits` digits, 15 or fewer: both parts are
/// doubles, so one division rounds them exactly. Reads from `at` up to the first byte that is no part of such a number,
/// which must exist, and returns its address; null when the text does not begin with one or is not for this half.
inline const char* ReadShortDecimal(const char* at, char separator, ShortDecimal& number,
                                    std::size_t digits = kExactDigits) {
  const auto digit = [&at] { return static_cast<unsigned>(static_cast<unsigned char>(*at)) - '0'; };
  const bool negative = *at == '-';
  if (negative || *at == '+') ++at;
  const char* const first = at;
  uint64_t whole = 0;  // wraps when there are too many digits, and is not used then
  for (; digit() < 10; ++at) whole = 10 * whole + digit();
  auto count = static_cast<std::size_t>(at - first);
  number.decimals = 0;
  if (*at == '.' || *at == separator) {
    const char* const point = at++;
    for (; digit() < 10; ++at) whole = 10 * whole + digit();
    number.decimals = static_cast<std::size_t>(at - point) - 1;
    count += number.decimals;
  }
  if (count == 0 || count > digits || *at == 'e' || *at == 'E') return nullptr;
  const auto magnitude = static_cast<double>(static_cast<int64_t>(whole));
  number.whole = negative ? -magnitude : magnitude;
  return at;
}

/// The same as a double; with `kShift` the number is taken times ten to that power, 0 to 2, rounded once.
template <std::size_t kShift = 0>
const char* ParseShortDecimal(const char* at, char separator, double& value) {
  ShortDecimal number;
  const char* const stop = ReadShortDecimal(at, separator, number, kExactDigits - kShift);
  if (stop == nullptr) return nullptr;
  const std::size_t decimals = number.decimals;
  value = decimals >= kShift ? number.whole / kPowersOfTen[decimals - kShift]
                             : number.whole * kPowersOfTen[kShift - decimals];
  return stop;
}

/// Reads a fraction of 1 as percent: the number of `text`, as ParseDecimal takes it, times a hundred, rounded once.
/// A percentage that was written with its decimal point moved reads back to the same double. ParseShortDecimal<2> is its quick
/// half.
bool ParseFractionAsPercent(std::string_view text, double& percent, char separator = '.');

/// The other way: the shortest text of the fraction that reads back to `percent` by ParseFractionAsPercent.
std::string FractionText(double percent);

/// The shortest text that reads back to `value`, with an exponent where that is shorter: "0.011", "1e-06".
std::string ShortestText(double value);
/// `value` with so many decimals, 0 to 60, exactly rounded: "0.50", "-0.00", "nan".
std::string FixedDecimals(double value, int32_t decimals);
/// The same without the zeros, and the point, that it would end in. `decimals` is at least 1.
std::string TrimmedDecimals(double value, int32_t decimals);

}  // namespace vrx::io

#endif  // VRXIO_TEXT_DECIMAL_H_
