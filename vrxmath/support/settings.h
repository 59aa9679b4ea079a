// The application's settings: named integers and texts in named sections, kept for each user.
//
// A section is a key below software/Ostrel/Pemble in the settings store (platform/settings_store.h). Every
// access opens its section afresh and makes it when it is missing. Reading never fails towards the caller: a
// store that cannot be reached, a value that is not there and a value of the other type all give the default.

#ifndef VRXMATH_SUPPORT_SETTINGS_H_
#define VRXMATH_SUPPORT_SETTINGS_H_

#include <cstdint>
#include <optional>
#include <vector>

#include <vrxmath/export.h>
#include <vrxmath/platform/settings_store.h>
#include <vrxmath/platform/wide_string.h>

namespace vrx {

/// The longest text that is read, in units. A longer one can be stored, but gives the default when read.
inline constexpr int32_t kMaxSettingText = 260;

/// An open key of the store.
class VRX_API SettingsKey {
 public:
  SettingsKey(SettingsStore& store, SettingsPath path);
  [[nodiscard]] const SettingsPath& Path() const { return path_; }
  [[nodiscard]] std::optional<SettingValue> Read(WideView name) const { return store_->Read(path_, name); }
  bool Write(WideView name, const SettingValue& value) const { return store_->Write(path_, name, value); }
  [[nodiscard]] std::vector<SettingsEntry> List() const { return store_->List(path_); }

 private:
  SettingsStore* store_;
  SettingsPath path_;
};

/// The key of all settings, software/Ostrel/Pemble. "software" has to be there, the others are made. None
/// when the store cannot be read and written.
[[nodiscard]] VRX_API std::optional<SettingsKey> OpenSettingsRoot();

/// The key of a section. A backslash in the name parts a section from one within it; the empty name is the
/// root itself.
[[nodiscard]] VRX_API std::optional<SettingsKey> OpenSettingsSection(WideView section);

/// The stored integer, or `defaultValue`.
[[nodiscard]] VRX_API int32_t GetSettingInt(WideView section, WideView name, int32_t defaultValue);
/// True when the value is stored.
VRX_API bool SetSettingInt(WideView section, WideView name, int32_t value);

/// The stored text when it has at most kMaxSettingText units, otherwise `defaultValue`.
[[nodiscard]] VRX_API CString GetSettingString(WideView section, WideView name, WideView defaultValue);
/// True when the text is stored.
VRX_API bool SetSettingString(WideView section, WideView name, WideView value);

}  // namespace vrx

#endif  // VRXMATH_SUPPORT_SETTINGS_H_
