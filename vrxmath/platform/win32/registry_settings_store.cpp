#include <vrxmath/platform/win32/registry_settings_store.h>

#include <cstring>

#include <vrxmath/platform/win32/win32.h>

namespace vrx::platform_internal {
namespace {

constexpr REGSAM kAccess = KEY_READ | KEY_SET_VALUE | KEY_CREATE_SUB_KEY;
static_assert(kAccess == 0x2001F);

// 260 units. Whoever reads such a setting has a buffer of this size.
constexpr DWORD kReadBytes = 520;

// A key that is open, or not.
class Key {
 public:
  explicit Key(HKEY key = nullptr) : key_(key) {}
  Key(Key&& other) noexcept : key_(std::exchange(other.key_, nullptr)) {}
  Key& operator=(Key&& other) noexcept {
    std::swap(key_, other.key_);
    return *this;
  }
  ~Key() {
    if (key_ != nullptr) ::RegCloseKey(key_);
  }
  bool IsOpen() const { return key_ != nullptr; }
  HKEY Get() const { return key_; }

 private:
  HKEY key_;
};

Key OpenBelow(HKEY parent, const CString& name, bool create) {
  HKEY key = nullptr;
  const LSTATUS status = create ? ::RegCreateKeyExW(parent, ToSystem(name), 0, nullptr,
                                                    REG_OPTION_NON_VOLATILE, kAccess, nullptr, &key, nullptr)
                                : ::RegOpenKeyExW(parent, ToSystem(name), 0, kAccess, &key);
  return Key(status == ERROR_SUCCESS ? key : nullptr);
}

// Steps down from key to key; the outermost one is never created.
Key Open(const SettingsPath& path, bool create) {
  if (!IsValidPath(path)) return Key();
  Key key = OpenBelow(HKEY_CURRENT_USER, path[0], false);
  for (std::size_t i = 1; i < path.size() && key.IsOpen(); ++i) key = OpenBelow(key.Get(), path[i], create);
  return key;
}

std::optional<SettingValue> ValueOf(DWORD type, const std::byte* bytes, DWORD count) {
  if (type == REG_DWORD && count == sizeof(int32_t)) {
    int32_t number = 0;
    std::memcpy(&number, bytes, sizeof number);
    return number;
  }
  if (type != REG_SZ) return std::nullopt;
  std::u16string text(count / sizeof(WideChar), u'\0');  // half a unit at the end is none
  std::memcpy(text.data(), bytes, text.size() * sizeof(WideChar));
  if (!text.empty() && text.back() == u'\0') text.pop_back();
  return CString(text);
}

// The values of one key, and then those of the keys below it.
void ListBelow(const Key& key, const SettingsPath& path, std::vector<SettingsEntry>& entries) {
  std::vector<wchar_t> name(kMaxValueName + 1);
  std::vector<std::byte> content;
  for (DWORD i = 0;;) {
    auto nameLength = static_cast<DWORD>(name.size());
    auto bytes = static_cast<DWORD>(content.size());
    DWORD type = REG_NONE;
    const LSTATUS status = ::RegEnumValueW(key.Get(), i, name.data(), &nameLength, nullptr, &type,
                                           reinterpret_cast<BYTE*>(content.data()), &bytes);
    if (status == ERROR_MORE_DATA || (status == ERROR_SUCCESS && bytes > content.size())) {
      content.resize(bytes);
      continue;
    }
    if (status != ERROR_SUCCESS) break;
    if (const auto value = ValueOf(type, content.data(), bytes))
      entries.push_back({path, CString(FromSystem({name.data(), nameLength})), *value});
    ++i;
  }
  wchar_t below[kMaxKeyName + 1];
  for (DWORD i = 0;; ++i) {
    DWORD length = std::size(below);
    if (::RegEnumKeyExW(key.Get(), i, below, &length, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS)
      return;
    SettingsPath deeper = path;
    deeper.emplace_back(FromSystem({below, length}));
    if (const Key next = OpenBelow(key.Get(), deeper.back(), false); next.IsOpen())
      ListBelow(next, deeper, entries);
  }
}

}  // namespace

bool RegistrySettingsStore::OpenKey(const SettingsPath& path, bool create) {
  return Open(path, create).IsOpen();
}

std::optional<SettingValue> RegistrySettingsStore::Read(const SettingsPath& path, WideView name) {
  const Key key = Open(path, false);
  std::byte bytes[kReadBytes];
  DWORD count = sizeof bytes;
  DWORD type = REG_NONE;
  if (!key.IsOpen() || ::RegQueryValueExW(key.Get(), ToSystem(CString(name)), nullptr, &type,
                                          reinterpret_cast<BYTE*>(bytes), &count) != ERROR_SUCCESS)
    return std::nullopt;
  return ValueOf(type, bytes, count);
}

bool RegistrySettingsStore::Write(const SettingsPath& path, WideView name, const SettingValue& value) {
  if (name.size() > kMaxValueName) return false;
  const Key key = Open(path, true);
  if (!key.IsOpen()) return false;
  const auto set = [&](DWORD type, const void* bytes, std::size_t count) {
    return ::RegSetValueExW(key.Get(), ToSystem(CString(name)), 0, type, static_cast<const BYTE*>(bytes),
                            static_cast<DWORD>(count)) == ERROR_SUCCESS;
  };
  if (const auto* number = std::get_if<int32_t>(&value)) return set(REG_DWORD, number, sizeof *number);
  // The call would look for a terminator behind the text and store it as well: it finds none.
  std::u16string text(std::get<CString>(value).View());
  const std::size_t bytes = text.size() * sizeof(WideChar);
  text += u'x';
  return set(REG_SZ, text.data(), bytes);
}

std::vector<SettingsEntry> RegistrySettingsStore::List(const SettingsPath& path) {
  std::vector<SettingsEntry> entries;
  if (const Key key = Open(path, false); key.IsOpen()) ListBelow(key, path, entries);
  return entries;
}

std::string SystemSettingsPlace() {
  return "HKEY_CURRENT_USER\\software\\Ostrel\\Pemble";
}

}  // namespace vrx::platform_internal

namespace vrx {

SettingsStore& platform_internal::SystemSettingsStore() {
  static platform_internal::RegistrySettingsStore store;
  return store;
}

}  // namespace vrx
