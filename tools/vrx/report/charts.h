// The pictures of a report: curves, the plane of the chromatic components with the lightness beside it, the trend and the
// histogram of the total difference, and its profile over angles or illuminants.
//
// Verdicts have shapes of their own, a dot for a pass, a triangle for a warning and a cross for a fail, so that a
// picture says in black and white what it says in colour. Unset and non-finite values are left out.

#ifndef TOOLS_VRX_REPORT_CHARTS_H_
#define TOOLS_VRX_REPORT_CHARTS_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <vrxmath/colorimetry/color_records.h>
#include <vrxmath/tolerance/box_tolerance.h>

#include "tools/vrx/report/picture.h"

namespace vrx::tool {

/// A picture that can be painted in any format.
struct Chart {
  std::string title;    ///< a caption
  std::string summary;  ///< what it shows, for those who cannot see it
  int32_t width = 0;
  int32_t height = 0;
  std::string
      scales;  ///< "KIND|origin of x|pixels per unit of x|origin of y|pixels per unit of y", for a script that marks
               ///< a value; further pairs for a second part
  std::function<void(Picture&)> paint;
};

/// Reflectances in percent on the library's grid, in the precision of a picture.
using PlottedCurve = std::array<float, kWavelengths>;
PlottedCurve Plotted(const CReflData& curve);

/// Trials' curves and their differences from the standard's.
struct CurvesChart {
  std::string title;
  const PlottedCurve* standard = nullptr;      ///< null when there is none: then without differences
  std::vector<const PlottedCurve*> trials;     ///< the most important ones first
  int32_t first = 0, last = kWavelengths - 1;  ///< the samples that were measured
  bool areRecipes = false;                     ///< the standard is a target, and the trials are its recipes

  /// The wavelengths that were measured, in nm.
  void SetMeasured(double firstWavelength, double lastWavelength);
};
Chart MakeChart(const CurvesChart& data);

/// A trial as a point.
struct PlottedDifference {
  double x = 0, y = 0, lightness = 0;
  Verdict verdict = kPass;
};

/// The plane of the two chromatic components, and the lightness on a bar of the same scale, if it has a heading.
struct PlaneChart {
  std::string title;
  std::string xHeading, yHeading, lightnessHeading;
  std::vector<PlanePoint> limit, warning;  ///< outlines; empty when there are none
  Interval lightness{kUnset, kUnset}, lightnessWarning{kUnset, kUnset};
  std::vector<PlottedDifference> trials;
  bool areJudged = true;  ///< whether the trials have verdicts
  double reach = 0;       ///< how far the axes reach at least, so that several have the same ones
};
Chart MakeChart(const PlaneChart& data);

/// A total difference and what it is graded by; unset limits when there are none.
struct GradedTotal {
  double value = kUnset;
  double limit = kUnset, warning = kUnset;
  Verdict verdict = kPass;
};

/// Total differences in the order of the trials, one strip for each illuminant.
struct TrendChart {
  std::string title;
  std::string heading;  ///< of the total difference
  std::vector<std::string> names;
  std::vector<std::vector<GradedTotal>> series;
};
Chart MakeChart(const TrendChart& data);

/// How often total differences of each size occur.
struct HistogramChart {
  std::string title;
  std::string heading;
  std::vector<GradedTotal> totals;
  double upper = 0;  ///< where the axis ends at the earliest, so that several have the same one
};
Chart MakeChart(const HistogramChart& data);

/// Total differences of trials over positions, such as angles or illuminants.
struct ProfileChart {
  std::string title;
  std::string heading;
  std::string positionHeading;
  std::vector<std::string> names;  ///< of the positions
  std::vector<double> positions;   ///< ascending
  std::vector<std::vector<GradedTotal>>
      trials;  ///< a total per position, unset where there is none; the worst first
};
Chart MakeChart(const ProfileChart& data);

/// Values between these lie inside the limits; scaled by a factor about the standard's hue and chroma: the part of the
/// a*-b* plane, as differences from the standard, that limits of dC* and dH* leave open.
std::vector<PlanePoint> ChromaHueOutline(const CLabValues& standard, Interval chroma, Interval hue);
/// The corners of a box, closed.
std::vector<PlanePoint> BoxOutline(Interval x, Interval y);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_REPORT_CHARTS_H_
