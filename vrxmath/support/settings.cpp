#include <vrxmath/support/settings.h>

#include <algorithm>
#include <utility>

namespace vrx {
namespace {

// The root's path from the outermost key on; the first of them is not ours to make.
constexpr const WideChar* kRoot[] = {u"software", u"Ostrel", u"Pemble"};

}  // namespace

SettingsKey::SettingsKey(SettingsStore& store, SettingsPath path) : store_(&store), path_(std::move(path)) {}

std::optional<SettingsKey> OpenSettingsRoot() {
  SettingsStore& store = CurrentSettingsStore();
  SettingsPath path;
  for (const WideChar* name : kRoot) {
    path.emplace_back(name);
    if (!store.OpenKey(path, path.size() > 1)) return std::nullopt;
  }
  return SettingsKey(store, std::move(path));
}

std::optional<SettingsKey> OpenSettingsSection(WideView section) {
  std::optional<SettingsKey> root = OpenSettingsRoot();
  if (!root || section.empty()) return root;
  SettingsPath path = root->Path();
  for (std::size_t begin = 0; begin <= section.size();) {
    const std::size_t end = std::min(section.find(u'\\', begin), section.size());
    path.emplace_back(section.substr(begin, end - begin));
    begin = end + 1;
  }
  SettingsStore& store = CurrentSettingsStore();
  if (!store.OpenKey(path, true)) return std::nullopt;
  return SettingsKey(store, std::move(path));
}

int32_t GetSettingInt(WideView section, WideView name, int32_t defaultValue) {
  const std::optional<SettingsKey> key = OpenSettingsSection(section);
  const std::optional<SettingValue> value = key ? key->Read(name) : std::nullopt;
  const auto* number = value ? std::get_if<int32_t>(&*value) : nullptr;
  return number != nullptr ? *number : defaultValue;
}

bool SetSettingInt(WideView section, WideView name, int32_t value) {
  const std::optional<SettingsKey> key = OpenSettingsSection(section);
  return key && key->Write(name, value);
}

CString GetSettingString(WideView section, WideView name, WideView defaultValue) {
  const std::optional<SettingsKey> key = OpenSettingsSection(section);
  const std::optional<SettingValue> value = key ? key->Read(name) : std::nullopt;
  const auto* text = value ? std::get_if<CString>(&*value) : nullptr;
  return text != nullptr && text->GetLength() <= kMaxSettingText ? *text : CString(defaultValue);
}

bool SetSettingString(WideView section, WideView name, WideView value) {
  const std::optional<SettingsKey> key = OpenSettingsSection(section);
  return key && key->Write(name, CString(value));
}

}  // namespace vrx
