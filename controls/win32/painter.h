// The last step: shapes by GDI, on any device context.

#ifndef CONTROLS_WIN32_PAINTER_H_
#define CONTROLS_WIN32_PAINTER_H_

#include "controls/win32/window.h"

namespace vrx::controls {

/// Paints a picture with its top left corner at `origin`. Every object that is made for it is deleted again.
/// `isRightToLeft`: the reading order of the texts.
void PaintPicture(HDC device, const Picture& picture, const Palette& palette, HFONT font, POINT origin,
                  bool isRightToLeft);

/// A bitmap as large as a rectangle of a window, to paint in with the window's coordinates; it goes to the window at the end in
/// one piece. While it lives the window's device is not turned around; `isTurned` turns the buffer around in its place, for
/// what the system paints from right to left (`area` from 0 on).
class PaintBuffer {
 public:
  PaintBuffer(HDC target, const RECT& area, bool isTurned = false);
  PaintBuffer(const PaintBuffer&) = delete;
  PaintBuffer& operator=(const PaintBuffer&) = delete;
  ~PaintBuffer();
  /// Where to paint: the buffer, or the window itself where there is no memory for one.
  [[nodiscard]] HDC Device() const { return bitmap_ != nullptr ? memory_ : target_; }

 private:
  HDC target_;
  RECT area_;
  DWORD layout_;
  HDC memory_ = nullptr;
  HBITMAP bitmap_ = nullptr;
  HGDIOBJ old_ = nullptr;
};

}  // namespace vrx::controls

#endif  // CONTROLS_WIN32_PAINTER_H_
