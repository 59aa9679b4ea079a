// The trials of a run with all that a picture of them needs, and the pictures: kept, where the other outputs write as they
// go.

#ifndef TOOLS_VRX_REPORT_JUDGED_TRIALS_H_
#define TOOLS_VRX_REPORT_JUDGED_TRIALS_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <vrxio/files/curve_reader.h>
#include <vrxmath/judging/shade.h>

#include "tools/vrx/input/conditions.h"
#include "tools/vrx/judging/judge.h"
#include "tools/vrx/report/charts.h"
#include "tools/vrx/report/report_page.h"

namespace vrx::tool {

/// A trial under one illuminant.
struct JudgedResult : JudgementUnder {
  std::array<double, 3> plotted;  ///< the components in which limits are drawn: across, up, and the lightness
  double metamerism =
      kUnset;  ///< CIE special index against the first illuminant; unset for that one, and for colours
  ShownColour colour;

  double Total() const { return difference.back(); }
};

struct JudgedTrial {
  std::string id, name;
  std::size_t view = 0;
  bool hasCurve = false;
  PlottedCurve curve;
  std::vector<JudgedResult> results;  ///< by illuminant

  /// The worst of its verdicts, and among equals the largest total difference.
  std::pair<int32_t, double> Badness() const;
};

/// A standard in one geometry, with its trials.
struct JudgedView {
  struct Colour {
    ShownColour shown;
    Lab lab;
    JudgeLimits limits;
  };
  std::string standard;
  int32_t geometry = kNoGeometry;
  bool hasCurve = false;
  PlottedCurve curve;
  std::vector<Colour> colours;      ///< by illuminant
  std::vector<std::size_t> trials;  ///< in their order
};

class JudgedTrials {
 public:
  /// The largest number of judgements, a trial under an illuminant each, that a report takes.
  static constexpr std::size_t kMost = 100'000;

  /// `settings` must outlive it.
  explicit JudgedTrials(const JudgeSettings& settings);

  /// Takes a trial's row with the outcome, its standard, and the judge that holds that at an index. Throws InputError beyond kMost.
  void Add(const CurveRow& row, const TrialJudgement& judgement, const Standard& standard, const Judge& judge,
           std::size_t standardIndex);
  /// The wavelengths that were measured, in nm; all of the grid before.
  void SetMeasured(double first, double last) { measured_.Set(first, last); }
  int32_t FirstSample() const { return measured_.first; }
  int32_t LastSample() const { return measured_.last; }

  const JudgeSettings& Settings() const { return settings_; }
  const std::vector<JudgedTrial>& Trials() const { return trials_; }
  const std::vector<JudgedView>& Views() const { return views_; }
  std::size_t IlluminantCount() const { return settings_.illuminants.size(); }
  std::string IlluminantAt(std::size_t i) const;
  /// The heading of the total difference.
  const std::string& TotalHeading() const { return columns_.back().heading; }
  const std::vector<DifferenceColumn>& Columns() const { return columns_; }
  /// The total difference with the verdict on the trial, which its box may fail where the total is small.
  pictures::GradedTotal TotalOf(const JudgedTrial& trial, std::size_t i) const;
  /// A view's trials, the worst first.
  std::vector<std::size_t> WorstFirst(const JudgedView& view) const;
  /// The standard's id, and its geometry where there is one.
  static std::string NameOf(const JudgedView& view);

  Chart Curves(const JudgedView& view) const;
  Chart Plane(const JudgedView& view, std::size_t i) const;
  Chart Trend(const std::vector<std::size_t>& trials) const;
  /// Where trials stand in a trend, from 1 on: each at a place of its own, but what was measured of one sample in several
  /// geometries at one place.
  std::vector<std::size_t> TrendPlaces(const std::vector<std::size_t>& trials) const;
  Chart Histogram(const std::vector<std::size_t>& trials, std::size_t i) const;
  Chart OverIlluminants(const JudgedView& view) const;
  /// Total differences over the aspecular angles of a standard's views.
  Chart OverAngles(const std::vector<std::size_t>& views, std::size_t i) const;
  /// True for views of two or more aspecular angles.
  bool AreAngles(const std::vector<std::size_t>& views) const;

 private:
  std::size_t ViewOf(const CurveRow& trial, const Standard& standard, const Judge& judge,
                     std::size_t standardIndex);
  std::array<double, 3> Plotted(const JudgementUnder& judgement) const;
  CString HeadingOf(int32_t element, const char* other) const;
  pictures::TrendData TrendOf(const std::vector<std::size_t>& trials, std::size_t i) const;
  void SetLimits(const JudgedView::Colour& colour, PlaneChart& chart) const;
  bool PlotsLab() const;

  const JudgeSettings& settings_;
  std::vector<DifferenceColumn> columns_;
  std::vector<JudgedTrial> trials_;
  std::vector<JudgedView> views_;
  std::map<std::pair<std::string, int32_t>, std::size_t> viewOf_;
  MeasuredRange measured_;
};

}  // namespace vrx::tool

#endif  // TOOLS_VRX_REPORT_JUDGED_TRIALS_H_
