// Display colour: 8-bit red, green and blue for swatches on a screen.

#ifndef VRXMATH_COLORIMETRY_DISPLAY_COLOR_H_
#define VRXMATH_COLORIMETRY_DISPLAY_COLOR_H_

#include <cstdint>

#include <vrxmath/colorimetry/color_records.h>
#include <vrxmath/colorimetry/display_formulas.h>
#include <vrxmath/colorimetry/illuminants.h>
#include <vrxmath/export.h>

namespace vrx {

/// The display colour of tristimulus values seen under an illuminant and observer. The white of the pair is
/// the white of the screen: (255, 255, 255) whatever the illuminant, since an observer adapted to the lamp
/// sees it so. There is no other chromatic adaptation.
/// Out:     0 to 255 each, rounded down; 192, 192, 192 for unset values and for a pair without a weighting
///          table. True when the display can show the colour: when no channel had to be clipped by more than
///          half a step of the 8 bits.
/// Formula: linear channels from the display primaries scaled to the white, then the curve of IEC 61966-2-1
///          with its break at 0.00304 instead of 0.0031308, where the two pieces differ by 1e-5. The gamma
///          of the primaries takes no part.
/// Edges:   primaries that do not span a plane give meaningless colours, NaN counts as 0.
/// State:   reads the display primaries. Safe on any number of threads while nobody sets them.
VRX_API bool XyzToDisplayRgb(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz, int32_t& red,
                             int32_t& green, int32_t& blue);

/// The conversion of an illuminant and observer from tristimulus values to linear channels under the present primaries.
/// False, after the index message, when the pair has no weighting table.
[[nodiscard]] VRX_API bool FindDisplayMatrix(vrxIlluminant illuminant, int32_t observer,
                                             DisplayMatrix& matrix);

/// How many doubles describe the display primaries: red x, red y, green x, green y, blue x, blue y, gamma.
inline constexpr int32_t kDisplaySettings = 7;

/// Fills `settings` with the present primaries and gamma; it gets 7 elements.
VRX_API void GetDisplayPrimaries(CDoubleArray1& settings);

/// Sets the primaries and gamma of the process; z = 1 - x - y of each primary. No value is checked. Fewer
/// than 7 elements show the index message and change nothing. The gamma is kept for the host only.
VRX_API void SetDisplayPrimaries(const CDoubleArray1& settings);

/// Goes back to the primaries of IEC 61966-2-1 (ITU-R BT.709) and gamma 2.2, which hold from the start.
VRX_API void ResetDisplayPrimaries();

}  // namespace vrx

#endif  // VRXMATH_COLORIMETRY_DISPLAY_COLOR_H_
