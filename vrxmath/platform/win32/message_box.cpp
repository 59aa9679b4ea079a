#include <vrxmath/platform/message_box.h>

#include <vrxmath/platform/win32/win32.h>

namespace vrx {

// The numbers of MessageIcon are those of the system. The box belongs to no window: the library knows none.
void platform_internal::ShowSystemMessage(WideView text, MessageIcon icon) {
  const CString terminated(text);
  ::MessageBoxW(nullptr, ToSystem(terminated), L"", MB_OK | MB_TASKMODAL | static_cast<UINT>(icon));
}

}  // namespace vrx
