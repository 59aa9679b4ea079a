// Whether two names are those of one file.

#ifndef TOOLS_VRX_BASE_SAME_FILE_H_
#define TOOLS_VRX_BASE_SAME_FILE_H_

#include <string>

namespace vrx::tool {

/// True when two paths, in UTF-8, lead to one regular file, by links too, or would if it were there. Devices such as /dev/null
/// take anything.
bool AreOneFile(const std::string& a, const std::string& b);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_BASE_SAME_FILE_H_
