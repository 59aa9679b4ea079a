// The progress of work, and the place of a picture within its frame.

#ifndef CONTROLS_LAYOUT_PROGRESS_PICTURE_H_
#define CONTROLS_LAYOUT_PROGRESS_PICTURE_H_

#include <cstdint>

#include "controls/layout/pictures.h"

namespace vrx::controls {

/// Work that goes on.
struct ProgressData {
  double lower = 0, upper = 100, position = 0;
  double secondsLeft = -1;  ///< negative: not known
  int32_t verdict = -1;     ///< the colour of the bar; -1: the selection's
  CString text;             ///< in place of the percentage
};
/// The part that is done, 0 to 1; 0 for an empty or reversed range.
[[nodiscard]] double PartDone(const ProgressData& data);
/// The text on the bar: the given one or the percentage, and the time left as minutes and seconds, or hours too.
[[nodiscard]] CString ProgressText(const ProgressData& data);
/// The text stands on a plate of paper, so that it is read on a bar of any colour.
void DrawProgress(Picture& picture, Rect box, const ProgressData& data, const Look& look);

enum class PictureMode : uint8_t {
  kCentre,   ///< at its own size, the middle in the middle
  kFit,      ///< as large as it can be in its own proportions
  kStretch,  ///< over the whole frame
};
/// Where a picture of a size goes within `box`.
[[nodiscard]] Rect PicturePlace(Rect box, double width, double height, PictureMode mode);

}  // namespace vrx::controls

#endif  // CONTROLS_LAYOUT_PROGRESS_PICTURE_H_
