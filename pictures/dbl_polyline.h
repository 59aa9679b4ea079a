// The plotting polyline: points with axes. A host draws it by the class Plot or by DrawPolylines (controls/window_controls.h).

#ifndef PICTURES_DBL_POLYLINE_H_
#define PICTURES_DBL_POLYLINE_H_

#include <vrxmath/foundation/typed_arrays.h>
#include <vrxmath/tolerance/interval.h>
#include <vrxmath/tolerance/verdict.h>

#include "pictures/dbl_point.h"
#include "pictures/paint.h"

namespace vrx {

template <>
inline constexpr bool kHasPlainArchiveForm<CDblPoint> = true;

/// Points that are joined in their order. A point with an unset, infinite or NaN coordinate is left out and parts the line.
class CDblPolyline : public CArrayVarex<CDblPoint> {
 public:
  CString name;                                       ///< said of its points
  pictures::Paint paint = pictures::Role::kStandard;  ///< of the line
  double width = 1;                                   ///< of the line, in 1/96 inch; 0: no line
  bool dashed = false;
  bool marked = false;    ///< a mark at every point
  CIntArray1 verdicts;    ///< per point: its mark is that of the verdict; points without one have a dot
  CStringArray1 names;    ///< per point, in place of the line's name
  Interval xRange{0, 0};  ///< what the axis shows at least; fitted to the points when empty
  Interval yRange{0, 0};
  CString xHeading, yHeading;  ///< of the axes: those of the first of several lines count
};

}  // namespace vrx

#endif  // PICTURES_DBL_POLYLINE_H_
