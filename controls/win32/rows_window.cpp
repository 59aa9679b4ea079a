#include <algorithm>
#include <cstdlib>
#include <oleacc.h>
#include <utility>

#include "controls/layout/number_field.h"
#include "controls/win32/list_window.h"

namespace vrx::controls {
namespace {

bool IsDown(int key) {
  return ::GetKeyState(key) < 0;
}

}  // namespace

RowLook RowsWindow::AskRow(int32_t row) {
  ++rowsAskedFor_;
  RowLook look = RowAt(row);
  look.selected = state_.Selected().Contains(row);
  look.hasFocus = row == state_.Current() && HasFocus();
  return look;
}

void RowsWindow::Draw(Picture& picture, Rect box, const Look& look) {
  const RowLayout layout(look, IsTree());
  const double height = layout.Height();
  picture.Rectangle(box, Role::kPaper);
  double top = box.top;
  for (int32_t row = state_.Top(); row < state_.Count() && top < box.Bottom(); ++row, top += height) {
    layout.Draw(picture, {box.left, top, box.width, height}, AskRow(row));
  }
  if (dropGap_ >= 0) DrawDropLine(picture, (dropGap_ - state_.Top()) * height, box.width, look);
  if (state_.Count() == 0 && HasFocus()) picture.Frame(box, Role::kFrame);
}

RECT RowsWindow::RowRect(int32_t row) const {
  const int32_t top = (row - state_.Top()) * state_.RowHeight();
  return {0, top, ClientRect().right, top + state_.RowHeight()};
}

void RowsWindow::Relayout() {
  state_.SetHeights(LayoutOfRows().Height(), ClientRect().bottom);
  Changed();
}

void RowsWindow::Changed() {
  if (!isRedrawn_) return;
  SCROLLINFO scroll{};
  scroll.cbSize = sizeof scroll;
  scroll.fMask = SIF_PAGE | SIF_RANGE | SIF_POS;
  scroll.nMax = std::max(state_.Count() - 1, 0);
  scroll.nPage = static_cast<UINT>(state_.RowsInView());
  scroll.nPos = state_.Top();
  if (HasStyle(WS_VSCROLL) || state_.Count() > state_.RowsInView()) {
    ::SetScrollInfo(window_, SB_VERT, &scroll, TRUE);
  }
  Invalidate();
}

void RowsWindow::ShowDropLine(int32_t gap) {
  if (gap == dropGap_) return;
  dropGap_ = gap;
  Invalidate();
}

void RowsWindow::AfterInput(bool isChanged) {
  Changed();
  if (!isChanged) return;
  if (state_.Current() >= 0) Tell(EVENT_OBJECT_FOCUS, state_.Current());
  SelectionChanged();
}

void RowsWindow::SelectPart(int32_t part) {
  state_.Select(part);
  AfterInput(true);
}

LRESULT RowsWindow::Scroll(UINT code) {
  SCROLLINFO scroll{};
  scroll.cbSize = sizeof scroll;
  scroll.fMask = SIF_TRACKPOS;
  ::GetScrollInfo(window_, SB_VERT, &scroll);
  const int32_t top = state_.Top(), page = state_.RowsInView();
  switch (code) {
    case SB_LINEUP:
      state_.ScrollTo(top - 1);
      break;
    case SB_LINEDOWN:
      state_.ScrollTo(top + 1);
      break;
    case SB_PAGEUP:
      state_.ScrollTo(top - page);
      break;
    case SB_PAGEDOWN:
      state_.ScrollTo(top + page);
      break;
    case SB_TOP:
      state_.ScrollTo(0);
      break;
    case SB_BOTTOM:
      state_.ScrollTo(state_.LastTop());
      break;
    case SB_THUMBTRACK:
      state_.ScrollTo(scroll.nTrackPos);
      break;
    default:
      return 0;
  }
  Changed();
  return 0;
}

LRESULT RowsWindow::Wheel(int delta) {
  UINT lines = 3;
  ::SystemParametersInfoW(SPI_GETWHEELSCROLLLINES, 0, &lines, 0);
  const int32_t step =
      lines == WHEEL_PAGESCROLL ? state_.RowsInView() : static_cast<int32_t>(std::min(lines, 100U));
  state_.ScrollTo(state_.Top() - WheelSteps(delta, wheelRest_) * step);
  Changed();
  return 0;
}

LRESULT RowsWindow::ButtonDown(LPARAM lParam, WPARAM keys) {
  ::SetFocus(window_);
  down_ = {GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)};
  const int32_t row = state_.RowAt(down_.y);
  if (row < 0) return 0;
  const RowPart part = LayoutOfRows().PartAt(AskRow(row), down_.x);
  if (part != RowPart::kText && Use(row, part)) return 0;
  isDown_ = true;
  ::SetCapture(window_);
  pendingClick_ = -1;
  const bool isPlain = (keys & (MK_SHIFT | MK_CONTROL)) == 0;
  if (IsDraggable() && isPlain && state_.Selected().Contains(row)) {
    pendingClick_ = row;
    return 0;
  }
  AfterInput(state_.Click(row, (keys & MK_SHIFT) != 0, (keys & MK_CONTROL) != 0));
  return 0;
}

LRESULT RowsWindow::ButtonUp(LPARAM lParam) {
  if (!isDown_) return 0;
  isDown_ = false;
  const bool wasDragging = std::exchange(isDragging_, false);
  ::ReleaseCapture();
  if (wasDragging) {
    Drop({GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)}, true);
  } else if (pendingClick_ >= 0) {
    AfterInput(state_.Click(pendingClick_, false, false));
  }
  return 0;
}

// As the system's list box: the parent may use a key itself (-2), or say which row it goes to.
bool RowsWindow::AskParent(WPARAM key) {
  if (!HasStyle(LBS_WANTKEYBOARDINPUT)) return false;
  const auto current = static_cast<WORD>(std::max(state_.Current(), 0));
  const auto row = static_cast<int32_t>(::SendMessageW(::GetParent(window_), WM_VKEYTOITEM,
                                                       MAKEWPARAM(static_cast<WORD>(key), current),
                                                       reinterpret_cast<LPARAM>(window_)));
  if (row >= 0 && row < state_.Count()) SelectPart(row);
  return row == -2 || row >= 0;
}

bool RowsWindow::PressKey(WPARAM key) {
  static constexpr struct {
    WPARAM key;
    ListKey listKey;
  } kKeys[] = {{VK_UP, ListKey::kUp},         {VK_DOWN, ListKey::kDown}, {VK_PRIOR, ListKey::kPageUp},
               {VK_NEXT, ListKey::kPageDown}, {VK_HOME, ListKey::kHome}, {VK_END, ListKey::kEnd}};
  if (key == VK_ESCAPE && isDragging_) {
    isDown_ = isDragging_ = false;
    ::ReleaseCapture();
    Drop({}, false);
    return true;
  }
  if (PressMore(key) || AskParent(key)) return true;
  for (const auto& known : kKeys) {
    if (known.key != key) continue;
    AfterInput(state_.Press(known.listKey, IsDown(VK_SHIFT), IsDown(VK_CONTROL)));
    return true;
  }
  if (key != VK_SPACE || state_.Current() < 0) return false;
  typed_.Empty();
  if (!Use(state_.Current(), RowPart::kCheck)) AfterInput(state_.Space(IsDown(VK_CONTROL)));
  return true;
}

// Letters that follow each other within a second go on in the same text.
LRESULT RowsWindow::Type(WPARAM unit) {
  if (unit <= L' ' || state_.Count() == 0 || state_.Count() > 200'000) return 0;
  const LONG now = ::GetMessageTime();
  if (now - typedAt_ > 1000) typed_.Empty();
  typedAt_ = now;
  typed_ += static_cast<WideChar>(unit);
  const int length = typed_.GetLength();
  const int32_t first = std::max(state_.Current(), 0) + (length == 1 && state_.Current() >= 0 ? 1 : 0);
  for (int32_t i = 0; i < state_.Count(); ++i) {
    const int32_t row = (first + i) % state_.Count();
    const CString text = AskRow(row).text;
    if (text.GetLength() < length || ::CompareStringW(LOCALE_USER_DEFAULT, NORM_IGNORECASE, SystemText(text),
                                                      length, SystemText(typed_), length) != CSTR_EQUAL) {
      continue;
    }
    state_.Select(row);
    AfterInput(true);
    break;
  }
  return 0;
}

LRESULT RowsWindow::Handle(UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case WM_CREATE:
      Relayout();
      return 0;
    case WM_GETDLGCODE:
      return DLGC_WANTARROWS | DLGC_WANTCHARS | (IsEscape(lParam) && isDragging_ ? DLGC_WANTMESSAGE : 0);
    case WM_VSCROLL:
      return Scroll(LOWORD(wParam));
    case WM_MOUSEWHEEL:
      return Wheel(GET_WHEEL_DELTA_WPARAM(wParam));
    case WM_LBUTTONDOWN:
      return ButtonDown(lParam, wParam);
    case WM_LBUTTONDBLCLK:
      ButtonDown(lParam, wParam);
      SendCommand(LBN_DBLCLK);
      return 0;
    case WM_LBUTTONUP:
      return ButtonUp(lParam);
    case WM_MOUSEMOVE: {
      const POINT point{GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)};
      if (!isDown_ || !IsDraggable()) return 0;
      isDragging_ = isDragging_ || std::abs(point.y - down_.y) >= ::GetSystemMetrics(SM_CYDRAG) ||
                    std::abs(point.x - down_.x) >= ::GetSystemMetrics(SM_CXDRAG);
      if (isDragging_) DragTo(point);
      return 0;
    }
    case WM_CAPTURECHANGED:
      if (isDragging_) Drop({}, false);
      isDown_ = isDragging_ = false;
      return 0;
    case WM_SYSKEYDOWN:
      if (PressMore(wParam)) return 0;
      break;
    case WM_KEYDOWN:
      if (PressKey(wParam)) return 0;
      break;
    case WM_CHAR:
      return Type(wParam);
    case WM_SETREDRAW: {
      const LRESULT result = DrawnWindow::Handle(message, wParam, lParam);
      isRedrawn_ = wParam != 0;
      Changed();
      return result;
    }
    case WM_SETFOCUS:
      if (state_.Current() < 0) state_.SetCurrent(0);
      SendCommand(LBN_SETFOCUS);
      break;
    case WM_KILLFOCUS:
      SendCommand(LBN_KILLFOCUS);
      break;
    default:
      break;
  }
  return DrawnWindow::Handle(message, wParam, lParam);
}

long RowsWindow::AccessibleRole() const {
  return IsTree() ? ROLE_SYSTEM_OUTLINE : ROLE_SYSTEM_LIST;
}
long RowsWindow::PartRole() const {
  return IsTree() ? ROLE_SYSTEM_OUTLINEITEM : ROLE_SYSTEM_LISTITEM;
}
CString RowsWindow::AccessibleValue() {
  return state_.Current() < 0 ? CString() : AskRow(state_.Current()).text;
}
long RowsWindow::PartState(int32_t part) {
  const RowLook row = AskRow(part);
  long state = STATE_SYSTEM_SELECTABLE | STATE_SYSTEM_FOCUSABLE;
  if (row.selected) state |= STATE_SYSTEM_SELECTED;
  if (row.hasFocus) state |= STATE_SYSTEM_FOCUSED;
  if (row.check == CheckState::kOn) state |= STATE_SYSTEM_CHECKED;
  if (row.check == CheckState::kMixed) state |= STATE_SYSTEM_MIXED;
  if (row.expander == Expander::kOpen) state |= STATE_SYSTEM_EXPANDED;
  if (row.expander == Expander::kClosed) state |= STATE_SYSTEM_COLLAPSED;
  if (!row.enabled) state |= STATE_SYSTEM_UNAVAILABLE;
  if (part < state_.Top() || part >= state_.Top() + state_.RowsInView()) state |= STATE_SYSTEM_OFFSCREEN;
  return state;
}

}  // namespace vrx::controls
