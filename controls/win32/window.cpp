#include "controls/win32/window.h"

#include <string>

#include <vrxmath/foundation/string_numbers.h>

namespace vrx::controls {
namespace {

int ScreenDpi() {
  const HDC screen = ::GetDC(nullptr);
  const int dpi = ::GetDeviceCaps(screen, LOGPIXELSX);
  ::ReleaseDC(nullptr, screen);
  return dpi;
}

}  // namespace

CString TextOfWindow(HWND window) {
  std::wstring text(static_cast<std::size_t>(::GetWindowTextLengthW(window)) + 1, 0);
  ::GetWindowTextW(window, text.data(), static_cast<int>(text.size()));
  return ViewOf(text.c_str());
}

CString ControlString(uint32_t number) {
  return CString::Load(kStringControl + number);
}

Palette SystemPalette(bool isEnabled) {
  HIGHCONTRASTW contrast{};
  contrast.cbSize = sizeof contrast;
  Palette palette;
  palette.paper = ::GetSysColor(isEnabled ? COLOR_WINDOW : COLOR_BTNFACE);
  palette.text = ::GetSysColor(isEnabled ? COLOR_WINDOWTEXT : COLOR_GRAYTEXT);
  palette.muted = ::GetSysColor(COLOR_GRAYTEXT);
  palette.face = ::GetSysColor(COLOR_BTNFACE);
  palette.faceText = ::GetSysColor(isEnabled ? COLOR_BTNTEXT : COLOR_GRAYTEXT);
  palette.selection = ::GetSysColor(isEnabled ? COLOR_HIGHLIGHT : COLOR_GRAYTEXT);
  palette.selectionText = ::GetSysColor(isEnabled ? COLOR_HIGHLIGHTTEXT : COLOR_BTNFACE);
  palette.highContrast = ::SystemParametersInfoW(SPI_GETHIGHCONTRAST, sizeof contrast, &contrast, 0) &&
                         (contrast.dwFlags & HCF_HIGHCONTRASTON) != 0;
  return palette;
}

Palette PaletteFor(HDC device, bool isEnabled) {
  const int technology = ::GetDeviceCaps(device, TECHNOLOGY);
  const bool isPaper = technology == DT_RASPRINTER || technology == DT_PLOTTER || technology == DT_CHARSTREAM;
  return isPaper ? Palette{} : SystemPalette(isEnabled);
}

void Font::Reset() {
  if (font_ != nullptr) ::DeleteObject(font_);
  font_ = nullptr;
}

void Font::MakeMessageFont(int dpi) {
  Reset();
  NONCLIENTMETRICSW metrics{};
  metrics.cbSize = sizeof metrics;
  ::SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0);
  metrics.lfMessageFont.lfHeight = ::MulDiv(metrics.lfMessageFont.lfHeight, dpi, ScreenDpi());
  metrics.lfMessageFont.lfWidth = 0;
  font_ = ::CreateFontIndirectW(&metrics.lfMessageFont);
}

Look LookOf(HDC device, HFONT font, int dpi) {
  const HGDIOBJ old = ::SelectObject(device, font);
  TEXTMETRICW metrics{};
  SIZE digit{};
  ::GetTextMetricsW(device, &metrics);
  ::GetTextExtentPoint32W(device, L"0", 1, &digit);
  ::SelectObject(device, old);
  return {dpi / 96.0, static_cast<double>(metrics.tmHeight), static_cast<double>(digit.cx)};
}

void Window::SendCommand(UINT code) const {
  const auto number = static_cast<WORD>(::GetDlgCtrlID(window_));
  ::SendMessageW(::GetParent(window_), WM_COMMAND, MAKEWPARAM(number, code),
                 reinterpret_cast<LPARAM>(window_));
}

LRESULT Window::SendNotify(NMHDR& header, UINT code) const {
  header.hwndFrom = window_;
  header.idFrom = static_cast<UINT_PTR>(::GetDlgCtrlID(window_));
  header.code = code;
  return ::SendMessageW(::GetParent(window_), WM_NOTIFY, header.idFrom, reinterpret_cast<LPARAM>(&header));
}

RECT Window::ClientRect() const {
  RECT client{};
  ::GetClientRect(window_, &client);
  return client;
}

int Window::Dpi() const {
  return dpi_ != 0 ? dpi_ : ScreenDpi();
}

bool Window::TakeDpi(WPARAM dpi) {
  if (dpi != 0 && (dpi < 96 || dpi > VRX_MOST_DPI)) return false;
  dpi_ = static_cast<int>(dpi);
  ownFont_.Reset();
  return true;
}

HFONT Window::CurrentFont() {
  if (hostFont_ != nullptr && dpi_ == 0) return hostFont_;
  if (ownFont_.Get() == nullptr) ownFont_.MakeMessageFont(Dpi());
  return ownFont_.Get();
}

}  // namespace vrx::controls
