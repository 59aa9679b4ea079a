#include "controls/layout/axes.h"

#include <algorithm>
#include <cmath>

#include <vrxmath/support/number_text.h>

namespace vrx::controls {

CString Ticks::Label(int32_t i) const {
  CValueRange range;
  range.decimals = decimals;
  return NumberText(At(i), range);
}

Ticks TicksFor(Interval values, int32_t steps) {
  if (!(std::isfinite(values.lower) && std::isfinite(values.upper) && values.lower < values.upper)) {
    if (!std::isfinite(values.lower) || std::fabs(values.lower) > 1e12) values.lower = 0;
    values.upper = values.lower + 1;
  }
  return {EnclosingTicks(values.lower, values.upper, steps)};
}

void Widen(Interval& interval, double value) {
  if (!IsShown(value)) return;
  interval.lower = std::min(interval.lower, value);
  interval.upper = std::max(interval.upper, value);
}

PlotArea::PlotArea(Rect box, Ticks x, Ticks y) : box_(box), x_(x), y_(y) {
  box_.width = std::max(box_.width, 1.0);
  box_.height = std::max(box_.height, 1.0);
}

double PlotArea::X(double value) const {
  return box_.left + (value - x_.first) / (x_.Last() - x_.first) * box_.width;
}

double PlotArea::Y(double value) const {
  return box_.Bottom() - (value - y_.first) / (y_.Last() - y_.first) * box_.height;
}

CDblPoint PlotArea::Within(double x, double y) const {
  return {std::clamp(X(x), box_.left, box_.Right()), std::clamp(Y(y), box_.top, box_.Bottom())};
}

void PlotArea::PaintX(Picture& picture, const Look& look, WideView heading, bool withLabels) const {
  double free = box_.left - look.textHeight;  // where the next label may begin
  for (int32_t i = 0; i < x_.count; ++i) {
    const double x = X(x_.At(i));
    picture.Line({x, box_.top}, {x, box_.Bottom()}, Role::kGrid);
    const CString label = x_.Label(i);
    const double half = look.TextWidth(label) / 2;
    if (!withLabels || x - half < free) continue;
    picture.Text({x - half - 1, box_.Bottom() + 2 * look.scale, 2 * half + 2, look.textHeight}, label,
                 Role::kLabel, Align::kMiddle);
    free = x + half + look.digitWidth;
  }
  picture.Text({box_.left, box_.Bottom() + 2 * look.scale + look.textHeight, box_.width, look.textHeight},
               heading, Role::kText, Align::kEnd);
}

void PlotArea::PaintY(Picture& picture, const Look& look, WideView heading) const {
  const double width = LabelWidth(y_, look);
  for (int32_t i = 0; i < y_.count; ++i) {
    const double y = Y(y_.At(i));
    picture.Line({box_.left, y}, {box_.Right(), y}, Role::kGrid);
    picture.Text({box_.left - width - 4 * look.scale, y - look.textHeight / 2, width, look.textHeight},
                 y_.Label(i), Role::kLabel, Align::kEnd);
  }
  picture.Text({box_.left - width, box_.top - 1.5 * look.textHeight, box_.width + width, look.textHeight},
               heading, Role::kText);
}

void PlotArea::Horizontal(Picture& picture, double y, Paint paint, double width, bool dashed) const {
  if (!IsShown(y) || Y(y) < box_.top || Y(y) > box_.Bottom()) return;
  picture.Line({box_.left, Y(y)}, {box_.Right(), Y(y)}, paint, width, dashed);
}

double PlotArea::LabelWidth(const Ticks& y, const Look& look) {
  double width = 0;
  for (int32_t i = 0; i < y.count; ++i) width = std::max(width, look.TextWidth(y.Label(i)));
  return width;
}

}  // namespace vrx::controls
