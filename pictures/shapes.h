// The vocabulary of pictures: rectangles, lines, polygons, ellipses, marks and texts.
//
// Lengths are pixels of the device, from the top left corner, y downwards. A picture is data: charts make it, tests look at it,
// and a painter puts it on what it has: an SVG (svg_painter.h), a PNG (png_painter.h), a window (controls/win32/painter.h).

#ifndef PICTURES_SHAPES_H_
#define PICTURES_SHAPES_H_

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include <vrxmath/platform/wide_string.h>

#include "pictures/dbl_point.h"
#include "pictures/paint.h"

namespace vrx::pictures {

/// The system's colours, 0x00BBGGRR each.
struct Palette {
  uint32_t paper = 0xFFFFFF, text = 0, muted = 0x6D6D6D, face = 0xF0F0F0, faceText = 0, selection = 0xD77800,
           selectionText = 0xFFFFFF;
  bool highContrast = false;  ///< only the system's own colours are used then
};

/// The palette of a picture on paper, in a file of its own.
[[nodiscard]] Palette PaperPalette();

/// The colour that stands for `paint`. With high contrast verdicts, curves and frames have the colour of text, and areas that of
/// paper: shapes, outlines and dashes tell them apart. `strength`: how far the colour stands out from the paper, 0 to 1.
[[nodiscard]] uint32_t ColorOf(Paint paint, const Palette& palette, double strength = 1);

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

/// Shapes that are told apart without colour: a pass is a dot, a warning a triangle, a fail a cross.
enum class Mark : uint8_t { kDot, kTriangle, kCross, kPlus, kTick };

struct Shape {
  enum class Kind : uint8_t { kRectangle, kLine, kPolygon, kEllipse, kText, kMarks };
  Kind kind = Kind::kRectangle;
  Rect box;  ///< of a rectangle, an ellipse or a text, whose single line stands in its middle
  std::vector<CDblPoint> points;  ///< of a line or a polygon, or where a mark stands
  std::optional<Paint> fill;      ///< the colour of a text or of marks
  double strength = 1;            ///< of the fill: less is nearer to the paper
  Mark mark = Mark::kDot;
  double radius = 0;  ///< of marks: how far they reach on every side
  std::optional<Paint> stroke;
  double strokeWidth = 1;
  bool dashed = false;
  CString text;  ///< a device that measures it cuts it with an ellipsis where the box is too narrow
  Align align = Align::kStart;
  double fontSize = 0;          ///< of a text; 0: the painter's own
  std::optional<Paint> plate;   ///< of a text: the ground behind its letters, no wider than they are
  bool keepsDirection = false;  ///< as a check mark, which is the same in every writing
};

/// Where values stand: x = x0 + perX * value, and y likewise.
struct Scale {
  double x0 = 0, perX = 1, y0 = 0, perY = -1;
};

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
  bool isLocal = true;  ///< numbers in the conventions of the user, and not with a point whoever reads them

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
  void Text(Rect box, WideView text, Paint color, Align align = Align::kStart, double fontSize = 0);
  /// A mark of a radius, or one at every point.
  void AddMark(CDblPoint at, Mark mark, Paint paint, double radius);
  void AddMarks(std::span<const CDblPoint> points, Mark mark, Paint paint, double radius,
                double strength = 1);
  void AddTarget(const Target& target) { targets_.push_back(target); }
  /// A chart tells where its values stand, so that what is drawn over it later hits them.
  void AddScale(const Scale& scale) { scales_.push_back(scale); }

  /// The shape that was added last is moved but not turned around by MirrorIn.
  void KeepDirection() { shapes_.back().keepsDirection = true; }
  /// The text that was added last stands on a ground of its own.
  void PutOnPlate(Paint plate) { shapes_.back().plate = plate; }
  /// Adds another picture's shapes and scales, and its targets with `lines` added to their line, all `down` lower.
  void Append(const Picture& other, int32_t lines, double down = 0);

  [[nodiscard]] const std::vector<Shape>& Shapes() const { return shapes_; }
  [[nodiscard]] const std::vector<Target>& Targets() const { return targets_; }
  [[nodiscard]] const std::vector<Scale>& Scales() const { return scales_; }
  /// The nearest target within `reach` of a point; -1 when there is none.
  [[nodiscard]] int32_t TargetAt(CDblPoint point, double reach) const;

  /// Turns the picture around for writing from right to left: a shape's distance from the left edge becomes that from the
  /// right edge, and texts that began on the left begin on the right.
  void MirrorIn(double width);

 private:
  std::vector<Shape> shapes_;
  std::vector<Target> targets_;
  std::vector<Scale> scales_;
};

/// Marks as the shapes that they are made of, for painters that know no marks.
[[nodiscard]] std::vector<Shape> ShapesOfMarks(const Shape& marks);

}  // namespace vrx::pictures

#endif  // PICTURES_SHAPES_H_
