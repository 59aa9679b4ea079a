// The mouse, the keyboard and the screen of a test of windows.

#ifndef TESTS_CONTROLS_SCREEN_H_
#define TESTS_CONTROLS_SCREEN_H_

#include <string_view>
#include <vector>

#include "controls_gallery.h"

namespace vrx::test {

/// Handles messages until one from `first` to `last` came, for which it waits: input takes its way through the system. Gives up
/// when nothing comes at all.
inline void HandleUntil(UINT first, UINT last) {
  constexpr DWORD kGivingUp = 2'000;
  for (bool isThere = false; !isThere;) {
    MSG message{};
    while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
      isThere = isThere || (message.message >= first && message.message <= last);
      ::TranslateMessage(&message);
      ::DispatchMessageW(&message);
    }
    if (isThere || ::MsgWaitForMultipleObjects(0, nullptr, FALSE, kGivingUp, QS_ALLINPUT) == WAIT_TIMEOUT)
      return;
  }
}

inline void SendKey(WORD key, bool isUp) {
  INPUT input{};
  input.type = INPUT_KEYBOARD;
  input.ki.wVk = key;
  input.ki.dwFlags = isUp ? KEYEVENTF_KEYUP : 0;
  ::SendInput(1, &input, sizeof input);
  HandleUntil(WM_KEYDOWN, WM_SYSKEYUP);
}

/// Presses a key. With others held down it goes to the window with the focus as a message: the X server, which knows nothing
/// of keys that only the system was told of, would release them again.
inline void Press(WORD key, const std::vector<WORD>& held = {}) {
  if (held.empty()) {
    SendKey(key, false);
    SendKey(key, true);
    return;
  }
  BYTE before[256], now[256];
  ::GetKeyboardState(before);
  ::GetKeyboardState(now);
  for (const WORD other : held) now[other] = 0x80;
  ::SetKeyboardState(now);
  ::SendMessageW(::GetFocus(), now[VK_MENU] != 0 ? WM_SYSKEYDOWN : WM_KEYDOWN, key, 1);
  ::SetKeyboardState(before);
}

/// Types a text of any characters into the window with the focus.
inline void Type(std::wstring_view text) {
  for (const wchar_t unit : text) {
    ::SendMessageW(::GetFocus(), WM_CHAR, unit, 1);
    gallery::HandleMessages();
  }
}

inline void Mouse(DWORD flags, DWORD data = 0) {
  INPUT input{};
  input.type = INPUT_MOUSE;
  input.mi.dwFlags = flags;
  input.mi.mouseData = data;
  ::SendInput(1, &input, sizeof input);
  HandleUntil(WM_LBUTTONDOWN, WM_MOUSEWHEEL);
}

/// Moves the mouse to a point of a window's client area. The pointer of the X server stays where it is, so that none of its
/// messages comes late and moves the mouse back.
inline void MoveTo(HWND window, POINT point) {
  ::MapWindowPoints(window, nullptr, &point, 1);
  constexpr LONG kWhole = 65536;
  INPUT input{};
  input.type = INPUT_MOUSE;
  input.mi.dx = (point.x * kWhole + kWhole / 2) / ::GetSystemMetrics(SM_CXSCREEN);
  input.mi.dy = (point.y * kWhole + kWhole / 2) / ::GetSystemMetrics(SM_CYSCREEN);
  input.mi.dwFlags = MOUSEEVENTF_MOVE | MOUSEEVENTF_ABSOLUTE;
  ::SendInput(1, &input, sizeof input);
  gallery::HandleMessages();
}

/// Clicks with the mouse of the system, until `isDone` says that the click arrived: while windows come up, the X server
/// may have moved the mouse meanwhile.
template <class DONE>
bool ClickByMouse(HWND window, POINT point, DONE isDone) {
  for (int tries = 0; tries < 5 && !isDone(); ++tries) {
    MoveTo(window, point);
    Mouse(MOUSEEVENTF_LEFTDOWN);
    Mouse(MOUSEEVENTF_LEFTUP);
  }
  return isDone();
}

inline void SendMouse(HWND window, UINT message, WPARAM keys, POINT point) {
  ::SendMessageW(window, message, keys, MAKELPARAM(point.x, point.y));
}

/// Clicks by messages, as the system sends them; `keys`: MK_CONTROL, MK_SHIFT.
inline void Click(HWND window, POINT point, WPARAM keys = 0) {
  SendMouse(window, WM_LBUTTONDOWN, keys | MK_LBUTTON, point);
  SendMouse(window, WM_LBUTTONUP, keys, point);
  gallery::HandleMessages();
}

/// Drags from a point of one window to a point of another.
inline void Drag(HWND from, POINT start, HWND to, POINT end) {
  ::MapWindowPoints(to, from, &end, 1);
  SendMouse(from, WM_LBUTTONDOWN, MK_LBUTTON, start);
  SendMouse(from, WM_MOUSEMOVE, MK_LBUTTON, {start.x + 12, start.y + 12});
  SendMouse(from, WM_MOUSEMOVE, MK_LBUTTON, end);
  SendMouse(from, WM_LBUTTONUP, 0, end);
  gallery::HandleMessages();
}

/// The colour on the screen at a point of a window's client area.
inline COLORREF PixelAt(HWND window, POINT point) {
  gallery::HandleMessages();
  ::UpdateWindow(window);
  const HDC device = ::GetDC(window);
  const COLORREF color = ::GetPixel(device, point.x, point.y);
  ::ReleaseDC(window, device);
  return color;
}

/// How many pixels of a rectangle have a colour.
inline int CountPixels(HWND window, const RECT& box, COLORREF color) {
  int count = 0;
  const HDC device = ::GetDC(window);
  for (LONG y = box.top; y < box.bottom; ++y) {
    for (LONG x = box.left; x < box.right; ++x) count += ::GetPixel(device, x, y) == color ? 1 : 0;
  }
  ::ReleaseDC(window, device);
  return count;
}

}  // namespace vrx::test

#endif  // TESTS_CONTROLS_SCREEN_H_
