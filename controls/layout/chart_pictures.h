// Charts of samples: spectral curves with their difference, values over measuring angles, the trend of a series, and the
// progress of work; the place of a picture within its frame.

#ifndef CONTROLS_LAYOUT_CHART_PICTURES_H_
#define CONTROLS_LAYOUT_CHART_PICTURES_H_

#include <cstdint>
#include <vector>

#include "controls/layout/plot_picture.h"

namespace vrx::controls {

/// Curves over wavelengths: the standard first, then its trials. Differences stand below, where asked for and possible.
struct CurvesData {
  double first = 360, step = 10;            ///< nm
  std::vector<std::vector<double>> curves;  ///< reflectance in percent; NaN or unset: not measured
  bool withDifference = true;
};
/// The lines of the reflectances, and those of the differences of the trials from the standard.
[[nodiscard]] std::vector<CDblPolyline> CurveLines(const CurvesData& data);
[[nodiscard]] std::vector<CDblPolyline> CurveDifferences(const CurvesData& data);
/// Targets of the reflectances are numbered by their line, those of the differences by the count of curves + their line.
void DrawCurves(Picture& picture, Rect box, const CurvesData& data, const Look& look);

/// Values of series over angles, as of a multi-angle instrument, against a limit per angle.
struct AnglesData {
  CString heading;                          ///< of the values
  std::vector<double> angles;               ///< degrees, ascending
  std::vector<std::vector<double>> series;  ///< a value per angle
  std::vector<double> limits;               ///< per angle; empty: none
  double warningFactor = 1;                 ///< fraction of the limit where the warning band begins; 1: none
};
/// The lines of the series, with verdicts where there are limits, then the limit, then the beginning of its warning band.
[[nodiscard]] std::vector<CDblPolyline> AngleLines(const AnglesData& data);

/// Total differences in the order of measurement.
struct TrendData {
  CString heading;
  std::vector<double> totals;
  double limit = kUnset;
  double warningFactor = 1;
};
[[nodiscard]] CDblPolyline TrendLine(const TrendData& data);
[[nodiscard]] std::vector<LevelLine> TrendLevels(const TrendData& data);

/// Work that goes on.
struct ProgressData {
  double lower = 0, upper = 100, position = 0;
  double secondsLeft = -1;  ///< negative: not known
  int32_t verdict = -1;     ///< the colour of the bar; -1: the selection's
  CString text;             ///< in place of the percentage
};
/// The part that is done, 0 to 1; 0 for an empty or reversed range.
[[nodiscard]] double PartDone(const ProgressData& data);
/// The text on the bar: the given one or the percentage, and the time left as minutes and seconds, or hours too.
[[nodiscard]] CString ProgressText(const ProgressData& data);
/// The text stands on a plate of paper, so that it is read on a bar of any colour.
void DrawProgress(Picture& picture, Rect box, const ProgressData& data, const Look& look);

enum class PictureMode : uint8_t {
  kCentre,   ///< at its own size, the middle in the middle
  kFit,      ///< as large as it can be in its own proportions
  kStretch,  ///< over the whole frame
};
/// Where a picture of a size goes within `box`.
[[nodiscard]] Rect PicturePlace(Rect box, double width, double height, PictureMode mode);

}  // namespace vrx::controls

#endif  // CONTROLS_LAYOUT_CHART_PICTURES_H_
