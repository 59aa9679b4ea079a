// The base of the controls: an object behind each window, and the system's colours, fonts and texts.

#ifndef CONTROLS_WIN32_WINDOW_H_
#define CONTROLS_WIN32_WINDOW_H_

#include <exception>
#include <memory>
#include <string_view>

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <commctrl.h>
#include <windowsx.h>

#include <vrxmath/platform/wide_string.h>

#include "controls/layout/pictures.h"
#include "controls/vrx_controls.h"

namespace vrx::controls {

inline WideView ViewOf(const wchar_t* text) {
  return text == nullptr ? WideView() : WideView(reinterpret_cast<const WideChar*>(text));
}
inline const wchar_t* SystemText(const CString& text) {
  return reinterpret_cast<const wchar_t*>(text.CStr());
}
/// The text that WM_GETTEXT gives.
CString TextOfWindow(HWND window);
/// Text `number` of the controls (foundation/string_numbers.h).
CString ControlString(uint32_t number);

/// The system's colours as they are now; those of a disabled control are grey.
Palette SystemPalette(bool isEnabled = true);
/// The same for a device: a printer has black on white paper, whatever the screen has.
Palette PaletteFor(HDC device, bool isEnabled = true);

/// A font that is deleted at the end.
class Font {
 public:
  Font() = default;
  Font(const Font&) = delete;
  Font& operator=(const Font&) = delete;
  ~Font() { Reset(); }
  /// The user's font of messages, in the size that it has at a number of dots per inch.
  void MakeMessageFont(int dpi);
  void Reset();
  [[nodiscard]] HFONT Get() const { return font_; }

 private:
  HFONT font_ = nullptr;
};

/// The sizes of a font on a device.
Look LookOf(HDC device, HFONT font, int dpi);

/// The structure of a message, which must be there and as large as its type says.
template <class DATA>
const DATA* DataOf(LPARAM lParam) {
  const auto* data = reinterpret_cast<const DATA*>(lParam);
  return data != nullptr && data->size == sizeof(DATA) ? data : nullptr;
}

/// In WM_GETDLGCODE: whether the dialog asks for the Escape key, which would close it.
inline bool IsEscape(LPARAM lParam) {
  const auto* message = reinterpret_cast<const MSG*>(lParam);
  return message != nullptr && message->message == WM_KEYDOWN && message->wParam == VK_ESCAPE;
}

/// One window. Messages come to Handle; what it does not know goes to Default.
class Window {
 public:
  Window() = default;
  Window(const Window&) = delete;
  Window& operator=(const Window&) = delete;
  virtual ~Window() = default;

 protected:
  virtual LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam) = 0;
  virtual LRESULT Default(UINT message, WPARAM wParam, LPARAM lParam) {
    return ::DefWindowProcW(window_, message, wParam, lParam);
  }
  /// WM_COMMAND to the parent, with the control's number and a code.
  void SendCommand(UINT code) const;
  /// WM_NOTIFY to the parent; fills the header.
  LRESULT SendNotify(NMHDR& header, UINT code) const;
  [[nodiscard]] RECT ClientRect() const;
  [[nodiscard]] bool HasStyle(DWORD style) const {
    return (static_cast<DWORD>(::GetWindowLongPtrW(window_, GWL_STYLE)) & style) == style;
  }
  [[nodiscard]] bool IsRightToLeft() const {
    return (::GetWindowLongPtrW(window_, GWL_EXSTYLE) & WS_EX_LAYOUTRTL) != 0;
  }
  /// The dots per inch that were set, or those of the screen.
  [[nodiscard]] int Dpi() const;
  /// Takes the resolution that VRXM_SETDPI asks for; false when it is refused.
  bool TakeDpi(WPARAM dpi);
  /// The host's font; where there is none, or not for the resolution that was set, the user's own.
  [[nodiscard]] HFONT CurrentFont();

  HWND window_ = nullptr;
  int dpi_ = 0;
  HFONT hostFont_ = nullptr;
  Font ownFont_;  // made when it is asked for

  template <class T>
  friend LRESULT CALLBACK WindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
};

/// The extra bytes of a window where the object stands, and the procedure below it.
template <class T>
struct ClassOf {
  static inline int offset = 0;
  static inline WNDPROC below = nullptr;
};

/// Whether a message is one of the system's list boxes.
inline bool IsOfListBox(UINT message) {
  return message >= LB_ADDSTRING && message < LB_MSGMAX;
}

/// The procedure of the windows of class T. No exception leaves it: a message that fails has the answer 0, one of a list that
/// there is no room.
template <class T>
LRESULT CALLBACK WindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  auto* object = reinterpret_cast<T*>(::GetWindowLongPtrW(window, ClassOf<T>::offset));
  const auto below = [&] {
    return ClassOf<T>::below ? ::CallWindowProcW(ClassOf<T>::below, window, message, wParam, lParam)
                             : ::DefWindowProcW(window, message, wParam, lParam);
  };
  try {
    if (object == nullptr) {
      if (message != WM_NCCREATE) return below();
      auto owner = std::make_unique<T>();
      static_cast<Window*>(owner.get())->window_ = window;
      ::SetWindowLongPtrW(window, ClassOf<T>::offset, reinterpret_cast<LONG_PTR>(owner.release()));
      return below();
    }
    if (message != WM_NCDESTROY) return static_cast<Window*>(object)->Handle(message, wParam, lParam);
    const std::unique_ptr<T> last(object);
    ::SetWindowLongPtrW(window, ClassOf<T>::offset, 0);
    return below();
  } catch (const std::exception&) {
    return IsOfListBox(message) ? LB_ERRSPACE : 0;
  }
}

/// Registers a class of windows, of its own or over a class of the system's.
template <class T>
bool RegisterWindowClass(HINSTANCE instance, const wchar_t* name, const wchar_t* base = nullptr) {
  WNDCLASSEXW description{};
  description.cbSize = sizeof description;
  if (base != nullptr) {
    if (!::GetClassInfoExW(nullptr, base, &description)) return false;
    ClassOf<T>::below = description.lpfnWndProc;
    ClassOf<T>::offset = description.cbWndExtra;
  } else {
    description.hCursor = ::LoadCursorW(nullptr, reinterpret_cast<LPCWSTR>(IDC_ARROW));
    description.style = CS_DBLCLKS | CS_HREDRAW | CS_VREDRAW;
  }
  description.cbSize = sizeof description;
  description.style |= CS_GLOBALCLASS;
  description.cbWndExtra += static_cast<int>(sizeof(void*));
  description.lpfnWndProc = WindowProc<T>;
  description.hInstance = instance;
  description.lpszClassName = name;
  return ::RegisterClassExW(&description) != 0 || ::GetLastError() == ERROR_CLASS_ALREADY_EXISTS;
}

}  // namespace vrx::controls

#endif  // CONTROLS_WIN32_WINDOW_H_
