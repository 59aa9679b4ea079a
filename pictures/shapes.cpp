#include "pictures/shapes.h"

#include <algorithm>
#include <utility>

#include <vrxmath/foundation/numbers.h>

namespace vrx::pictures {
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

// The colours of verdicts, areas and curves on light paper and on dark paper. Lines and marks stand out from paper and areas as
// texts do, by 4.5 to 1 on white.
uint32_t SignalColor(Role role, bool isOnDark) {
  switch (role) {
    case Role::kTrial:
      return isOnDark ? 0xFFB06C : 0xC16311;
    case Role::kOther:
      return isOnDark ? 0xE090D0 : 0x9C4A7A;
    case Role::kPass:
      return isOnDark ? 0x64D356 : 0x377F1A;
    case Role::kWarning:
      return isOnDark ? 0x41B3E3 : 0x02598F;
    case Role::kInside:
      return isOnDark ? 0x25331D : 0xE5F0E2;
    case Role::kBand:
      return isOnDark ? 0x18323B : 0xD0EFFB;
    default:
      return isOnDark ? 0x7880FF : 0x1823B4;
  }
}

}  // namespace

Palette PaperPalette() {
  Palette palette;
  palette.text = 0x241F1B;  // a black that is easier on the eye
  return palette;
}

uint32_t ColorOf(Paint paint, const Palette& palette, double strength) {
  if (strength < 1) return Between(palette.paper, ColorOf(paint, palette), strength);
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
    case Role::kInside:
    case Role::kBand:
      return palette.highContrast ? palette.paper : SignalColor(paint.GetRole(), IsDark(palette.paper));
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

void Picture::Text(Rect box, WideView text, Paint color, Align align, double fontSize) {
  if (text.empty()) return;
  Shape shape;
  shape.kind = Shape::Kind::kText;
  shape.box = box;
  shape.fill = color;
  shape.text = text;
  shape.align = align;
  shape.fontSize = fontSize;
  shapes_.push_back(std::move(shape));
}

void Picture::AddMark(CDblPoint at, Mark mark, Paint paint, double radius) {
  AddMarks(std::array{at}, mark, paint, radius);
}

void Picture::AddMarks(std::span<const CDblPoint> points, Mark mark, Paint paint, double radius,
                       double strength) {
  if (points.empty()) return;
  Shape shape;
  shape.kind = Shape::Kind::kMarks;
  shape.points.assign(points.begin(), points.end());
  shape.mark = mark;
  shape.fill = paint;
  shape.radius = radius;
  shape.strength = strength;
  shapes_.push_back(std::move(shape));
}

void Picture::Append(const Picture& other, int32_t lines, double down) {
  for (Shape shape : other.shapes_) {
    shape.box.top += down;
    for (CDblPoint& point : shape.points) point.y += down;
    shapes_.push_back(std::move(shape));
  }
  for (Target target : other.targets_) {
    target.line += lines;
    target.at.y += down;
    targets_.push_back(target);
  }
  for (Scale scale : other.scales_) {
    scale.y0 += down;
    scales_.push_back(scale);
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

std::vector<Shape> ShapesOfMarks(const Shape& marks) {
  Picture parts;
  const double r = marks.radius;
  for (const auto& [x, y] : marks.points) {
    switch (marks.mark) {
      case Mark::kDot:
        parts.Ellipse({x - r, y - r, 2 * r, 2 * r}, marks.fill, std::nullopt);
        break;
      case Mark::kTriangle:
        parts.Polygon(std::array<CDblPoint, 3>{{{x, y - r}, {x + r, y + r}, {x - r, y + r}}}, *marks.fill);
        break;
      case Mark::kCross:
        parts.Line({x - r, y - r}, {x + r, y + r}, *marks.fill, r / 2);
        parts.Line({x - r, y + r}, {x + r, y - r}, *marks.fill, r / 2);
        break;
      case Mark::kPlus:
        parts.Line({x - r, y}, {x + r, y}, *marks.fill);
        parts.Line({x, y - r}, {x, y + r}, *marks.fill);
        break;
      case Mark::kTick:
        parts.Line({x - r, y}, {x + r, y}, *marks.fill, r / 4);
        break;
    }
  }
  std::vector<Shape> shapes = parts.Shapes();
  for (Shape& shape : shapes) shape.strength = marks.strength;
  return shapes;
}

}  // namespace vrx::pictures
