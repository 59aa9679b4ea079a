// The point of a plotted line, where hosts look for it.

#ifndef CONTROLS_LAYOUT_DBL_POINT_H_
#define CONTROLS_LAYOUT_DBL_POINT_H_

#include "pictures/dbl_point.h"

#endif  // CONTROLS_LAYOUT_DBL_POINT_H_
