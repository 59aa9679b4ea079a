#include "pictures/control_chart.h"

namespace vrx::pictures {
namespace {

constexpr std::size_t kMostLinked = 300;  // points that are joined by a line

CDblPolyline LineOf(const ControlStrip& strip) {
  CDblPolyline line;
  line.name = strip.heading;
  line.xHeading = strip.orderHeading;
  line.yHeading = strip.heading;
  line.paint = Role::kFrame;
  line.width = strip.values.size() <= kMostLinked ? 0.8 : 0;
  line.marked = true;
  line.xRange = {0.5, static_cast<double>(strip.values.size()) + 0.5};
  Interval shown = kNoInterval;
  for (const double value : strip.values) Widen(shown, value);
  for (const double value : {strip.lower, strip.upper}) Widen(shown, value);
  constexpr double kMargin = 0.04;
  if (shown.lower < shown.upper) {
    const double margin = kMargin * (shown.upper - shown.lower);
    line.yRange = {shown.lower - margin, shown.upper + margin};
  }
  for (std::size_t i = 0; i < strip.values.size(); ++i) {
    line.Add({static_cast<double>(i + 1), strip.values[i]});
    line.verdicts.Add(strip.marks[i]);
  }
  return line;
}

std::vector<LevelLine> LevelsOf(const ControlStrip& strip) {
  if (!IsShown(strip.upper)) return {};
  return {
      {strip.centre, Role::kText, false}, {strip.lower, Role::kText, true}, {strip.upper, Role::kText, true}};
}

}  // namespace

void DrawControlStrips(Picture& picture, Rect box, const std::vector<ControlStrip>& strips,
                       const Look& look) {
  std::vector<PlotStrip> plots;
  plots.reserve(strips.size());
  for (const ControlStrip& strip : strips) plots.push_back({{LineOf(strip)}, LevelsOf(strip)});
  DrawStrips(picture, box, plots, look);
}

}  // namespace vrx::pictures
