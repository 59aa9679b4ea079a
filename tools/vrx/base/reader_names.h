// The names of the library of readers, vrxio/, as the tool's own.

#ifndef TOOLS_VRX_BASE_READER_NAMES_H_
#define TOOLS_VRX_BASE_READER_NAMES_H_

#include <vrxio/text/input_error.h>

namespace vrx::tool {

using namespace io;  // NOLINT(google-build-using-namespace): the tool is its first user

}  // namespace vrx::tool

#endif  // TOOLS_VRX_BASE_READER_NAMES_H_
