#include "controls/win32/system_windows.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <oleacc.h>
#include <string>

#include <vrxmath/support/number_text.h>

#include "controls/layout/number_field.h"
#include "controls/win32/painter.h"

namespace vrx::controls {

LRESULT SystemWindow::Default(UINT message, WPARAM wParam, LPARAM lParam) {
  return ::CallWindowProcW(Below(), window_, message, wParam, lParam);
}

// The classes below either stop painting by a mark of their own, which our painting does not see, or do not stop.
LRESULT SystemWindow::Handle(UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == WM_SETREDRAW) return ::DefWindowProcW(window_, message, wParam, lParam);
  return AccessibleWindow::Handle(message, wParam, lParam);
}

bool SystemWindow::HandleFont(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result) {
  switch (message) {
    case WM_SETFONT:
      hostFont_ = reinterpret_cast<HFONT>(wParam);
      break;
    case VRXM_SETDPI:
      result = TakeDpi(wParam) ? 1 : 0;
      if (result == 0) return true;
      break;
    case WM_CREATE:
    case WM_THEMECHANGED:
    case WM_SYSCOLORCHANGE:
    case WM_SETTINGCHANGE:
      result = Default(message, wParam, lParam);
      ownFont_.Reset();
      break;
    default:
      return false;
  }
  Default(WM_SETFONT, reinterpret_cast<WPARAM>(CurrentFont()), TRUE);
  return true;
}

// Number fields -----------------------------------------------------------------------------------------------

WNDPROC NumericEditWindow::Below() const {
  return ClassOf<NumericEditWindow>::below;
}
WNDPROC ScrollEditWindow::Below() const {
  return ClassOf<ScrollEditWindow>::below;
}

long NumericEditWindow::AccessibleRole() const {
  return HasArrows() ? ROLE_SYSTEM_SPINBUTTON : ROLE_SYSTEM_TEXT;
}

// The text before the field, as for the system's fields: the field's own text is its value.
CString NumericEditWindow::AccessibleName() {
  const HWND label = ::GetWindow(window_, GW_HWNDPREV);
  wchar_t name[8] = L"";
  if (label == nullptr || ::GetClassNameW(label, name, static_cast<int>(std::size(name))) == 0 ||
      ::lstrcmpiW(name, L"STATIC") != 0) {
    return {};
  }
  const CString whole = TextOfWindow(label);
  CString text;
  for (const WideChar unit : whole.View()) {
    if (unit != u'&') text += unit;  // the mark of the letter that goes to the field by Alt
  }
  return text;
}

// The unit is read aloud with the number.
CString NumericEditWindow::AccessibleValue() {
  CString value = Text();
  if (value.IsEmpty() || unit_.IsEmpty()) return value;
  value += u" ";
  value += unit_;
  return value;
}

std::optional<double> NumericEditWindow::Value() const {
  const ParsedNumber parsed = ParseNumber(Text(), range_);
  if (parsed.error != NumberError::kNone) return std::nullopt;
  return parsed.value;
}

// What the field holds is what it shows: the number rounded to the decimals of the range.
bool NumericEditWindow::Accept(double value, bool isByUser) {
  const CString text = NumberText(value, range_);
  value = ParseNumber(text, range_).value;
  const bool isNew = !(value == value_);
  value_ = value;
  ::SetWindowTextW(window_, SystemText(text));
  if (isNew && isByUser) SendCommand(VRXNN_VALUE);
  return isNew;
}

void NumericEditWindow::Refuse() {
  ::MessageBeep(MB_OK);
  SendCommand(VRXNN_REFUSED);
}

// A number beyond its range becomes the limit; what is no number gives way to the last value.
void NumericEditWindow::Finish() {
  const ParsedNumber parsed = ParseNumber(Text(), range_);
  if (parsed.error == NumberError::kNotANumber) {
    Accept(value_, true);
  } else if (parsed.error != NumberError::kNone) {
    Accept(std::clamp(parsed.value, range_.lower, range_.upper), true);
  } else {
    Accept(parsed.value, true);
  }
}

// From the number that stands there, or from the limit that it is beyond; from the last value where there is none.
bool NumericEditWindow::Step(int32_t steps) {
  const ParsedNumber parsed = ParseNumber(Text(), range_);
  const bool isInRange = parsed.error == NumberError::kNone;
  const double from = isInRange ? parsed.value
                      : parsed.error == NumberError::kNotANumber
                          ? value_
                          : std::clamp(parsed.value, range_.lower, range_.upper);
  if (!Accept(StepValue(from, steps, range_), true)) return false;
  ::SendMessageW(window_, EM_SETSEL, 0, -1);
  return true;
}

LRESULT NumericEditWindow::TakeRange(LPARAM lParam) {
  const auto* data = DataOf<VRX_NUMBER_RANGE>(lParam);
  if (data == nullptr || data->decimals < 0 || data->decimals > 15 || !(data->lower <= data->upper) ||
      !(data->increment > 0)) {
    return 0;
  }
  range_.lower = data->lower;
  range_.upper = data->upper;
  range_.increment = data->increment;
  range_.decimals = data->decimals;
  range_.scale = 1;
  for (int i = 0; i < data->decimals; ++i) range_.scale *= 10;
  unit_ = ViewOf(data->unit);
  SetMargins();
  Accept(value_, false);
  return 1;
}

// The text that the field would hold after the key decides; control characters are the field's own.
LRESULT NumericEditWindow::Type(WPARAM unit, LPARAM lParam) {
  if (unit == VK_RETURN) {
    Finish();
    ::SendMessageW(window_, EM_SETSEL, 0, -1);
    return 0;
  }
  if (unit < L' ') return Default(WM_CHAR, unit, lParam);
  DWORD first = 0, last = 0;
  ::SendMessageW(window_, EM_GETSEL, reinterpret_cast<WPARAM>(&first), reinterpret_cast<LPARAM>(&last));
  const CString text = Text();
  CString typed(text.View().substr(0, first));
  typed += static_cast<WideChar>(unit);
  typed += text.View().substr(std::min<std::size_t>(last, text.View().size()));
  if (MayBecomeNumber(typed, range_)) return Default(WM_CHAR, unit, lParam);
  Refuse();
  return 0;
}

// A number from the clipboard takes the place of the field's: half a number within another is nobody's wish.
LRESULT NumericEditWindow::Paste() {
  std::optional<double> value;
  if (::OpenClipboard(window_)) {
    const HANDLE data = ::GetClipboardData(CF_UNICODETEXT);
    const auto* text = data != nullptr ? static_cast<const wchar_t*>(::GlobalLock(data)) : nullptr;
    if (text != nullptr) {
      const std::size_t room = ::GlobalSize(data) / sizeof(wchar_t);
      const std::wstring_view all(text, std::min<std::size_t>(room, 400));
      const std::wstring copy(all.substr(0, all.find(L'\0')));
      value = PastedNumber(ViewOf(copy.c_str()), range_, unit_);
      ::GlobalUnlock(data);
    }
    ::CloseClipboard();
  }
  if (!value)
    Refuse();
  else if (!HasStyle(ES_READONLY))
    Accept(*value, true);
  return 0;
}

LRESULT NumericEditWindow::Wheel(int delta) {
  if (::GetFocus() != window_ || HasStyle(ES_READONLY))
    return Default(WM_MOUSEWHEEL, MAKEWPARAM(0, delta), 0);
  const int32_t steps = WheelSteps(delta, wheelRest_);
  if (steps != 0) Step(steps);
  return 0;
}

bool NumericEditWindow::PressKey(WPARAM key) {
  if ((key != VK_UP && key != VK_DOWN) || HasStyle(ES_READONLY)) {
    repeats_ = 0;
    return false;
  }
  Step((key == VK_UP ? 1 : -1) * StepsWhenHeld(repeats_));
  ++repeats_;
  return true;
}

Look NumericEditWindow::LookOfField() const {
  const HDC device = ::GetDC(window_);
  const Look look = LookOf(device, reinterpret_cast<HFONT>(::SendMessageW(window_, WM_GETFONT, 0, 0)), Dpi());
  ::ReleaseDC(window_, device);
  return look;
}

void NumericEditWindow::SetMargins() {
  const Look look = LookOfField();
  const double unit = unit_.IsEmpty() ? 0 : UnitWidth(look) + 2 * look.scale;
  const auto right = static_cast<WORD>(unit + ArrowsWidth(look));
  Default(EM_SETMARGINS, EC_RIGHTMARGIN, MAKELONG(0, right));
  ::InvalidateRect(window_, nullptr, TRUE);
}

// The unit and the arrows stand in the margin, which the field leaves empty.
void NumericEditWindow::Paint(HDC device) {
  const Look look = LookOfField();
  const RECT client = ClientRect();
  const double width = client.right, height = client.bottom, arrows = ArrowsWidth(look);
  Picture picture;
  if (!unit_.IsEmpty()) {
    const double room = UnitWidth(look);
    RECT line{};  // where the field has its text
    Default(EM_GETRECT, 0, reinterpret_cast<LPARAM>(&line));
    picture.Text({width - arrows - room, static_cast<double>(line.top), room - 2 * look.scale,
                  static_cast<double>(line.bottom - line.top)},
                 unit_, Role::kLabel, Align::kEnd);
  }
  if (HasArrows()) {
    // Within the border, which some systems draw in the client area.
    picture.Rectangle({width - arrows, 1, arrows - 1, height - 2}, Role::kFace);
    const double x = width - arrows / 2, r = 3 * look.scale;
    for (const double up : {1.0, -1.0}) {
      const double y = height / 2 - up * height / 4;
      picture.Polygon(
          std::array<CDblPoint, 3>{{{x - r, y + up * r / 2}, {x + r, y + up * r / 2}, {x, y - up * r / 2}}},
          Role::kFaceText);
    }
    picture.Line({width - arrows, height / 2}, {width - 1, height / 2}, Role::kFrame);
  }
  PaintPicture(device, picture, SystemPalette(::IsWindowEnabled(window_) != FALSE),
               reinterpret_cast<HFONT>(::SendMessageW(window_, WM_GETFONT, 0, 0)), {0, 0}, false);
}

void NumericEditWindow::PaintWhole(HDC device) {
  Default(WM_ERASEBKGND, reinterpret_cast<WPARAM>(device), 0);
  const int saved = ::SaveDC(device);
  Default(WM_PRINTCLIENT, reinterpret_cast<WPARAM>(device), PRF_CLIENT);
  ::RestoreDC(device, saved);  // the field clips to its text
  Paint(device);
}

// Through a buffer, so that the margin is not seen without what stands in it.
LRESULT NumericEditWindow::HandlePainting(UINT message, WPARAM wParam) {
  if (message == WM_ERASEBKGND) return 1;
  if (message == WM_PRINTCLIENT) {
    PaintWhole(reinterpret_cast<HDC>(wParam));
    return 0;
  }
  PAINTSTRUCT paint{};
  const HDC device = ::BeginPaint(window_, &paint);
  if (device != nullptr) {
    const PaintBuffer buffer(device, ClientRect());
    PaintWhole(buffer.Device());
  }
  ::EndPaint(window_, &paint);
  return 0;
}

LRESULT NumericEditWindow::Handle(UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == WM_CREATE) {
    // Numbers run from left to right in every writing.
    const LONG_PTR style = ::GetWindowLongPtrW(window_, GWL_EXSTYLE);
    ::SetWindowLongPtrW(window_, GWL_EXSTYLE,
                        style & ~static_cast<LONG_PTR>(WS_EX_LAYOUTRTL | WS_EX_RTLREADING));
  }
  LRESULT result = 0;
  if (HandleFont(message, wParam, lParam, result)) {
    SetMargins();
    return result;
  }
  switch (message) {
    case VRXNM_SETRANGE:
      return TakeRange(lParam);
    case VRXNM_SETVALUE:
      if (lParam == 0 || !std::isfinite(*reinterpret_cast<const double*>(lParam))) return 0;
      Accept(*reinterpret_cast<const double*>(lParam), false);
      return 1;
    case VRXNM_GETVALUE: {
      const std::optional<double> value = Value();
      if (lParam != 0) *reinterpret_cast<double*>(lParam) = value.value_or(kUnset);
      return value.has_value() ? 1 : 0;
    }
    case VRXNM_STEP:
      return Step(static_cast<int32_t>(wParam)) ? 1 : 0;
    case WM_CHAR:
      return Type(wParam, lParam);
    case WM_PASTE:
      return Paste();
    case WM_MOUSEWHEEL:
      return Wheel(GET_WHEEL_DELTA_WPARAM(wParam));
    case WM_KEYDOWN:
      if (PressKey(wParam)) return 0;
      break;
    case WM_KEYUP:
      repeats_ = 0;
      break;
    case WM_KILLFOCUS:
      Finish();
      break;
    case WM_SIZE:
      result = Default(message, wParam, lParam);
      SetMargins();
      return result;
    case WM_ERASEBKGND:
    case WM_PAINT:
    case WM_PRINTCLIENT:
      return HandlePainting(message, wParam);
    default:
      break;
  }
  return SystemWindow::Handle(message, wParam, lParam);
}

int32_t ScrollEditWindow::ArrowAt(POINT point) const {
  const RECT client = ClientRect();
  if (point.x < client.right - ArrowsWidth(LookOfField()) || point.x >= client.right) return 0;
  return point.y < client.bottom / 2 ? 1 : -1;
}

LRESULT ScrollEditWindow::Handle(UINT message, WPARAM wParam, LPARAM lParam) {
  constexpr UINT_PTR kTimer = 1;
  switch (message) {
    case WM_LBUTTONDOWN:
    case WM_LBUTTONDBLCLK:
      held_ = HasStyle(ES_READONLY) ? 0 : ArrowAt({GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)});
      if (held_ == 0) break;
      ::SetFocus(window_);
      ::SetCapture(window_);
      repeats_ = 0;
      Step(held_);
      ::SetTimer(window_, kTimer, 400, nullptr);
      return 0;
    case WM_TIMER:
      if (wParam != kTimer || held_ == 0) break;
      Step(held_ * StepsWhenHeld(repeats_++));
      ::SetTimer(window_, kTimer, 60, nullptr);
      return 0;
    case WM_LBUTTONUP:
    case WM_CAPTURECHANGED: {
      if (held_ == 0) break;
      held_ = 0;
      ::KillTimer(window_, kTimer);
      if (message == WM_LBUTTONUP) ::ReleaseCapture();
      return 0;
    }
    case WM_SETCURSOR: {
      POINT point{};
      ::GetCursorPos(&point);
      ::ScreenToClient(window_, &point);
      if (LOWORD(lParam) != HTCLIENT || ArrowAt(point) == 0) break;
      ::SetCursor(::LoadCursorW(nullptr, reinterpret_cast<LPCWSTR>(IDC_ARROW)));
      return TRUE;
    }
    default:
      break;
  }
  return NumericEditWindow::Handle(message, wParam, lParam);
}

// Tabs --------------------------------------------------------------------------------------------------------

WNDPROC TabWindow::Below() const {
  return ClassOf<TabWindow>::below;
}

std::vector<uint8_t> TabWindow::Enabled() {
  std::vector<uint8_t> enabled(
      static_cast<std::size_t>(std::max<LRESULT>(Default(TCM_GETITEMCOUNT, 0, 0), 0)), 1);
  for (std::size_t i = 0; i < std::min(enabled.size(), disabled_.size()); ++i) enabled[i] = disabled_[i] == 0;
  return enabled;
}

// As a click on the tab would: the parent may refuse to leave the old one.
bool TabWindow::Go(int32_t tab) {
  if (tab < 0) return false;
  NMHDR notify{};
  if (SendNotify(notify, static_cast<UINT>(TCN_SELCHANGING)) != 0) return false;
  Default(TCM_SETCURSEL, static_cast<WPARAM>(tab), 0);
  SendNotify(notify, static_cast<UINT>(TCN_SELCHANGE));
  Tell(EVENT_OBJECT_VALUECHANGE, -1);
  return true;
}

bool TabWindow::PressKey(WPARAM key) {
  const int32_t current = Current(), count = PartCount();
  const WPARAM forward = IsRightToLeft() ? VK_LEFT : VK_RIGHT, back = IsRightToLeft() ? VK_RIGHT : VK_LEFT;
  if (key == forward)
    Go(NextEnabledTab(Enabled(), current, 1, false));
  else if (key == back)
    Go(NextEnabledTab(Enabled(), current, -1, false));
  else if (key == VK_HOME)
    Go(NextEnabledTab(Enabled(), -1, 1, false));
  else if (key == VK_END)
    Go(NextEnabledTab(Enabled(), count, -1, false));
  else
    return false;
  return true;
}

// Says what the system's object would, and which tabs are disabled.
long TabWindow::AccessibleRole() const {
  return ROLE_SYSTEM_PAGETABLIST;
}
long TabWindow::PartRole() const {
  return ROLE_SYSTEM_PAGETAB;
}

CString TabWindow::PartName(int32_t part) {
  wchar_t text[260] = L"";
  TCITEMW item{};
  item.mask = TCIF_TEXT;
  item.pszText = text;
  item.cchTextMax = static_cast<int>(std::size(text));
  Default(TCM_GETITEMW, static_cast<WPARAM>(part), reinterpret_cast<LPARAM>(&item));
  return ViewOf(item.pszText);
}

long TabWindow::PartState(int32_t part) {
  if (Enabled()[static_cast<std::size_t>(part)] == 0) return STATE_SYSTEM_UNAVAILABLE;
  const long state = STATE_SYSTEM_SELECTABLE | STATE_SYSTEM_FOCUSABLE;
  if (part != Current()) return state;
  return state | STATE_SYSTEM_SELECTED | (::GetFocus() == window_ ? STATE_SYSTEM_FOCUSED : 0);
}

RECT TabWindow::PartRect(int32_t part) {
  RECT box{};
  Default(TCM_GETITEMRECT, static_cast<WPARAM>(part), reinterpret_cast<LPARAM>(&box));
  return box;
}

int32_t TabWindow::PartAt(POINT point) {
  TCHITTESTINFO hit{point, 0};
  return static_cast<int32_t>(Default(TCM_HITTEST, 0, reinterpret_cast<LPARAM>(&hit)));
}

void TabWindow::SelectPart(int32_t part) {
  if (Enabled()[static_cast<std::size_t>(part)] != 0 && part != Current()) Go(part);
}

void TabWindow::PaintDisabled(HDC device) {
  const std::vector<uint8_t> enabled = Enabled();
  Picture picture;
  for (std::size_t i = 0; i < enabled.size(); ++i) {
    if (enabled[i] != 0) continue;
    const auto tab = static_cast<int32_t>(i);
    const RECT box = PartRect(tab);
    const Rect inner =
        Rect{static_cast<double>(box.left), static_cast<double>(box.top),
             static_cast<double>(box.right - box.left), static_cast<double>(box.bottom - box.top)}
            .Inset(3);
    picture.Rectangle(inner, Role::kFace);
    picture.Text(inner, PartName(tab), Role::kMuted, Align::kMiddle);
  }
  PaintPicture(device, picture, SystemPalette(), reinterpret_cast<HFONT>(Default(WM_GETFONT, 0, 0)), {0, 0},
               IsRightToLeft());
}

// Into a buffer, so that the black text of a disabled tab is never seen.
LRESULT TabWindow::Paint(HDC given) {
  if (given != nullptr) {
    const LRESULT result = Default(WM_PRINTCLIENT, reinterpret_cast<WPARAM>(given), PRF_CLIENT);
    PaintDisabled(given);
    return result;
  }
  PAINTSTRUCT paint{};
  const HDC device = ::BeginPaint(window_, &paint);
  if (device != nullptr) {
    const RECT client = ClientRect();
    const PaintBuffer buffer(device, client, IsRightToLeft());
    ::FillRect(buffer.Device(), &client, ::GetSysColorBrush(COLOR_BTNFACE));
    Default(WM_PRINTCLIENT, reinterpret_cast<WPARAM>(buffer.Device()), PRF_CLIENT);
    PaintDisabled(buffer.Device());
  }
  ::EndPaint(window_, &paint);
  return 0;
}

// Nobody stays on a disabled tab; where all are, the tab stays.
bool TabWindow::Enable(WPARAM tab, bool isEnabled) {
  if (tab >= Enabled().size()) return false;
  if (disabled_.size() <= tab) disabled_.resize(tab + 1);
  disabled_[tab] = isEnabled ? 0 : 1;
  ::InvalidateRect(window_, nullptr, TRUE);
  Tell(EVENT_OBJECT_STATECHANGE, static_cast<int32_t>(tab));
  if (!isEnabled && Current() == static_cast<int32_t>(tab)) Go(NextEnabledTab(Enabled(), Current(), 1, true));
  return true;
}

// The marks of disabled tabs move with the tabs.
LRESULT TabWindow::HandleTabs(UINT message, WPARAM wParam, LPARAM lParam) {
  const LRESULT result = Default(message, wParam, lParam);
  if (message == TCM_DELETEALLITEMS) {
    disabled_.clear();
  } else if (message == TCM_DELETEITEM) {
    if (result != FALSE && wParam < disabled_.size())
      disabled_.erase(disabled_.begin() + static_cast<std::ptrdiff_t>(wParam));
  } else if (result >= 0 && static_cast<std::size_t>(result) < disabled_.size()) {
    disabled_.insert(disabled_.begin() + result, 0);
  }
  return result;
}

LRESULT TabWindow::Handle(UINT message, WPARAM wParam, LPARAM lParam) {
  LRESULT result = 0;
  if (HandleFont(message, wParam, lParam, result)) return result;
  switch (message) {
    case VRXBM_ENABLETAB:
      return Enable(wParam, lParam != 0) ? 1 : 0;
    case VRXBM_ISTABENABLED:
      return wParam < Enabled().size() ? Enabled()[wParam] : 0;
    case TCM_INSERTITEMW:
    case TCM_INSERTITEMA:
    case TCM_DELETEITEM:
    case TCM_DELETEALLITEMS:
      return HandleTabs(message, wParam, lParam);
    case WM_LBUTTONDOWN:
    case WM_LBUTTONDBLCLK: {
      const int32_t tab = PartAt({GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)});
      if (tab >= 0 && Enabled()[static_cast<std::size_t>(tab)] == 0) return 0;
      return Default(WM_LBUTTONDOWN, wParam, lParam);  // the second of two quick clicks is one, too
    }
    case WM_MOUSEMOVE: {
      const int32_t tab = PartAt({GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)});
      const bool isDisabled = tab >= 0 && Enabled()[static_cast<std::size_t>(tab)] == 0;
      return isDisabled ? Default(WM_MOUSELEAVE, 0, 0)
                        : Default(message, wParam, lParam);  // nothing lights up
    }
    case WM_KEYDOWN:
      if (PressKey(wParam)) return 0;
      break;
    case WM_ERASEBKGND:
      return 1;
    case WM_PAINT:
    case WM_PRINTCLIENT:
      return Paint(reinterpret_cast<HDC>(wParam));
    default:
      break;
  }
  return SystemWindow::Handle(message, wParam, lParam);
}

}  // namespace vrx::controls
