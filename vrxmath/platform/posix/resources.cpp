#include <vrxmath/platform/resources.h>

#include <algorithm>
#include <bit>

namespace vrx {

static_assert(std::endian::native == std::endian::little && sizeof(double) == 8,
              "binary resources are held in memory in their little-endian form");

WideView FindString(uint32_t number) {
  const auto strings = platform_internal::kStrings;
  const auto found =
      std::ranges::lower_bound(strings, number, {}, &platform_internal::StringResource::number);
  return found != strings.end() && found->number == number ? found->text : WideView();
}

std::span<const std::byte> FindBinaryResource(std::string_view type, std::string_view name) {
  for (const auto& resource : platform_internal::kBinaries) {
    if (resource.type == type && resource.name == name) return std::as_bytes(resource.content);
  }
  return {};
}

}  // namespace vrx
