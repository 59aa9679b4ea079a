
#include "tools/vrx/report/charts.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <unordered_set>
#include <utility>

#include <vrxmath/colorimetry/color_spaces.h>
#include <vrxmath/foundation/numbers.h>
#include <vrxmath/numeric/elementary.h>
#include <vrxmath/support/axis_ticks.h>

#include "tools/vrx/report/report_texts.h"

namespace vrx::tool {
namespace {

constexpr int32_t kFontSize = 11;
constexpr std::size_t kMaxLines = 40;

std::string Decimals(double value, int32_t decimals) {
  char text[400];
  if (value == 0) value = 0;  // no "-0"
  return {text, std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, decimals).ptr};
}

using Ticks = AxisTicks;

std::string LabelOf(const Ticks& ticks, int32_t i) {
  return Decimals(ticks.At(i), ticks.decimals);
}

// A rectangle of a picture in which values are plotted.
class PlotArea {
 public:
  PlotArea(double left, double top, double width, double height, Ticks x, Ticks y)
      : left_(left), top_(top), width_(width), height_(height), x_(x), y_(y) {}

  double X(double value) const { return left_ + (value - x_.first) * UnitX(); }
  double Y(double value) const { return top_ + height_ - (value - y_.first) * UnitY(); }
  PlanePoint At(double x, double y) const {
    return {std::clamp(X(x), left_, Right()), std::clamp(Y(y), top_, Bottom())};
  }
  double Left() const { return left_; }
  double Right() const { return left_ + width_; }
  double Top() const { return top_; }
  double Bottom() const { return top_ + height_; }

  std::string Scales() const {
    return "|" + Decimals(X(0), 3) + "|" + Decimals(UnitX(), 5) + "|" + Decimals(Y(0), 3) + "|" +
           Decimals(-UnitY(), 5);
  }

  void Horizontal(Picture& picture, double y, Ink ink, Stroke stroke = {}) const {
    if (!IsShown(y) || Y(y) < top_ || Y(y) > Bottom()) return;
    picture.Line(std::array<PlanePoint, 2>{{{left_, Y(y)}, {Right(), Y(y)}}}, ink, stroke);
  }
  void Vertical(Picture& picture, double x, Ink ink, Stroke stroke = {}) const {
    if (!IsShown(x) || X(x) < left_ || X(x) > Right()) return;
    picture.Line(std::array<PlanePoint, 2>{{{X(x), top_}, {X(x), Bottom()}}}, ink, stroke);
  }

  void PaintY(Picture& picture, const std::string& heading) const {
    for (int32_t i = 0; i < y_.count; ++i) {
      Horizontal(picture, y_.At(i) == 0 ? 0 : y_.At(i), Ink::kGrid);
      picture.Text(left_ - 6, Y(y_.At(i)) + 4, LabelOf(y_, i), kFontSize, Ink::kMuted, Anchor::kEnd);
    }
    picture.Text(left_, top_ - 8, heading, kFontSize, Ink::kText, Anchor::kStart);
  }
  void PaintX(Picture& picture, const std::string& heading, bool withGrid = true) const {
    for (int32_t i = 0; i < x_.count; ++i) {
      if (withGrid) Vertical(picture, x_.At(i), Ink::kGrid);
      picture.Text(X(x_.At(i)), Bottom() + 15, LabelOf(x_, i), kFontSize, Ink::kMuted, Anchor::kMiddle);
    }
    picture.Text(Right(), Bottom() + 30, heading, kFontSize, Ink::kText, Anchor::kEnd);
  }

 private:
  double UnitX() const { return width_ / (x_.Last() - x_.first); }
  double UnitY() const { return height_ / (y_.Last() - y_.first); }

  double left_, top_, width_, height_;
  Ticks x_, y_;
};

// Points without those that lie within two pixels of an earlier one.
std::vector<PlanePoint> Thinned(const std::vector<PlanePoint>& points) {
  constexpr double kCell = 2;
  std::unordered_set<uint32_t> taken;
  std::vector<PlanePoint> thinned;
  for (const PlanePoint& point : points) {
    const auto cell = static_cast<uint32_t>(point.x / kCell) << 16 | static_cast<uint32_t>(point.y / kCell);
    if (taken.insert(cell).second) thinned.push_back(point);
  }
  return thinned;
}

// Points by verdict; the worse ones are painted over the better ones.
class VerdictMarks {
 public:
  void Add(PlanePoint point, Verdict verdict) { points_[static_cast<std::size_t>(verdict)].push_back(point); }
  void Paint(Picture& picture, bool areJudged = true) const {
    constexpr std::size_t kCrowd = 200;
    picture.Marks(Thinned(points_[kPass]), points_[kPass].size() > kCrowd ? Mark::kPoint : Mark::kDot,
                  areJudged ? Ink::kPass : Ink::kTrial);
    picture.Marks(Thinned(points_[kWarning]), Mark::kTriangle, Ink::kWarning);
    picture.Marks(Thinned(points_[kFail]), Mark::kCross, Ink::kFail);
  }

 private:
  std::array<std::vector<PlanePoint>, 3> points_;
};

Ink InkOf(Verdict verdict) {
  static constexpr Ink kInks[] = {Ink::kFail, Ink::kWarning, Ink::kPass};
  return kInks[static_cast<std::size_t>(verdict)];
}

// The largest of totals and limits, for an axis from 0.
double LargestOf(const std::vector<GradedTotal>& totals) {
  double largest = 0;
  for (const GradedTotal& total : totals) {
    for (const double value : {total.value, total.limit}) {
      if (IsShown(value)) largest = std::max(largest, value);
    }
  }
  return largest > 0 ? largest : 1;
}

std::string CountsOf(const std::vector<GradedTotal>& totals) {
  std::array<std::size_t, 3> counts{};
  for (const GradedTotal& total : totals) ++counts[static_cast<std::size_t>(total.verdict)];
  return CountsText(counts);
}

// Curves ------------------------------------------------------------------------------------------------------

constexpr int32_t kWide = 690;

float DifferenceAt(const PlottedCurve& trial, const PlottedCurve& standard, std::size_t i) {
  return trial[i] - standard[i];
}

class CurvesPainter {
 public:
  explicit CurvesPainter(const CurvesChart& data)
      : data_(data),
        first_(static_cast<std::size_t>(data.first)),
        last_(static_cast<std::size_t>(data.last)),
        upper_(kLeft, kTop, kWidth, kUpperHeight, Wavelengths(), Reflectances()),
        lower_(kLeft, kTop + kUpperHeight + kBetween, kWidth, kLowerHeight, Wavelengths(), Differences()) {}

  bool HasDifferences() const { return data_.standard != nullptr && !data_.trials.empty(); }
  int32_t Height() const {
    return static_cast<int32_t>((HasDifferences() ? lower_ : upper_).Bottom()) + kBelow;
  }
  std::string Scales() const {
    return "curves" + upper_.Scales() + (HasDifferences() ? lower_.Scales() : "");
  }

  void Paint(Picture& picture) const {
    upper_.PaintY(picture, Text(ReportText::kReflectanceAxis));
    upper_.PaintX(picture, HasDifferences() ? "" : Text(ReportText::kWavelengthAxis));
    if (data_.trials.size() > kMaxLines) PaintEnvelope(picture);
    const std::size_t lines = std::min(data_.trials.size(), kMaxLines);
    const Stroke stroke = lines > 3 ? Stroke{0.7, Dash::kSolid} : Stroke{1.6, Dash::kDashed};
    for (std::size_t i = 0; i < lines; ++i) {
      PaintLine(picture, upper_, Ink::kTrial, stroke, [&](std::size_t k) { return (*data_.trials[i])[k]; });
    }
    if (data_.standard != nullptr) {
      PaintLine(picture, upper_, Ink::kStandard, {2.2, Dash::kSolid},
                [&](std::size_t k) { return (*data_.standard)[k]; });
    }
    PaintKey(picture);
    if (!HasDifferences()) return;
    lower_.PaintY(picture, Text(ReportText::kDifferenceAxis));
    lower_.PaintX(picture, Text(ReportText::kWavelengthAxis));
    lower_.Horizontal(picture, 0, Ink::kStandard, {2, Dash::kSolid});
    for (std::size_t i = 0; i < lines; ++i) {
      PaintLine(picture, lower_, Ink::kTrial, stroke,
                [&](std::size_t k) { return DifferenceAt(*data_.trials[i], *data_.standard, k); });
    }
  }

 private:
  static constexpr double kLeft = 46, kTop = 24, kWidth = 624, kUpperHeight = 190, kBetween = 42,
                          kLowerHeight = 90;
  static constexpr int32_t kBelow = 38;

  static double WavelengthAt(std::size_t i) {
    return kFirstWavelength + kWavelengthStep * static_cast<double>(i);
  }
  Ticks Wavelengths() const { return EnclosingTicks(WavelengthAt(first_), WavelengthAt(last_), 8); }
  Ticks Reflectances() const {
    float most = 1, least = 0;
    const auto take = [&](const PlottedCurve& curve) {
      for (std::size_t i = first_; i <= last_; ++i) {
        most = std::max(most, curve[i]);
        least = std::min(least, curve[i]);
      }
    };
    for (const PlottedCurve* trial : data_.trials) take(*trial);
    if (data_.standard != nullptr) take(*data_.standard);
    return EnclosingTicks(static_cast<double>(least), static_cast<double>(most), 5);
  }
  Ticks Differences() const {
    float most = 0.1F;
    if (!HasDifferences()) return EnclosingTicks(-1, 1, 2);
    for (const PlottedCurve* trial : data_.trials) {
      for (std::size_t i = first_; i <= last_; ++i) {
        most = std::max(most, std::fabs(DifferenceAt(*trial, *data_.standard, i)));
      }
    }
    return EnclosingTicks(static_cast<double>(-most), static_cast<double>(most), 4);
  }

  template <class VALUE>
  void PaintLine(Picture& picture, const PlotArea& area, Ink ink, Stroke stroke, VALUE value) const {
    std::vector<PlanePoint> points;
    for (std::size_t i = first_; i <= last_; ++i) {
      points.push_back(area.At(WavelengthAt(i), static_cast<double>(value(i))));
    }
    picture.Line(points, ink, stroke);
  }

  // Between the lowest and the highest trial at each wavelength.
  void PaintEnvelope(Picture& picture) const {
    std::vector<PlanePoint> outline, below;
    for (std::size_t i = first_; i <= last_; ++i) {
      const auto [least, most] = std::ranges::minmax_element(
          data_.trials, {}, [i](const PlottedCurve* curve) { return (*curve)[i]; });
      outline.push_back(upper_.At(WavelengthAt(i), static_cast<double>((**most)[i])));
      below.push_back(upper_.At(WavelengthAt(i), static_cast<double>((**least)[i])));
    }
    outline.insert(outline.end(), below.rbegin(), below.rend());
    picture.Area(outline, Ink::kBand);
  }

  void PaintKey(Picture& picture) const {
    double x = kLeft + kWidth;
    const auto entry = [&](const std::string& text, Ink ink, Stroke stroke, double room) {
      x -= room;
      picture.Line(std::array<PlanePoint, 2>{{{x, 12}, {x + 26, 12}}}, ink, stroke);
      picture.Text(x + 32, 16, text, kFontSize, Ink::kText);
    };
    if (HasDifferences()) {
      entry(data_.trials.size() > kMaxLines
                ? TextOf(ReportText::kWorstTrialsKey, {std::to_string(kMaxLines)})
                : Text(data_.areRecipes ? ReportText::kRecipes : ReportText::kTrial),
            Ink::kTrial, data_.trials.size() > 3 ? Stroke{0.7, Dash::kSolid} : Stroke{1.6, Dash::kDashed},
            data_.trials.size() > kMaxLines ? 260 : 90);
    }
    if (data_.standard == nullptr) return;
    entry(Text(data_.areRecipes ? ReportText::kTarget : ReportText::kStandard), Ink::kStandard,
          {2, Dash::kSolid}, 110);
  }

  CurvesChart data_;
  std::size_t first_, last_;
  PlotArea upper_, lower_;
};

// The plane ---------------------------------------------------------------------------------------------------

class PlanePainter {
 public:
  explicit PlanePainter(const PlaneChart& data)
      : data_(data),
        plane_(kLeft, kTop, kSide, kSide, Reach(), Reach()),
        bar_(kLeft + kSide + 30, kTop, kBar, kSide, Ticks{-1, 1, 3, 0}, Reach()) {}

  static constexpr int32_t kWidth = 340, kHeight = 300;
  std::string Scales() const { return "plane" + plane_.Scales() + bar_.Scales(); }

  void Paint(Picture& picture) const {
    PaintLimits(picture);
    plane_.PaintY(picture, data_.yHeading);
    plane_.PaintX(picture, data_.xHeading);
    plane_.Horizontal(picture, 0, Ink::kMuted);
    plane_.Vertical(picture, 0, Ink::kMuted);
    if (!data_.lightnessHeading.empty()) PaintBar(picture);
    VerdictMarks marks;
    std::array<std::vector<PlanePoint>, 3> ticks;
    for (const PlottedDifference& trial : data_.trials) {
      if (!IsShown(trial.x) || !IsShown(trial.y)) continue;
      marks.Add(plane_.At(trial.x, trial.y), trial.verdict);
      if (IsShown(trial.lightness)) {
        ticks[static_cast<std::size_t>(trial.verdict)].push_back(bar_.At(0, trial.lightness));
      }
    }
    marks.Paint(picture, data_.areJudged);
    for (const Verdict verdict : {kPass, kWarning, kFail}) {
      picture.Marks(Thinned(ticks[static_cast<std::size_t>(verdict)]), Mark::kTick,
                    data_.areJudged ? InkOf(verdict) : Ink::kTrial);
    }
  }

 private:
  static constexpr double kLeft = 46, kTop = 26, kSide = 230, kBar = 24;

  void PaintBar(Picture& picture) const {
    bar_.Horizontal(picture, 0, Ink::kMuted);
    bar_.Vertical(picture, -1, Ink::kGrid);
    bar_.Vertical(picture, 1, Ink::kGrid);
    picture.Text(bar_.Left() + kBar / 2, kTop - 8, data_.lightnessHeading, kFontSize, Ink::kText,
                 Anchor::kMiddle);
  }

  // Symmetric about the standard, and the same for both axes and the lightness.
  Ticks Reach() const {
    double reach = data_.reach;
    const auto take = [&](double value) {
      if (IsShown(value)) reach = std::max(reach, std::fabs(value));
    };
    for (const PlottedDifference& trial : data_.trials) {
      for (const double value : {trial.x, trial.y, trial.lightness}) take(value);
    }
    for (const PlanePoint& point : data_.limit) {
      take(point.x);
      take(point.y);
    }
    take(data_.lightness.lower);
    take(data_.lightness.upper);
    if (reach == 0) reach = 1;
    return EnclosingTicks(-1.05 * reach, 1.05 * reach, 6);
  }

  void PaintLimits(Picture& picture) const {
    const auto paint = [&](const std::vector<PlanePoint>& outline, Interval lightness, Ink fill,
                           Stroke stroke) {
      if (outline.empty()) return;
      std::vector<PlanePoint> points;
      points.reserve(outline.size());
      for (const PlanePoint& point : outline) points.push_back(plane_.At(point.x, point.y));
      picture.Area(points, fill);
      picture.Line(points, Ink::kText, stroke);
      if (!IsShown(lightness.lower) || !IsShown(lightness.upper)) return;
      const double top = bar_.At(0, lightness.upper).y, bottom = bar_.At(0, lightness.lower).y;
      picture.Rectangle(bar_.Left(), top, kBar, bottom - top, fill);
      for (const double y : {top, bottom}) {
        picture.Line(std::array<PlanePoint, 2>{{{bar_.Left(), y}, {bar_.Right(), y}}}, Ink::kText, stroke);
      }
    };
    paint(data_.limit, data_.lightness, Ink::kBand, {1.4, Dash::kSolid});
    paint(data_.warning, data_.lightnessWarning, Ink::kInside, {1, Dash::kDashed});
  }

  PlaneChart data_;
  PlotArea plane_, bar_;
};

// Totals ------------------------------------------------------------------------------------------------------

// A limit that may change from trial to trial, as steps about the trials' places.
void PaintSteps(Picture& picture, const PlotArea& area, const std::vector<GradedTotal>& totals,
                double GradedTotal::*member, Stroke stroke) {
  std::vector<PlanePoint> points;
  const auto flush = [&] {
    if (points.size() > 1) picture.Line(points, Ink::kText, stroke);
    points.clear();
  };
  for (std::size_t i = 0; i < totals.size(); ++i) {
    const double limit = totals[i].*member;
    if (!IsShown(limit)) {
      flush();
      continue;
    }
    const double x = static_cast<double>(i) + 1, y = area.Y(limit);
    const bool goesOn = points.size() > 1 && points.back().y == y;
    if (goesOn) {
      points.back().x = area.At(x + 0.5, 0).x;
      continue;
    }
    points.push_back({area.At(x - 0.5, 0).x, y});
    points.push_back({area.At(x + 0.5, 0).x, y});
  }
  flush();
}

class TrendPainter {
 public:
  explicit TrendPainter(const TrendChart& data) : data_(data) {
    const std::size_t count = data_.series.empty() ? 1 : data_.series[0].size();
    double largest = 0;
    for (const auto& totals : data_.series) largest = std::max(largest, LargestOf(totals));
    Ticks order = EnclosingTicks(0.5, static_cast<double>(count) + 0.5, 10);
    order.first = 0;
    order.step = std::max(1.0, order.step);
    order.count = static_cast<int32_t>(std::ceil((static_cast<double>(count) + 0.5) / order.step)) + 1;
    order.decimals = 0;
    for (std::size_t i = 0; i < data_.series.size(); ++i) {
      strips_.emplace_back(kLeft, kTop + static_cast<double>(i) * (kStrip + kBetween), kWidth, kStrip, order,
                           EnclosingTicks(0, 1.05 * largest, 3));
    }
  }

  int32_t Height() const {
    return static_cast<int32_t>(strips_.empty() ? kTop : strips_.back().Bottom()) + 38;
  }
  std::string Scales() const {
    std::string scales = "trend";
    for (const PlotArea& strip : strips_) scales += strip.Scales();
    return scales;
  }

  void Paint(Picture& picture) const {
    for (std::size_t i = 0; i < strips_.size(); ++i) {
      strips_[i].PaintY(picture, data_.names[i] + "  " + data_.heading);
      PaintStrip(picture, strips_[i], data_.series[i]);
    }
    if (!strips_.empty()) strips_.back().PaintX(picture, Text(ReportText::kOrderAxis), false);
  }

 private:
  static constexpr double kLeft = 46, kTop = 24, kWidth = 624, kStrip = 84, kBetween = 32;
  static constexpr std::size_t kMaxJoined = 300;  // trials whose points are joined by a line

  static void PaintStrip(Picture& picture, const PlotArea& strip, const std::vector<GradedTotal>& totals) {
    std::vector<PlanePoint> line;
    VerdictMarks marks;
    for (std::size_t i = 0; i < totals.size(); ++i) {
      if (!IsShown(totals[i].value)) continue;
      line.push_back(strip.At(static_cast<double>(i) + 1, totals[i].value));
      marks.Add(line.back(), totals[i].verdict);
    }
    if (line.size() > 1 && line.size() <= kMaxJoined) picture.Line(line, Ink::kMuted, {0.8, Dash::kSolid});
    PaintSteps(picture, strip, totals, &GradedTotal::limit, {1.4, Dash::kSolid});
    PaintSteps(picture, strip, totals, &GradedTotal::warning, {1, Dash::kDashed});
    marks.Paint(picture);
  }

  TrendChart data_;
  std::vector<PlotArea> strips_;
};

class HistogramPainter {
 public:
  explicit HistogramPainter(const HistogramChart& data)
      : data_(data),
        bins_(EnclosingTicks(0, std::max(data.upper, LargestOf(data.totals)), 14)),
        counts_(static_cast<std::size_t>(bins_.count - 1)) {
    for (const GradedTotal& total : data_.totals) {
      if (!IsShown(total.value)) continue;
      const double bin = std::floor(std::max(total.value, 0.0) / bins_.step);
      ++counts_[std::min(static_cast<std::size_t>(bin), counts_.size() - 1)];
    }
  }

  static constexpr int32_t kWidth = 340, kHeight = 220;

  void Paint(Picture& picture) const {
    const double most = *std::ranges::max_element(counts_);
    Ticks values = EnclosingTicks(0, bins_.Last(), 5);
    const PlotArea area(46, 26, 274, 150, values, WholeTicks(most));
    area.PaintY(picture, Text(ReportText::kCountAxis));
    for (std::size_t i = 0; i < counts_.size(); ++i) {
      if (counts_[i] == 0) continue;
      const double left = area.X(bins_.At(static_cast<int32_t>(i))) + 0.5;
      const double right = area.X(bins_.At(static_cast<int32_t>(i) + 1)) - 0.5;
      picture.Rectangle(left, area.Y(counts_[i]), right - left, area.Bottom() - area.Y(counts_[i]),
                        Ink::kTrial);
    }
    area.PaintX(picture, data_.heading, false);
    if (!HaveOneLimit()) return;
    area.Vertical(picture, data_.totals[0].limit, Ink::kText, {1.6, Dash::kSolid});
    area.Vertical(picture, data_.totals[0].warning, Ink::kText, {1.2, Dash::kDashed});
  }

 private:
  static Ticks WholeTicks(double most) {
    Ticks ticks = EnclosingTicks(0, std::max(most, 1.0), 4);
    if (ticks.step < 1) ticks = {0, 1, static_cast<int32_t>(std::max(most, 1.0)) + 1, 0};
    return ticks;
  }
  bool HaveOneLimit() const {
    return !data_.totals.empty() && std::ranges::all_of(data_.totals, [this](const GradedTotal& total) {
      return total.limit == data_.totals[0].limit && total.warning == data_.totals[0].warning;
    });
  }

  HistogramChart data_;
  Ticks bins_;
  std::vector<double> counts_;
};

class ProfilePainter {
 public:
  explicit ProfilePainter(const ProfileChart& data)
      : data_(data), area_(46, 26, 274, 190, Places(data), EnclosingTicks(0, 1.05 * Largest(data), 4)) {}

  static constexpr int32_t kWidth = 340, kHeight = 262;
  std::string Scales() const { return "profile" + area_.Scales(); }

  void Paint(Picture& picture) const {
    area_.PaintY(picture, data_.heading);
    for (std::size_t i = 0; i < data_.positions.size(); ++i) {
      const double x = area_.X(data_.positions[i]);
      area_.Vertical(picture, data_.positions[i], Ink::kGrid);
      picture.Text(x, area_.Bottom() + 15, data_.names[i], kFontSize, Ink::kMuted, Anchor::kMiddle);
      if (!data_.trials.empty()) PaintLimits(picture, x, data_.trials[0][i]);
    }
    picture.Text(area_.Right(), area_.Bottom() + 32, data_.positionHeading, kFontSize, Ink::kText,
                 Anchor::kEnd);
    VerdictMarks marks;
    for (std::size_t t = 0; t < std::min(data_.trials.size(), kMaxLines); ++t)
      PaintTrial(picture, data_.trials[t], marks);
    marks.Paint(picture);
  }

 private:
  static double Largest(const ProfileChart& data) {
    double largest = 0;
    for (const auto& trial : data.trials) largest = std::max(largest, LargestOf(trial));
    return largest;
  }
  // Half a usual distance beyond the ends.
  static Ticks Places(const ProfileChart& data) {
    const double first = data.positions.front(), last = data.positions.back();
    const double margin = data.positions.size() > 1
                              ? 0.5 * (last - first) / static_cast<double>(data.positions.size() - 1)
                              : 0.5;
    return {first - margin, last - first + 2 * margin, 2, 0};
  }
  void PaintLimits(Picture& picture, double x, const GradedTotal& total) const {
    constexpr double kHalf = 12;
    const auto paint = [&](double limit, Stroke stroke) {
      if (!IsShown(limit)) return;
      picture.Line(std::array<PlanePoint, 2>{{{x - kHalf, area_.Y(limit)}, {x + kHalf, area_.Y(limit)}}},
                   Ink::kText, stroke);
    };
    paint(total.limit, {1.6, Dash::kSolid});
    paint(total.warning, {1.2, Dash::kDashed});
  }
  void PaintTrial(Picture& picture, const std::vector<GradedTotal>& totals, VerdictMarks& marks) const {
    std::vector<PlanePoint> line;
    for (std::size_t i = 0; i < totals.size(); ++i) {
      if (!IsShown(totals[i].value)) continue;
      line.push_back(area_.At(data_.positions[i], totals[i].value));
      marks.Add(line.back(), totals[i].verdict);
    }
    if (line.size() > 1) picture.Line(line, Ink::kTrial, {0.8, Dash::kSolid});
  }

  ProfileChart data_;
  PlotArea area_;
};

template <class PAINTER>
Chart ChartBy(PAINTER painter, std::string title, std::string summary, int32_t width, int32_t height,
              std::string scales) {
  return {std::move(title),
          std::move(summary),
          width,
          height,
          std::move(scales),
          [painter = std::move(painter)](Picture& picture) { painter.Paint(picture); }};
}

std::string LargestText(const std::string& heading, const std::vector<GradedTotal>& totals) {
  double largest = 0;
  for (const GradedTotal& total : totals) {
    if (IsShown(total.value)) largest = std::max(largest, total.value);
  }
  return TextOf(ReportText::kLargestSummary, {heading, Decimals(largest, 2)});
}

}  // namespace

PlottedCurve Plotted(const CReflData& curve) {
  PlottedCurve plotted{};
  for (std::size_t i = 0; i < plotted.size(); ++i) {
    plotted[i] = static_cast<float>(curve[static_cast<std::ptrdiff_t>(i)]);
  }
  return plotted;
}

void CurvesChart::SetMeasured(double firstWavelength, double lastWavelength) {
  const auto sample = [](double nm) { return (nm - kFirstWavelength) / kWavelengthStep; };
  first =
      static_cast<int32_t>(std::clamp(std::ceil(sample(firstWavelength) - 1e-6), 0.0, kWavelengths - 2.0));
  last = static_cast<int32_t>(
      std::clamp(std::floor(sample(lastWavelength) + 1e-6), first + 1.0, kWavelengths - 1.0));
}

Chart MakeChart(const CurvesChart& data) {
  CurvesPainter painter(data);
  const int32_t height = painter.Height();
  std::string scales = painter.Scales();
  const ReportText summary = data.areRecipes            ? ReportText::kTargetCurvesSummary
                             : data.standard != nullptr ? ReportText::kCurvesSummary
                                                        : ReportText::kCurvesOnlySummary;
  return ChartBy(std::move(painter), data.title, TextOf(summary, {std::to_string(data.trials.size())}), kWide,
                 height, std::move(scales));
}

Chart MakeChart(const PlaneChart& data) {
  PlanePainter painter(data);
  std::array<std::size_t, 3> counts{};
  for (const PlottedDifference& trial : data.trials) ++counts[static_cast<std::size_t>(trial.verdict)];
  std::string scales = painter.Scales();
  return ChartBy(std::move(painter), data.title,
                 TextOf(ReportText::kPlaneSummary,
                        {data.xHeading, data.yHeading,
                         data.areJudged ? CountsText(counts) : std::to_string(data.trials.size())}),
                 PlanePainter::kWidth, PlanePainter::kHeight, std::move(scales));
}

Chart MakeChart(const TrendChart& data) {
  TrendPainter painter(data);
  std::string summary;
  for (std::size_t i = 0; i < data.series.size(); ++i) {
    summary += (i > 0 ? "; " : "") + data.names[i] + ": " + LargestText(data.heading, data.series[i]) + ", " +
               CountsOf(data.series[i]);
  }
  const int32_t height = painter.Height();
  std::string scales = painter.Scales();
  return ChartBy(std::move(painter), data.title, std::move(summary), kWide, height, std::move(scales));
}

Chart MakeChart(const HistogramChart& data) {
  return ChartBy(HistogramPainter(data), data.title,
                 LargestText(data.heading, data.totals) + ", " + CountsOf(data.totals),
                 HistogramPainter::kWidth, HistogramPainter::kHeight, "histogram");
}

Chart MakeChart(const ProfileChart& data) {
  ProfilePainter painter(data);
  std::vector<GradedTotal> all;
  for (const auto& trial : data.trials) all.insert(all.end(), trial.begin(), trial.end());
  std::string scales = painter.Scales();
  return ChartBy(std::move(painter), data.title, LargestText(data.heading, all), ProfilePainter::kWidth,
                 ProfilePainter::kHeight, std::move(scales));
}

std::vector<PlanePoint> BoxOutline(Interval x, Interval y) {
  return {{x.lower, y.lower}, {x.upper, y.lower}, {x.upper, y.upper}, {x.lower, y.upper}, {x.lower, y.lower}};
}

std::vector<PlanePoint> ChromaHueOutline(const CLabValues& standard, Interval chroma, Interval hue) {
  constexpr int32_t kSteps = 36;
  const double C = standard[CLabValues::kChroma], h = HueRadiansOf(standard);
  const auto angle = [C](double limit) {
    const double half = std::clamp(limit / std::max(2 * C, 1e-9), -1.0, 1.0);
    return 2 * Asin(half);
  };
  std::vector<PlanePoint> outline;
  const auto arc = [&](double radius, double from, double to) {
    for (int32_t i = 0; i <= kSteps; ++i) {
      const double at = h + from + (to - from) * i / kSteps;
      outline.push_back(
          {radius * Cos(at) - standard[CLabValues::kA], radius * Sin(at) - standard[CLabValues::kB]});
    }
  };
  arc(C + chroma.upper, angle(hue.lower), angle(hue.upper));
  arc(std::max(C + chroma.lower, 0.0), angle(hue.upper), angle(hue.lower));
  outline.push_back(outline.front());
  return outline;
}

}  // namespace vrx::tool
