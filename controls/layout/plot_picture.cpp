#include "controls/layout/plot_picture.h"

#include <algorithm>
#include <cmath>
#include <unordered_set>
#include <vector>

#include <vrxmath/support/number_text.h>

namespace vrx::controls {
namespace {

// The smallest interval that holds a range, where it is given, and one coordinate of all shown points; kNoInterval for neither.
Interval Extent(const CDblPolyline& line, Interval range, double CDblPoint::*coordinate) {
  const bool isGiven = std::isfinite(range.lower) && std::isfinite(range.upper) && range.lower < range.upper;
  Interval extent = isGiven ? range : kNoInterval;
  for (const CDblPoint& point : line) Widen(extent, point.*coordinate);
  return extent;
}

// Draws one line and its marks into an area.
class LinePainter {
 public:
  LinePainter(Picture& picture, const PlotArea& area, const Look& look)
      : picture_(picture), area_(area), look_(look) {}

  // The marks stand over the line.
  void Add(const CDblPolyline& line, int32_t index) {
    std::vector<CDblPoint> piece;
    std::vector<Target> shown;
    for (int32_t i = 0; i < line.GetSize(); ++i) {
      const CDblPoint& point = line[i];
      if (!IsShown(point.x) || !IsShown(point.y)) {
        PaintPiece(line, piece);
        piece.clear();
        continue;
      }
      piece.push_back(area_.Within(point.x, point.y));
      shown.push_back({piece.back(), index, i});
    }
    PaintPiece(line, piece);
    for (const Target& target : shown) {
      if (line.marked) PaintMark(line, target.index, target.at);
      picture_.AddTarget(target);
    }
  }

 private:
  void PaintPiece(const CDblPolyline& line, const std::vector<CDblPoint>& piece) {
    if (line.width > 0) picture_.Line(piece, line.paint, line.width * look_.scale, line.dashed);
  }

  void PaintMark(const CDblPolyline& line, int32_t i, CDblPoint at) {
    const auto cell = static_cast<uint32_t>(at.x / 2) << 16 | static_cast<uint32_t>(at.y / 2);
    const bool isJudged = line.verdicts.HasIndex(i);
    const auto verdict = isJudged ? static_cast<Verdict>(line.verdicts[i]) : kPass;
    if (!taken_.insert(cell).second && verdict != kFail) return;
    picture_.AddMark(at, MarkOf(verdict), isJudged ? PaintOf(verdict) : line.paint, 3 * look_.scale);
  }

  Picture& picture_;
  const PlotArea& area_;
  const Look& look_;
  std::unordered_set<uint32_t> taken_;
};

// Makes `whole` wide enough for `part`, which may hold nothing.
void Join(Interval& whole, Interval part) {
  if (!(part.lower <= part.upper)) return;
  Widen(whole, part.lower);
  Widen(whole, part.upper);
}

}  // namespace

Paint PaintOf(Verdict verdict) {
  return verdict == kPass ? Role::kPass : verdict == kWarning ? Role::kWarning : Role::kFail;
}

Mark MarkOf(Verdict verdict) {
  return verdict == kPass ? Mark::kDot : verdict == kWarning ? Mark::kTriangle : Mark::kCross;
}

void DrawPolylines(Picture& picture, Rect box, std::span<const CDblPolyline> lines, const Look& look,
                   std::span<const LevelLine> levels, bool withX) {
  Interval x = kNoInterval, y = kNoInterval;
  for (const CDblPolyline& line : lines) {
    Join(x, Extent(line, line.xRange, &CDblPoint::x));
    Join(y, Extent(line, line.yRange, &CDblPoint::y));
  }
  for (const LevelLine& level : levels) Widen(y, level.y);
  const double rows = std::max(box.height / (3 * look.textHeight), 1.0);
  const Ticks yTicks = TicksFor(y, static_cast<int32_t>(std::min(rows, 10.0)));
  const double left = PlotArea::LabelWidth(yTicks, look) + 8 * look.scale;
  const double below = withX ? 2 * look.textHeight + 4 * look.scale : look.textHeight / 2;
  const Rect plot{box.left + left, box.top + 2 * look.textHeight, box.width - left - 2 * look.digitWidth,
                  box.height - 2 * look.textHeight - below};
  const double columns = std::max(plot.width / (7 * look.digitWidth), 1.0);
  const PlotArea area(plot, TicksFor(x, static_cast<int32_t>(std::min(columns, 10.0))), yTicks);
  const WideView xHeading = lines.empty() ? WideView() : lines.front().xHeading.View();
  area.PaintY(picture, look, lines.empty() ? WideView() : lines.front().yHeading.View());
  area.PaintX(picture, look, withX ? xHeading : WideView(), withX);
  for (const LevelLine& level : levels)
    area.Horizontal(picture, level.y, level.paint, look.scale, level.dashed);
  picture.Frame(area.Box(), Role::kFrame);
  LinePainter painter(picture, area, look);
  for (std::size_t i = 0; i < lines.size(); ++i) painter.Add(lines[i], static_cast<int32_t>(i));
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

}  // namespace vrx::controls
