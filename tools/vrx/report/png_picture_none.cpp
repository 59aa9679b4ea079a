#include "tools/vrx/base/command.h"
#include "tools/vrx/report/png_picture.h"

namespace vrx::tool {

std::unique_ptr<Picture> MakePngPicture(int32_t, int32_t, Paint, double) {
  throw InputError("this build of vrx paints no PNG pictures; give the picture a name that ends in .svg");
}

}  // namespace vrx::tool
