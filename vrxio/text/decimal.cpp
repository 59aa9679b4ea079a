#include <vrxio/text/decimal.h>

#include <algorithm>
#include <charconv>
#include <string>

namespace vrx::io {

bool ParseDecimal(std::string_view text, char separator, double& value) {
  if (!text.empty() && text.front() == '+') {
    text.remove_prefix(1);
    if (!text.empty() && text.front() == '-') return false;
  }
  std::string plain(text);
  if (separator != '.') {
    // With a comma for the point, a text that has both is a number with thousands separators.
    if (plain.find('.') != std::string::npos && plain.find(separator) != std::string::npos) return false;
    std::ranges::replace(plain, separator, '.');
  }
  const std::size_t first = plain.find_first_not_of('-');
  if (first == std::string::npos || std::string_view("0123456789.").find(plain[first]) == std::string::npos) {
    return false;
  }
  const char* const end = plain.data() + plain.size();
  const auto [stop, error] = std::from_chars(plain.data(), end, value);
  return error == std::errc() && stop == end;
}

bool ParseFractionAsPercent(std::string_view text, double& percent, char separator) {
  const std::size_t exponent = text.find_first_of("eE");
  int32_t power = 0;
  if (exponent != std::string_view::npos) {
    std::string_view digits = text.substr(exponent + 1);
    if (digits.starts_with('+')) digits.remove_prefix(1);
    const auto [stop, error] = std::from_chars(digits.data(), digits.data() + digits.size(), power);
    if (error != std::errc() || stop != digits.data() + digits.size()) return false;
    if (power < -1000 || power > 1000) return false;
  }
  std::string moved(text.substr(0, exponent));
  moved += 'e';
  moved += std::to_string(power + 2);
  return ParseDecimal(moved, separator, percent);
}

std::string FractionText(double percent) {
  // The shortest digits, with the power of ten lowered by two.
  char text[40];
  char* const end = std::to_chars(text, text + sizeof text, percent, std::chars_format::scientific).ptr;
  const std::string_view shortest(text, static_cast<std::size_t>(end - text));
  const std::size_t exponent = shortest.find('e');
  int32_t power = 0;
  const char* digits = shortest.data() + exponent + 1;
  if (*digits == '+') ++digits;
  std::from_chars(digits, end, power);
  power -= 2;
  std::string mantissa(shortest.substr(0, exponent));
  if (power < -6 || power > 3) return mantissa + "e" + std::to_string(power);
  const bool isNegative = mantissa.starts_with('-');
  if (isNegative) mantissa.erase(0, 1);
  if (const std::size_t point = mantissa.find('.'); point != std::string::npos) mantissa.erase(point, 1);
  std::string number;
  if (power < 0) {
    number = "0." + std::string(static_cast<std::size_t>(-power - 1), '0') + mantissa;
  } else {
    const auto whole = static_cast<std::size_t>(power) + 1;
    if (mantissa.size() < whole) mantissa.append(whole - mantissa.size(), '0');
    number = mantissa.substr(0, whole);
    if (mantissa.size() > whole) number += "." + mantissa.substr(whole);
  }
  return (isNegative ? "-" : "") + number;
}

std::string ShortestText(double value) {
  char text[32];
  return {text, std::to_chars(text, text + sizeof text, value).ptr};
}

std::string FixedDecimals(double value, int32_t decimals) {
  char text[400];  // the largest double has 309 digits
  return {text, std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, decimals).ptr};
}

std::string TrimmedDecimals(double value, int32_t decimals) {
  std::string digits = FixedDecimals(value, decimals);
  digits.erase(digits.find_last_not_of('0') + 1);
  if (digits.ends_with('.')) digits.pop_back();
  return digits;
}

}  // namespace vrx::io
