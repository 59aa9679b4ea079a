// The colours of what controls draw, under the names by which hosts know them.

#ifndef CONTROLS_LAYOUT_PAINT_H_
#define CONTROLS_LAYOUT_PAINT_H_

#include "pictures/paint.h"

namespace vrx::controls {

using pictures::Paint;
using pictures::Role;

}  // namespace vrx::controls

#endif  // CONTROLS_LAYOUT_PAINT_H_
