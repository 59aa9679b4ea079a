// Axes: round values for ticks, their labels, and the way from values to pixels.

#ifndef PICTURES_AXES_H_
#define PICTURES_AXES_H_

#include <cstdint>
#include <vector>

#include <vrxmath/support/axis_ticks.h>
#include <vrxmath/tolerance/interval.h>

#include "pictures/shapes.h"

namespace vrx::pictures {

/// The interval made wider to hold `value`; unset, infinite and NaN values are passed over. Starts as kNoInterval.
inline constexpr Interval kNoInterval{1e300, -1e300};
void Widen(Interval& interval, double value);

/// A value of an axis that has a name, as a lamp or a geometry.
struct NamedValue {
  double value = 0;
  CString name;
};

/// The ticks of an axis, with their labels, and what the axis shows.
struct Ticks : AxisTicks {
  std::vector<NamedValue> names;  ///< in place of the round values, where there are any
  Interval range = kNoInterval;   ///< what the axis shows; the round values' where it is empty

  [[nodiscard]] double Lower() const { return range.lower < range.upper ? range.lower : first; }
  [[nodiscard]] double Upper() const { return range.lower < range.upper ? range.upper : Last(); }
  /// What is marked on the axis, with its labels: the names, or the round values that the axis shows.
  [[nodiscard]] std::vector<NamedValue> Shown(const Look& look) const;
};

/// Ticks at multiples of 1, 2 or 5 times a power of ten, in at most `steps` + 2 steps. Of an interval without length the axis
/// shows one of length 1, with the value in its middle; one that is not finite is taken for 0 to 1.
[[nodiscard]] Ticks TicksFor(Interval values, int32_t steps);
/// The axis that has zero in its middle and reaches as far as `reach` and a little more.
[[nodiscard]] Ticks SymmetricTicks(double reach);
/// An axis of named values, which reaches half a usual distance beyond the first and the last; `values` ascend.
[[nodiscard]] Ticks NamedTicks(std::vector<NamedValue> values);

/// How an axis is drawn.
struct AxisStyle {
  bool hasLabels = true;
  bool hasGrid = true;
};

/// A rectangle in which values are plotted.
class PlotArea {
 public:
  PlotArea(Rect box, Ticks x, Ticks y);
  /// What is left of `box` when the labels and headings of both axes have their places about it. `above`: further room over
  /// the heading of y; `labels`: room for the labels of y at least, so that areas below each other are of one width.
  [[nodiscard]] static Rect Inner(Rect box, const Ticks& y, const Look& look, bool withX = true,
                                  double above = 0, double labels = 0);

  [[nodiscard]] const Rect& Box() const { return box_; }
  [[nodiscard]] double X(double value) const;
  [[nodiscard]] double Y(double value) const;
  [[nodiscard]] CDblPoint At(double x, double y) const { return {X(x), Y(y)}; }
  /// The same, moved to the edge of the area where the value lies beyond it.
  [[nodiscard]] CDblPoint Within(double x, double y) const;
  [[nodiscard]] Scale GetScale() const;

  /// Grid, labels and headings. The labels of y stand on the left, those of x below. Labels that would touch are left out.
  void PaintX(Picture& picture, const Look& look, WideView heading, AxisStyle style = {}) const;
  void PaintY(Picture& picture, const Look& look, WideView heading, AxisStyle style = {}) const;

  /// A line across the area; nothing beyond it.
  void Horizontal(Picture& picture, double y, Paint paint, double width, bool dashed) const;
  void Vertical(Picture& picture, double x, Paint paint, double width, bool dashed) const;

  /// How much room the labels of y need to the left of the area.
  [[nodiscard]] static double LabelWidth(const Ticks& y, const Look& look);

 private:
  Rect box_;
  Ticks x_, y_;
};

}  // namespace vrx::pictures

#endif  // PICTURES_AXES_H_
