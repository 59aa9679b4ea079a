// Axes: round values for ticks, their labels, and the way from values to pixels.

#ifndef CONTROLS_LAYOUT_AXES_H_
#define CONTROLS_LAYOUT_AXES_H_

#include <cstdint>

#include <vrxmath/support/axis_ticks.h>
#include <vrxmath/tolerance/interval.h>

#include "controls/layout/shapes.h"

namespace vrx::controls {

/// The ticks of an axis, with their labels.
struct Ticks : AxisTicks {
  /// In the user's conventions.
  [[nodiscard]] CString Label(int32_t i) const;
};

/// Ticks at multiples of 1, 2 or 5 times a power of ten, in at most `steps` + 2 steps. An interval without length, or that
/// is not finite, is taken for one of length 1.
[[nodiscard]] Ticks TicksFor(Interval values, int32_t steps);

/// The interval made wider to hold `value`; unset, infinite and NaN values are passed over. Starts as kNoInterval.
inline constexpr Interval kNoInterval{1e300, -1e300};
void Widen(Interval& interval, double value);

/// A rectangle in which values are plotted. The axes run over the ticks, or over given limits.
class PlotArea {
 public:
  PlotArea(Rect box, Ticks x, Ticks y);

  [[nodiscard]] const Rect& Box() const { return box_; }
  [[nodiscard]] double X(double value) const;
  [[nodiscard]] double Y(double value) const;
  [[nodiscard]] CDblPoint At(double x, double y) const { return {X(x), Y(y)}; }
  /// The same, moved to the edge of the area where the value lies beyond it.
  [[nodiscard]] CDblPoint Within(double x, double y) const;

  /// Grid, labels and headings. The labels of y stand on the left, those of x below.
  void PaintX(Picture& picture, const Look& look, WideView heading, bool withLabels = true) const;
  void PaintY(Picture& picture, const Look& look, WideView heading) const;

  /// A horizontal line across the area; nothing beyond it.
  void Horizontal(Picture& picture, double y, Paint paint, double width, bool dashed) const;

  /// How much room the labels of y need to the left of the area.
  [[nodiscard]] static double LabelWidth(const Ticks& y, const Look& look);

 private:
  Rect box_;
  Ticks x_, y_;
};

}  // namespace vrx::controls

#endif  // CONTROLS_LAYOUT_AXES_H_
