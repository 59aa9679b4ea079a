// Pictures of colours and of colour differences: swatches, the plane of the chromatic components, the bar of lightness.
//
// Each is a structure of data and one function that draws it into a rectangle.

#ifndef CONTROLS_LAYOUT_COLOR_PICTURES_H_
#define CONTROLS_LAYOUT_COLOR_PICTURES_H_

#include <cstdint>
#include <vector>

#include <vrxmath/colorimetry/color_records.h>
#include <vrxmath/colorimetry/illuminants.h>
#include <vrxmath/tolerance/box_tolerance.h>
#include <vrxmath/tolerance/ellipse_tolerance.h>

#include "controls/layout/shapes.h"

namespace vrx::controls {

/// A colour as the display shows it.
struct Swatch {
  uint32_t color = 0xC0C0C0;  ///< 0x00BBGGRR
  bool inGamut = true;        ///< whether the display can show it
};

/// The display colour of a sample under an illuminant and observer (XyzToDisplayRgb).
[[nodiscard]] Swatch SwatchOf(const CTrisValues& xyz, vrxIlluminant illuminant, int32_t observer);

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

/// A trial as a point: differences of the two chromatic components and of lightness.
struct TrialPoint {
  double x = 0, y = 0, lightness = 0;
  Verdict verdict = kPass;
  CString name;
};

/// The plane of the chromatic components about the standard.
struct DifferencePlane {
  CString xHeading, yHeading;
  std::vector<CDblPoint> limit, warning;  ///< closed outlines; empty: none
  std::vector<TrialPoint> trials;
  double reach = 0;  ///< how far the axes reach at least
};

/// Sets the outlines to a box's, in dimensions 1 and 2, or to an ellipsoid's section; the warning band begins at the
/// outline scaled by `warningFactor` about its centre.
void SetOutlines(DifferencePlane& plane, const CBoxTolData& box, double warningFactor);
void SetOutlines(DifferencePlane& plane, const CEllipseData& ellipse, double warningFactor);

/// One scale on both axes, zero in the middle, where a cross marks the standard. Trials beyond the axes cannot be: the
/// axes reach as far as the farthest. Every shown trial is a target.
void DrawDifferencePlane(Picture& picture, Rect box, const DifferencePlane& plane, const Look& look);

/// The lightness beside the plane.
struct LightnessBar {
  CString heading;
  Interval limit{kUnset, kUnset}, warning{kUnset, kUnset};
  std::vector<TrialPoint> trials;
  double reach = 0;
};

/// A vertical bar with zero in the middle: lines at the limits, a mark for each trial, which is a target.
void DrawLightnessBar(Picture& picture, Rect box, const LightnessBar& bar, const Look& look);

}  // namespace vrx::controls

#endif  // CONTROLS_LAYOUT_COLOR_PICTURES_H_
