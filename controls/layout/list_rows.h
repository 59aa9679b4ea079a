// The rows of lists as pictures: check marks, colour bars, columns, the indentation of trees.

#ifndef CONTROLS_LAYOUT_LIST_ROWS_H_
#define CONTROLS_LAYOUT_LIST_ROWS_H_

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "controls/layout/pictures.h"
#include "pictures/swatches.h"

namespace vrx::controls {

enum class CheckState : uint8_t { kNone, kOff, kOn, kMixed };
enum class Expander : uint8_t { kNone, kClosed, kOpen };

/// One entry as it is shown.
struct RowLook {
  CString text;  ///< columns are parted by tabs
  CheckState check = CheckState::kNone;
  std::optional<Swatch> standard, trial;  ///< a bar of one colour or of two halves
  int32_t level = 0;                      ///< of a tree
  Expander expander = Expander::kNone;
  bool selected = false;
  bool hasFocus = false;  ///< the row is current in the window with the focus
  bool enabled = true;
};

/// The parts of a row that do something of their own.
enum class RowPart : uint8_t { kText, kCheck, kExpander };

/// Where the parts of rows of one kind are.
class RowLayout {
 public:
  RowLayout(const Look& look, bool isTree) : look_(look), isTree_(isTree) {}

  /// Widths of the columns in pixels; the last one takes what is left. None: one column.
  std::vector<double> columns;

  /// Room for the text, and for bars and check marks, which are squares of a row's height less a margin.
  [[nodiscard]] int32_t Height() const;
  [[nodiscard]] RowPart PartAt(const RowLook& row, double x) const;
  [[nodiscard]] double TextLeft(const RowLook& row) const;
  void Draw(Picture& picture, Rect box, const RowLook& row) const;

 private:
  [[nodiscard]] double Indent(const RowLook& row) const;
  void DrawExpander(Picture& picture, Rect box, const RowLook& row, Paint paint) const;
  void DrawCheck(Picture& picture, Rect box, CheckState state) const;
  void DrawBar(Picture& picture, Rect box, const RowLook& row) const;
  [[nodiscard]] double CellWidth() const;
  [[nodiscard]] static double BarCells(const RowLook& row);

  Look look_;
  bool isTree_;
};

/// The line between two rows where a drop would go.
void DrawDropLine(Picture& picture, double y, double width, const Look& look);

}  // namespace vrx::controls

#endif  // CONTROLS_LAYOUT_LIST_ROWS_H_
