// Colours as the display shows them: a standard beside its trial.

#ifndef PICTURES_SWATCHES_H_
#define PICTURES_SWATCHES_H_

#include <cstdint>

#include <vrxmath/colorimetry/color_records.h>
#include <vrxmath/colorimetry/illuminants.h>
#include <vrxmath/colorimetry/values.h>

#include "pictures/shapes.h"

namespace vrx::pictures {

/// A colour as the display shows it.
struct Swatch {
  uint32_t color = 0xC0C0C0;  ///< 0x00BBGGRR
  bool inGamut = true;        ///< whether the display can show it
};

/// The display colour of a sample under an illuminant and observer (XyzToDisplayRgb).
[[nodiscard]] Swatch SwatchOf(const CTrisValues& xyz, vrxIlluminant illuminant, int32_t observer);
[[nodiscard]] Swatch SwatchOf(const Xyz& xyz, vrxIlluminant illuminant, int32_t observer);

/// A standard beside its trial.
struct SwatchPair {
  Swatch standard, trial;
  bool hasTrial = true;
  bool framed = false;  ///< the trial within the standard, instead of touching it in a vertical line
  CString standardName, trialName;
};

/// Fills `box` with the two colours, without a gap between them; the names stand on them. A corner of a colour that the
/// display cannot show is cut off by a triangle in black and white.
void DrawSwatchPair(Picture& picture, Rect box, const SwatchPair& pair, const Look& look);

}  // namespace vrx::pictures

#endif  // PICTURES_SWATCHES_H_
