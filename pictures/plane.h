// Colour differences about their standard: the plane of the two chromatic components, and the lightness on a strip.

#ifndef PICTURES_PLANE_H_
#define PICTURES_PLANE_H_

#include <vector>

#include <vrxmath/colorimetry/color_records.h>
#include <vrxmath/tolerance/box_tolerance.h>
#include <vrxmath/tolerance/ellipse_tolerance.h>

#include "pictures/shapes.h"

namespace vrx::pictures {

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
  bool areJudged = true;  ///< whether the trials have verdicts
  double reach = 0;       ///< how far the axes reach at least
};

/// The lightness beside the plane.
struct LightnessBar {
  CString heading;
  Interval limit{kUnset, kUnset}, warning{kUnset, kUnset};
  std::vector<TrialPoint> trials;
  bool areJudged = true;
  double reach = 0;
};

/// The corners of a box, closed.
[[nodiscard]] std::vector<CDblPoint> BoxOutline(Interval x, Interval y);
/// The part of the a*-b* plane, as differences from the standard, that limits of dC* and dH* leave open, closed.
[[nodiscard]] std::vector<CDblPoint> ChromaHueOutline(const CLabValues& standard, Interval chroma,
                                                      Interval hue);
/// The section of an ellipsoid in the a*-b* plane, closed, scaled about its centre.
[[nodiscard]] std::vector<CDblPoint> EllipseOutline(const CEllipseData& ellipse, double factor);
/// The lightness that an ellipsoid holds, scaled about its centre.
[[nodiscard]] Interval EllipseLightness(const CEllipseData& ellipse, double factor);

/// Sets the outlines to a box's, in dimensions 1 and 2, or to an ellipsoid's section; the warning band begins at the
/// outline scaled by `warningFactor` about its centre.
void SetOutlines(DifferencePlane& plane, const CBoxTolData& box, double warningFactor);
void SetOutlines(DifferencePlane& plane, const CEllipseData& ellipse, double warningFactor);

/// True for a point inside a closed outline or on it.
[[nodiscard]] bool IsInside(const std::vector<CDblPoint>& outline, CDblPoint point);
/// What the outlines of a plane say of a point of it, and the limits of a strip of a lightness. Where there are no limits
/// everything passes.
[[nodiscard]] Verdict VerdictInPlane(const DifferencePlane& plane, CDblPoint point);
[[nodiscard]] Verdict VerdictOfLightness(const LightnessBar& bar, double lightness);

/// One scale on both axes, zero in the middle, where a cross marks the standard. Trials beyond the axes cannot be: the
/// axes reach as far as the farthest. Every shown trial is a target.
void DrawDifferencePlane(Picture& picture, Rect box, const DifferencePlane& plane, const Look& look);

/// A vertical strip with zero in the middle: lines at the limits, a mark for each trial, which is a target.
void DrawLightnessBar(Picture& picture, Rect box, const LightnessBar& bar, const Look& look);

/// Both side by side, on one scale.
void DrawPlaneAndLightness(Picture& picture, Rect box, DifferencePlane plane, const LightnessBar& bar,
                           const Look& look);

}  // namespace vrx::pictures

#endif  // PICTURES_PLANE_H_
