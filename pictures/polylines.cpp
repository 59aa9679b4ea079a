#include "pictures/polylines.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include <vrxmath/support/number_text.h>

#include "pictures/marks.h"

namespace vrx::pictures {
namespace {

// The smallest interval that holds a range, where it is given, and one coordinate of all shown points; kNoInterval for neither.
Interval Extent(const CDblPolyline& line, Interval range, double CDblPoint::*coordinate) {
  const bool isGiven = std::isfinite(range.lower) && std::isfinite(range.upper) && range.lower < range.upper;
  Interval extent = isGiven ? range : kNoInterval;
  for (const CDblPoint& point : line) Widen(extent, point.*coordinate);
  return extent;
}

// Draws the pieces of one line into an area.
void DrawLine(Picture& picture, const PlotArea& area, const CDblPolyline& line, const Look& look) {
  if (!(line.width > 0)) return;
  std::vector<CDblPoint> piece;
  const auto finish = [&] {
    picture.Line(piece, line.paint, line.width * look.scale, line.dashed);
    piece.clear();
  };
  for (const CDblPoint& point : line) {
    if (IsShown(point.x) && IsShown(point.y))
      piece.push_back(area.Within(point.x, point.y));
    else
      finish();
  }
  finish();
}

// Makes targets of a line's points, where they are to be, and gathers their marks.
void AddPoints(Picture& picture, const PlotArea& area, const CDblPolyline& line, int32_t index, bool isTarget,
               MarkLayer& marks) {
  for (int32_t i = 0; i < line.GetSize(); ++i) {
    const CDblPoint& point = line[i];
    if (!IsShown(point.x) || !IsShown(point.y)) continue;
    const CDblPoint at = area.Within(point.x, point.y);
    if (isTarget) picture.AddTarget({at, index, i});
    if (!line.marked) continue;
    if (line.verdicts.HasIndex(i))
      marks.Add(at, static_cast<Verdict>(line.verdicts[i]));
    else
      marks.Add(at, line.paint);
  }
}

// Makes `whole` wide enough for `part`, which may hold nothing.
void Join(Interval& whole, Interval part) {
  if (!(part.lower <= part.upper)) return;
  Widen(whole, part.lower);
  Widen(whole, part.upper);
}

Ticks YTicks(std::span<const CDblPolyline> lines, const PlotExtras& extras) {
  Interval y = kNoInterval;
  for (const CDblPolyline& line : lines) Join(y, Extent(line, line.yRange, &CDblPoint::y));
  for (const LevelLine& level : extras.levels) Widen(y, level.y);
  return TicksFor(y, extras.ySteps);
}

}  // namespace

double LabelsOf(std::span<const CDblPolyline> lines, const Look& look, const PlotExtras& extras) {
  return PlotArea::LabelWidth(YTicks(lines, extras), look);
}

Rect DrawPolylines(Picture& picture, Rect box, std::span<const CDblPolyline> lines, const Look& look,
                   const PlotExtras& extras) {
  constexpr int32_t kXSteps = 8;
  Interval x = kNoInterval;
  for (const CDblPolyline& line : lines) Join(x, Extent(line, line.xRange, &CDblPoint::x));
  const Ticks yTicks = YTicks(lines, extras);
  Ticks xTicks =
      extras.xNames.empty() ? TicksFor(x, kXSteps) : NamedTicks({extras.xNames.begin(), extras.xNames.end()});
  if (extras.isXExact) xTicks.range = x;
  const PlotArea area(PlotArea::Inner(box, yTicks, look, extras.hasX, extras.above, extras.yLabels), xTicks,
                      yTicks);
  const WideView xHeading = lines.empty() ? WideView() : lines.front().xHeading.View();
  area.PaintY(picture, look, lines.empty() ? WideView() : lines.front().yHeading.View());
  area.PaintX(picture, look, extras.hasX ? xHeading : WideView(), {extras.hasX, extras.hasXGrid});
  for (const LevelLine& level : extras.levels)
    area.Horizontal(picture, level.y, level.paint, look.scale, level.dashed);
  picture.Frame(area.Box(), Role::kFrame);
  MarkLayer marks;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    DrawLine(picture, area, lines[extras.isFirstOnTop ? lines.size() - 1 - i : i], look);
    AddPoints(picture, area, lines[i], static_cast<int32_t>(i), i < extras.targetLines, marks);
  }
  marks.Draw(picture, look);
  picture.AddScale(area.GetScale());
  return area.Box();
}

void DrawStrips(Picture& picture, Rect box, std::span<const PlotStrip> strips, const Look& look,
                const std::function<void(std::size_t, Picture&, const Rect&)>& drawn) {
  const double below = 1.5 * look.textHeight + 4 * look.scale;
  const double height = (box.height - below) / static_cast<double>(std::max<std::size_t>(strips.size(), 1));
  PlotExtras extras{.hasXGrid = false, .isXExact = true, .ySteps = 3};
  for (const PlotStrip& strip : strips)
    extras.yLabels = std::max(extras.yLabels, LabelsOf(strip.lines, look, extras));
  double top = box.top;
  int32_t lines = 0;
  for (std::size_t i = 0; i < strips.size(); ++i, top += height) {
    extras.hasX = i + 1 == strips.size();
    extras.levels = strips[i].levels;
    extras.targetLines = strips[i].targetLines;
    Picture strip;
    const Rect place{box.left, top, box.width, extras.hasX ? box.Bottom() - top : height};
    const Rect area = DrawPolylines(strip, place, strips[i].lines, look, extras);
    if (drawn) drawn(i, strip, area);
    picture.Append(strip, lines);
    lines += static_cast<int32_t>(strips[i].lines.size());
  }
}

CString PointName(std::span<const CDblPolyline> lines, const Target& target) {
  if (static_cast<std::size_t>(target.line) >= lines.size()) return {};
  const CDblPolyline& line = lines[static_cast<std::size_t>(target.line)];
  if (!line.HasIndex(target.index)) return {};
  CString name = line.names.HasIndex(target.index) ? line.names[target.index] : line.name;
  if (!name.IsEmpty()) name += u": ";
  name += NumberText(line[target.index].x);
  name += u"; ";
  name += NumberText(line[target.index].y);
  return name;
}

void MarkCurrent(Picture& picture, int32_t current, const Look& look) {
  if (current < 0 || static_cast<std::size_t>(current) >= picture.Targets().size()) return;
  const CDblPoint at = picture.Targets()[static_cast<std::size_t>(current)].at;
  const double r = 6 * look.scale;
  picture.Ellipse({at.x - r, at.y - r, 2 * r, 2 * r}, std::nullopt, Paint(Role::kText), 2 * look.scale);
}

}  // namespace vrx::pictures
