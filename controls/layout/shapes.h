// The vocabulary of what controls draw: rectangles, lines, polygons, ellipses and texts in a picture.
//
// Lengths are pixels of the device, from the top left corner, y downwards. A picture is data: it is made here from the
// control's data, looked at by tests, and painted by whoever has a device (controls/win32/painter.h).

#ifndef CONTROLS_LAYOUT_SHAPES_H_
#define CONTROLS_LAYOUT_SHAPES_H_

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include <vrxmath/platform/wide_string.h>

#include "controls/layout/dbl_point.h"
#include "controls/layout/paint.h"

namespace vrx::controls {

/// The system's colours, 0x00BBGGRR each.
struct Palette {
  uint32_t paper = 0xFFFFFF, text = 0, muted = 0x6D6D6D, face = 0xF0F0F0, faceText = 0, selection = 0xD77800,
           selectionText = 0xFFFFFF;
  bool highContrast = false;  ///< only the system's own colours are used then
};

/// The colour that stands for `paint`. With high contrast verdicts, curves and frames have the colour of text: shapes and
/// dashes tell them apart.
[[nodiscard]] uint32_t ColorOf(Paint paint, const Palette& palette);

struct Rect {
  double left = 0, top = 0, width = 0, height = 0;
  [[nodiscard]] double Right() const { return left + width; }
  [[nodiscard]] double Bottom() const { return top + height; }
  [[nodiscard]] CDblPoint Centre() const { return {left + width / 2, top + height / 2}; }
  /// The left and top edges belong to the rectangle, the right and bottom ones do not.
  [[nodiscard]] bool Contains(CDblPoint point) const {
    return left <= point.x && point.x < Right() && top <= point.y && point.y < Bottom();
  }
  /// Made smaller by `margin` on each side, down to nothing.
  [[nodiscard]] Rect Inset(double margin) const;
  bool operator==(const Rect&) const = default;
};

enum class Align : uint8_t { kStart, kMiddle, kEnd };

struct Shape {
  enum class Kind : uint8_t { kRectangle, kLine, kPolygon, kEllipse, kText };
  Kind kind = Kind::kRectangle;
  Rect box;  ///< of a rectangle, an ellipse or a text, whose single line stands in its middle
  std::vector<CDblPoint> points;  ///< of a line or a polygon
  std::optional<Paint> fill;      ///< the colour of a text
  std::optional<Paint> stroke;
  double strokeWidth = 1;
  bool dashed = false;
  CString text;  ///< cut with an ellipsis where the box is too narrow
  Align align = Align::kStart;
  bool keepsDirection = false;  ///< as a check mark, which is the same in every writing
};

/// Shapes that are told apart without colour: a pass is a dot, a warning a triangle, a fail a cross.
enum class Mark : uint8_t { kDot, kTriangle, kCross, kPlus };

/// A part of a picture that a person can point at, step to by keys and have read aloud: an element of what was drawn.
struct Target {
  CDblPoint at;
  int32_t line = 0;   ///< the polyline, or 0 where there is but one series
  int32_t index = 0;  ///< the element of it
};

/// How large things are on the device.
struct Look {
  double scale = 1;        ///< dots per inch / 96
  double textHeight = 15;  ///< of a line
  double digitWidth = 7;   ///< the average width of a character

  [[nodiscard]] double TextWidth(WideView text) const {
    return digitWidth * static_cast<double>(text.size());
  }
};

/// Shapes in the order of painting.
class Picture {
 public:
  void Rectangle(Rect box, Paint fill);
  void Frame(Rect box, Paint stroke, double width = 1);
  void Line(std::span<const CDblPoint> points, Paint stroke, double width = 1, bool dashed = false);
  void Line(CDblPoint from, CDblPoint to, Paint stroke, double width = 1, bool dashed = false);
  void Polygon(std::span<const CDblPoint> points, Paint fill);
  void Ellipse(Rect box, std::optional<Paint> fill, std::optional<Paint> stroke, double width = 1);
  void Text(Rect box, WideView text, Paint color, Align align = Align::kStart);
  /// A mark whose radius is `radius`.
  void AddMark(CDblPoint at, Mark mark, Paint paint, double radius);
  void AddTarget(const Target& target) { targets_.push_back(target); }

  /// The shape that was added last is moved but not turned around by MirrorIn.
  void KeepDirection() { shapes_.back().keepsDirection = true; }
  /// Adds another picture's shapes, and its targets with `lines` added to their line.
  void Append(const Picture& other, int32_t lines);

  [[nodiscard]] const std::vector<Shape>& Shapes() const { return shapes_; }
  [[nodiscard]] const std::vector<Target>& Targets() const { return targets_; }
  /// The nearest target within `reach` of a point; -1 when there is none.
  [[nodiscard]] int32_t TargetAt(CDblPoint point, double reach) const;

  /// Turns the picture around for writing from right to left: a shape's distance from the left edge becomes that from the
  /// right edge, and texts that began on the left begin on the right.
  void MirrorIn(double width);

 private:
  std::vector<Shape> shapes_;
  std::vector<Target> targets_;
};

}  // namespace vrx::controls

#endif  // CONTROLS_LAYOUT_SHAPES_H_
