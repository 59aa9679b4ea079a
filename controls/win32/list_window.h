// The list: check list, drag list, colour list, and the parts of the exchange list and the list editor. The tree is one too.

#ifndef CONTROLS_WIN32_LIST_WINDOW_H_
#define CONTROLS_WIN32_LIST_WINDOW_H_

#include <vector>

#include "controls/layout/list_model.h"
#include "controls/layout/list_rows.h"
#include "controls/win32/drawn_window.h"

namespace vrx::controls {

/// Rows in a window: scrolling, the mouse, keys, focus. What the rows are, a derived class knows.
class RowsWindow : public DrawnWindow {
 public:
  /// The rows that were asked for since the start: what a list of any length asks for is what it shows.
  [[nodiscard]] int64_t RowsAskedFor() const { return rowsAskedFor_; }

 protected:
  [[nodiscard]] virtual RowLook RowAt(int32_t row) = 0;
  [[nodiscard]] virtual bool IsTree() const { return false; }
  /// A part of a row was clicked, or the space bar pressed on it; true when it was used.
  virtual bool Use(int32_t /*row*/, RowPart /*part*/) { return false; }
  virtual bool PressMore(WPARAM /*key*/) { return false; }
  /// The selection or the current row changed by the user's hand.
  virtual void SelectionChanged() { SendCommand(LBN_SELCHANGE); }
  /// The mouse moved with the button down on a selected row, and was let go.
  virtual void DragTo(POINT /*point*/) {}
  virtual void Drop(POINT /*point*/, bool /*isTaken*/) {}
  [[nodiscard]] virtual bool IsDraggable() const { return false; }

  LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam) override;
  void Draw(Picture& picture, Rect box, const Look& look) override;
  void Relayout() override;
  [[nodiscard]] bool IsMirrored() const override { return true; }
  /// After any change: scroll bar and picture follow.
  void Changed();
  void ShowDropLine(int32_t gap);
  [[nodiscard]] RowLook AskRow(int32_t row);
  [[nodiscard]] RowLayout LayoutOfRows() { return {ScreenLook(), IsTree()}; }
  [[nodiscard]] RECT RowRect(int32_t row) const;

  [[nodiscard]] long AccessibleRole() const override;
  [[nodiscard]] CString AccessibleValue() override;
  [[nodiscard]] int32_t PartCount() override { return state_.Count(); }
  [[nodiscard]] long PartRole() const override;
  [[nodiscard]] CString PartName(int32_t part) override { return AskRow(part).text; }
  [[nodiscard]] long PartState(int32_t part) override;
  [[nodiscard]] RECT PartRect(int32_t part) override { return RowRect(part); }
  [[nodiscard]] int32_t FocusedPart() override { return state_.Current(); }
  [[nodiscard]] int32_t PartAt(POINT point) override { return state_.RowAt(point.y); }
  void SelectPart(int32_t part) override;

  ListState state_;

 private:
  LRESULT Scroll(UINT code);
  LRESULT Wheel(int delta);
  LRESULT ButtonDown(LPARAM lParam, WPARAM keys);
  LRESULT ButtonUp(LPARAM lParam);
  bool PressKey(WPARAM key);
  bool AskParent(WPARAM key);
  LRESULT Type(WPARAM unit);
  void AfterInput(bool isChanged);

  bool isRedrawn_ = true;  // WM_SETREDRAW
  int32_t dropGap_ = -1;
  int32_t wheelRest_ = 0;
  int32_t pendingClick_ =
      -1;  // a click on one of several selected rows selects it alone when the mouse did not drag them
  POINT down_{};
  bool isDown_ = false, isDragging_ = false;
  int64_t rowsAskedFor_ = 0;
  CString typed_;
  LONG typedAt_ = 0;
};

/// Entries with texts and numbers, by the messages of list boxes.
class ListWindow : public RowsWindow {
 public:
  struct Entry {
    CString text;
    LPARAM data = 0;
    int check = VRX_CHECK_OFF;
    VRX_SWATCH_COLORS colors{};
    bool enabled = true;
  };

 protected:
  LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam) override;
  RowLook RowAt(int32_t row) override;
  [[nodiscard]] virtual bool HasChecks() const { return false; }
  [[nodiscard]] virtual bool HasColors() const { return false; }
  bool MoveSelected(int32_t gap);
  int32_t Insert(int32_t row, Entry entry);
  void Remove(int32_t row);
  [[nodiscard]] bool Has(WPARAM row) const { return row < entries_.size(); }
  [[nodiscard]] Entry& At(WPARAM row) { return entries_[row]; }

  std::vector<Entry> entries_;
  bool isVirtual_ = false;

 private:
  LRESULT HandleEntries(UINT message, WPARAM wParam, LPARAM lParam, bool& isKnown);
  LRESULT HandleSelection(UINT message, WPARAM wParam, LPARAM lParam, bool& isKnown);
  LRESULT SetState(UINT message, WPARAM wParam, LPARAM lParam, bool& isKnown);
  LRESULT CopyText(WPARAM row, LPARAM buffer);
  LRESULT Find(int32_t from, WideView text, bool isWhole);
  LRESULT SelectedItems(WPARAM room, LPARAM items) const;
};

class CheckListWindow final : public ListWindow {
  bool HasChecks() const override { return true; }
  bool Use(int32_t row, RowPart part) override;
};

class ColorListWindow final : public ListWindow {
  bool HasColors() const override { return true; }
};

class DragListWindow final : public ListWindow {
 public:
  /// Takes entries from another list before a gap.
  void Receive(std::vector<Entry> entries, int32_t gap);

 private:
  bool IsDraggable() const override { return !isVirtual_; }
  bool PressMore(WPARAM key) override;
  void DragTo(POINT point) override;
  void Drop(POINT point, bool isTaken) override;
  DragListWindow* ListAt(POINT point) const;
  std::vector<Entry> TakeSelected();
  DragListWindow* over_ = nullptr;
};

}  // namespace vrx::controls

#endif  // CONTROLS_WIN32_LIST_WINDOW_H_
