// The plotting polyline, where hosts look for it. A host draws it by the class Plot or by DrawPolylines
// (controls/window_controls.h).

#ifndef CONTROLS_LAYOUT_DBL_POLYLINE_H_
#define CONTROLS_LAYOUT_DBL_POLYLINE_H_

#include "controls/layout/dbl_point.h"
#include "controls/layout/paint.h"
#include "pictures/dbl_polyline.h"

#endif  // CONTROLS_LAYOUT_DBL_POLYLINE_H_
