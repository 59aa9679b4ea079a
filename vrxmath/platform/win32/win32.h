// The Windows headers, and texts on their way to the system's calls and back.

#ifndef VRXMATH_PLATFORM_WIN32_WIN32_H_
#define VRXMATH_PLATFORM_WIN32_WIN32_H_

#include <string>
#include <string_view>
#include <utility>

#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <windows.h>

#include <vrxmath/platform/clock.h>
#include <vrxmath/platform/wide_string.h>

namespace vrx::platform_internal {

static_assert(sizeof(wchar_t) == sizeof(WideChar), "both are one unit of UTF-16");

inline const wchar_t* ToSystem(const CString& text) {
  return reinterpret_cast<const wchar_t*>(text.CStr());
}

inline WideView FromSystem(std::wstring_view text) {
  return {reinterpret_cast<const WideChar*>(text.data()), text.size()};
}

/// A handle of the system, closed at the end.
class Handle {
 public:
  explicit Handle(HANDLE handle) : handle_(handle) {}
  Handle(Handle&& other) noexcept : handle_(std::exchange(other.handle_, INVALID_HANDLE_VALUE)) {}
  Handle& operator=(Handle&&) = delete;
  ~Handle() {
    if (IsOpen()) ::CloseHandle(handle_);
  }
  bool IsOpen() const { return handle_ != INVALID_HANDLE_VALUE; }
  HANDLE Get() const { return handle_; }

 private:
  HANDLE handle_;
};

/// A path as the calls for files take it. One of MAX_PATH units or more becomes a full one with the prefix that
/// lifts the limit.
std::wstring SystemPath(const CString& path);

/// The system's text for `code`, as UTF-8 and without a line end.
std::string SystemError(DWORD code = ::GetLastError());

/// The fields as the system has them; a leap second is shown as the second before.
SYSTEMTIME ToSystemTime(const CalendarTime& time);

/// The module that this code is part of: the DLL, or the program that it is linked into.
HMODULE ThisModule();

}  // namespace vrx::platform_internal

#endif  // VRXMATH_PLATFORM_WIN32_WIN32_H_
