#include <vrxmath/platform/message_box.h>

namespace vrx {
namespace {

void ShowSystemMessage(WideView text, MessageIcon icon, void*) {
  platform_internal::ShowSystemMessage(text, icon);
}

struct CurrentHandler {
  MessageBoxHandler show = &ShowSystemMessage;
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
