// Comparison without case, for names that people type: keys and values of the settings.

#ifndef VRXMATH_PLATFORM_CASE_FOLDING_H_
#define VRXMATH_PLATFORM_CASE_FOLDING_H_

#include <vrxmath/export.h>
#include <vrxmath/platform/wide_string.h>

namespace vrx {

/// The capital of a small letter of the Latin, Greek, Cyrillic and Armenian alphabets (one unit for one
/// unit, as Unicode maps them); any other unit itself. The same on every system and in every locale.
[[nodiscard]] VRX_API WideChar ToCapital(WideChar unit);

/// True when the texts are the same but for the case of letters.
[[nodiscard]] VRX_API bool EqualWithoutCase(WideView a, WideView b);

}  // namespace vrx

#endif  // VRXMATH_PLATFORM_CASE_FOLDING_H_
