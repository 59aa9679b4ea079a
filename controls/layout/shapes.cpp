#include "controls/layout/shapes.h"

#include <algorithm>
#include <utility>

#include <vrxmath/foundation/numbers.h>

namespace vrx::controls {
namespace {

// A colour `part` of the way from `from` to `to`, channel by channel.
uint32_t Between(uint32_t from, uint32_t to, double part) {
  uint32_t mixed = 0;
  for (uint32_t shift = 0; shift < 24; shift += 8) {
    const double a = from >> shift & 0xFF, b = to >> shift & 0xFF;
    mixed |= static_cast<uint32_t>(RoundToWhole(a + (b - a) * part)) << shift;
  }
  return mixed;
}

bool IsDark(uint32_t color) {
  return (color & 0xFF) * 0.299 + (color >> 8 & 0xFF) * 0.587 + (color >> 16 & 0xFF) * 0.114 < 128;
}

// The colours of verdicts and of curves on light paper and on dark paper.
uint32_t SignalColor(Role role, bool isOnDark) {
  switch (role) {
    case Role::kTrial:
      return isOnDark ? 0xF0B060 : 0xB45A14;
    case Role::kOther:
      return isOnDark ? 0xE090D0 : 0x9C4A7A;
    case Role::kPass:
      return isOnDark ? 0x78C850 : 0x3C821E;
    case Role::kWarning:
      return isOnDark ? 0x40B4F0 : 0x0A6EBE;
    default:
      return isOnDark ? 0x7070FF : 0x2828C8;
  }
}

}  // namespace

uint32_t ColorOf(Paint paint, const Palette& palette) {
  if (paint.IsFixed()) return paint.FixedColor();
  switch (paint.GetRole()) {
    case Role::kPaper:
      return palette.paper;
    case Role::kText:
    case Role::kStandard:
      return palette.text;
    case Role::kMuted:
      return palette.muted;
    case Role::kFace:
      return palette.face;
    case Role::kFaceText:
      return palette.faceText;
    case Role::kSelection:
      return palette.selection;
    case Role::kSelectionText:
      return palette.selectionText;
    case Role::kFrame:
      return palette.highContrast ? palette.text : Between(palette.paper, palette.text, 0.45);
    case Role::kLabel:
      return palette.highContrast ? palette.text : Between(palette.paper, palette.text, 0.65);
    case Role::kGrid:
      return palette.highContrast ? palette.muted : Between(palette.paper, palette.text, 0.12);
    default:
      return palette.highContrast ? palette.text : SignalColor(paint.GetRole(), IsDark(palette.paper));
  }
}

Rect Rect::Inset(double margin) const {
  const double x = std::min(margin, width / 2), y = std::min(margin, height / 2);
  return {left + x, top + y, width - 2 * x, height - 2 * y};
}

void Picture::Rectangle(Rect box, Paint fill) {
  Shape shape;
  shape.box = box;
  shape.fill = fill;
  shapes_.push_back(std::move(shape));
}

void Picture::Frame(Rect box, Paint stroke, double width) {
  Shape shape;
  shape.box = box;
  shape.stroke = stroke;
  shape.strokeWidth = width;
  shapes_.push_back(std::move(shape));
}

void Picture::Line(std::span<const CDblPoint> points, Paint stroke, double width, bool dashed) {
  if (points.size() < 2) return;
  Shape shape;
  shape.kind = Shape::Kind::kLine;
  shape.points.assign(points.begin(), points.end());
  shape.stroke = stroke;
  shape.strokeWidth = width;
  shape.dashed = dashed;
  shapes_.push_back(std::move(shape));
}

void Picture::Line(CDblPoint from, CDblPoint to, Paint stroke, double width, bool dashed) {
  Line(std::array<CDblPoint, 2>{from, to}, stroke, width, dashed);
}

void Picture::Polygon(std::span<const CDblPoint> points, Paint fill) {
  if (points.size() < 3) return;
  Shape shape;
  shape.kind = Shape::Kind::kPolygon;
  shape.points.assign(points.begin(), points.end());
  shape.fill = fill;
  shapes_.push_back(std::move(shape));
}

void Picture::Ellipse(Rect box, std::optional<Paint> fill, std::optional<Paint> stroke, double width) {
  Shape shape;
  shape.kind = Shape::Kind::kEllipse;
  shape.box = box;
  shape.fill = fill;
  shape.stroke = stroke;
  shape.strokeWidth = width;
  shapes_.push_back(std::move(shape));
}

void Picture::Text(Rect box, WideView text, Paint color, Align align) {
  if (text.empty()) return;
  Shape shape;
  shape.kind = Shape::Kind::kText;
  shape.box = box;
  shape.fill = color;
  shape.text = text;
  shape.align = align;
  shapes_.push_back(std::move(shape));
}

void Picture::AddMark(CDblPoint at, Mark mark, Paint paint, double radius) {
  const double r = radius;
  switch (mark) {
    case Mark::kDot:
      Ellipse({at.x - r, at.y - r, 2 * r, 2 * r}, paint, std::nullopt);
      break;
    case Mark::kTriangle:
      Polygon(std::array<CDblPoint, 3>{{{at.x, at.y - r}, {at.x + r, at.y + r}, {at.x - r, at.y + r}}},
              paint);
      break;
    case Mark::kCross:
      Line({at.x - r, at.y - r}, {at.x + r, at.y + r}, paint, r / 2);
      Line({at.x - r, at.y + r}, {at.x + r, at.y - r}, paint, r / 2);
      break;
    case Mark::kPlus:
      Line({at.x - r, at.y}, {at.x + r, at.y}, paint);
      Line({at.x, at.y - r}, {at.x, at.y + r}, paint);
      break;
  }
}

void Picture::Append(const Picture& other, int32_t lines) {
  shapes_.insert(shapes_.end(), other.shapes_.begin(), other.shapes_.end());
  for (Target target : other.targets_) {
    target.line += lines;
    targets_.push_back(target);
  }
}

int32_t Picture::TargetAt(CDblPoint point, double reach) const {
  int32_t nearest = -1;
  double best = reach * reach;
  for (std::size_t i = 0; i < targets_.size(); ++i) {
    const double dx = targets_[i].at.x - point.x, dy = targets_[i].at.y - point.y;
    const double distance = dx * dx + dy * dy;
    if (distance > best || (distance == best && nearest >= 0)) continue;
    best = distance;
    nearest = static_cast<int32_t>(i);
  }
  return nearest;
}

void Picture::MirrorIn(double width) {
  for (Shape& shape : shapes_) {
    shape.box.left = width - shape.box.Right();
    double middle = 0;
    for (const CDblPoint& point : shape.points) middle += point.x / static_cast<double>(shape.points.size());
    for (CDblPoint& point : shape.points) {
      point.x = shape.keepsDirection ? point.x + width - 2 * middle : width - point.x;
    }
    if (shape.align != Align::kMiddle)
      shape.align = shape.align == Align::kStart ? Align::kEnd : Align::kStart;
  }
  for (Target& target : targets_) target.at.x = width - target.at.x;
}

}  // namespace vrx::controls
