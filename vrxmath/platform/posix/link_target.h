// Following symbolic links, for those who replace files.

#ifndef VRXMATH_PLATFORM_POSIX_LINK_TARGET_H_
#define VRXMATH_PLATFORM_POSIX_LINK_TARGET_H_

#include <string>

namespace vrx::platform_internal {

/// The file that `path` names, behind any symbolic links, whether or not it is there yet. The path itself where
/// the links lead in a circle.
std::string LinkTarget(const std::string& path);

}  // namespace vrx::platform_internal

#endif  // VRXMATH_PLATFORM_POSIX_LINK_TARGET_H_
