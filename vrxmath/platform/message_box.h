// The message box: how the library tells the user of a host something without knowing the host's windows.

#ifndef VRXMATH_PLATFORM_MESSAGE_BOX_H_
#define VRXMATH_PLATFORM_MESSAGE_BOX_H_

#include <cstdint>

#include <vrxmath/export.h>
#include <vrxmath/platform/wide_string.h>

namespace vrx {

/// The picture beside a message. The numbers are those of the Windows message box.
enum class MessageIcon : uint32_t { kNone = 0x00, kExclamation = 0x30, kInformation = 0x40 };

/// Shows one message with an OK button and returns when the user has seen it.
using MessageBoxHandler = void (*)(WideView text, MessageIcon icon, void* context);

/// Shows `text` through the current handler. The handler may throw; the exception passes through the library.
VRX_API void ShowMessage(WideView text, MessageIcon icon = MessageIcon::kNone);

/// Replaces the handler for the whole process; null restores the default: a modal message box on Windows,
/// elsewhere the text and a line end on standard error. `context` is handed to the handler unchanged. Not for use while
/// another thread shows a message.
VRX_API void SetMessageBoxHandler(MessageBoxHandler handler, void* context = nullptr);

namespace platform_internal {
/// Shows a message as the default handler does.
void ShowSystemMessage(WideView text, MessageIcon icon);
}  // namespace platform_internal

}  // namespace vrx

#endif  // VRXMATH_PLATFORM_MESSAGE_BOX_H_
