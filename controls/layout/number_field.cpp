#include "controls/layout/number_field.h"

#include <vrxmath/support/number_text.h>

namespace vrx::controls {
namespace {

constexpr WideView kWhite = u" \t\r\n\u00A0\u202F";

WideView Trimmed(WideView text) {
  const std::size_t first = text.find_first_not_of(kWhite);
  if (first == WideView::npos) return {};
  return text.substr(first, text.find_last_not_of(kWhite) - first + 1);
}

}  // namespace

bool MayBecomeNumber(WideView text, const CValueRange& range) {
  const WideView number = Trimmed(text);
  if (number.empty()) return true;
  const bool isNegative = number[0] == u'-' || number[0] == u'\u2212';
  if (isNegative && range.lower >= 0) return false;
  const ParsedNumber parsed = ParseNumber(number, range);
  if (parsed.error != NumberError::kNotANumber) return true;
  // A zero behind it: what it lacks are digits.
  CString longer(number);
  longer += u'0';
  return ParseNumber(longer, range).error != NumberError::kNotANumber;
}

std::optional<double> PastedNumber(WideView text, const CValueRange& range, WideView unit) {
  WideView number = Trimmed(text);
  if (!unit.empty() && number.ends_with(unit))
    number = Trimmed(number.substr(0, number.size() - unit.size()));
  if (number.empty()) return std::nullopt;
  const ParsedNumber parsed = ParseNumber(number, range);
  if (parsed.error != NumberError::kNone) return std::nullopt;
  return parsed.value;
}

int32_t StepsWhenHeld(int32_t repeats) {
  return repeats < 10 ? 1 : repeats < 30 ? 5 : 20;
}

int32_t WheelSteps(int32_t delta, int32_t& rest) {
  constexpr int32_t kNotch = 120;
  if ((delta < 0) != (rest < 0)) rest = 0;  // the wheel turned back
  const int32_t sum = rest + delta;
  rest = sum % kNotch;
  return sum / kNotch;
}

int32_t NextEnabledTab(std::span<const uint8_t> enabled, int32_t from, int32_t step, bool around) {
  const auto count = static_cast<int32_t>(enabled.size());
  for (int32_t tries = 1; tries <= count; ++tries) {
    int32_t tab = from + step * tries;
    if (around) tab = (tab % count + count) % count;
    if (tab < 0 || tab >= count) return -1;
    if (enabled[static_cast<std::size_t>(tab)] != 0) return tab;
  }
  return -1;
}

}  // namespace vrx::controls
