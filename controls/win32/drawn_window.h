// A control that is drawn from shapes: painting, fonts, resolution, themes, writing direction and accessibility.

#ifndef CONTROLS_WIN32_DRAWN_WINDOW_H_
#define CONTROLS_WIN32_DRAWN_WINDOW_H_

#include "controls/win32/accessible.h"

namespace vrx::controls {

class DrawnWindow : public AccessibleWindow {
 protected:
  /// The picture of a rectangle of a size, whatever device it is for.
  virtual void Draw(Picture& picture, Rect box, const Look& look) = 0;
  /// Whether the picture is turned around from right to left. Plots are not: wavelengths and axes run as everywhere.
  [[nodiscard]] virtual bool IsMirrored() const { return false; }
  /// Paints what no shape says, as a bitmap, into the rectangle.
  virtual void PaintMore(HDC /*device*/, const RECT& /*box*/) {}
  /// The font, the resolution or the size changed.
  virtual void Relayout() {}

  LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam) override;
  void Invalidate() const { ::InvalidateRect(window_, nullptr, FALSE); }
  /// The sizes on the screen, and the font for them.
  [[nodiscard]] Look ScreenLook();
  [[nodiscard]] bool HasFocus() const { return ::GetFocus() == window_; }

 private:
  void Paint();
  void PaintInto(HDC device, const RECT& box, HFONT font, int dpi);
  LRESULT DrawOnDevice(HDC device, const RECT* box);
};

}  // namespace vrx::controls

#endif  // CONTROLS_WIN32_DRAWN_WINDOW_H_
