// Name, value and parts of a control for screen readers (MSAA).

#ifndef CONTROLS_WIN32_ACCESSIBLE_H_
#define CONTROLS_WIN32_ACCESSIBLE_H_

#include <memory>

#include "controls/win32/window.h"

namespace vrx::controls {

/// What a control says of itself. Parts are numbered from 0.
class AccessibleSource {
 public:
  virtual ~AccessibleSource() = default;
  [[nodiscard]] virtual long AccessibleRole() const = 0;  ///< ROLE_SYSTEM_...
  [[nodiscard]] virtual CString AccessibleValue() = 0;
  [[nodiscard]] virtual int32_t PartCount() = 0;
  [[nodiscard]] virtual long PartRole() const = 0;
  [[nodiscard]] virtual CString PartName(int32_t part) = 0;
  [[nodiscard]] virtual long PartState(int32_t part) = 0;  ///< STATE_SYSTEM_...
  [[nodiscard]] virtual RECT PartRect(int32_t part) = 0;   ///< in the window, as its mouse has it
  [[nodiscard]] virtual int32_t FocusedPart() = 0;         ///< -1: none
  [[nodiscard]] virtual int32_t PartAt(POINT point) = 0;   ///< -1: none
  virtual void SelectPart(int32_t part) = 0;
};

/// A screen reader may hold its object longer than the window lives; the link is cut when the window goes.
using AccessibleLink = std::shared_ptr<AccessibleSource*>;

/// The answer to WM_GETOBJECT for the client area; 0 where the system has no accessibility.
LRESULT AnswerGetObject(HWND window, const AccessibleLink& link, WPARAM wParam);

}  // namespace vrx::controls

#endif  // CONTROLS_WIN32_ACCESSIBLE_H_
