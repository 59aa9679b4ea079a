// The settings store in the registry of Windows.

#ifndef VRXMATH_PLATFORM_WIN32_REGISTRY_SETTINGS_STORE_H_
#define VRXMATH_PLATFORM_WIN32_REGISTRY_SETTINGS_STORE_H_

#include <optional>
#include <vector>

#include <vrxmath/platform/settings_store.h>

namespace vrx::platform_internal {

/// Keys below HKEY_CURRENT_USER. Each access opens the keys on its way and closes them again; all are opened to
/// read, to set values and to make keys (access mask 0x2001F), so that a place without the right to write holds
/// nothing. An integer is a REG_DWORD, a text a REG_SZ without its terminator.
class RegistrySettingsStore : public SettingsStore {
 public:
  bool OpenKey(const SettingsPath& path, bool create) override;
  /// A text that other programs stored with a terminator reads without it. Of more than 520 bytes, as they are
  /// stored, nothing is read.
  std::optional<SettingValue> Read(const SettingsPath& key, WideView name) override;
  bool Write(const SettingsPath& key, WideView name, const SettingValue& value) override;
  std::vector<SettingsEntry> List(const SettingsPath& key) override;
};

}  // namespace vrx::platform_internal

#endif  // VRXMATH_PLATFORM_WIN32_REGISTRY_SETTINGS_STORE_H_
