#include "pictures/axes.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <utility>

#include <vrxmath/support/number_text.h>

namespace vrx::pictures {
namespace {

// Steps of an axis about zero, whatever its size: ranges do not change with the resolution.
constexpr int32_t kSymmetricSteps = 6;

CString LabelOf(double value, int32_t decimals, const Look& look) {
  CValueRange range;
  range.decimals = decimals;
  if (look.isLocal) return NumberText(value, range);
  char text[400];
  const char* end = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, decimals).ptr;
  return CString::FromUtf8({text, static_cast<std::size_t>(end - text)});
}

}  // namespace

void Widen(Interval& interval, double value) {
  if (!IsShown(value)) return;
  interval.lower = std::min(interval.lower, value);
  interval.upper = std::max(interval.upper, value);
}

std::vector<NamedValue> Ticks::Shown(const Look& look) const {
  if (!names.empty()) return names;
  std::vector<NamedValue> shown;
  const double slack = step * 1e-9;
  for (int32_t i = 0; i < count; ++i) {
    const double value = At(i);
    if (value < Lower() - slack || value > Upper() + slack) continue;
    shown.push_back({value, LabelOf(value, decimals, look)});
  }
  return shown;
}

Ticks TicksFor(Interval values, int32_t steps) {
  Ticks ticks;
  if (!(std::isfinite(values.lower) && std::isfinite(values.upper) && values.lower <= values.upper)) {
    if (!std::isfinite(values.lower) || std::fabs(values.lower) > 1e12) values.lower = 0;
    values.upper = values.lower + 1;
  } else if (values.lower == values.upper) {
    values = {values.lower - 0.5, values.lower + 0.5};
    ticks.range = values;
  }
  static_cast<AxisTicks&>(ticks) = EnclosingTicks(values.lower, values.upper, steps);
  return ticks;
}

Ticks SymmetricTicks(double reach) {
  if (!(reach > 0) || !std::isfinite(reach)) reach = 1;
  return TicksFor({-1.05 * reach, 1.05 * reach}, kSymmetricSteps);
}

Ticks NamedTicks(std::vector<NamedValue> values) {
  Ticks ticks;
  if (values.empty()) return ticks;
  const double first = values.front().value, last = values.back().value;
  const double margin = last > first ? 0.5 * (last - first) / static_cast<double>(values.size() - 1) : 0.5;
  ticks.names = std::move(values);
  ticks.range = {first - margin, last + margin};
  return ticks;
}

PlotArea::PlotArea(Rect box, Ticks x, Ticks y) : box_(box), x_(std::move(x)), y_(std::move(y)) {
  box_.width = std::max(box_.width, 1.0);
  box_.height = std::max(box_.height, 1.0);
}

Rect PlotArea::Inner(Rect box, const Ticks& y, const Look& look, bool withX, double above, double labels) {
  const double left = std::max(LabelWidth(y, look), labels) + 8 * look.scale,
               top = 2 * look.textHeight + above;
  const double below = withX ? 2 * look.textHeight + 4 * look.scale : look.textHeight / 2;
  return {box.left + left, box.top + top, box.width - left - 2 * look.digitWidth, box.height - top - below};
}

double PlotArea::X(double value) const {
  return box_.left + (value - x_.Lower()) / (x_.Upper() - x_.Lower()) * box_.width;
}

double PlotArea::Y(double value) const {
  return box_.Bottom() - (value - y_.Lower()) / (y_.Upper() - y_.Lower()) * box_.height;
}

CDblPoint PlotArea::Within(double x, double y) const {
  return {std::clamp(X(x), box_.left, box_.Right()), std::clamp(Y(y), box_.top, box_.Bottom())};
}

Scale PlotArea::GetScale() const {
  return {X(0), box_.width / (x_.Upper() - x_.Lower()), Y(0), -box_.height / (y_.Upper() - y_.Lower())};
}

void PlotArea::PaintX(Picture& picture, const Look& look, WideView heading, AxisStyle style) const {
  double free = box_.left - look.textHeight;  // where the next label may begin
  for (const auto& [value, label] : x_.Shown(look)) {
    const double x = X(value);
    if (style.hasGrid) picture.Line({x, box_.top}, {x, box_.Bottom()}, Role::kGrid);
    const double half = look.TextWidth(label) / 2;
    // The last label stays within the margin.
    const double middle = std::min(x, box_.Right() + 2 * look.digitWidth - half);
    if (!style.hasLabels || middle - half < free) continue;
    picture.Text({middle - half - 1, box_.Bottom() + 2 * look.scale, 2 * half + 2, look.textHeight}, label,
                 Role::kLabel, Align::kMiddle);
    free = middle + half + look.digitWidth;
  }
  picture.Text({box_.left, box_.Bottom() + 2 * look.scale + look.textHeight, box_.width, look.textHeight},
               heading, Role::kText, Align::kEnd);
}

void PlotArea::PaintY(Picture& picture, const Look& look, WideView heading, AxisStyle style) const {
  const double width = style.hasLabels ? LabelWidth(y_, look) : 0;
  double free = box_.Bottom() + look.textHeight;  // where the next label may end
  for (const auto& [value, label] : y_.Shown(look)) {
    const double y = Y(value);
    if (style.hasGrid) picture.Line({box_.left, y}, {box_.Right(), y}, Role::kGrid);
    if (!style.hasLabels || y + look.textHeight / 2 > free) continue;
    picture.Text({box_.left - width - 4 * look.scale, y - look.textHeight / 2, width, look.textHeight}, label,
                 Role::kLabel, Align::kEnd);
    free = y - look.textHeight / 2;
  }
  picture.Text({box_.left - width, box_.top - 1.5 * look.textHeight, box_.width + width, look.textHeight},
               heading, Role::kText);
}

void PlotArea::Horizontal(Picture& picture, double y, Paint paint, double width, bool dashed) const {
  if (!IsShown(y) || Y(y) < box_.top || Y(y) > box_.Bottom()) return;
  picture.Line({box_.left, Y(y)}, {box_.Right(), Y(y)}, paint, width, dashed);
}

void PlotArea::Vertical(Picture& picture, double x, Paint paint, double width, bool dashed) const {
  if (!IsShown(x) || X(x) < box_.left || X(x) > box_.Right()) return;
  picture.Line({X(x), box_.top}, {X(x), box_.Bottom()}, paint, width, dashed);
}

double PlotArea::LabelWidth(const Ticks& y, const Look& look) {
  double width = 0;
  for (const NamedValue& tick : y.Shown(look)) width = std::max(width, look.TextWidth(tick.name));
  return width;
}

}  // namespace vrx::pictures
