#include "tools/vrx/conditions.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include <vrxmath/foundation/string_numbers.h>
#include <vrxmath/platform/wide_string.h>

#include "tools/vrx/command.h"

namespace vrx::tool {

namespace {

std::string Quoted(std::string_view text) {
  return "\"" + std::string(text) + "\"";
}

// The text of an illuminant, "code|description".
std::string IlluminantText(int32_t illuminant) {
  return CString::Load(kStringIlluminant + static_cast<uint32_t>(illuminant)).ToUtf8();
}

}  // namespace

bool EqualsIgnoringCase(std::string_view a, std::string_view b) {
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
  return std::ranges::equal(a, b, {}, lower, lower);
}

int32_t ParseWholeNumber(std::string_view text) {
  int32_t value = -1;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  const bool whole = error == std::errc() && end == text.data() + text.size() && text.size() <= 9;
  return whole && value >= 0 ? value : -1;
}

double ParseNumber(std::string_view text, std::string_view what) {
  double value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(value)) {
    throw InputError(Quoted(text) + " is not a number (" + std::string(what) + ")");
  }
  return value;
}

std::string IlluminantCode(int32_t illuminant) {
  const std::string text = IlluminantText(illuminant);
  return text.substr(0, text.find('|'));
}

std::string IlluminantDescription(int32_t illuminant) {
  const std::string text = IlluminantText(illuminant);
  return text.substr(text.find('|') + 1);
}

int32_t ParseIlluminant(std::string_view text) {
  const int32_t number = ParseWholeNumber(text);
  for (int32_t i = 0; i < kIlluminants; ++i) {
    if (i == number || EqualsIgnoringCase(text, IlluminantCode(i))) return i;
  }
  throw InputError("unknown illuminant " + Quoted(text) + "; vrx tables lists them");
}

std::vector<int32_t> ParseIlluminants(const std::vector<std::string>& texts) {
  std::vector<int32_t> illuminants;
  for (const std::string& text : texts) {
    const int32_t illuminant = ParseIlluminant(text);
    if (std::ranges::find(illuminants, illuminant) != illuminants.end()) {
      throw InputError("illuminant " + IlluminantCode(illuminant) + " is named twice");
    }
    illuminants.push_back(illuminant);
  }
  if (illuminants.empty()) throw InputError("no illuminant is named");
  return illuminants;
}

std::vector<int32_t> IlluminantsInDisplayOrder() {
  std::vector<int32_t> order;
  const std::string list = CString::Load(kStringIlluminantOrder).ToUtf8();
  for (std::size_t begin = 0; begin < list.size();) {
    const std::size_t end = std::min(list.find(',', begin), list.size());
    order.push_back(ParseIlluminant(std::string_view(list).substr(begin, end - begin)));
    begin = end + 1;
  }
  return order;
}

int32_t ParseObserver(std::string_view text) {
  if (text == "2") return 0;
  if (text == "10") return 1;
  throw InputError("unknown observer " + Quoted(text) + "; it is 2 or 10 (degrees)");
}

std::string ObserverName(int32_t observer) {
  return CString::Load(kStringObserver + static_cast<uint32_t>(observer)).ToUtf8();
}

}  // namespace vrx::tool
