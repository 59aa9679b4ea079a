// The module's resources: the numbered string table and the binary resources, named by type and name.
//
// Both are made by the build from reviewable text under resources/. They are constant and may be read from
// any thread. On Windows they are the module's own resources, used in place; elsewhere tables in its code.

#ifndef VRXMATH_PLATFORM_RESOURCES_H_
#define VRXMATH_PLATFORM_RESOURCES_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include <vrxmath/export.h>
#include <vrxmath/platform/wide_string.h>

namespace vrx {

/// String `number` of the string table; empty when there is none. The units live as long as the module.
[[nodiscard]] VRX_API WideView FindString(uint32_t number);

/// The bytes of the resource of the given type and name (ASCII, such as "PWD" and "ILL02_10"), little-endian
/// and aligned to 8 bytes; empty when there is none. They live as long as the module.
[[nodiscard]] VRX_API std::span<const std::byte> FindBinaryResource(std::string_view type,
                                                                    std::string_view name);

namespace platform_internal {

struct StringResource {
  uint32_t number;
  WideView text;
};

struct BinaryResource {
  std::string_view type;
  std::string_view name;
  std::span<const double> content;
};

/// Ordered by number. Defined in the source file that the build generates.
extern const std::span<const StringResource> kStrings;
/// In no particular order.
extern const std::span<const BinaryResource> kBinaries;

}  // namespace platform_internal
}  // namespace vrx

#endif  // VRXMATH_PLATFORM_RESOURCES_H_
