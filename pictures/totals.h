// Total differences: in their order, how often each size occurs, and over angles or illuminants.

#ifndef PICTURES_TOTALS_H_
#define PICTURES_TOTALS_H_

#include <span>
#include <string>
#include <vector>

#include <vrxmath/tolerance/verdict.h>

#include "pictures/polylines.h"

namespace vrx::pictures {

/// A total difference and what it is graded by; unset limits when there are none.
struct GradedTotal {
  double value = kUnset;
  double limit = kUnset, warning = kUnset;
  Verdict verdict = kPass;
  bool isJudged = false;  ///< the verdict counts, although there is no limit of the total
};
/// Totals against limits that are the same for all (one limit) or one each; missing and unset limits are none.
[[nodiscard]] std::vector<GradedTotal> Graded(std::span<const double> values, std::span<const double> limits,
                                              double warningFactor);

/// Totals of one kind, as under one illuminant or at one angle.
struct TotalsSeries {
  CString name;  ///< of its points
  std::vector<GradedTotal> totals;
};

/// Total differences in the order of measurement, the first at 1.
struct TrendData {
  CString heading;
  CString orderHeading;
  std::vector<TotalsSeries>
      series;  ///< of one or of several angles, which are told apart by colour and dashes
};
/// The lines of the series, then their limits and the beginnings of their warning bands.
[[nodiscard]] std::vector<CDblPolyline> TrendLines(const TrendData& data);
void DrawTrend(Picture& picture, Rect box, const TrendData& data, const Look& look);
/// Several below each other over one order.
void DrawTrends(Picture& picture, Rect box, const std::vector<TrendData>& strips, const Look& look);

/// Totals of trials over places, such as angles or illuminants, the most important trials first.
struct ProfileData {
  CString heading;
  CString placeHeading;
  std::vector<double> places;        ///< ascending, as angles in degrees
  std::vector<CString> names;        ///< of the places; empty: their values
  std::vector<TotalsSeries> trials;  ///< a total per place, unset where there is none
};
/// The lines of the trials that have one, then the limit and the beginning of the warning band.
[[nodiscard]] std::vector<CDblPolyline> ProfileLines(const ProfileData& data);
void DrawProfile(Picture& picture, Rect box, const ProfileData& data, const Look& look);

/// How often total differences of each size occur.
struct HistogramData {
  CString heading;
  CString countHeading;
  std::vector<GradedTotal> totals;
  double upper = 0;  ///< where the axis ends at the earliest, so that several have the same one
};
void DrawHistogram(Picture& picture, Rect box, const HistogramData& data, const Look& look);

}  // namespace vrx::pictures

#endif  // PICTURES_TOTALS_H_
