#include <vrxmath/platform/resources.h>

#include <algorithm>
#include <string>

#include <vrxmath/platform/win32/win32.h>

namespace vrx {

using platform_internal::ThisModule;

// A buffer of length 0 asks for the place of the text within the module, which is counted, not terminated.
WideView FindString(uint32_t number) {
  const wchar_t* text = nullptr;
  if (number > 0xFFFF) return {};  // the system would look at the low half
  const int length = ::LoadStringW(ThisModule(), number, reinterpret_cast<wchar_t*>(&text), 0);
  return length > 0 ? platform_internal::FromSystem({text, static_cast<std::size_t>(length)}) : WideView();
}

std::span<const std::byte> FindBinaryResource(std::string_view type, std::string_view name) {
  // The system finds names without regard to case. They are in capitals.
  const auto isLower = [](char c) { return c >= 'a' && c <= 'z'; };
  if (std::ranges::any_of(type, isLower) || std::ranges::any_of(name, isLower)) return {};
  const std::wstring wideType(type.begin(), type.end()), wideName(name.begin(), name.end());
  const HRSRC resource = ::FindResourceW(ThisModule(), wideName.c_str(), wideType.c_str());
  const HGLOBAL loaded = resource != nullptr ? ::LoadResource(ThisModule(), resource) : nullptr;
  const void* bytes = loaded != nullptr ? ::LockResource(loaded) : nullptr;
  if (bytes == nullptr) return {};
  return {static_cast<const std::byte*>(bytes), ::SizeofResource(ThisModule(), resource)};
}

}  // namespace vrx
