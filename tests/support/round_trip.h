// Random values through text and back, shared by the quick and the exhaustive test.

#ifndef TESTS_SUPPORT_ROUND_TRIP_H_
#define TESTS_SUPPORT_ROUND_TRIP_H_

#include <cmath>
#include <cstdint>
#include <random>

#include <vrxmath/foundation/decimal_text.h>
#include <vrxmath/support/number_text.h>

namespace vrx {

/// True when the text of `value` reads back as the value rounded to the decimals, and writes the same text
/// again. Where the last decimal is close to the last bit, the value read may be the next double.
inline bool RoundTrips(double value, int32_t decimals) {
  const CValueRange range = {-1e13, 1e13, 1.0, std::pow(10.0, decimals), decimals};
  const double rounded = RoundToScale(value, range.scale);
  const CString text = NumberText(value, range);
  const ParsedNumber parsed = ParseNumber(text, range);
  const double lastBit = std::fabs(value) * 0x1p-52;
  const bool isFine = std::fabs(value) * range.scale < 0x1p51;
  return parsed.error == NumberError::kNone && (parsed.value == rounded || !isFine) &&
         std::fabs(parsed.value - value) <= 0.5 / range.scale + lastBit &&
         NumberText(parsed.value, range) == text;
}

/// Counts failures among values of all magnitudes from 1e-9 to 1e12, of both signs, with 0 to 15 decimals.
inline int64_t CountRoundTripFailures(int64_t count, uint64_t seed) {
  std::mt19937_64 random(seed);
  int64_t failures = 0;
  for (int64_t i = 0; i < count; ++i) {
    const auto decimals = static_cast<int32_t>(random() % (kMaxDecimals + 1));
    const double mantissa = static_cast<double>(random() >> 11) * 0x1p-53;
    const double sign = random() % 2 == 0 ? 1.0 : -1.0;
    const double value = sign * mantissa * std::pow(10.0, static_cast<double>(random() % 22) - 9.0);
    // A value that rounds to the unset one has no text.
    const bool isUnset = IsUnset(value) || IsUnset(RoundToScale(value, std::pow(10.0, decimals)));
    if (!isUnset && !RoundTrips(value, decimals)) ++failures;
  }
  return failures;
}

}  // namespace vrx

#endif  // TESTS_SUPPORT_ROUND_TRIP_H_
