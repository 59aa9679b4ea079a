// What controls draw with: the shapes and the charts of pictures/, without their namespace.

#ifndef CONTROLS_LAYOUT_PICTURES_H_
#define CONTROLS_LAYOUT_PICTURES_H_

#include "pictures/shapes.h"

namespace vrx::controls {

using namespace pictures;  // NOLINT(google-build-using-namespace)

}  // namespace vrx::controls

#endif  // CONTROLS_LAYOUT_PICTURES_H_
