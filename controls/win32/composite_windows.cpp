#include "controls/win32/composite_windows.h"

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <oleacc.h>
#include <string>
#include <utility>

#include <vrxmath/foundation/string_numbers.h>

#include "controls/layout/list_rows.h"
#include "controls/win32/painter.h"

namespace vrx::controls {
namespace {

constexpr ControlText kButtonTexts[] = {ControlText::kAdd, ControlText::kRemove, ControlText::kMoveUp,
                                        ControlText::kMoveDown};
enum Button : int { kAddButton, kRemoveButton, kUpButton, kDownButton };
constexpr int kFirstList = 1, kSecondList = 2, kField = 3, kLabel = 4, kFirstButton = 10;

void PlaceButtons(const std::array<HWND, 4>& buttons, int left, int top, int width, int height, int step) {
  for (const HWND button : buttons) {
    ::MoveWindow(button, left, top, width, height, TRUE);
    top += step;
  }
}

// The text of an entry by the two messages of a list or a combo box; empty for none.
CString TextOfEntry(HWND list, LRESULT row, UINT lengthMessage, UINT textMessage) {
  const LRESULT length = row < 0 ? -1 : ::SendMessageW(list, lengthMessage, static_cast<WPARAM>(row), 0);
  if (length <= 0) return {};
  std::wstring text(static_cast<std::size_t>(length) + 1, 0);
  ::SendMessageW(list, textMessage, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(text.data()));
  return ViewOf(text.c_str());
}

std::vector<int32_t> SelectedRowsOf(HWND list) {
  std::vector<int32_t> rows(
      static_cast<std::size_t>(std::max<LRESULT>(::SendMessageW(list, LB_GETSELCOUNT, 0, 0), 0)));
  ::SendMessageW(list, LB_GETSELITEMS, rows.size(), reinterpret_cast<LPARAM>(rows.data()));
  return rows;
}

}  // namespace

long CompositeWindow::AccessibleRole() const {
  return ROLE_SYSTEM_GROUPING;
}

void CompositeWindow::PassName() {
  if (NamedChild() != nullptr) ::SetWindowTextW(NamedChild(), SystemText(TextOfWindow(window_)));
}

void CompositeWindow::PassFont() {
  const auto font = reinterpret_cast<WPARAM>(CurrentFont());
  for (HWND child = ::GetWindow(window_, GW_CHILD); child != nullptr;
       child = ::GetWindow(child, GW_HWNDNEXT)) {
    ::SendMessageW(child, WM_SETFONT, font, TRUE);
  }
}

HWND CompositeWindow::MakeChild(const wchar_t* name, DWORD style, int number, const wchar_t* text) {
  return ::CreateWindowExW(0, name, text, WS_CHILD | WS_VISIBLE | style, 0, 0, 0, 0, window_,
                           reinterpret_cast<HMENU>(static_cast<INT_PTR>(number)), nullptr, nullptr);
}

void CompositeWindow::Erase(HDC device) const {
  const RECT client = ClientRect();
  ::FillRect(device, &client, ::GetSysColorBrush(COLOR_BTNFACE));
}

void CompositeWindow::LayOutAll() {
  const RECT client = ClientRect();
  LayOut(client.right, client.bottom);
}

// The keys of a dialog go into the control's parts, and the background is not painted where they are.
bool CompositeWindow::Begin() {
  ::SetWindowLongPtrW(window_, GWL_EXSTYLE, ::GetWindowLongPtrW(window_, GWL_EXSTYLE) | WS_EX_CONTROLPARENT);
  ::SetWindowLongPtrW(window_, GWL_STYLE, ::GetWindowLongPtrW(window_, GWL_STYLE) | WS_CLIPCHILDREN);
  if (!MakeChildren()) return false;
  PassFont();
  PassName();
  LayOutAll();
  return true;
}

LRESULT CompositeWindow::Handle(UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case WM_CREATE:
      return Begin() ? 0 : -1;
    case WM_SIZE:
      LayOutAll();
      return 0;
    case WM_SETTEXT: {
      const LRESULT result = Default(message, wParam, lParam);
      PassName();
      return result;
    }
    case WM_ERASEBKGND:
      Erase(reinterpret_cast<HDC>(wParam));
      return 1;
    case WM_SETFONT:
      hostFont_ = reinterpret_cast<HFONT>(wParam);
      PassFont();
      LayOutAll();
      return 0;
    case WM_GETFONT:
      return reinterpret_cast<LRESULT>(CurrentFont());
    case VRXM_SETDPI:
      if (!TakeDpi(wParam)) return 0;
      for (HWND child = ::GetWindow(window_, GW_CHILD); child != nullptr;
           child = ::GetWindow(child, GW_HWNDNEXT)) {
        wchar_t name[8] = L"";
        ::GetClassNameW(child, name, static_cast<int>(std::size(name)));
        if (std::wcsncmp(name, L"Vrx", 3) == 0) ::SendMessageW(child, VRXM_SETDPI, wParam, 0);
      }
      PassFont();
      LayOutAll();
      return 1;
    case WM_SETTINGCHANGE:
    case WM_THEMECHANGED:
    case WM_SYSCOLORCHANGE:
      for (HWND child = ::GetWindow(window_, GW_CHILD); child != nullptr;
           child = ::GetWindow(child, GW_HWNDNEXT)) {
        ::SendMessageW(child, message, wParam, lParam);
      }
      ownFont_.Reset();
      PassFont();
      LayOutAll();
      ::InvalidateRect(window_, nullptr, TRUE);
      break;
    case WM_ENABLE:
      for (HWND child = ::GetWindow(window_, GW_CHILD); child != nullptr;
           child = ::GetWindow(child, GW_HWNDNEXT)) {
        ::EnableWindow(child, wParam != 0);
      }
      return 0;
    case WM_SETFOCUS:
      ::SetFocus(::GetNextDlgTabItem(window_, nullptr, FALSE));
      return 0;
    case WM_COMMAND:
      return Command(LOWORD(wParam), HIWORD(wParam));
    default:
      break;
  }
  return AccessibleWindow::Handle(message, wParam, lParam);
}

// Exchange list -----------------------------------------------------------------------------------------------

bool ExchangeWindow::MakeChildren() {
  constexpr DWORD kListStyle = WS_BORDER | WS_TABSTOP | WS_VSCROLL | VRXLS_MULTIPLE;
  const CString available = ControlString(static_cast<uint32_t>(ControlText::kAvailable));
  const CString chosen = ControlString(static_cast<uint32_t>(ControlText::kChosen));
  available_ = MakeChild(VRX_DRAG_LIST, kListStyle, kFirstList, SystemText(available));
  for (std::size_t i = 0; i < buttons_.size(); ++i) {
    const CString text = ControlString(static_cast<uint32_t>(kButtonTexts[i]));
    buttons_[i] = MakeChild(L"BUTTON", WS_TABSTOP, kFirstButton + static_cast<int>(i), SystemText(text));
  }
  chosen_ = MakeChild(VRX_DRAG_LIST, kListStyle, kSecondList, SystemText(chosen));
  return available_ != nullptr && chosen_ != nullptr;
}

void ExchangeWindow::LayOut(int width, int height) {
  const int gap = Scaled(6), column = Scaled(88), button = Scaled(26);
  const int list = std::max((width - column - 2 * gap) / 2, 0);
  ::MoveWindow(available_, 0, 0, list, height, TRUE);
  ::MoveWindow(chosen_, width - list, 0, list, height, TRUE);
  PlaceButtons(buttons_, list + gap, 0, column, button, button + gap);
}

void ExchangeWindow::FillList(HWND list, const std::vector<int32_t>& entries) {
  ::SendMessageW(list, WM_SETREDRAW, FALSE, 0);
  ::SendMessageW(list, LB_RESETCONTENT, 0, 0);
  for (const int32_t entry : entries) {
    const LRESULT row =
        ::SendMessageW(list, LB_ADDSTRING, 0,
                       reinterpret_cast<LPARAM>(SystemText(entries_[static_cast<std::size_t>(entry)].text)));
    ::SendMessageW(list, LB_SETITEMDATA, static_cast<WPARAM>(row), entry);
  }
  ::SendMessageW(list, WM_SETREDRAW, TRUE, 0);
  ::InvalidateRect(list, nullptr, FALSE);
}

void ExchangeWindow::Fill() {
  FillList(available_, state_.Available());
  FillList(chosen_, state_.Chosen());
}

std::vector<int32_t> ExchangeWindow::SelectedRows(HWND list) {
  return SelectedRowsOf(list);
}

// After a drag the right list is as the user wants it; the left one takes its own order again.
void ExchangeWindow::AcceptDrag() {
  std::vector<int32_t> chosen;
  const LRESULT count = ::SendMessageW(chosen_, LB_GETCOUNT, 0, 0);
  for (LRESULT row = 0; row < count; ++row) {
    chosen.push_back(
        static_cast<int32_t>(::SendMessageW(chosen_, LB_GETITEMDATA, static_cast<WPARAM>(row), 0)));
  }
  state_.SetChosen(chosen);
  FillList(available_, state_.Available());
}

void ExchangeWindow::Step(int32_t step) {
  const std::vector<int32_t> rows = SelectedRows(chosen_);
  const int32_t gap = GapOfStep(static_cast<int32_t>(state_.Chosen().size()), rows, step);
  if (gap < 0) return;
  state_.Reorder(rows, gap);
  ::SendMessageW(chosen_, VRXLM_MOVE, static_cast<WPARAM>(gap), 0);
  SendCommand(VRXXN_CHANGE);
}

LRESULT ExchangeWindow::Command(int child, UINT code) {
  const bool isList = child == kFirstList || child == kSecondList;
  if (isList && (code == VRXLN_REORDER || code == VRXLN_RECEIVE)) {
    // Of the two messages of a drag between the lists, the last one finds both complete.
    if (code == VRXLN_RECEIVE) return 0;
    AcceptDrag();
    SendCommand(VRXXN_CHANGE);
    return 0;
  }
  const bool isAdd = child == kFirstButton + kAddButton || (child == kFirstList && code == LBN_DBLCLK);
  const bool isRemove = child == kFirstButton + kRemoveButton || (child == kSecondList && code == LBN_DBLCLK);
  if (isAdd || isRemove) {
    const std::vector<int32_t> rows = SelectedRows(isAdd ? available_ : chosen_);
    if (rows.empty()) return 0;
    if (isAdd)
      state_.Choose(rows, INT32_MAX);
    else
      state_.Return(rows);
    Fill();
    SendCommand(VRXXN_CHANGE);
  }
  if (child == kFirstButton + kUpButton) Step(-1);
  if (child == kFirstButton + kDownButton) Step(1);
  return 0;
}

// The chosen entries, in order.
CString ExchangeWindow::AccessibleValue() {
  CString value;
  for (const int32_t entry : state_.Chosen()) {
    if (!value.IsEmpty()) value += u"; ";
    value += entries_[static_cast<std::size_t>(entry)].text;
  }
  return value;
}

LRESULT ExchangeWindow::HandleEntries(UINT message, WPARAM wParam, LPARAM lParam, bool& isKnown) {
  const bool isEntry = wParam < entries_.size();
  switch (message) {
    case LB_RESETCONTENT:
      entries_.clear();
      state_.Reset(0);
      Fill();
      return 0;
    case LB_ADDSTRING: {
      entries_.push_back({ViewOf(reinterpret_cast<const wchar_t*>(lParam)), 0});
      state_.Append();
      const auto added = static_cast<LPARAM>(entries_.size()) - 1;
      const LRESULT row = ::SendMessageW(available_, LB_ADDSTRING, 0, lParam);
      ::SendMessageW(available_, LB_SETITEMDATA, static_cast<WPARAM>(row), added);
      return added;
    }
    case LB_SETITEMDATA:
      if (!isEntry) return LB_ERR;
      entries_[wParam].data = lParam;
      return 1;
    case LB_GETITEMDATA:
      return isEntry ? entries_[wParam].data : LB_ERR;
    case LB_GETCOUNT:
      return static_cast<LRESULT>(entries_.size());
    case LB_GETTEXTLEN:
      return isEntry ? entries_[wParam].text.GetLength() : LB_ERR;
    case LB_GETTEXT: {
      if (!isEntry || lParam == 0) return LB_ERR;
      const CString& text = entries_[wParam].text;
      std::memcpy(reinterpret_cast<void*>(lParam), text.CStr(),
                  (static_cast<std::size_t>(text.GetLength()) + 1) * sizeof(wchar_t));
      return text.GetLength();
    }
    default:
      isKnown = IsOfListBox(message);  // such as deleting, which would number the entries anew
      return LB_ERR;
  }
}

LRESULT ExchangeWindow::Handle(UINT message, WPARAM wParam, LPARAM lParam) {
  bool isKnown = true;
  const LRESULT result = HandleEntries(message, wParam, lParam, isKnown);
  if (isKnown) return result;
  if (message == VRXXM_SETCHOSEN) {
    if (wParam > entries_.size() || (wParam > 0 && lParam == 0)) return 0;
    const auto* entries = reinterpret_cast<const int*>(lParam);
    if (!state_.SetChosen({entries, static_cast<std::size_t>(wParam)})) return 0;
    Fill();
    return 1;
  }
  if (message == VRXXM_GETCHOSEN) {
    const std::size_t copied = std::min<std::size_t>(wParam, state_.Chosen().size());
    if (lParam != 0) std::copy_n(state_.Chosen().begin(), copied, reinterpret_cast<int*>(lParam));
    return static_cast<LRESULT>(state_.Chosen().size());
  }
  return CompositeWindow::Handle(message, wParam, lParam);
}

// List editor -------------------------------------------------------------------------------------------------

namespace {

LRESULT CALLBACK FieldProc(HWND field, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR /*id*/,
                           DWORD_PTR owner) {
  auto* editor = reinterpret_cast<ListEditorWindow*>(owner);
  if (message == WM_GETDLGCODE) {
    // Enter and Escape, which would close the dialog; tabs leave the field.
    const auto* asked = reinterpret_cast<const MSG*>(lParam);
    const bool isOurs = asked != nullptr && asked->message == WM_KEYDOWN &&
                        (asked->wParam == VK_RETURN || asked->wParam == VK_ESCAPE);
    return ::DefSubclassProc(field, message, wParam, lParam) | (isOurs ? DLGC_WANTMESSAGE : 0);
  }
  if (message == WM_KEYDOWN || message == WM_KILLFOCUS || message == WM_CHAR) {
    if (editor->FieldMessage(message, wParam, lParam) != 0) return 0;
  }
  return ::DefSubclassProc(field, message, wParam, lParam);
}

}  // namespace

bool ListEditorWindow::MakeChildren() {
  list_ =
      MakeChild(VRX_DRAG_LIST, WS_BORDER | WS_TABSTOP | WS_VSCROLL | WS_CLIPCHILDREN | LBS_WANTKEYBOARDINPUT,
                kFirstList);
  for (std::size_t i = 0; i < buttons_.size(); ++i) {
    const CString text = ControlString(static_cast<uint32_t>(kButtonTexts[i]));
    buttons_[i] = MakeChild(L"BUTTON", WS_TABSTOP, kFirstButton + static_cast<int>(i), SystemText(text));
  }
  field_ = ::CreateWindowExW(0, L"EDIT", L"", WS_CHILD | WS_BORDER | ES_AUTOHSCROLL, 0, 0, 0, 0, list_,
                             reinterpret_cast<HMENU>(static_cast<INT_PTR>(kField)), nullptr, nullptr);
  return list_ != nullptr && field_ != nullptr &&
         ::SetWindowSubclass(field_, FieldProc, 1, reinterpret_cast<DWORD_PTR>(this));
}

void ListEditorWindow::LayOut(int width, int height) {
  const int gap = Scaled(6), column = Scaled(88), button = Scaled(26);
  ::MoveWindow(list_, 0, 0, std::max(width - column - gap, 0), height, TRUE);
  PlaceButtons(buttons_, std::max(width - column, 0), 0, column, button, button + gap);
}

HWND ListEditorWindow::BeginEdit(int32_t row) {
  EndEdit(true);
  if (row < 0 || row >= ::SendMessageW(list_, LB_GETCOUNT, 0, 0)) return nullptr;
  RECT box{};
  ::SendMessageW(list_, LB_SETCURSEL, static_cast<WPARAM>(row), 0);
  ::SendMessageW(list_, LB_GETITEMRECT, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&box));
  const CString text = TextOfEntry(list_, row, LB_GETTEXTLEN, LB_GETTEXT);
  edited_ = row;
  ::SendMessageW(field_, WM_SETFONT, reinterpret_cast<WPARAM>(CurrentFont()), FALSE);
  ::SetWindowTextW(field_, SystemText(text));
  ::SetWindowPos(field_, HWND_TOP, box.left, box.top, box.right - box.left, box.bottom - box.top,
                 SWP_SHOWWINDOW);
  ::SendMessageW(field_, EM_SETSEL, 0, -1);
  ::SetFocus(field_);
  return field_;
}

void ListEditorWindow::SetText(int32_t row, const wchar_t* text) {
  const auto at = static_cast<WPARAM>(row);
  const LRESULT data = ::SendMessageW(list_, LB_GETITEMDATA, at, 0);
  ::SendMessageW(list_, LB_DELETESTRING, at, 0);
  ::SendMessageW(list_, LB_INSERTSTRING, at, reinterpret_cast<LPARAM>(text));
  ::SendMessageW(list_, LB_SETITEMDATA, at, data);
  ::SendMessageW(list_, LB_SETCURSEL, at, 0);
}

bool ListEditorWindow::EndEdit(bool isTaken) {
  if (edited_ < 0) return false;
  const int32_t row = std::exchange(edited_, -1);
  const bool wasNew = std::exchange(isNew_, false);
  const CString text = TextOfWindow(field_);
  const bool hadFocus = ::GetFocus() == field_;
  ::ShowWindow(field_, SW_HIDE);
  if (hadFocus) ::SetFocus(list_);
  if (wasNew && (!isTaken || text.IsEmpty())) {
    ::SendMessageW(list_, LB_DELETESTRING, static_cast<WPARAM>(row), 0);
    ::SendMessageW(list_, LB_SETCURSEL, static_cast<WPARAM>(row - 1), 0);
    return false;
  }
  if (!isTaken || text.IsEmpty()) return false;
  SetText(row, SystemText(text));
  SendCommand(VRXEN_CHANGE);
  return true;
}

LRESULT ListEditorWindow::FieldMessage(UINT message, WPARAM wParam, LPARAM /*lParam*/) {
  if (message == WM_KILLFOCUS) {
    EndEdit(true);
    return 0;
  }
  const bool isEnd = wParam == VK_RETURN || wParam == VK_ESCAPE;
  if (message == WM_KEYDOWN && isEnd) EndEdit(wParam == VK_RETURN);
  return isEnd ? 1 : 0;  // the character of the key would beep
}

void ListEditorWindow::Press(int button) {
  EndEdit(true);
  const auto current = static_cast<int32_t>(::SendMessageW(list_, LB_GETCURSEL, 0, 0));
  const auto count = static_cast<int32_t>(::SendMessageW(list_, LB_GETCOUNT, 0, 0));
  if (button == kAddButton) {
    const int32_t row = current < 0 ? count : current + 1;
    if (::SendMessageW(list_, LB_INSERTSTRING, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(L"")) < 0)
      return;
    isNew_ = BeginEdit(row) != nullptr;
    return;
  }
  if (current < 0) return;
  if (button == kRemoveButton) {
    ::SendMessageW(list_, LB_DELETESTRING, static_cast<WPARAM>(current), 0);
    ::SendMessageW(list_, LB_SETCURSEL, static_cast<WPARAM>(std::min(current, count - 2)), 0);
    SendCommand(VRXEN_CHANGE);
    return;
  }
  const int32_t gap = GapOfStep(count, std::array{current}, button == kUpButton ? -1 : 1);
  if (gap >= 0 && ::SendMessageW(list_, VRXLM_MOVE, static_cast<WPARAM>(gap), 0) != 0)
    SendCommand(VRXEN_CHANGE);
}

// The keys of the list: F2 edits, Insert adds, Delete removes.
bool ListEditorWindow::PressKey(WORD key) {
  switch (key) {
    case VK_F2:
      BeginEdit(static_cast<int32_t>(::SendMessageW(list_, LB_GETCURSEL, 0, 0)));
      return true;
    case VK_INSERT:
      Press(kAddButton);
      return true;
    case VK_DELETE:
      Press(kRemoveButton);
      return true;
    default:
      return false;
  }
}

CString ListEditorWindow::AccessibleValue() {
  return TextOfEntry(list_, ::SendMessageW(list_, LB_GETCURSEL, 0, 0), LB_GETTEXTLEN, LB_GETTEXT);
}

LRESULT ListEditorWindow::Command(int child, UINT code) {
  if (child >= kFirstButton && code == BN_CLICKED) Press(child - kFirstButton);
  if (child != kFirstList) return 0;
  if (code == LBN_DBLCLK) BeginEdit(static_cast<int32_t>(::SendMessageW(list_, LB_GETCURSEL, 0, 0)));
  if (code == VRXLN_REORDER) SendCommand(VRXEN_CHANGE);
  if (code == LBN_SELCHANGE) SendCommand(LBN_SELCHANGE);
  return 0;
}

LRESULT ListEditorWindow::Handle(UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == VRXEM_BEGINEDIT) return reinterpret_cast<LRESULT>(BeginEdit(static_cast<int32_t>(wParam)));
  if (message == VRXEM_ENDEDIT) return EndEdit(wParam != 0) ? 1 : 0;
  if (message == WM_VKEYTOITEM) return PressKey(LOWORD(wParam)) ? -2 : -1;
  if (message == LB_SETCOUNT) return LB_ERR;  // texts that the host keeps are not edited here
  if (IsOfListBox(message) || (message >= VRXLM_SETCHECK && message <= VRXLM_MOVE)) {
    EndEdit(false);
    return ::SendMessageW(list_, message, wParam, lParam);
  }
  return CompositeWindow::Handle(message, wParam, lParam);
}

// Combo -------------------------------------------------------------------------------------------------------

bool ComboWindow::MakeChildren() {
  label_ = MakeChild(L"STATIC", 0, kLabel);
  combo_ =
      MakeChild(L"COMBOBOX", WS_TABSTOP | WS_VSCROLL | CBS_DROPDOWNLIST | CBS_OWNERDRAWFIXED | CBS_HASSTRINGS,
                kFirstList);
  return combo_ != nullptr;
}

// The height that a dialog gives to a combo box is that of the open list.
void ComboWindow::LayOut(int width, int height) {
  const HDC device = ::GetDC(window_);
  const Look look = LookOf(device, CurrentFont(), Dpi());
  ::ReleaseDC(window_, device);
  const int row = RowLayout(look, false).Height();
  ::SendMessageW(combo_, CB_SETITEMHEIGHT, static_cast<WPARAM>(-1), row);
  ::SendMessageW(combo_, CB_SETITEMHEIGHT, 0, row);
  dropHeight_ = std::max(height, Scaled(200));
  ::MoveWindow(combo_, 0, 0, width, dropHeight_, TRUE);
}

void ComboWindow::DrawItem(const DRAWITEMSTRUCT& item) {
  RowLook row;
  row.selected = (item.itemState & ODS_SELECTED) != 0;
  row.hasFocus = (item.itemState & ODS_FOCUS) != 0;
  row.enabled = (item.itemState & ODS_DISABLED) == 0;
  if (item.itemID != static_cast<UINT>(-1))
    row.text = TextOfEntry(combo_, item.itemID, CB_GETLBTEXTLEN, CB_GETLBTEXT);
  const HFONT font = CurrentFont();
  RowLayout layout(LookOf(item.hDC, font, Dpi()), false);
  for (const int width : columns_) layout.columns.push_back(Scaled(width));
  RECT box = item.rcItem;
  const double width = box.right - box.left;
  Picture picture;
  layout.Draw(picture, {0, 0, width, static_cast<double>(box.bottom - box.top)}, row);
  const HWND target = ::WindowFromDC(item.hDC);
  const int saved = ::SaveDC(item.hDC);
  if (target != nullptr &&
      ::GetLayout(item.hDC) == LAYOUT_RTL) {  // turned around by our layout, as in all controls
    RECT client{};
    ::GetClientRect(target, &client);
    box.left = client.right - item.rcItem.right;
    box.right = client.right - item.rcItem.left;
    picture.MirrorIn(width);
    // The box is clipped to anew: some systems do not turn around the clipping of their combo boxes.
    ::SelectClipRgn(item.hDC, nullptr);
  }
  {
    const PaintBuffer buffer(item.hDC, box);
    PaintPicture(buffer.Device(), picture, SystemPalette(row.enabled), font, {box.left, box.top},
                 IsRightToLeft());
  }
  ::RestoreDC(item.hDC, saved);
}

CString ComboWindow::AccessibleValue() {
  return TextOfEntry(combo_, ::SendMessageW(combo_, CB_GETCURSEL, 0, 0), CB_GETLBTEXTLEN, CB_GETLBTEXT);
}

LRESULT ComboWindow::Command(int /*child*/, UINT code) {
  SendCommand(code);
  return 0;
}

LRESULT ComboWindow::Handle(UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case WM_MEASUREITEM:
      reinterpret_cast<MEASUREITEMSTRUCT*>(lParam)->itemHeight = 18;
      return TRUE;
    case WM_DRAWITEM:
      DrawItem(*reinterpret_cast<const DRAWITEMSTRUCT*>(lParam));
      return TRUE;
    case VRXCM_SETCOLUMNS: {
      const auto* widths = reinterpret_cast<const int*>(lParam);
      if (wParam > 16 || (wParam > 0 && widths == nullptr)) return 0;
      columns_.assign(widths, widths + wParam);
      ::InvalidateRect(combo_, nullptr, TRUE);
      return 1;
    }
    default:
      break;
  }
  const bool isOfCombo = message >= CB_GETEDITSEL && message < CB_MSGMAX;
  if (isOfCombo) return ::SendMessageW(combo_, message, wParam, lParam);
  return CompositeWindow::Handle(message, wParam, lParam);
}

}  // namespace vrx::controls
