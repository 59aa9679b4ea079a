// Controls that only show something: swatch pair, progress bar, picture. They take no focus.

#ifndef CONTROLS_WIN32_STILL_WINDOWS_H_
#define CONTROLS_WIN32_STILL_WINDOWS_H_

#include "controls/layout/progress_picture.h"
#include "controls/win32/drawn_window.h"
#include "pictures/swatches.h"

namespace vrx::controls {

class StillWindow : public DrawnWindow {
 protected:
  [[nodiscard]] bool IsMirrored() const override { return true; }
  [[nodiscard]] long AccessibleRole() const override;
};

class SwatchWindow final : public StillWindow {
  LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam) override;
  void Draw(Picture& picture, Rect box, const Look& look) override;
  CString AccessibleValue() override;
  SwatchPair pair_;
  bool hasData_ = false;
};

class ProgressWindow final : public StillWindow {
  LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam) override;
  void Draw(Picture& picture, Rect box, const Look& look) override {
    DrawProgress(picture, box, data_, look);
  }
  long AccessibleRole() const override;
  CString AccessibleValue() override { return ProgressText(data_); }
  void Changed();
  ProgressData data_;
};

class PictureWindow final : public StillWindow {
  LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam) override;
  void Draw(Picture& picture, Rect box, const Look& look) override;
  void PaintMore(HDC device, const RECT& box) override;
  HBITMAP bitmap_ = nullptr;  // the host's
  PictureMode mode_ = PictureMode::kCentre;
};

/// The colours of a structure from outside; false when it is none.
bool TakeSwatches(const VRX_SWATCH_COLORS& colors, SwatchPair& pair);

}  // namespace vrx::controls

#endif  // CONTROLS_WIN32_STILL_WINDOWS_H_
