// The settings store in one text file (docs/settings_file.md).

#ifndef VRXMATH_PLATFORM_POSIX_FILE_SETTINGS_STORE_H_
#define VRXMATH_PLATFORM_POSIX_FILE_SETTINGS_STORE_H_

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <vrxmath/platform/settings_document.h>
#include <vrxmath/platform/settings_store.h>

namespace vrx::platform_internal {

/// A file below the configuration directory. Whoever writes holds a lock beside the file and replaces the
/// file in one step, so readers need no lock and see the old content or the new one. The lock goes with the
/// process that holds it.
class FileSettingsStore : public SettingsStore {
 public:
  /// `configDirectory` answers the directory for all per-user configuration at every access, or "" when the
  /// user has none.
  explicit FileSettingsStore(std::function<std::string()> configDirectory);

  bool OpenKey(const SettingsPath& path, bool create) override;
  std::optional<SettingValue> Read(const SettingsPath& key, WideView name) override;
  bool Write(const SettingsPath& key, WideView name, const SettingValue& value) override;
  std::vector<SettingsEntry> List(const SettingsPath& key) override;

 private:
  bool Update(const std::function<void(SettingsDocument&)>& change);

  std::function<std::string()> configDirectory_;
};

/// $XDG_CONFIG_HOME when it is an absolute path, otherwise ~/.config; "" without a home.
std::string UserConfigDirectory();

}  // namespace vrx::platform_internal

#endif  // VRXMATH_PLATFORM_POSIX_FILE_SETTINGS_STORE_H_
