#include "controls/win32/list_window.h"

#include <algorithm>
#include <cstring>

#include "controls/win32/still_windows.h"

namespace vrx::controls {

RowLook ListWindow::RowAt(int32_t row) {
  Entry entry;
  if (isVirtual_) {
    VRX_GETROW ask{};
    ask.row = row;
    SendNotify(ask.header, VRXN_GETROW);
    ask.text[std::size(ask.text) - 1] = 0;
    entry = {ViewOf(ask.text), 0, ask.check, ask.colors, ask.disabled == FALSE};
  } else {
    entry = entries_[static_cast<std::size_t>(row)];
  }
  RowLook look;
  look.text = std::move(entry.text);
  look.enabled = entry.enabled;
  if (HasChecks()) look.check = static_cast<CheckState>(std::clamp(entry.check, 0, 2) + 1);
  SwatchPair pair;
  if (HasColors() && TakeSwatches(entry.colors, pair)) {
    look.standard = pair.standard;
    if (pair.hasTrial) look.trial = pair.trial;
  }
  return look;
}

int32_t ListWindow::Insert(int32_t row, Entry entry) {
  if (isVirtual_ || row < 0 || row > state_.Count()) return LB_ERR;
  if (state_.Count() == INT32_MAX) return LB_ERRSPACE;
  entries_.insert(entries_.begin() + row, std::move(entry));
  state_.InsertRow(row);
  return row;
}

void ListWindow::Remove(int32_t row) {
  entries_.erase(entries_.begin() + row);
  state_.RemoveRow(row);
}

bool ListWindow::MoveSelected(int32_t gap) {
  const std::vector<int32_t> rows = state_.Selected().Rows();
  if (isVirtual_ || rows.empty() || gap < 0 || gap > state_.Count()) return false;
  const std::vector<int32_t> order = OrderAfterDrag(state_.Count(), rows, gap);
  if (std::ranges::is_sorted(order)) return false;
  std::vector<Entry> entries;
  entries.reserve(entries_.size());
  int32_t first = -1;
  for (std::size_t i = 0; i < order.size(); ++i) {
    if (first < 0 && order[i] == rows.front()) first = static_cast<int32_t>(i);
    entries.push_back(std::move(entries_[static_cast<std::size_t>(order[i])]));
  }
  entries_ = std::move(entries);
  state_.Select(first);
  state_.SetSelected(first, first + static_cast<int32_t>(rows.size()) - 1, true);
  Changed();
  return true;
}

LRESULT ListWindow::CopyText(WPARAM row, LPARAM buffer) {
  if (row >= static_cast<WPARAM>(state_.Count())) return LB_ERR;
  const CString text = AskRow(static_cast<int32_t>(row)).text;
  if (buffer != 0) {
    std::memcpy(reinterpret_cast<void*>(buffer), text.CStr(),
                (static_cast<std::size_t>(text.GetLength()) + 1) * sizeof(wchar_t));
  }
  return text.GetLength();
}

LRESULT ListWindow::Find(int32_t from, WideView text, bool isWhole) {
  const auto count = static_cast<int32_t>(entries_.size());
  const int length = static_cast<int>(text.size());
  for (int32_t i = 1; i <= count; ++i) {
    const int32_t row = (std::clamp(from, -1, count - 1) + i) % count;
    const CString& candidate = entries_[static_cast<std::size_t>(row)].text;
    const int compared = isWhole ? candidate.GetLength() : std::min(candidate.GetLength(), length);
    if (::CompareStringW(LOCALE_USER_DEFAULT, NORM_IGNORECASE, SystemText(candidate), compared,
                         reinterpret_cast<const wchar_t*>(text.data()), length) == CSTR_EQUAL) {
      return row;
    }
  }
  return LB_ERR;
}

LRESULT ListWindow::HandleEntries(UINT message, WPARAM wParam, LPARAM lParam, bool& isKnown) {
  const WideView text = message == LB_ADDSTRING || message == LB_INSERTSTRING || message == LB_FINDSTRING ||
                                message == LB_FINDSTRINGEXACT
                            ? ViewOf(reinterpret_cast<const wchar_t*>(lParam))
                            : WideView();
  const auto row = static_cast<int32_t>(wParam);
  switch (message) {
    case LB_ADDSTRING:
    case LB_INSERTSTRING: {
      const bool isLast = message == LB_ADDSTRING || row == -1;
      const int32_t added = Insert(isLast ? state_.Count() : row, {text, 0, 0, {}, true});
      if (added >= 0) Changed();
      return added;
    }
    case LB_DELETESTRING:
      if (!Has(wParam)) return LB_ERR;
      Remove(row);
      Changed();
      return state_.Count();
    case LB_RESETCONTENT:
      entries_.clear();
      isVirtual_ = false;
      state_.SetCount(0);
      Changed();
      return 0;
    case LB_SETCOUNT:
      if (row < 0) return LB_ERR;
      entries_.clear();
      isVirtual_ = true;
      state_.SetCount(row);
      Changed();
      return 0;
    case LB_GETCOUNT:
      return state_.Count();
    case LB_GETTEXT:
      return CopyText(wParam, lParam);
    case LB_GETTEXTLEN:
      return CopyText(wParam, 0);
    case LB_SETITEMDATA:
      if (!Has(wParam)) return LB_ERR;
      At(wParam).data = lParam;
      return 1;
    case LB_GETITEMDATA:
      return Has(wParam) ? At(wParam).data : LB_ERR;
    case LB_FINDSTRING:
      return Find(row, text, false);
    case LB_FINDSTRINGEXACT:
      return Find(row, text, true);
    default:
      isKnown = false;
      return 0;
  }
}

LRESULT ListWindow::SelectedItems(WPARAM room, LPARAM items) const {
  const std::vector<int32_t> rows = state_.Selected().Rows();
  const std::size_t copied = std::min<std::size_t>(room, rows.size());
  if (items != 0) std::copy_n(rows.begin(), copied, reinterpret_cast<int*>(items));
  return static_cast<LRESULT>(copied);
}

LRESULT ListWindow::HandleSelection(UINT message, WPARAM wParam, LPARAM lParam, bool& isKnown) {
  const auto row = static_cast<int32_t>(wParam);
  const bool isRow = wParam < static_cast<WPARAM>(state_.Count());
  switch (message) {
    case LB_SETCURSEL:
      state_.Select(row);
      Changed();
      return isRow ? row : LB_ERR;
    case LB_GETCURSEL:
      if (!state_.multiple && state_.Selected().Count() == 0) return LB_ERR;
      return state_.Current() < 0 ? LB_ERR : state_.Current();
    case LB_SETSEL: {
      const auto item = static_cast<int32_t>(lParam);
      if (!state_.multiple || item < -1 || item >= state_.Count()) return LB_ERR;
      state_.SetSelected(item < 0 ? 0 : item, item < 0 ? state_.Count() - 1 : item, wParam != 0);
      Changed();
      return 0;
    }
    case LB_SELITEMRANGE:
      if (!state_.multiple) return LB_ERR;
      state_.SetSelected(LOWORD(lParam), HIWORD(lParam), wParam != 0);
      Changed();
      return 0;
    case LB_GETSEL:
      return isRow ? (state_.Selected().Contains(row) ? 1 : 0) : LB_ERR;
    case LB_GETSELCOUNT:
      return state_.multiple ? state_.Selected().Count() : LB_ERR;
    case LB_GETSELITEMS:
      return state_.multiple ? SelectedItems(wParam, lParam) : LB_ERR;
    case LB_SETCARETINDEX:
      if (!isRow) return LB_ERR;
      state_.SetCurrent(row);
      Changed();
      return 0;
    case LB_GETCARETINDEX:
      return state_.Current();
    case LB_SETTOPINDEX:
      if (!isRow) return LB_ERR;
      state_.ScrollTo(row);
      Changed();
      return 0;
    case LB_GETTOPINDEX:
      return state_.Top();
    case LB_GETITEMHEIGHT:
      return state_.RowHeight();
    case LB_GETITEMRECT:
      if (!isRow || lParam == 0) return LB_ERR;
      *reinterpret_cast<RECT*>(lParam) = RowRect(row);
      return 0;
    case LB_ITEMFROMPOINT: {
      const int32_t hit = state_.RowAt(GET_Y_LPARAM(lParam));
      return hit < 0 ? MAKELONG(std::max(state_.Count() - 1, 0), 1) : MAKELONG(hit, 0);
    }
    default:
      isKnown = false;
      return 0;
  }
}

LRESULT ListWindow::SetState(UINT message, WPARAM wParam, LPARAM lParam, bool& isKnown) {
  if (message != VRXLM_MOVE && (message < VRXLM_SETCHECK || message > VRXLM_ENABLE)) {
    isKnown = false;
    return 0;
  }
  if (message == VRXLM_MOVE) return MoveSelected(static_cast<int32_t>(wParam)) ? 1 : 0;
  if (!Has(wParam)) return LB_ERR;
  Entry& entry = At(wParam);
  switch (message) {
    case VRXLM_GETCHECK:
      return entry.check;
    case VRXLM_SETCHECK:
      if (lParam < VRX_CHECK_OFF || lParam > VRX_CHECK_MIXED) return LB_ERR;
      entry.check = static_cast<int>(lParam);
      break;
    case VRXLM_SETCOLORS: {
      const auto* colors = DataOf<VRX_SWATCH_COLORS>(lParam);
      if (colors == nullptr) return LB_ERR;
      entry.colors = *colors;
      break;
    }
    default:
      entry.enabled = lParam != 0;
      break;
  }
  Invalidate();
  return 1;
}

LRESULT ListWindow::Handle(UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == WM_CREATE) state_.multiple = HasStyle(VRXLS_MULTIPLE);
  bool isKnown = true;
  LRESULT result = HandleEntries(message, wParam, lParam, isKnown);
  if (isKnown) return result;
  isKnown = true;
  result = HandleSelection(message, wParam, lParam, isKnown);
  if (isKnown) return result;
  isKnown = true;
  result = SetState(message, wParam, lParam, isKnown);
  return isKnown ? result : RowsWindow::Handle(message, wParam, lParam);
}

// The host of a virtual list keeps the marks: it is told, and asked again.
bool CheckListWindow::Use(int32_t row, RowPart part) {
  if (part != RowPart::kCheck || !AskRow(row).enabled) return part == RowPart::kCheck;
  state_.SetCurrent(row);
  if (!isVirtual_) {
    int& check = entries_[static_cast<std::size_t>(row)].check;
    check = check == VRX_CHECK_ON ? VRX_CHECK_OFF : VRX_CHECK_ON;
  }
  Changed();
  Tell(EVENT_OBJECT_STATECHANGE, row);
  SendCommand(VRXLN_CHECK);
  return true;
}

// Drag list ---------------------------------------------------------------------------------------------------

// The drag list of the same parent under a point of this one, itself included.
DragListWindow* DragListWindow::ListAt(POINT point) const {
  ::MapWindowPoints(window_, nullptr, &point, 1);
  const HWND under = ::WindowFromPoint(point);
  wchar_t name[32] = L"";
  if (under == nullptr || ::GetClassNameW(under, name, static_cast<int>(std::size(name))) == 0 ||
      ::lstrcmpiW(name, VRX_DRAG_LIST) != 0 || ::GetParent(under) != ::GetParent(window_) ||
      ::GetWindowThreadProcessId(under, nullptr) != ::GetCurrentThreadId()) {
    return nullptr;
  }
  return reinterpret_cast<DragListWindow*>(::GetWindowLongPtrW(under, ClassOf<DragListWindow>::offset));
}

void DragListWindow::DragTo(POINT point) {
  DragListWindow* list = ListAt(point);
  if (list != over_ && over_ != nullptr) over_->ShowDropLine(-1);
  over_ = list != nullptr && list->isVirtual_ ? nullptr : list;
  if (over_ != nullptr) {
    ::MapWindowPoints(window_, over_->window_, &point, 1);
    over_->ShowDropLine(over_->state_.GapAt(point.y));
  }
  ::SetCursor(::LoadCursorW(nullptr, reinterpret_cast<LPCWSTR>(over_ != nullptr ? IDC_ARROW : IDC_NO)));
}

void DragListWindow::Drop(POINT point, bool isTaken) {
  DragListWindow* list = std::exchange(over_, nullptr);
  if (list != nullptr) list->ShowDropLine(-1);
  if (list == nullptr || !isTaken) return;
  ::MapWindowPoints(window_, list->window_, &point, 1);
  const int32_t gap = list->state_.GapAt(point.y);
  if (list == this) {
    if (MoveSelected(gap)) SendCommand(VRXLN_REORDER);
    return;
  }
  list->Receive(TakeSelected(), gap);
  SendCommand(VRXLN_REORDER);
}

std::vector<ListWindow::Entry> DragListWindow::TakeSelected() {
  const std::vector<int32_t> rows = state_.Selected().Rows();
  std::vector<Entry> taken;
  for (const int32_t row : rows) taken.push_back(entries_[static_cast<std::size_t>(row)]);
  for (auto row = rows.rbegin(); row != rows.rend(); ++row) Remove(*row);
  Changed();
  return taken;
}

void DragListWindow::Receive(std::vector<Entry> entries, int32_t gap) {
  const auto count = static_cast<int32_t>(entries.size());
  for (int32_t i = 0; i < count; ++i) Insert(gap + i, std::move(entries[static_cast<std::size_t>(i)]));
  state_.Select(gap);
  state_.SetSelected(gap, gap + count - 1, true);
  Changed();
  SendCommand(VRXLN_RECEIVE);
}

// Alt with an arrow moves what the mouse would drag.
bool DragListWindow::PressMore(WPARAM key) {
  if ((key != VK_UP && key != VK_DOWN) || ::GetKeyState(VK_MENU) >= 0) return false;
  const int32_t gap = GapOfStep(state_.Count(), state_.Selected().Rows(), key == VK_UP ? -1 : 1);
  if (gap >= 0 && MoveSelected(gap)) SendCommand(VRXLN_REORDER);
  return true;
}

}  // namespace vrx::controls
