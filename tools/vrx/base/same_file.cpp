#include "tools/vrx/base/same_file.h"

#include <filesystem>
#include <system_error>

#include <vrxio/text/path.h>

namespace vrx::tool {

bool AreOneFile(const std::string& a, const std::string& b) {
  namespace fs = std::filesystem;
  const fs::path first = io::PathOf(a), second = io::PathOf(b);
  std::error_code error;
  if (fs::exists(first, error) && !fs::is_regular_file(first, error)) return false;
  if (fs::equivalent(first, second, error)) return true;
  if (fs::exists(first, error) || fs::exists(second, error)) return false;
  const fs::path whole = fs::weakly_canonical(fs::absolute(first, error), error);
  return !whole.empty() && whole == fs::weakly_canonical(fs::absolute(second, error), error);
}

}  // namespace vrx::tool
