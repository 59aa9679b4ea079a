#include <vrxmath/platform/wasm/missing_standard.h>

#if defined(_LIBCPP_VERSION) && _LIBCPP_VERSION < 14000
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>

// The C library beside it (musl) reads and writes decimals with all the digits that it takes, in the "C" locale, which is the only
// one there: strtod rounds once, and printf prints exact digits.
namespace {

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

const char* SkipDigits(const char* at, const char* last) {
  while (at != last && IsDigit(*at)) ++at;
  return at;
}

// The end of a decimal number without its sign, by the grammar of from_chars; `first` when there is none.
const char* EndOfDecimal(const char* first, const char* last) {
  const char* at = SkipDigits(first, last);
  bool hasDigits = at != first;
  if (at != last && *at == '.') {
    const char* const end = SkipDigits(at + 1, last);
    hasDigits |= end != at + 1;
    at = end;
  }
  if (!hasDigits) return first;
  if (at == last || (*at != 'e' && *at != 'E')) return at;
  const char* exponent = at + 1;
  if (exponent != last && (*exponent == '+' || *exponent == '-')) ++exponent;
  const char* const end = SkipDigits(exponent, last);
  return end == exponent ? at : end;
}

// The length of "inf", "infinity" or "nan" in any case; 0 for neither.
std::size_t LengthOfWord(const char* first, const char* last) {
  for (const std::string_view word : {"infinity", "inf", "nan"}) {
    const auto room = static_cast<std::size_t>(last - first);
    if (room >= word.size() && strncasecmp(first, word.data(), word.size()) == 0) return word.size();
  }
  return 0;
}

std::to_chars_result Put(std::string_view text, char* first, char* last) {
  if (last - first < static_cast<std::ptrdiff_t>(text.size())) return {last, std::errc::value_too_large};
  std::memcpy(first, text.data(), text.size());
  return {first + text.size(), {}};
}

// "d.ddde+xx" with as few digits as read back to the value, and of these the nearest to it.
std::string ShortestScientific(double value) {
  std::array<char, 40> text{};
  for (int digits = 0; digits <= 16; ++digits) {
    std::snprintf(text.data(), text.size(), "%.*e", digits, value);
    if (std::strtod(text.data(), nullptr) == value) break;
    // Below a power of two places are half as wide as above it: the nearest text may lie below the reach and the next one within.
    int exponent = 0;
    if (std::frexp(std::fabs(value), &exponent) != 0.5) continue;
    std::string next(text.data());
    const std::size_t end = next.find('e');
    std::size_t place = end - 1;
    while (place > 0 && (next[place] == '9' || next[place] == '.')) {
      if (next[place] == '9') next[place] = '0';
      --place;
    }
    if (!IsDigit(next[place]) || next[place] == '9') continue;
    ++next[place];
    if (std::strtod(next.c_str(), nullptr) == value) return next;
  }
  return text.data();
}

// The digits of a scientific text without its point, and the power of ten of the first.
struct Digits {
  std::string sign, digits;
  int power = 0;
};
Digits DigitsOf(const std::string& scientific) {
  Digits result;
  const std::size_t exponent = scientific.find('e');
  for (const char c : scientific.substr(0, exponent)) {
    if (c == '-') result.sign = "-";
    if (IsDigit(c)) result.digits += c;
  }
  result.power = std::atoi(scientific.c_str() + exponent + 1);
  return result;
}

// For a large whole number the exact digits, which are as many as the shortest ones with zeros.
std::string Fixed(const Digits& number, double value) {
  const int count = static_cast<int>(number.digits.size());
  if (number.power >= count) {
    std::array<char, 400> text{};
    std::snprintf(text.data(), text.size(), "%.0f", value);
    return text.data();
  }
  if (number.power < 0) {
    return number.sign + "0." + std::string(static_cast<std::size_t>(-number.power - 1), '0') + number.digits;
  }
  const auto whole = static_cast<std::size_t>(number.power) + 1;
  std::string text = number.sign + number.digits.substr(0, whole);
  if (number.digits.size() > whole) text += "." + number.digits.substr(whole);
  return text;
}

const char* NotFinite(double value) {
  if (std::isnan(value)) return std::signbit(value) ? "-nan" : "nan";
  return value < 0 ? "-inf" : "inf";
}

}  // namespace

namespace std {

from_chars_result from_chars(const char* first, const char* last, double& value, chars_format) {
  const char* const start = first != last && *first == '-' ? first + 1 : first;
  if (const size_t word = LengthOfWord(start, last); word != 0) {
    const double number =
        (*start | 0x20) == 'n' ? numeric_limits<double>::quiet_NaN() : numeric_limits<double>::infinity();
    value = start != first ? -number : number;
    return {start + word, {}};
  }
  const char* const end = EndOfDecimal(start, last);
  if (end == start) return {first, errc::invalid_argument};
  const string text(first, end);
  const double number = strtod(text.c_str(), nullptr);
  const bool isZero = text.substr(0, text.find_first_of("eE")).find_first_of("123456789") == string::npos;
  if (isinf(number) || (number == 0 && !isZero)) return {end, errc::result_out_of_range};
  value = number;
  return {end, {}};
}

to_chars_result to_chars(char* first, char* last, double value) {
  if (!isfinite(value)) return Put(NotFinite(value), first, last);
  const string scientific = ShortestScientific(value);
  const string fixed = Fixed(DigitsOf(scientific), value);
  return Put(fixed.size() <= scientific.size() ? fixed : scientific, first, last);
}

to_chars_result to_chars(char* first, char* last, double value, chars_format format) {
  if (!isfinite(value)) return Put(NotFinite(value), first, last);
  const string scientific = ShortestScientific(value);
  if (format == chars_format::scientific) return Put(scientific, first, last);
  if (format == chars_format::fixed) return Put(Fixed(DigitsOf(scientific), value), first, last);
  return to_chars(first, last, value);
}

to_chars_result to_chars(char* first, char* last, double value, chars_format format, int precision) {
  if (!isfinite(value)) return Put(NotFinite(value), first, last);
  const char* const pattern = format == chars_format::scientific ? "%.*e"
                              : format == chars_format::fixed    ? "%.*f"
                                                                 : "%.*g";
  const int size = snprintf(nullptr, 0, pattern, precision, value);
  string text(static_cast<size_t>(size), '\0');
  snprintf(text.data(), text.size() + 1, pattern, precision, value);
  return Put(text, first, last);
}

}  // namespace std

#endif
