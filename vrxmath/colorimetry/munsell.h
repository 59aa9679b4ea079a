// Munsell notation: hue, value and chroma of a colour under illuminant C and 2 degrees by the renotation data, and back.
//
// Between the chips of the renotation the chromaticity is interpolated by straight lines: in chroma, then in hue, then in value.
// Beyond them the last two chromas go on in a straight line; such results are flagged.

#ifndef VRXMATH_COLORIMETRY_MUNSELL_H_
#define VRXMATH_COLORIMETRY_MUNSELL_H_

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include <vrxmath/colorimetry/values.h>
#include <vrxmath/export.h>
#include <vrxmath/foundation/numbers.h>

namespace vrx {

/// A Munsell notation in numbers.
struct MunsellColor {
  /// Above 0 and up to 100: 5 is 5R, 10 is 10R, 15 is 5YR, and so on through Y, GY, G, BG, B, PB and P to 100, which is 10RP.
  /// 0 for a neutral.
  double hue = kUnset;
  double value = kUnset;   ///< 0 (black) to 10 (white)
  double chroma = kUnset;  ///< 0 for a neutral
  /// True where chips that nobody made took part: those that the authors of the renotation extrapolated, and what lies
  /// beyond them or below value 1.
  bool isExtrapolated = false;
};

/// Luminance factor of a value, 0 to 100: the polynomial of ASTM D1535-08, whose white is the perfect diffuser.
[[nodiscard]] VRX_API double LuminanceOfMunsellValue(double value);
/// The value of a luminance factor, 0 to 10; unset outside 0 to 100.
[[nodiscard]] VRX_API double MunsellValueOfLuminance(double Y);

/// The notation of a colour under C and 2 degrees. Unset for unset or impossible values, for Y outside 0 to 100, and for a
/// chromaticity farther than chroma 60.
[[nodiscard]] VRX_API MunsellColor MunsellFromXyz(const Xyz& xyz);
/// The colour under C and 2 degrees; sets `isExtrapolated` of the notation. Unset for a hue, value or chroma out of range.
[[nodiscard]] VRX_API Xyz XyzFromMunsell(MunsellColor& notation);

/// "7.5R 4.2/10.1", "N 5.3/" for a chroma that is 0 in the shown digits.
[[nodiscard]] VRX_API std::string MunsellText(const MunsellColor& notation);
/// The notation that a text gives: "5R 4/10", "2.5 yr 6 / 4", "N 5", "N5/"; none for another text.
[[nodiscard]] VRX_API std::optional<MunsellColor> ParseMunsell(std::string_view text);

}  // namespace vrx

#endif  // VRXMATH_COLORIMETRY_MUNSELL_H_
