// Spectral curves of a standard and its trials, with their differences below.

#ifndef PICTURES_CURVES_H_
#define PICTURES_CURVES_H_

#include <cstddef>
#include <cstdint>
#include <vector>

#include "pictures/polylines.h"

namespace vrx::pictures {

/// Curves over wavelengths: the standard first, then its trials, the most important ones first. Differences stand below, where
/// asked for and possible.
struct CurvesData {
  double first = 360, step = 10;            ///< nm
  std::vector<std::vector<double>> curves;  ///< reflectance in percent; NaN or unset: not measured
  std::vector<double> lower, upper;         ///< an area behind the lines; empty: none
  bool withDifference = true;
  bool hasStandard = true;          ///< false: all are trials, and there are no differences
  CString standardName, trialName;  ///< in the legend; empty: the usual words
  CString manyTrialsName;  ///< in place of `trialName` where only the first ones have lines of their own
};

/// The largest count of trials that have lines of their own; of more there is the area between the lowest and the highest too.
inline constexpr std::size_t kMostTrialLines = 40;

/// The lines of the reflectances, and those of the differences of the trials from the standard.
[[nodiscard]] std::vector<CDblPolyline> CurveLines(const CurvesData& data);
[[nodiscard]] std::vector<CDblPolyline> CurveDifferences(const CurvesData& data);
/// Targets of the reflectances are numbered by their line, those of the differences by the count of lines above + their line.
void DrawCurves(Picture& picture, Rect box, const CurvesData& data, const Look& look);

}  // namespace vrx::pictures

#endif  // PICTURES_CURVES_H_
