// Polylines over axes as a picture.

#ifndef CONTROLS_LAYOUT_PLOT_PICTURE_H_
#define CONTROLS_LAYOUT_PLOT_PICTURE_H_

#include <cstdint>
#include <span>

#include "controls/layout/axes.h"
#include "controls/layout/dbl_polyline.h"
#include "controls/layout/shapes.h"

namespace vrx::controls {

/// A line across a plot, such as a limit.
struct LevelLine {
  double y = 0;
  Paint paint = Role::kFail;
  bool dashed = false;
};

/// The colour and the shape of a verdict's mark.
[[nodiscard]] Paint PaintOf(Verdict verdict);
[[nodiscard]] Mark MarkOf(Verdict verdict);

/// Draws lines over shared axes into `box`, headings and labels included. Every shown point is a target. Of
/// points in a crowd that share two pixels, one gets a mark, and every fail does.
void DrawPolylines(Picture& picture, Rect box, std::span<const CDblPolyline> lines, const Look& look,
                   std::span<const LevelLine> levels = {}, bool withX = true);

/// The name of a target of such a picture: that of its point or line, x and y.
[[nodiscard]] CString PointName(std::span<const CDblPolyline> lines, const Target& target);

/// A ring about target `current` of the picture, if there is one.
void MarkCurrent(Picture& picture, int32_t current, const Look& look);

}  // namespace vrx::controls

#endif  // CONTROLS_LAYOUT_PLOT_PICTURE_H_
