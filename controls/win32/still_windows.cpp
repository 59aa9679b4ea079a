#include "controls/win32/still_windows.h"

#include <oleacc.h>

#include <vrxmath/foundation/string_numbers.h>

namespace vrx::controls {

bool TakeSwatches(const VRX_SWATCH_COLORS& colors, SwatchPair& pair) {
  pair.standard = {colors.standard & 0xFFFFFF, (colors.flags & VRX_STANDARD_OUT) == 0};
  pair.trial = {colors.trial & 0xFFFFFF, (colors.flags & VRX_TRIAL_OUT) == 0};
  pair.hasTrial = (colors.flags & VRX_NO_TRIAL) == 0;
  pair.framed = (colors.flags & VRX_FRAMED) != 0;
  return colors.size == sizeof colors;
}

long StillWindow::AccessibleRole() const {
  return ROLE_SYSTEM_GRAPHIC;
}

// The size of the outer structure stands in the inner one, with which it begins.
LRESULT SwatchWindow::Handle(UINT message, WPARAM wParam, LPARAM lParam) {
  if (message != VRXDM_SET) return StillWindow::Handle(message, wParam, lParam);
  const auto* data = reinterpret_cast<const VRX_SWATCH_DATA*>(lParam);
  SwatchPair pair;
  if (data != nullptr) {
    VRX_SWATCH_COLORS colors = data->colors;
    if (colors.size != sizeof *data) return 0;
    colors.size = sizeof colors;
    TakeSwatches(colors, pair);
    pair.standardName = ViewOf(data->standardName);
    pair.trialName = ViewOf(data->trialName);
  }
  pair_ = std::move(pair);
  hasData_ = data != nullptr;
  Invalidate();
  Tell(EVENT_OBJECT_VALUECHANGE, -1);
  return 1;
}

void SwatchWindow::Draw(Picture& picture, Rect box, const Look& look) {
  picture.Rectangle(box, Role::kPaper);
  if (hasData_) DrawSwatchPair(picture, box, pair_, look);
}

// The names, and which of the two colours the display cannot show.
CString SwatchWindow::AccessibleValue() {
  CString value = pair_.standardName;
  const CString outOfGamut = ControlString(static_cast<uint32_t>(ControlText::kOutOfGamut));
  if (!pair_.standard.inGamut) (value += u", ") += outOfGamut;
  if (!pair_.hasTrial) return value;
  (value += u"; ") += pair_.trialName;
  if (!pair_.trial.inGamut) (value += u", ") += outOfGamut;
  return value;
}

LRESULT ProgressWindow::Handle(UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == VRXGM_SET) {
    const auto* data = DataOf<VRX_PROGRESS_DATA>(lParam);
    if (data == nullptr) return 0;
    data_ = {data->lower, data->upper, data->position, data->secondsLeft, data->verdict, ViewOf(data->text)};
    Changed();
    return 1;
  }
  if (message == VRXGM_SETPOS) {
    if (lParam == 0) return 0;
    data_.position = *reinterpret_cast<const double*>(lParam);
    Changed();
    return 1;
  }
  return StillWindow::Handle(message, wParam, lParam);
}

void ProgressWindow::Changed() {
  Invalidate();
  Tell(EVENT_OBJECT_VALUECHANGE, -1);
}

long ProgressWindow::AccessibleRole() const {
  return ROLE_SYSTEM_PROGRESSBAR;
}

LRESULT PictureWindow::Handle(UINT message, WPARAM wParam, LPARAM lParam) {
  if (message != VRXPM_SETBITMAP) return StillWindow::Handle(message, wParam, lParam);
  const auto bitmap = reinterpret_cast<HBITMAP>(lParam);
  if (wParam > VRX_PICTURE_STRETCH || (bitmap != nullptr && ::GetObjectType(bitmap) != OBJ_BITMAP)) return 0;
  bitmap_ = bitmap;
  mode_ = static_cast<PictureMode>(wParam);
  Invalidate();
  return 1;
}

void PictureWindow::Draw(Picture& picture, Rect box, const Look& /*look*/) {
  picture.Rectangle(box, Role::kFace);
}

void PictureWindow::PaintMore(HDC device, const RECT& box) {
  BITMAP description{};
  if (bitmap_ == nullptr || ::GetObjectW(bitmap_, sizeof description, &description) == 0) return;
  const Rect frame{static_cast<double>(box.left), static_cast<double>(box.top),
                   static_cast<double>(box.right - box.left), static_cast<double>(box.bottom - box.top)};
  const Rect place = PicturePlace(frame, description.bmWidth, description.bmHeight, mode_);
  const HDC source = ::CreateCompatibleDC(device);
  const HGDIOBJ old = ::SelectObject(source, bitmap_);
  const int saved = ::SaveDC(device);
  ::IntersectClipRect(device, box.left, box.top, box.right, box.bottom);
  ::SetStretchBltMode(device, HALFTONE);
  ::SetBrushOrgEx(device, 0, 0, nullptr);
  ::StretchBlt(device, static_cast<int>(place.left), static_cast<int>(place.top),
               static_cast<int>(place.width), static_cast<int>(place.height), source, 0, 0,
               description.bmWidth, description.bmHeight, SRCCOPY);
  ::RestoreDC(device, saved);
  ::SelectObject(source, old);
  ::DeleteDC(source);
}

}  // namespace vrx::controls
