// A settings store that lives as long as the object. For tests.

#ifndef VRXMATH_PLATFORM_MEMORY_MEMORY_SETTINGS_STORE_H_
#define VRXMATH_PLATFORM_MEMORY_MEMORY_SETTINGS_STORE_H_

#include <vector>

#include <vrxmath/platform/settings_document.h>
#include <vrxmath/platform/settings_store.h>

namespace vrx {

class MemorySettingsStore : public SettingsStore {
 public:
  bool isReachable = true;  ///< false: as if there were no home directory
  int accesses = 0;         ///< values read and written so far

  bool OpenKey(const SettingsPath& path, bool create) override {
    if (!isReachable || !IsValidPath(path)) return false;
    if (create) document_.AddKey(path);
    return path.size() == 1 || document_.HasKey(path);
  }
  std::optional<SettingValue> Read(const SettingsPath& key, WideView name) override {
    ++accesses;
    const SettingValue* value = isReachable ? document_.Find(key, name) : nullptr;
    return value != nullptr ? std::optional(*value) : std::nullopt;
  }
  bool Write(const SettingsPath& key, WideView name, const SettingValue& value) override {
    ++accesses;
    if (isReachable) document_.Set(key, name, value);
    return isReachable;
  }
  std::vector<SettingsEntry> List(const SettingsPath& key) override {
    return isReachable ? document_.List(key) : std::vector<SettingsEntry>();
  }

 private:
  SettingsDocument document_;
};

}  // namespace vrx

#endif  // VRXMATH_PLATFORM_MEMORY_MEMORY_SETTINGS_STORE_H_
