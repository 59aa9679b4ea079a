// A control that is drawn from shapes: painting, fonts, resolution, themes, writing direction and accessibility.

#ifndef CONTROLS_WIN32_DRAWN_WINDOW_H_
#define CONTROLS_WIN32_DRAWN_WINDOW_H_

#include "controls/win32/accessible.h"
#include "controls/win32/window.h"

namespace vrx::controls {

class DrawnWindow : public Window, public AccessibleSource {
 public:
  DrawnWindow() : link_(std::make_shared<AccessibleSource*>(this)) {}
  ~DrawnWindow() override { *link_ = nullptr; }

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
  [[nodiscard]] HFONT CurrentFont();
  /// Tells screen readers of an event at a part (-1: the control).
  void Tell(DWORD event, int32_t part) const { ::NotifyWinEvent(event, window_, OBJID_CLIENT, part + 1); }
  [[nodiscard]] bool HasFocus() const { return ::GetFocus() == window_; }

 private:
  void Paint();
  void PaintInto(HDC device, const RECT& box, HFONT font, int dpi);
  LRESULT DrawOnDevice(HDC device, const RECT* box);

  AccessibleLink link_;
  HFONT hostFont_ = nullptr;
  Font ownFont_;
  int ownFontDpi_ = 0;
};

}  // namespace vrx::controls

#endif  // CONTROLS_WIN32_DRAWN_WINDOW_H_
