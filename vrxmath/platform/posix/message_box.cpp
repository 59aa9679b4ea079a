#include <vrxmath/platform/message_box.h>

#include <cstdio>
#include <string>

namespace vrx {

void platform_internal::ShowSystemMessage(WideView text, MessageIcon) {
  const std::string line = CString(text).ToUtf8() + '\n';
  std::fwrite(line.data(), 1, line.size(), stderr);
}

}  // namespace vrx
