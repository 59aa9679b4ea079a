// The per-user settings store: a tree of keys, each holding named values of two types.
//
// The shape is that of the Windows registry, so that a registry can stand behind it. Elsewhere it is a file
// (docs/settings_file.md). Keys and values are found without regard to case; the spelling of whoever made
// them is kept.

#ifndef VRXMATH_PLATFORM_SETTINGS_STORE_H_
#define VRXMATH_PLATFORM_SETTINGS_STORE_H_

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include <vrxmath/export.h>
#include <vrxmath/platform/wide_string.h>

namespace vrx {

/// A value: a 32-bit integer or a text. The two are never converted into each other.
using SettingValue = std::variant<int32_t, CString>;

/// Names of keys, outermost first: {"software", "Ostrel", "Pemble"}.
using SettingsPath = std::vector<CString>;

/// One value with the key and the name under which it is stored.
struct SettingsEntry {
  SettingsPath key;
  CString name;
  SettingValue value;
};

/// Longest name of a key, and of a value, in units.
inline constexpr int32_t kMaxKeyName = 255;
inline constexpr int32_t kMaxValueName = 16383;

/// True when `path` has at least one name and all its names have 1 to kMaxKeyName units.
[[nodiscard]] VRX_API bool IsValidPath(const SettingsPath& path);

/// A store. Operations neither throw for what they find nor report: a store that cannot be reached holds
/// nothing and takes nothing.
class VRX_API SettingsStore {
 public:
  virtual ~SettingsStore();

  /// True when the key can be read and written. The outermost key is there whenever the store is; with
  /// `create` the others are made when missing.
  virtual bool OpenKey(const SettingsPath& path, bool create) = 0;
  [[nodiscard]] virtual std::optional<SettingValue> Read(const SettingsPath& key, WideView name) = 0;
  /// Stores a value, replacing one of the same name whatever its type; the key is made when missing. When it
  /// returns true the value survives the end of the process, however that comes.
  virtual bool Write(const SettingsPath& key, WideView name, const SettingValue& value) = 0;
  /// All values of a key and of the keys below it, in the store's order.
  [[nodiscard]] virtual std::vector<SettingsEntry> List(const SettingsPath& key) = 0;
};

/// The store in use: the user's own, unless it was replaced.
[[nodiscard]] VRX_API SettingsStore& CurrentSettingsStore();

/// Replaces the store for the whole process; null restores the user's own. The store must outlive its use.
VRX_API void SetSettingsStore(SettingsStore* store);

namespace platform_internal {
/// The place where the platform's users expect per-user settings.
SettingsStore& SystemSettingsStore();
/// What a message calls that place: the path of a file, or a key of the registry.
[[nodiscard]] std::string SystemSettingsPlace();
}  // namespace platform_internal

}  // namespace vrx

#endif  // VRXMATH_PLATFORM_SETTINGS_STORE_H_
