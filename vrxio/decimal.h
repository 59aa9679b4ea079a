// Decimal texts to doubles, exactly rounded and fast for the short numbers of measurement files.

#ifndef VRXIO_DECIMAL_H_
#define VRXIO_DECIMAL_H_

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

/// The quick half of ParseDecimal, for numbers without an exponent and with at most 15 digits: their digits
/// and the power of ten are doubles, so one division rounds them exactly. Reads from `at` up to the first
/// byte that is no part of such a number, which must exist, and returns its address; null when the text does
/// not begin with one or is not for this half. With `kShift` the number is taken times ten to that power, 0 to 2, rounded once.
template <std::size_t kShift = 0>
const char* ParseShortDecimal(const char* at, char separator, double& value) {
  static constexpr std::array<double, 16> kPowersOfTen{1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                       1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
  constexpr std::size_t kExactDigits = 15;
  const auto digit = [&at] { return static_cast<unsigned>(static_cast<unsigned char>(*at)) - '0'; };
  const bool negative = *at == '-';
  if (negative || *at == '+') ++at;
  const char* const first = at;
  uint64_t digits = 0;  // wraps when there are too many, and is not used then
  for (; digit() < 10; ++at) digits = 10 * digits + digit();
  auto count = static_cast<std::size_t>(at - first);
  std::size_t decimals = 0;
  if (*at == '.' || *at == separator) {
    const char* const point = at++;
    for (; digit() < 10; ++at) digits = 10 * digits + digit();
    decimals = static_cast<std::size_t>(at - point) - 1;
    count += decimals;
  }
  if (count == 0 || count > kExactDigits - kShift || *at == 'e' || *at == 'E') return nullptr;
  const auto whole = static_cast<double>(digits);
  const double magnitude =
      decimals >= kShift ? whole / kPowersOfTen[decimals - kShift] : whole * kPowersOfTen[kShift - decimals];
  value = negative ? -magnitude : magnitude;
  return at;
}

/// Reads a fraction of 1 as percent: the number of `text`, which takes a decimal point, times a hundred, rounded once.
/// A percentage that was written with its decimal point moved reads back to the same double. ParseShortDecimal<2> is its quick
/// half.
bool ParseFractionAsPercent(std::string_view text, double& percent);

/// The other way: the shortest text of the fraction that reads back to `percent` by ParseFractionAsPercent.
std::string FractionText(double percent);

}  // namespace vrx::io

#endif  // VRXIO_DECIMAL_H_
