#include "controls/win32/tree_window.h"

#include <utility>

namespace vrx::controls {

RowLook TreeWindow::RowAt(int32_t row) {
  const TreeModel::Node& node = tree_.At(tree_.Rows()[static_cast<std::size_t>(row)]);
  RowLook look;
  look.text = node.text;
  look.level = node.level;
  if (!node.children.empty()) look.expander = node.expanded ? Expander::kOpen : Expander::kClosed;
  return look;
}

int32_t TreeWindow::CurrentNode() {
  const int32_t row = state_.Current();
  return row < 0 ? -1 : tree_.Rows()[static_cast<std::size_t>(row)];
}

// The list selects rows; the nodes remember it while they are hidden.
void TreeWindow::KeepSelection() {
  for (int32_t row = 0; row < state_.Count(); ++row) {
    tree_.SetSelected(tree_.Rows()[static_cast<std::size_t>(row)], state_.Selected().Contains(row));
  }
}

void TreeWindow::SelectionChanged() {
  // A selection without Ctrl or Shift is the only one: hidden nodes go, too.
  if (state_.Selected().Count() == 1) {
    for (int32_t node = 0; node < tree_.Count(); ++node) tree_.SetSelected(node, false);
  }
  KeepSelection();
  RowsWindow::SelectionChanged();
}

void TreeWindow::ShowSelection(int32_t current) {
  const std::vector<int32_t>& rows = tree_.Rows();
  state_.SetCount(static_cast<int32_t>(rows.size()));
  state_.SetSelected(0, state_.Count() - 1, false);
  for (std::size_t row = 0; row < rows.size(); ++row) {
    const auto number = static_cast<int32_t>(row);
    if (tree_.At(rows[row]).selected) state_.SetSelected(number, number, true);
  }
  state_.SetCurrent(tree_.Has(current) ? tree_.RowOf(current) : -1);
  Changed();
}

bool TreeWindow::Expand(int32_t node, bool isExpanded, bool isByUser) {
  const int32_t before = CurrentNode();
  if (!tree_.Expand(node, isExpanded)) return false;
  // The focus that would be hidden goes to the node.
  ShowSelection(before >= 0 && tree_.RowOf(before) < 0 ? node : before);
  const int32_t row = tree_.RowOf(node);
  if (isByUser) {
    state_.SetCurrent(row);
    SendCommand(VRXTN_EXPAND);
  }
  Tell(EVENT_OBJECT_STATECHANGE, row);
  return true;
}

bool TreeWindow::Use(int32_t row, RowPart part) {
  if (part != RowPart::kExpander) return false;
  const int32_t node = tree_.Rows()[static_cast<std::size_t>(row)];
  return Expand(node, !tree_.At(node).expanded, true);
}

// Right opens a node and then goes into it, left closes it and then goes to its parent, as in the system's trees.
bool TreeWindow::PressMore(WPARAM key) {
  const int32_t node = CurrentNode();
  if (node < 0) return false;
  const bool isOpen = tree_.At(node).expanded;
  const bool isForward = key == (IsRightToLeft() ? VK_LEFT : VK_RIGHT);
  const bool isBack = key == (IsRightToLeft() ? VK_RIGHT : VK_LEFT);
  if (key == VK_ADD || (isForward && !isOpen)) {
    Expand(node, true, true);
    return true;
  }
  if (key == VK_SUBTRACT || (isBack && isOpen)) {
    Expand(node, false, true);
    return true;
  }
  if (!isForward && !isBack) return false;
  const int32_t to = isForward ? tree_.At(node).children.front() : tree_.At(node).parent;
  if (to >= 0) SelectPart(tree_.RowOf(to));
  return true;
}

LRESULT TreeWindow::GetSelected(WPARAM room, LPARAM nodes) const {
  LRESULT count = 0;
  for (int32_t node = 0; node < tree_.Count(); ++node) {
    if (!tree_.At(node).selected) continue;
    if (nodes != 0 && static_cast<WPARAM>(count) < room) reinterpret_cast<int*>(nodes)[count] = node;
    ++count;
  }
  return count;
}

LRESULT TreeWindow::Handle(UINT message, WPARAM wParam, LPARAM lParam) {
  const auto node = static_cast<int32_t>(wParam);
  // Rows are made once for any number of nodes that were added in a row.
  if (message != VRXTM_ADD && std::exchange(isGrown_, false)) ShowSelection(currentBefore_);
  switch (message) {
    case WM_CREATE:
      state_.multiple = true;
      break;
    case VRXTM_RESET:
      tree_.Clear();
      ShowSelection(-1);
      return 1;
    case VRXTM_ADD: {
      const auto* data = DataOf<VRX_NODE>(lParam);
      if (data == nullptr) return -1;
      if (!isGrown_) currentBefore_ = CurrentNode();
      const int32_t added = tree_.Add(data->parent, ViewOf(data->text), data->data);
      if (added >= 0 && !isGrown_) Invalidate();
      isGrown_ = isGrown_ || added >= 0;
      return added;
    }
    case VRXTM_EXPAND:
      return Expand(node, lParam != 0, false) ? 1 : 0;
    case VRXTM_ISEXPANDED:
      return tree_.Has(node) && tree_.At(node).expanded ? 1 : 0;
    case VRXTM_SELECT: {
      if (!tree_.Has(node)) return 0;
      const int32_t current = CurrentNode();
      tree_.SetSelected(node, lParam != 0);
      ShowSelection(current);
      return 1;
    }
    case VRXTM_ISSELECTED:
      return tree_.Has(node) && tree_.At(node).selected ? 1 : 0;
    case VRXTM_GETSELECTED:
      return GetSelected(wParam, lParam);
    case VRXTM_GETCURRENT:
      return CurrentNode();
    case VRXTM_GETDATA:
      return tree_.Has(node) ? static_cast<LRESULT>(tree_.At(node).data) : 0;
    case VRXTM_GETROWRECT: {
      const int32_t row = tree_.Has(node) ? tree_.RowOf(node) : -1;
      if (row < 0 || lParam == 0) return 0;
      *reinterpret_cast<RECT*>(lParam) = RowRect(row);
      return 1;
    }
    default:
      break;
  }
  return RowsWindow::Handle(message, wParam, lParam);
}

}  // namespace vrx::controls
