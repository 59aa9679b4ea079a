// Polylines over axes as a picture.

#ifndef PICTURES_POLYLINES_H_
#define PICTURES_POLYLINES_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "pictures/axes.h"
#include "pictures/dbl_polyline.h"
#include "pictures/shapes.h"

namespace vrx::pictures {

/// A line across a plot, such as a limit.
struct LevelLine {
  double y = 0;
  Paint paint = Role::kFail;
  bool dashed = false;
};

/// What a plot has beside its lines.
struct PlotExtras {
  std::span<const LevelLine> levels = {};
  std::span<const NamedValue> xNames = {};  ///< named places of x, ascending, in place of round values
  bool hasX = true;                         ///< labels and the heading of x
  bool hasXGrid = true;
  bool isXExact = false;               ///< x ends where the lines do, and not at a round value
  bool isFirstOnTop = false;           ///< the first line lies over the others
  std::size_t targetLines = SIZE_MAX;  ///< only the points of so many lines are targets
  double above = 0;                    ///< room over the heading of y
  double yLabels = 0;                  ///< room for the labels of y at least
  int32_t ySteps = 5;
};

/// Draws lines over shared axes into `box`, headings and labels included; the ranges are the same for every size. Every shown
/// point is a target. Marks stand over the lines, the worse verdicts over the better ones. Returns the area of the axes.
Rect DrawPolylines(Picture& picture, Rect box, std::span<const CDblPolyline> lines, const Look& look,
                   const PlotExtras& extras = {});

/// One of several plots below each other.
struct PlotStrip {
  std::vector<CDblPolyline> lines;
  std::vector<LevelLine> levels = {};
  std::size_t targetLines = SIZE_MAX;  ///< as in PlotExtras
};

/// Plots below each other over one order of x, of one width: the last one has the labels of all below it. Targets count the lines
/// of all strips. `drawn`, where it is given, may add to the picture of a strip, whose index and area it gets.
void DrawStrips(Picture& picture, Rect box, std::span<const PlotStrip> strips, const Look& look,
                const std::function<void(std::size_t strip, Picture& picture, const Rect& area)>& drawn = {});

/// The room that the labels of y need, so that several plots below each other get the same.
[[nodiscard]] double LabelsOf(std::span<const CDblPolyline> lines, const Look& look,
                              const PlotExtras& extras = {});

/// The name of a target of such a picture: that of its point or line, x and y.
[[nodiscard]] CString PointName(std::span<const CDblPolyline> lines, const Target& target);

/// A ring about target `current` of the picture, if there is one.
void MarkCurrent(Picture& picture, int32_t current, const Look& look);

}  // namespace vrx::pictures

#endif  // PICTURES_POLYLINES_H_
