#include "controls/win32/system_windows.h"

#include <algorithm>
#include <array>
#include <string>

#include <vrxmath/support/number_text.h>

#include "controls/layout/number_field.h"
#include "controls/win32/painter.h"

namespace vrx::controls {

// Number fields -----------------------------------------------------------------------------------------------

WNDPROC NumericEditWindow::Below() const {
  return ClassOf<NumericEditWindow>::below;
}
WNDPROC ScrollEditWindow::Below() const {
  return ClassOf<ScrollEditWindow>::below;
}

LRESULT NumericEditWindow::Default(UINT message, WPARAM wParam, LPARAM lParam) {
  return ::CallWindowProcW(Below(), window_, message, wParam, lParam);
}

CString NumericEditWindow::Text() const {
  std::wstring text(static_cast<std::size_t>(::GetWindowTextLengthW(window_)) + 1, 0);
  ::GetWindowTextW(window_, text.data(), static_cast<int>(text.size()));
  return ViewOf(text.c_str());
}

std::optional<double> NumericEditWindow::Value() const {
  const ParsedNumber parsed = ParseNumber(Text(), range_);
  if (parsed.error != NumberError::kNone) return std::nullopt;
  return parsed.value;
}

bool NumericEditWindow::Accept(double value, bool isByUser) {
  const bool isNew = !(value == value_);
  value_ = value;
  ::SetWindowTextW(window_, SystemText(NumberText(value, range_)));
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

bool NumericEditWindow::Step(int32_t steps) {
  const double from = Value().value_or(value_);
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

// What the field would hold after the key decides; control characters are the field's own.
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
    picture.Text({width - arrows - room, 0, room - 2 * look.scale, height}, unit_, Role::kMuted, Align::kEnd);
  }
  if (HasArrows()) {
    picture.Rectangle({width - arrows, 0, arrows, height}, Role::kFace);
    const double x = width - arrows / 2, r = 3 * look.scale;
    for (const double up : {1.0, -1.0}) {
      const double y = height / 2 - up * height / 4;
      picture.Polygon(
          std::array<CDblPoint, 3>{{{x - r, y + up * r / 2}, {x + r, y + up * r / 2}, {x, y - up * r / 2}}},
          Role::kFaceText);
    }
    picture.Line({width - arrows, height / 2}, {width, height / 2}, Role::kFrame);
  }
  PaintPicture(device, picture, SystemPalette(::IsWindowEnabled(window_) != FALSE),
               reinterpret_cast<HFONT>(::SendMessageW(window_, WM_GETFONT, 0, 0)), {0, 0}, false);
}

LRESULT NumericEditWindow::Handle(UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case WM_CREATE: {
      // Numbers run from left to right in every writing.
      const LONG_PTR style = ::GetWindowLongPtrW(window_, GWL_EXSTYLE);
      ::SetWindowLongPtrW(window_, GWL_EXSTYLE,
                          style & ~static_cast<LONG_PTR>(WS_EX_LAYOUTRTL | WS_EX_RTLREADING));
      break;
    }
    case VRXNM_SETRANGE:
      return TakeRange(lParam);
    case VRXNM_SETVALUE:
      if (lParam == 0) return 0;
      Accept(*reinterpret_cast<const double*>(lParam), false);
      return 1;
    case VRXNM_GETVALUE: {
      const std::optional<double> value = Value();
      if (lParam != 0) *reinterpret_cast<double*>(lParam) = value.value_or(kUnset);
      return value.has_value() ? 1 : 0;
    }
    case VRXNM_STEP:
      return Step(static_cast<int32_t>(wParam)) ? 1 : 0;
    case VRXM_SETDPI:
      if (wParam != 0 && (wParam < 96 || wParam > 480)) return 0;
      dpi_ = static_cast<int>(wParam);
      font_.MakeMessageFont(Dpi());
      Default(WM_SETFONT, reinterpret_cast<WPARAM>(font_.Get()), TRUE);
      SetMargins();
      return 1;
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
    case WM_SETFONT:
    case WM_SIZE:
    case WM_THEMECHANGED:
    case WM_SETTINGCHANGE: {
      const LRESULT result = Default(message, wParam, lParam);
      SetMargins();
      return result;
    }
    case WM_PAINT:
    case WM_PRINTCLIENT: {
      const LRESULT result = Default(message, wParam, lParam);
      const HDC device = message == WM_PAINT ? ::GetDC(window_) : reinterpret_cast<HDC>(wParam);
      Paint(device);
      if (message == WM_PAINT) ::ReleaseDC(window_, device);
      return result;
    }
    default:
      break;
  }
  return Default(message, wParam, lParam);
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

LRESULT TabWindow::Default(UINT message, WPARAM wParam, LPARAM lParam) {
  return ::CallWindowProcW(ClassOf<TabWindow>::below, window_, message, wParam, lParam);
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
  return true;
}

bool TabWindow::PressKey(WPARAM key) {
  const auto current = static_cast<int32_t>(Default(TCM_GETCURSEL, 0, 0));
  const auto count = static_cast<int32_t>(Enabled().size());
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

void TabWindow::PaintDisabled(HDC device) {
  const std::vector<uint8_t> enabled = Enabled();
  Picture picture;
  for (std::size_t i = 0; i < enabled.size(); ++i) {
    if (enabled[i] != 0) continue;
    RECT box{};
    wchar_t text[260] = L"";
    TCITEMW item{};
    item.mask = TCIF_TEXT;
    item.pszText = text;
    item.cchTextMax = static_cast<int>(std::size(text));
    Default(TCM_GETITEMRECT, i, reinterpret_cast<LPARAM>(&box));
    Default(TCM_GETITEMW, i, reinterpret_cast<LPARAM>(&item));
    const Rect inner =
        Rect{static_cast<double>(box.left), static_cast<double>(box.top),
             static_cast<double>(box.right - box.left), static_cast<double>(box.bottom - box.top)}
            .Inset(3);
    picture.Rectangle(inner, Role::kFace);
    picture.Text(inner, ViewOf(text), Role::kMuted, Align::kMiddle);
  }
  PaintPicture(device, picture, SystemPalette(), reinterpret_cast<HFONT>(Default(WM_GETFONT, 0, 0)), {0, 0},
               IsRightToLeft());
}

// Into a buffer, so that the black text of a disabled tab is never seen. A buffer is not turned around, so a window from
// right to left paints as the system does it, and the grey texts over it.
LRESULT TabWindow::Paint(HDC given) {
  if (given != nullptr) {
    const LRESULT result = Default(WM_PRINTCLIENT, reinterpret_cast<WPARAM>(given), PRF_CLIENT);
    PaintDisabled(given);
    return result;
  }
  PAINTSTRUCT paint{};
  const HDC device = ::BeginPaint(window_, &paint);
  if (device != nullptr && IsRightToLeft()) {
    ::FillRect(device, &paint.rcPaint, ::GetSysColorBrush(COLOR_BTNFACE));
    Default(WM_PRINTCLIENT, reinterpret_cast<WPARAM>(device), PRF_CLIENT);
    PaintDisabled(device);
  } else if (device != nullptr) {
    const RECT client = ClientRect();
    const PaintBuffer buffer(device, client);
    ::FillRect(buffer.Device(), &client, ::GetSysColorBrush(COLOR_BTNFACE));
    Default(WM_PRINTCLIENT, reinterpret_cast<WPARAM>(buffer.Device()), PRF_CLIENT);
    PaintDisabled(buffer.Device());
  }
  ::EndPaint(window_, &paint);
  return 0;
}

LRESULT TabWindow::Handle(UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case VRXBM_ENABLETAB: {
      if (wParam >= Enabled().size()) return 0;
      if (disabled_.size() <= wParam) disabled_.resize(wParam + 1);
      disabled_[wParam] = lParam == 0;
      ::InvalidateRect(window_, nullptr, TRUE);
      // Nobody stays on a disabled tab; where all are, the tab stays.
      const auto current = static_cast<int32_t>(Default(TCM_GETCURSEL, 0, 0));
      if (lParam == 0 && current == static_cast<int32_t>(wParam))
        Go(NextEnabledTab(Enabled(), current, 1, true));
      return 1;
    }
    case VRXBM_ISTABENABLED:
      return wParam < Enabled().size() ? Enabled()[wParam] : 0;
    case TCM_INSERTITEMW:
    case TCM_INSERTITEMA: {
      const LRESULT at = Default(message, wParam, lParam);
      if (at >= 0 && static_cast<std::size_t>(at) < disabled_.size())
        disabled_.insert(disabled_.begin() + at, 0);
      return at;
    }
    case TCM_DELETEITEM:
      if (Default(message, wParam, lParam) == FALSE) return FALSE;
      if (wParam < disabled_.size()) disabled_.erase(disabled_.begin() + static_cast<std::ptrdiff_t>(wParam));
      return TRUE;
    case TCM_DELETEALLITEMS:
      disabled_.clear();
      break;
    case WM_LBUTTONDOWN:
    case WM_LBUTTONDBLCLK: {
      TCHITTESTINFO hit{{GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)}, 0};
      const auto tab = static_cast<int32_t>(Default(TCM_HITTEST, 0, reinterpret_cast<LPARAM>(&hit)));
      if (tab >= 0 && Enabled()[static_cast<std::size_t>(tab)] == 0) return 0;
      return Default(WM_LBUTTONDOWN, wParam, lParam);  // the second of two quick clicks is one, too
    }
    case WM_KEYDOWN:
      if (PressKey(wParam)) return 0;
      break;
    case WM_ERASEBKGND:
      return 1;
    case WM_PAINT:
    case WM_PRINTCLIENT:
      return Paint(reinterpret_cast<HDC>(wParam));
    case VRXM_SETDPI:
      return wParam == 0 || (wParam >= 96 && wParam <= 480) ? 1 : 0;
    default:
      break;
  }
  return Default(message, wParam, lParam);
}

}  // namespace vrx::controls
