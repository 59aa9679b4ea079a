#include "pictures/totals.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "pictures/texts.h"

namespace vrx::pictures {
namespace {

constexpr std::size_t kMostJoined = 300;   // points of a trend that are joined by a line
constexpr std::size_t kMostProfiles = 40;  // trials of a profile that have a line

// Series are told apart by colour and then by dashes.
void Style(CDblPolyline& line, std::size_t index) {
  line.paint = index % 2 == 0 ? Role::kTrial : Role::kOther;
  line.dashed = index > 1;
}

// Where the points of a line stand that says a limit.
enum class Steps {
  kAbout,  // half a place before and after each point
  kAt,     // at the points
};

// A limit as a line of its own. Points of one height are joined to one piece; a point without a limit parts the line.
CDblPolyline LimitLine(std::span<const GradedTotal> totals, double GradedTotal::*member, Steps steps,
                       auto place) {
  CDblPolyline line;
  line.name = ChartText(ControlText::kLimit);
  line.paint = Role::kText;
  line.width = member == &GradedTotal::limit ? 1.4 : 1;
  line.dashed = member == &GradedTotal::warning;
  for (std::size_t i = 0; i < totals.size(); ++i) {
    const double limit = totals[i].*member, x = place(i);
    const int32_t last = line.GetSize() - 1;
    if (!IsShown(limit)) {
      if (last >= 0 && IsShown(line[last].y)) line.Add({x, kUnset});
    } else if (steps == Steps::kAt) {
      line.Add({x, limit});
    } else if (last >= 1 && line[last].y == limit && line[last - 1].y == limit) {
      line[last].x = x + 0.5;
    } else {
      line.Add({x - 0.5, limit});
      line.Add({x + 0.5, limit});
    }
  }
  return line;
}

// Both limits of totals, unless there are none, or warnings begin where failing does.
void AddLimits(std::vector<CDblPolyline>& lines, std::span<const GradedTotal> totals, Steps steps,
               auto place) {
  const auto isLimited = [](const GradedTotal& total) { return IsShown(total.limit); };
  const auto isWarned = [](const GradedTotal& total) {
    return IsShown(total.warning) && total.warning != total.limit;
  };
  if (std::ranges::any_of(totals, isLimited))
    lines.push_back(LimitLine(totals, &GradedTotal::limit, steps, place));
  if (std::ranges::any_of(totals, isWarned))
    lines.push_back(LimitLine(totals, &GradedTotal::warning, steps, place));
}

bool HaveSameLimits(const std::vector<GradedTotal>& a, const std::vector<GradedTotal>& b) {
  return std::ranges::equal(a, b, [](const GradedTotal& p, const GradedTotal& q) {
    return p.limit == q.limit && p.warning == q.warning;
  });
}

void AddPoint(CDblPolyline& line, double x, const GradedTotal& total) {
  line.Add({x, total.value});
  if (total.isJudged || IsShown(total.limit)) {
    while (line.verdicts.GetSize() < line.GetSize() - 1) line.verdicts.Add(kPass);
    line.verdicts.Add(total.verdict);
  }
}

// The largest of totals and limits.
double LargestOf(std::span<const GradedTotal> totals) {
  double largest = 0;
  for (const GradedTotal& total : totals) {
    for (const double value : {total.value, total.limit}) {
      if (IsShown(value)) largest = std::max(largest, value);
    }
  }
  return largest > 0 ? largest : 1;
}

}  // namespace

std::vector<GradedTotal> Graded(std::span<const double> values, std::span<const double> limits,
                                double warningFactor) {
  std::vector<GradedTotal> totals;
  totals.reserve(values.size());
  for (std::size_t i = 0; i < values.size(); ++i) {
    GradedTotal& total = totals.emplace_back();
    total.value = values[i];
    const double limit = limits.size() == 1 ? limits[0] : i < limits.size() ? limits[i] : kUnset;
    if (!IsShown(limit)) continue;
    total = {values[i], limit, limit * warningFactor, GradeTotal(values[i], limit, warningFactor)};
  }
  return totals;
}

// Trends ------------------------------------------------------------------------------------------------------

std::vector<CDblPolyline> TrendLines(const TrendData& data) {
  std::vector<CDblPolyline> lines;
  const auto place = [](std::size_t i) { return static_cast<double>(i + 1); };
  for (const TotalsSeries& series : data.series) {
    CDblPolyline line;
    Style(line, lines.size());
    if (data.series.size() == 1) line.paint = Role::kFrame;
    line.width = series.totals.size() <= kMostJoined ? 0.8 : 0;
    line.marked = true;
    line.name = series.name.IsEmpty() ? data.heading : series.name;
    line.xHeading = data.orderHeading;
    line.yHeading = data.heading;
    line.yRange = {0, 1.05 * LargestOf(series.totals)};
    line.xRange = {0.5, static_cast<double>(series.totals.size()) + 0.5};
    for (std::size_t i = 0; i < series.totals.size(); ++i) AddPoint(line, place(i), series.totals[i]);
    lines.push_back(std::move(line));
  }
  const TotalsSeries* drawn = nullptr;
  for (const TotalsSeries& series : data.series) {
    if (drawn != nullptr && HaveSameLimits(drawn->totals, series.totals)) continue;
    AddLimits(lines, series.totals, Steps::kAbout, place);
    drawn = &series;
  }
  return lines;
}

namespace {

// The names of several series behind the ends of their lines, in the order of their heights, none over another.
void NameSeries(Picture& picture, const TrendData& data, const Rect& area, const Scale& scale,
                const Look& look) {
  std::vector<std::pair<double, const CString*>> ends;
  for (const TotalsSeries& series : data.series) {
    for (std::size_t i = series.totals.size(); i-- > 0;) {
      if (!IsShown(series.totals[i].value)) continue;
      ends.emplace_back(std::max(scale.y0 + scale.perY * series.totals[i].value, area.top), &series.name);
      break;
    }
  }
  std::ranges::stable_sort(ends, {}, &std::pair<double, const CString*>::first);
  const double line = 0.8 * look.textHeight;
  // From the bottom up, then from the top down: each at least a line from the next.
  double free = area.Bottom() + look.textHeight / 2;
  for (auto end = ends.rbegin(); end != ends.rend(); ++end)
    free = end->first = std::min(end->first, free - line);
  free = area.top - line;
  for (auto& end : ends) free = end.first = std::max(end.first, free + line);
  for (const auto& [y, name] : ends) {
    picture.Text(
        {area.Right() + 4 * look.scale, y - look.textHeight / 2, look.TextWidth(*name) + 2, look.textHeight},
        *name, Role::kText);
  }
}

// The room that the names need behind the lines.
double NamesWidth(const std::vector<TrendData>& strips, const Look& look) {
  double width = 0;
  for (const TrendData& strip : strips) {
    if (strip.series.size() < 2) continue;
    for (const TotalsSeries& series : strip.series) width = std::max(width, look.TextWidth(series.name));
  }
  return width;
}

}  // namespace

void DrawTrend(Picture& picture, Rect box, const TrendData& data, const Look& look) {
  DrawTrends(picture, box, {data}, look);
}

void DrawTrends(Picture& picture, Rect box, const std::vector<TrendData>& strips, const Look& look) {
  std::vector<PlotStrip> plots;
  plots.reserve(strips.size());
  for (const TrendData& strip : strips)
    plots.push_back({TrendLines(strip), {}, strip.series.size()});  // limits are no measurements
  box.width -= NamesWidth(strips, look);
  DrawStrips(picture, box, plots, look, [&](std::size_t i, Picture& strip, const Rect& area) {
    if (strips[i].series.size() > 1) NameSeries(strip, strips[i], area, strip.Scales()[0], look);
  });
}

// Profiles ----------------------------------------------------------------------------------------------------

std::vector<CDblPolyline> ProfileLines(const ProfileData& data) {
  std::vector<CDblPolyline> lines;
  const std::size_t count = std::min(data.trials.size(), kMostProfiles);
  constexpr std::size_t kToldApart = 4;
  for (std::size_t t = 0; t < count; ++t) {
    CDblPolyline line;
    if (count <= kToldApart) Style(line, t);
    line.paint = count <= kToldApart ? line.paint : Role::kTrial;
    line.width = count <= kToldApart ? 1 : 0.8;
    line.marked = true;
    line.name = data.trials[t].name.IsEmpty() ? data.heading : data.trials[t].name;
    line.xHeading = data.placeHeading;
    line.yHeading = data.heading;
    line.yRange = {0, 1.05 * LargestOf(data.trials[t].totals)};
    for (std::size_t i = 0; i < std::min(data.places.size(), data.trials[t].totals.size()); ++i)
      AddPoint(line, data.places[i], data.trials[t].totals[i]);
    lines.push_back(std::move(line));
  }
  // Not every trial has a total, and with it a limit, at every place.
  std::vector<GradedTotal> limits(data.places.size());
  for (const TotalsSeries& trial : data.trials) {
    for (std::size_t i = 0; i < std::min(limits.size(), trial.totals.size()); ++i) {
      if (!IsShown(limits[i].limit)) limits[i] = trial.totals[i];
    }
  }
  AddLimits(lines, limits, Steps::kAt, [&](std::size_t i) { return data.places[i]; });
  return lines;
}

void DrawProfile(Picture& picture, Rect box, const ProfileData& data, const Look& look) {
  std::vector<NamedValue> names;
  for (std::size_t i = 0; i < std::min(data.names.size(), data.places.size()); ++i)
    names.push_back({data.places[i], data.names[i]});
  DrawPolylines(picture, box, ProfileLines(data), look, {.xNames = names, .ySteps = 4});
}

// Histograms --------------------------------------------------------------------------------------------------

namespace {

Ticks WholeTicks(double most) {
  Ticks ticks = TicksFor({0, std::max(most, 1.0)}, 4);
  if (ticks.step < 1)
    static_cast<AxisTicks&>(ticks) = {0, 1, static_cast<int32_t>(std::max(most, 1.0)) + 1, 0};
  return ticks;
}

bool HaveOneLimit(std::span<const GradedTotal> totals) {
  return !totals.empty() && std::ranges::all_of(totals, [&](const GradedTotal& total) {
    return total.limit == totals[0].limit && total.warning == totals[0].warning;
  });
}

}  // namespace

void DrawHistogram(Picture& picture, Rect box, const HistogramData& data, const Look& look) {
  const Ticks bins = TicksFor({0, std::max(data.upper, LargestOf(data.totals))}, 14);
  std::vector<double> counts(static_cast<std::size_t>(bins.count - 1));
  for (const GradedTotal& total : data.totals) {
    if (!IsShown(total.value)) continue;
    const double bin = std::floor(std::max(total.value, 0.0) / bins.step);
    ++counts[std::min(static_cast<std::size_t>(bin), counts.size() - 1)];
  }
  const Ticks values = TicksFor({0, bins.Last()}, 5), whole = WholeTicks(*std::ranges::max_element(counts));
  const PlotArea area(PlotArea::Inner(box, whole, look), values, whole);
  area.PaintY(picture, look, data.countHeading);
  for (std::size_t i = 0; i < counts.size(); ++i) {
    if (counts[i] == 0) continue;
    const double gap = 0.5 * look.scale, left = area.X(bins.At(static_cast<int32_t>(i))) + gap;
    const double right = area.X(bins.At(static_cast<int32_t>(i) + 1)) - gap, top = area.Y(counts[i]);
    picture.Rectangle({left, top, right - left, area.Box().Bottom() - top}, Role::kTrial);
  }
  area.PaintX(picture, look, data.heading, {.hasGrid = false});
  picture.Frame(area.Box(), Role::kFrame);
  picture.AddScale(area.GetScale());
  if (!HaveOneLimit(data.totals)) return;
  area.Vertical(picture, data.totals[0].limit, Role::kText, 1.6 * look.scale, false);
  area.Vertical(picture, data.totals[0].warning, Role::kText, 1.2 * look.scale, true);
}

}  // namespace vrx::pictures
