// The tree with multiple selection: a list of its visible nodes.

#ifndef CONTROLS_WIN32_TREE_WINDOW_H_
#define CONTROLS_WIN32_TREE_WINDOW_H_

#include "controls/layout/tree_model.h"
#include "controls/win32/list_window.h"

namespace vrx::controls {

class TreeWindow final : public RowsWindow {
  LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam) override;
  RowLook RowAt(int32_t row) override;
  bool IsTree() const override { return true; }
  bool Use(int32_t row, RowPart part) override;
  bool PressMore(WPARAM key) override;
  void SelectionChanged() override;

  [[nodiscard]] int32_t CurrentNode();
  bool Expand(int32_t node, bool isExpanded, bool isByUser);
  void KeepSelection();
  void ShowSelection(int32_t current);
  LRESULT GetSelected(WPARAM room, LPARAM nodes) const;

  TreeModel tree_;
  bool isGrown_ = false;  // nodes were added since rows were made
  int32_t currentBefore_ = -1;
};

}  // namespace vrx::controls

#endif  // CONTROLS_WIN32_TREE_WINDOW_H_
