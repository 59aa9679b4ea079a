// The plotting polyline: points with axes, drawn into a rectangle of any picture.

#ifndef CONTROLS_LAYOUT_DBL_POLYLINE_H_
#define CONTROLS_LAYOUT_DBL_POLYLINE_H_

#include <cstdint>
#include <span>

#include <vrxmath/foundation/typed_arrays.h>
#include <vrxmath/tolerance/interval.h>
#include <vrxmath/tolerance/verdict.h>

#include "controls/layout/axes.h"
#include "controls/layout/dbl_point.h"
#include "controls/layout/shapes.h"

namespace vrx {

template <>
inline constexpr bool kHasPlainArchiveForm<CDblPoint> = true;

/// Points that are joined in their order. A point with an unset, infinite or NaN coordinate is left out and parts the line.
class CDblPolyline : public CArrayVarex<CDblPoint> {
 public:
  CString name;                                       ///< said of its points
  controls::Paint paint = controls::Role::kStandard;  ///< of the line
  double width = 1;                                   ///< of the line, in 1/96 inch; 0: no line
  bool dashed = false;
  bool marked = false;    ///< a mark at every point
  CIntArray1 verdicts;    ///< per point: its mark is that of the verdict; points without one have a dot
  CStringArray1 names;    ///< per point, in place of the line's name
  Interval xRange{0, 0};  ///< what the axis shows at least; fitted to the points when empty
  Interval yRange{0, 0};
  CString xHeading, yHeading;  ///< of the axes: those of the first of several lines count

  /// The smallest interval that holds all shown coordinates, and the range where it is given; controls::kNoInterval for
  /// neither.
  [[nodiscard]] Interval XExtent() const;
  [[nodiscard]] Interval YExtent() const;
};

namespace controls {

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

/// What a target of such a picture is called: the name of its point or line, x and y.
[[nodiscard]] CString PointName(std::span<const CDblPolyline> lines, const Target& target);

/// A ring about target `current` of the picture, if there is one.
void MarkCurrent(Picture& picture, int32_t current, const Look& look);

}  // namespace controls
}  // namespace vrx

#endif  // CONTROLS_LAYOUT_DBL_POLYLINE_H_
