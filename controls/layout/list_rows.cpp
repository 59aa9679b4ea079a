#include "controls/layout/list_rows.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace vrx::controls {

int32_t RowLayout::Height() const {
  return static_cast<int32_t>(std::ceil(look_.textHeight + 4 * look_.scale));
}

// Check marks and expanders stand in squares.
double RowLayout::CellWidth() const {
  return Height();
}

double RowLayout::BarCells(const RowLook& row) {
  return !row.standard ? 0 : row.trial ? 4 : 2;
}

double RowLayout::Indent(const RowLook& row) const {
  return isTree_ ? CellWidth() * row.level : 0;
}

double RowLayout::TextLeft(const RowLook& row) const {
  double left = Indent(row) + 3 * look_.scale;
  if (isTree_) left += CellWidth();
  if (row.check != CheckState::kNone) left += CellWidth();
  return left + BarCells(row) * CellWidth();
}

RowPart RowLayout::PartAt(const RowLook& row, double x) const {
  double left = Indent(row);
  if (isTree_) {
    if (x >= left && x < left + CellWidth() && row.expander != Expander::kNone) return RowPart::kExpander;
    left += CellWidth();
  }
  const bool isOnCheck = row.check != CheckState::kNone && x >= left && x < left + CellWidth();
  return isOnCheck ? RowPart::kCheck : RowPart::kText;
}

void RowLayout::Draw(Picture& picture, Rect box, const RowLook& row) const {
  const Paint ink = !row.enabled ? Role::kMuted : row.selected ? Role::kSelectionText : Role::kText;
  picture.Rectangle(box, row.selected ? Role::kSelection : Role::kPaper);
  double left = box.left + Indent(row);
  const double cell = CellWidth();
  if (isTree_) {
    DrawExpander(picture, {left, box.top, cell, box.height}, row, ink);
    left += cell;
  }
  if (row.check != CheckState::kNone) {
    DrawCheck(picture, {left, box.top, cell, box.height}, row.check);
    left += cell;
  }
  if (row.standard) DrawBar(picture, {left, box.top, BarCells(row) * cell, box.height}, row);
  left = box.left + TextLeft(row);
  WideView rest = row.text;
  double columnLeft = box.left;
  for (std::size_t column = 0;; ++column) {
    const std::size_t tab = rest.find(u'\t');
    const bool isLast = column >= columns.size();
    const double right = isLast ? box.Right() : columnLeft + columns[column];
    picture.Text({left, box.top, std::max(right - left - 2 * look_.scale, 0.0), box.height},
                 rest.substr(0, tab), ink);
    if (isLast || tab == WideView::npos) break;
    rest.remove_prefix(tab + 1);
    columnLeft = right;
    left = right + 3 * look_.scale;
  }
  if (row.hasFocus) picture.Frame(box, row.selected ? Role::kSelectionText : Role::kText);
}

void RowLayout::DrawExpander(Picture& picture, Rect box, const RowLook& row, Paint paint) const {
  if (row.expander == Expander::kNone) return;
  const CDblPoint c = box.Centre();
  const double r = 4 * look_.scale;
  if (row.expander == Expander::kOpen) {
    picture.Polygon(
        std::array<CDblPoint, 3>{{{c.x - r, c.y - r / 2}, {c.x + r, c.y - r / 2}, {c.x, c.y + r / 2}}},
        paint);
  } else {
    picture.Polygon(
        std::array<CDblPoint, 3>{{{c.x - r / 2, c.y - r}, {c.x + r / 2, c.y}, {c.x - r / 2, c.y + r}}},
        paint);
  }
}

void RowLayout::DrawCheck(Picture& picture, Rect box, CheckState state) const {
  const CDblPoint c = box.Centre();
  const double r = std::floor(5.5 * look_.scale);
  const Rect square{std::floor(c.x - r), std::floor(c.y - r), 2 * r + 1, 2 * r + 1};
  picture.Rectangle(square, Role::kPaper);
  picture.Frame(square, Role::kFrame);
  if (state == CheckState::kMixed) picture.Rectangle(square.Inset(3 * look_.scale), Role::kText);
  if (state != CheckState::kOn) return;
  const CDblPoint m = square.Centre();
  const double s = r * 0.6;
  picture.Line(std::array<CDblPoint, 3>{{{m.x - s, m.y}, {m.x - s / 3, m.y + s * 0.7}, {m.x + s, m.y - s}}},
               Role::kText, 2 * look_.scale);
  picture.KeepDirection();
}

void RowLayout::DrawBar(Picture& picture, Rect box, const RowLook& row) const {
  const Rect bar{box.left + 3 * look_.scale, box.top + 2 * look_.scale, box.width - 6 * look_.scale,
                 box.height - 4 * look_.scale};
  SwatchPair pair;
  pair.standard = *row.standard;
  pair.hasTrial = row.trial.has_value();
  if (pair.hasTrial) pair.trial = *row.trial;
  DrawSwatchPair(picture, bar, pair, look_);
  picture.Frame(bar, Role::kFrame);
}

void DrawDropLine(Picture& picture, double y, double width, const Look& look) {
  const double thick = 2 * look.scale;
  picture.Rectangle({0, std::max(y - thick / 2, 0.0), width, thick}, Role::kText);
}

}  // namespace vrx::controls
