#include "tools/vrx/base/text.h"

#include <cstdio>

namespace vrx::tool {

void PrintMessage(std::string_view text) {
  std::fprintf(stderr, "vrx: %s\n", MessageText(text).c_str());
  std::fflush(stderr);
}

}  // namespace vrx::tool
