#include "controls/layout/progress_picture.h"

#include <algorithm>
#include <cmath>

#include <vrxmath/support/number_text.h>

#include "pictures/marks.h"
#include "pictures/texts.h"

namespace vrx::controls {

double PartDone(const ProgressData& data) {
  if (!(data.upper > data.lower)) return 0;
  const double part = (data.position - data.lower) / (data.upper - data.lower);
  return std::isfinite(part) ? std::clamp(part, 0.0, 1.0) : 0;
}

CString ProgressText(const ProgressData& data) {
  CValueRange whole;
  whole.decimals = 0;
  CString text = data.text;
  if (text.IsEmpty()) {
    text = NumberText(std::floor(PartDone(data) * 100), whole);
    text += u" %";
  }
  // Beyond a month nobody believes it.
  if (!(data.secondsLeft >= 0 && data.secondsLeft < 31 * 86400.0)) return text;
  const auto seconds = static_cast<int64_t>(std::ceil(data.secondsLeft));
  const auto twoDigits = [](int64_t value) {
    const WideChar digits[] = {static_cast<WideChar>(u'0' + value / 10),
                               static_cast<WideChar>(u'0' + value % 10)};
    return CString(WideView(digits, 2));
  };
  CString time;
  if (seconds >= 3600) {
    const int64_t hours = seconds / 3600;
    time = NumberText(static_cast<double>(hours), whole);
    time += u":";
    time += twoDigits(seconds / 60 % 60);
  } else {
    const int64_t minutes = seconds / 60;
    time = NumberText(static_cast<double>(minutes), whole);
  }
  time += u":";
  time += twoDigits(seconds % 60);
  text += u"  ";
  text += FillPattern(ChartText(ControlText::kTimeLeft), {time});
  return text;
}

void DrawProgress(Picture& picture, Rect box, const ProgressData& data, const Look& look) {
  const Paint bar = data.verdict < kFail || data.verdict > kPass
                        ? Paint(Role::kSelection)
                        : PaintOf(static_cast<Verdict>(data.verdict));
  picture.Rectangle(box, Role::kPaper);
  const double done = std::floor(box.width * PartDone(data) + 0.5);
  picture.Rectangle({box.left, box.top, done, box.height}, bar);
  picture.Frame(box, Role::kFrame);
  // On a plate of its own the text is read on any bar.
  picture.Text({box.left, box.top + 2 * look.scale, box.width, box.height - 4 * look.scale},
               ProgressText(data), Role::kText, Align::kMiddle);
  picture.PutOnPlate(Role::kPaper);
}

Rect PicturePlace(Rect box, double width, double height, PictureMode mode) {
  if (mode == PictureMode::kStretch || !(width > 0) || !(height > 0)) return box;
  const double scale = mode == PictureMode::kFit ? std::min(box.width / width, box.height / height) : 1.0;
  const double w = std::floor(width * scale + 0.5), h = std::floor(height * scale + 0.5);
  return {box.left + std::floor((box.width - w) / 2), box.top + std::floor((box.height - h) / 2), w, h};
}

}  // namespace vrx::controls
