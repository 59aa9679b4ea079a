// The pictures of a report: those of pictures/ in the sizes of a page, with a caption and a summary for those who cannot see them.

#ifndef TOOLS_VRX_REPORT_CHARTS_H_
#define TOOLS_VRX_REPORT_CHARTS_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <vrxmath/colorimetry/color_records.h>

#include "pictures/control_chart.h"
#include "pictures/curves.h"
#include "pictures/plane.h"
#include "pictures/totals.h"

namespace vrx::tool {

/// A picture with what a page says of it.
struct Chart {
  std::string title;    ///< a caption
  std::string summary;  ///< what it shows, for those who cannot see it
  std::string kind;     ///< for a script that marks a value
  int32_t width = 0;
  int32_t height = 0;
  pictures::Picture picture;

  /// "KIND|origin of x|pixels per unit of x|origin of y|pixels per unit of y", and further four for further parts.
  std::string Scales() const;
};

/// Text of a file or a message as it stands in a picture: characters that are not shown become blanks.
CString ForPicture(std::string_view utf8);

/// Reflectances in percent on the library's grid, in the precision of a picture.
using PlottedCurve = std::array<float, kWavelengths>;
PlottedCurve Plotted(const CReflData& curve);

/// The samples of the grid that were measured.
struct MeasuredRange {
  int32_t first = 0, last = kWavelengths - 1;
  /// The wavelengths that were measured, in nm.
  void Set(double firstWavelength, double lastWavelength);
};

/// Trials' curves and their differences from the standard's.
struct CurvesChart {
  std::string title;
  const PlottedCurve* standard = nullptr;   ///< null when there is none: then without differences
  std::vector<const PlottedCurve*> trials;  ///< the most important ones first
  const PlottedCurve* lower = nullptr;      ///< with `upper`, an area behind the lines
  const PlottedCurve* upper = nullptr;
  MeasuredRange range;
  bool areRecipes = false;  ///< the standard is a target, and the trials are its recipes
};
Chart MakeChart(const CurvesChart& data);

/// The plane of the two chromatic components, and the lightness on a strip of the same scale, if it has a heading.
struct PlaneChart {
  std::string title;
  pictures::DifferencePlane plane;
  pictures::LightnessBar lightness;
};
Chart MakeChart(const PlaneChart& data);

/// Total differences in the order of the trials, one strip for each illuminant.
struct TrendChart {
  std::string title;
  std::vector<pictures::TrendData> strips;
};
Chart MakeChart(const TrendChart& data);

/// Charts of individuals, one strip for each series.
struct ControlChart {
  std::string title;
  std::vector<pictures::ControlStrip> strips;
};
Chart MakeChart(const ControlChart& data);

struct HistogramChart {
  std::string title;
  pictures::HistogramData histogram;
};
Chart MakeChart(const HistogramChart& data);

struct ProfileChart {
  std::string title;
  pictures::ProfileData profile;
};
Chart MakeChart(const ProfileChart& data);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_REPORT_CHARTS_H_
