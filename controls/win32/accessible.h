// Name, value and parts of a control for screen readers (MSAA).

#ifndef CONTROLS_WIN32_ACCESSIBLE_H_
#define CONTROLS_WIN32_ACCESSIBLE_H_

#include <memory>

#include "controls/win32/window.h"

namespace vrx::controls {

/// A control's account of itself. Parts are numbered from 0.
class AccessibleSource {
 public:
  virtual ~AccessibleSource() = default;
  /// Its parts are windows, which the system's object knows; the functions of parts are not asked then.
  [[nodiscard]] virtual bool IsContainer() const { return false; }
  [[nodiscard]] virtual long AccessibleRole() const = 0;         ///< ROLE_SYSTEM_...
  [[nodiscard]] virtual CString AccessibleName() { return {}; }  ///< empty: the window's text
  [[nodiscard]] virtual CString AccessibleValue() { return {}; }
  [[nodiscard]] virtual int32_t PartCount() { return 0; }
  [[nodiscard]] virtual long PartRole() const { return 0; }
  [[nodiscard]] virtual CString PartName(int32_t /*part*/) { return {}; }
  [[nodiscard]] virtual long PartState(int32_t /*part*/) { return 0; }  ///< STATE_SYSTEM_...
  [[nodiscard]] virtual RECT PartRect(int32_t /*part*/) {
    return {};
  }                                                           ///< in the window, as its mouse has it
  [[nodiscard]] virtual int32_t FocusedPart() { return -1; }  ///< -1: none
  [[nodiscard]] virtual int32_t PartAt(POINT /*point*/) { return -1; }  ///< -1: none
  /// Selecting it is the default action of a part.
  virtual void SelectPart(int32_t /*part*/) {}
};

/// A screen reader may hold its object longer than the window lives; the link is cut when the window goes.
using AccessibleLink = std::shared_ptr<AccessibleSource*>;

/// The answer to WM_GETOBJECT for the client area; 0 where the system has no accessibility.
LRESULT AnswerGetObject(HWND window, const AccessibleLink& link, WPARAM wParam);

/// A window that says itself what it is.
class AccessibleWindow : public Window, public AccessibleSource {
 public:
  AccessibleWindow() : link_(std::make_shared<AccessibleSource*>(this)) {}
  ~AccessibleWindow() override { *link_ = nullptr; }

 protected:
  LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam) override {
    if (message == WM_GETOBJECT && static_cast<LONG>(lParam) == OBJID_CLIENT)
      return AnswerGetObject(window_, link_, wParam);
    return Default(message, wParam, lParam);
  }
  /// Tells screen readers of an event at a part (-1: the control).
  void Tell(DWORD event, int32_t part) const { ::NotifyWinEvent(event, window_, OBJID_CLIENT, part + 1); }

 private:
  AccessibleLink link_;
};

}  // namespace vrx::controls

#endif  // CONTROLS_WIN32_ACCESSIBLE_H_
