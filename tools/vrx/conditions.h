// The viewing conditions and the difference systems as a user names them on the command line.

#ifndef TOOLS_VRX_CONDITIONS_H_
#define TOOLS_VRX_CONDITIONS_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vrx::tool {

/// Illuminants that have weighting tables, 0 to 25.
inline constexpr int32_t kIlluminants = 26;

/// An illuminant by its code, such as "D65" in any case, or by its number. Throws InputError.
int32_t ParseIlluminant(std::string_view text);

/// The same for a list. Throws InputError for an empty list and when an illuminant is named twice.
std::vector<int32_t> ParseIlluminants(const std::vector<std::string>& texts);

/// The code of an illuminant, such as "D65", and its description.
std::string IlluminantCode(int32_t illuminant);
std::string IlluminantDescription(int32_t illuminant);

/// The illuminants in the order in which they are offered to a user.
std::vector<int32_t> IlluminantsInDisplayOrder();

/// Observer 0 for "2" (CIE 1931), 1 for "10" (CIE 1964). Throws InputError.
int32_t ParseObserver(std::string_view text);

/// Degrees of an observer, 2 or 10.
inline int32_t ObserverDegrees(int32_t observer) {
  return observer == 1 ? 10 : 2;
}

/// The name of an observer as it is shown: 2 or 10 and a degree sign.
std::string ObserverName(int32_t observer);

/// Whole numbers of at most 9 digits; -1 for anything else.
int32_t ParseWholeNumber(std::string_view text);

/// A finite number in the notation of the C locale, all of `text`. Throws InputError; `what` says what it was
/// meant for.
double ParseNumber(std::string_view text, std::string_view what);

/// True when two ASCII texts are the same apart from case.
bool EqualsIgnoringCase(std::string_view a, std::string_view b);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_CONDITIONS_H_
