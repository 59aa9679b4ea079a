#include <vrxio/decimal.h>

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

}  // namespace vrx::io
