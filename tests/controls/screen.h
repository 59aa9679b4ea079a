// The mouse, the keyboard and the screen of a test of windows.

#ifndef TESTS_CONTROLS_SCREEN_H_
#define TESTS_CONTROLS_SCREEN_H_

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "controls_gallery.h"

namespace vrx::test {

// What a field shows.
inline std::wstring TextOf(HWND window) {
  wchar_t text[64] = L"";
  ::GetWindowTextW(window, text, static_cast<int>(std::size(text)));
  return text;
}

/// Handles messages until one from `first` to `last` came, for which it waits: input takes its way through the system. Gives up
/// when it does not come; other messages, as those of timers, do not prolong the wait.
inline void HandleUntil(UINT first, UINT last) {
  constexpr DWORD kGivingUp = 5'000;
  const DWORD start = ::GetTickCount();
  for (bool isThere = false; !isThere;) {
    MSG message{};
    while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
      isThere = isThere || (message.message >= first && message.message <= last);
      gallery::Dispatch(message);
    }
    const DWORD waited = ::GetTickCount() - start;
    if (isThere || waited >= kGivingUp) return;
    ::MsgWaitForMultipleObjects(0, nullptr, FALSE, kGivingUp - waited, QS_ALLINPUT);
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

/// Turns the wheel, which the window with the focus hears.
inline void TurnWheel(int delta) {
  INPUT input{};
  input.type = INPUT_MOUSE;
  input.mi.dwFlags = MOUSEEVENTF_WHEEL;
  input.mi.mouseData = static_cast<DWORD>(delta);
  ::SendInput(1, &input, sizeof input);
  HandleUntil(WM_MOUSEWHEEL, WM_MOUSEWHEEL);
}

/// Moves the mouse to a point of a window's client area and presses or lets go a button there (MOUSEEVENTF_LEFT...), as one
/// input: the X server, whose pointer stays where it is, may move the mouse back between two.
inline void MoveTo(HWND window, POINT point, DWORD button = 0) {
  ::MapWindowPoints(window, nullptr, &point, 1);
  constexpr LONG kWhole = 65536;
  INPUT input{};
  input.type = INPUT_MOUSE;
  input.mi.dx = (point.x * kWhole + kWhole / 2) / ::GetSystemMetrics(SM_CXSCREEN);
  input.mi.dy = (point.y * kWhole + kWhole / 2) / ::GetSystemMetrics(SM_CYSCREEN);
  input.mi.dwFlags = MOUSEEVENTF_MOVE | MOUSEEVENTF_ABSOLUTE | button;
  ::SendInput(1, &input, sizeof input);
  if (button != 0) HandleUntil(WM_LBUTTONDOWN, WM_LBUTTONDBLCLK);
  gallery::HandleMessages();
}

/// Drags with the mouse of the system, from a point of one window to a point of another, until `isDone` says that it arrived:
/// while windows come up, input may go astray. With `isDropped` false Escape ends it.
template <class DONE>
bool DragByMouse(HWND from, POINT start, HWND to, POINT end, DONE isDone, bool isDropped = true) {
  for (int tries = 0; tries < 5; ++tries) {
    start.x += 10;  // not a double click
    MoveTo(from, start, MOUSEEVENTF_LEFTDOWN);
    MoveTo(from, {start.x + 8, start.y + 8});
    MoveTo(to, end);
    if (!isDropped) SendKey(VK_ESCAPE, false);
    MoveTo(to, end, MOUSEEVENTF_LEFTUP);
    if (!isDropped) SendKey(VK_ESCAPE, true);
    if (isDone()) return true;
  }
  return false;
}

/// Clicks with the mouse of the system, `times` in a row, until `isDone` says that it arrived.
template <class DONE>
bool ClickByMouse(HWND window, POINT point, DONE isDone, int times = 1) {
  for (int tries = 0; tries < 5; ++tries) {
    for (int i = 0; i < times; ++i) {
      MoveTo(window, point, MOUSEEVENTF_LEFTDOWN);
      MoveTo(window, point, MOUSEEVENTF_LEFTUP);
    }
    if (isDone()) return true;
  }
  return false;
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

/// How many pixels of what a window shows, its children included, have which colour.
inline std::map<COLORREF, int> ColorsOf(HWND window) {
  RECT client{};
  ::GetClientRect(window, &client);
  // From the top window: a window that is not drawn at the moment has no pixels of its own.
  const HWND root = ::GetAncestor(window, GA_ROOT);
  POINT corner{};
  ::MapWindowPoints(window, root, &corner, 1);
  const HDC source = ::GetDC(root), memory = ::CreateCompatibleDC(source);
  BITMAPINFO info{};
  info.bmiHeader = {sizeof info.bmiHeader, client.right, -client.bottom, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
  void* bits = nullptr;
  const HBITMAP bitmap = ::CreateDIBSection(source, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
  const HGDIOBJ old = ::SelectObject(memory, bitmap);
  ::BitBlt(memory, 0, 0, client.right, client.bottom, source, corner.x, corner.y, SRCCOPY);
  ::GdiFlush();
  std::map<COLORREF, int> colors;
  const auto* pixels = static_cast<const RGBQUAD*>(bits);
  for (LONG i = 0; i < client.right * client.bottom; ++i)
    ++colors[RGB(pixels[i].rgbRed, pixels[i].rgbGreen, pixels[i].rgbBlue)];
  ::SelectObject(memory, old);
  ::DeleteObject(bitmap);
  ::DeleteDC(memory);
  ::ReleaseDC(root, source);
  return colors;
}

/// How many GDI objects the process has. Wine does not count them, but knows each by the number of its place alone.
inline int CountGdiObjects() {
  auto count = static_cast<int>(::GetGuiResources(::GetCurrentProcess(), GR_GDIOBJECTS));
  if (count > 0) return count;
  for (UINT_PTR place = 1; place < 0x10000; ++place)
    count += ::GetObjectType(reinterpret_cast<HGDIOBJ>(place)) != 0 ? 1 : 0;
  return count;
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
