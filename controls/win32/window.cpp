#include "controls/win32/window.h"

#include <vrxmath/foundation/string_numbers.h>

namespace vrx::controls {

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

void Font::Reset() {
  if (font_ != nullptr) ::DeleteObject(font_);
  font_ = nullptr;
}

void Font::MakeMessageFont(int dpi) {
  Reset();
  NONCLIENTMETRICSW metrics{};
  metrics.cbSize = sizeof metrics;
  ::SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0);
  constexpr int kPoints = 9;
  metrics.lfMessageFont.lfHeight = -::MulDiv(kPoints, dpi, 72);
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
  if (dpi_ != 0) return dpi_;
  const HDC screen = ::GetDC(nullptr);
  const int dpi = ::GetDeviceCaps(screen, LOGPIXELSX);
  ::ReleaseDC(nullptr, screen);
  return dpi;
}

}  // namespace vrx::controls
