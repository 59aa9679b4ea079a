#include <vrxmath/platform/win32/win32.h>

#include <algorithm>

// The first byte of the module, a symbol of the linker's.
extern "C" IMAGE_DOS_HEADER __ImageBase;  // NOLINT(bugprone-reserved-identifier)

namespace vrx::platform_internal {

std::wstring SystemPath(const CString& path) {
  std::wstring text = ToSystem(path);
  if (text.size() < MAX_PATH - 12 || text.starts_with(L"\\\\"))
    return text;  // 12: a name is added to folders
  std::wstring full(32768, L'\0');
  full.resize(::GetFullPathNameW(text.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
  return full.empty() || full.starts_with(L"\\\\") ? text : L"\\\\?\\" + full;
}

std::string SystemError(DWORD code) {
  wchar_t text[512];
  constexpr DWORD kFlags = FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
  DWORD length = ::FormatMessageW(kFlags, nullptr, code, 0, text, std::size(text), nullptr);
  while (length > 0 && (text[length - 1] <= L' ' || text[length - 1] == L'.')) --length;
  if (length == 0) return "error " + std::to_string(code);
  return CString(FromSystem({text, length})).ToUtf8();
}

SYSTEMTIME ToSystemTime(const CalendarTime& time) {
  SYSTEMTIME fields = {};
  fields.wYear = time.year;
  fields.wMonth = time.month;
  fields.wDayOfWeek = static_cast<WORD>(time.dayOfWeek - 1);
  fields.wDay = time.day;
  fields.wHour = time.hour;
  fields.wMinute = time.minute;
  fields.wSecond = std::min<WORD>(time.second, 59);
  fields.wMilliseconds = time.milliseconds;
  return fields;
}

HMODULE ThisModule() {
  return reinterpret_cast<HMODULE>(&__ImageBase);
}

}  // namespace vrx::platform_internal
