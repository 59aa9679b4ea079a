#include <vrxmath/platform/settings_store.h>

#include <algorithm>

namespace vrx {
namespace {

SettingsStore*& StoreReplacement() {
  static SettingsStore* store = nullptr;
  return store;
}

}  // namespace

SettingsStore::~SettingsStore() = default;

bool IsValidPath(const SettingsPath& path) {
  return !path.empty() && std::all_of(path.begin(), path.end(), [](const CString& name) {
    return !name.IsEmpty() && name.GetLength() <= kMaxKeyName;
  });
}

SettingsStore& CurrentSettingsStore() {
  return StoreReplacement() != nullptr ? *StoreReplacement() : platform_internal::SystemSettingsStore();
}

void SetSettingsStore(SettingsStore* store) {
  StoreReplacement() = store;
}

}  // namespace vrx
