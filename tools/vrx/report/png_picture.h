// The pictures that are PNG files.

#ifndef TOOLS_VRX_REPORT_PNG_PICTURE_H_
#define TOOLS_VRX_REPORT_PNG_PICTURE_H_

#include <cstdint>
#include <memory>

#include "tools/vrx/report/picture.h"

namespace vrx::tool {

/// An empty picture of one colour with `scale` pixels per unit of length. Throws InputError where the program was built
/// without what paints them, which is so on Windows.
std::unique_ptr<Picture> MakePngPicture(int32_t width, int32_t height, Paint background, double scale);

/// The radius of a mark that is round.
double RadiusOf(Mark mark);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_REPORT_PNG_PICTURE_H_
