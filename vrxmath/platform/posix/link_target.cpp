#include <vrxmath/platform/posix/link_target.h>

#include <climits>
#include <cstddef>
#include <cstdlib>
#include <unistd.h>

namespace vrx::platform_internal {
namespace {

// A link that leads nowhere yet cannot be resolved as a whole: one step at a time.
std::string DanglingTarget(const std::string& path) {
  constexpr int kMostLinks = 40;  // a chain that the system would follow is no longer
  std::string target = path;
  for (int i = 0; i < kMostLinks; ++i) {
    char link[PATH_MAX];
    const ssize_t length = ::readlink(target.c_str(), link, sizeof link);
    if (length <= 0) return target;
    const std::string folder = link[0] == '/' ? std::string() : target.substr(0, target.rfind('/') + 1);
    target = folder + std::string(link, static_cast<std::size_t>(length));
  }
  return path;
}

}  // namespace

std::string LinkTarget(const std::string& path) {
  char* resolved = ::realpath(path.c_str(), nullptr);
  if (resolved == nullptr) return DanglingTarget(path);
  std::string target = resolved;
  std::free(resolved);
  return target;
}

}  // namespace vrx::platform_internal
