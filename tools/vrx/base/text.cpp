#include "tools/vrx/base/text.h"

#include <cstdio>

namespace vrx::tool {

std::string FirstOf(const std::vector<std::string>& rows, const char* separator) {
  constexpr std::size_t kNamed = 3;
  std::string text;
  for (std::size_t i = 0; i < rows.size() && i < kNamed; ++i)
    text.append(i > 0 ? separator : "").append(rows[i]);
  return rows.size() > kNamed ? text + " ..." : text;
}

void PrintMessage(std::string_view text) {
  std::fprintf(stderr, "vrx: %s\n", MessageText(text).c_str());
  std::fflush(stderr);
}

}  // namespace vrx::tool
