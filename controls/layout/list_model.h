// Lists without a window: which rows are in view, what the mouse and the keys select, where dragged rows go.
//
// Nothing here knows the entries, only their number, so that a list of any length costs the same.

#ifndef CONTROLS_LAYOUT_LIST_MODEL_H_
#define CONTROLS_LAYOUT_LIST_MODEL_H_

#include <cstdint>
#include <span>
#include <vector>

namespace vrx::controls {

/// A set of row numbers, kept as runs: a selection of all of a million rows is one run.
class RowSet {
 public:
  struct Run {
    int32_t first, last;
    bool operator==(const Run&) const = default;
  };

  [[nodiscard]] bool Contains(int32_t row) const;
  /// Adds or removes the rows from `first` to `last`, either order.
  void Set(int32_t first, int32_t last, bool isMember);
  void Clear() { runs_.clear(); }
  [[nodiscard]] int32_t Count() const;
  /// All members, ascending.
  [[nodiscard]] std::vector<int32_t> Rows() const;
  [[nodiscard]] const std::vector<Run>& Runs() const { return runs_; }

  /// Makes room for a row that is inserted before `row`, which is no member; and closes the gap of a removed row.
  void InsertRow(int32_t row);
  void RemoveRow(int32_t row);

 private:
  std::vector<Run> runs_;  // ascending, with a gap between any two
};

/// The keys that move through a list.
enum class ListKey : uint8_t { kUp, kDown, kPageUp, kPageDown, kHome, kEnd };

/// The nodes in view, current and selected, as system list boxes have them: a click selects, with Ctrl it toggles, with Shift
/// it selects from the anchor; the same for keys, where Ctrl moves without selecting and the space bar toggles.
class ListState {
 public:
  bool multiple = false;  ///< whether more than one row may be selected

  [[nodiscard]] int32_t Count() const { return count_; }
  [[nodiscard]] int32_t Current() const { return current_; }  ///< the row with the focus; -1: none
  [[nodiscard]] int32_t Top() const { return top_; }          ///< the first row in view
  [[nodiscard]] const RowSet& Selected() const { return selected_; }

  /// The number of rows; what is no longer there is no longer selected.
  void SetCount(int32_t count);
  /// A row more or less, without a change to what is selected besides.
  void InsertRow(int32_t row);
  void RemoveRow(int32_t row);

  /// The heights of a row and of the window. At least one row counts as in view.
  void SetHeights(int32_t row, int32_t view);
  [[nodiscard]] int32_t RowHeight() const { return rowHeight_; }
  [[nodiscard]] int32_t RowsInView() const;
  /// How far the list can be scrolled.
  [[nodiscard]] int32_t LastTop() const;
  void ScrollTo(int32_t top);
  void Show(int32_t row);

  /// The row at a height in the window, -1 beyond the last one; and the gap nearest to it, 0 to Count(), for a drop.
  [[nodiscard]] int32_t RowAt(int32_t y) const;
  [[nodiscard]] int32_t GapAt(int32_t y) const;

  /// Makes `row` current and the only selected one; -1 selects none.
  void Select(int32_t row);
  void SetSelected(int32_t first, int32_t last, bool selected);
  /// Moves the current row alone, and the anchor with it.
  void SetCurrent(int32_t row);
  /// True when the selection or the current row changed.
  bool Click(int32_t row, bool shift, bool control);
  bool Press(ListKey key, bool shift, bool control);
  bool Space(bool control);

 private:
  bool Go(int32_t row, bool shift, bool control);

  int32_t count_ = 0, current_ = -1, anchor_ = -1, top_ = 0;
  int32_t rowHeight_ = 16, viewHeight_ = 16;
  RowSet selected_;
};

/// The order of `count` entries after those at `rows` (ascending) were dragged into gap `before`: element i is the old place
/// of what is now at i. They keep their order among themselves.
[[nodiscard]] std::vector<int32_t> OrderAfterDrag(int32_t count, std::span<const int32_t> rows,
                                                  int32_t before);

/// The gap into which OrderAfterDrag moves `rows` one place up or down as a block; -1 where they are at the end already.
[[nodiscard]] int32_t GapOfStep(int32_t count, std::span<const int32_t> rows, int32_t step);

/// Available and chosen entries: the chosen ones in the order that the user gave them, the available ones in that of the
/// whole list, whatever was taken out and put back.
class ExchangeState {
 public:
  /// All of `count` entries are available.
  void Reset(int32_t count);
  /// One entry more, which is available.
  void Append() { available_.push_back(count_++); }
  [[nodiscard]] const std::vector<int32_t>& Available() const { return available_; }
  [[nodiscard]] const std::vector<int32_t>& Chosen() const { return chosen_; }
  /// Moves the entries at `rows` of the available list before `gap` of the chosen one, and back.
  void Choose(std::span<const int32_t> rows, int32_t gap);
  void Return(std::span<const int32_t> rows);
  /// Chosen entries in a new order.
  void Reorder(std::span<const int32_t> rows, int32_t gap);
  /// Chooses these entries in this order; false, with nothing changed, for an entry that does not exist or stands twice.
  bool SetChosen(std::span<const int32_t> entries);

 private:
  int32_t count_ = 0;
  std::vector<int32_t> available_, chosen_;
};

}  // namespace vrx::controls

#endif  // CONTROLS_LAYOUT_LIST_MODEL_H_
