#include <vrxmath/platform/message_box.h>

#include <cstdio>
#include <string>

namespace vrx {
namespace {

void WriteToStandardError(WideView text, MessageIcon, void*) {
  const std::string line = CString(text).ToUtf8() + '\n';
  std::fwrite(line.data(), 1, line.size(), stderr);
}

struct CurrentHandler {
  MessageBoxHandler show = &WriteToStandardError;
  void* context = nullptr;
};

CurrentHandler& Current() {
  static CurrentHandler handler;
  return handler;
}

}  // namespace

void ShowMessage(WideView text, MessageIcon icon) {
  Current().show(text, icon, Current().context);
}

void SetMessageBoxHandler(MessageBoxHandler handler, void* context) {
  Current() = handler ? CurrentHandler{handler, context} : CurrentHandler{};
}

}  // namespace vrx
