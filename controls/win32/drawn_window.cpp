#include "controls/win32/drawn_window.h"

#include "controls/win32/painter.h"

namespace vrx::controls {

Look DrawnWindow::ScreenLook() {
  const HDC device = ::GetDC(window_);
  const Look look = LookOf(device, CurrentFont(), Dpi());
  ::ReleaseDC(window_, device);
  return look;
}

void DrawnWindow::PaintInto(HDC device, const RECT& box, HFONT font, int dpi) {
  const bool isRightToLeft = IsRightToLeft() && IsMirrored();
  Picture picture;
  const double width = box.right - box.left, height = box.bottom - box.top;
  Draw(picture, {0, 0, width, height}, LookOf(device, font, dpi));
  if (isRightToLeft) picture.MirrorIn(width);
  PaintPicture(device, picture, PaletteFor(device, ::IsWindowEnabled(window_) != FALSE), font,
               {box.left, box.top}, isRightToLeft);
  PaintMore(device, box);
}

void DrawnWindow::Paint() {
  PAINTSTRUCT paint{};
  const HDC device = ::BeginPaint(window_, &paint);
  if (device != nullptr) {
    const RECT client = ClientRect();
    const PaintBuffer buffer(device, client);
    PaintInto(buffer.Device(), client, CurrentFont(), Dpi());
  }
  ::EndPaint(window_, &paint);
}

LRESULT DrawnWindow::DrawOnDevice(HDC device, const RECT* box) {
  if (device == nullptr) return 0;
  const int dpi = dpi_ != 0 ? dpi_ : ::GetDeviceCaps(device, LOGPIXELSX);
  Font font;
  font.MakeMessageFont(dpi);
  PaintInto(device, box != nullptr ? *box : ClientRect(), font.Get(), dpi);
  return 1;
}

LRESULT DrawnWindow::Handle(UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case WM_ERASEBKGND:
      return 1;  // the buffer covers everything
    case WM_PAINT:
      Paint();
      return 0;
    case WM_PRINTCLIENT:
      PaintInto(reinterpret_cast<HDC>(wParam), ClientRect(), CurrentFont(), Dpi());
      return 0;
    case VRXM_DRAW:
      return DrawOnDevice(reinterpret_cast<HDC>(wParam), reinterpret_cast<const RECT*>(lParam));
    case VRXM_SETDPI:
      if (!TakeDpi(wParam)) return 0;
      Relayout();
      Invalidate();
      return 1;
    case WM_SETFONT:
      hostFont_ = reinterpret_cast<HFONT>(wParam);
      Relayout();
      if (LOWORD(lParam) != 0) Invalidate();
      return 0;
    case WM_GETFONT:
      return reinterpret_cast<LRESULT>(CurrentFont());
    case WM_SIZE:
      Relayout();
      Invalidate();
      return 0;
    case WM_THEMECHANGED:
    case WM_SYSCOLORCHANGE:
    case WM_SETTINGCHANGE:
      ownFont_.Reset();
      Relayout();
      Invalidate();
      break;
    case WM_ENABLE:
    case WM_SETFOCUS:
    case WM_KILLFOCUS:
      Invalidate();
      break;
    default:
      break;
  }
  return AccessibleWindow::Handle(message, wParam, lParam);
}

}  // namespace vrx::controls
