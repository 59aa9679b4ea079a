#include "tools/vrx/job/profiles.h"

#include <algorithm>
#include <optional>
#include <variant>

#include <vrxstore/records/stored_form.h>
#include <vrxmath/platform/settings_store.h>
#include <vrxmath/support/settings.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/job/job_options.h"

namespace vrx::tool {
namespace {

SettingsKey ProfileSection() {
  const std::optional<SettingsKey> key = OpenSettingsSection(u"Profiles");
  if (!key)
    throw InputError("profiles cannot be read and written in " + platform_internal::SystemSettingsPlace());
  return *key;
}

const store::Profile* Find(const std::vector<store::Profile>& profiles, const std::string& name) {
  const auto found = std::ranges::find_if(
      profiles, [&](const store::Profile& profile) { return EqualsIgnoringCase(profile.name, name); });
  return found != profiles.end() ? &*found : nullptr;
}

}  // namespace

const std::vector<store::Profile>& BuiltInProfiles() {
  static const std::vector<store::Profile> profiles = {
      {"print", {{"--illuminants", "D50"}, {"--observer", "2"}, {"--system", "cie2000"}}}};
  return profiles;
}

std::vector<store::Profile> ProfilesOfSettings() {
  std::vector<store::Profile> profiles;
  for (const SettingsEntry& entry : ProfileSection().List()) {
    const auto* const text = std::get_if<CString>(&entry.value);
    if (text == nullptr) continue;
    store::Profile& profile = profiles.emplace_back();
    profile.name = entry.name.ToUtf8();
    store::TakeOptions(text->ToUtf8(), profile);
  }
  return profiles;
}

void SetProfileOfSettings(const store::Profile& profile) {
  const CString options = CString::FromUtf8(store::OptionsText(profile));
  if (!ProfileSection().Write(CString::FromUtf8(profile.name), options)) {
    throw InputError("profile \"" + profile.name + "\" cannot be stored in " +
                     platform_internal::SystemSettingsPlace());
  }
}

std::vector<std::pair<std::string, std::string>> LoadProfile(const std::string& name,
                                                             const std::string& job) {
  JobOptions options;
  options.file = job;
  std::vector<store::Profile> profiles;
  if (!options.File().empty()) profiles = OpenJob(options)->Profiles();
  if (const store::Profile* profile = Find(profiles, name)) return profile->options;
  std::vector<store::Profile> own = ProfilesOfSettings();
  if (const store::Profile* profile = Find(own, name)) return profile->options;
  if (const store::Profile* profile = Find(BuiltInProfiles(), name)) return profile->options;
  profiles.insert(profiles.end(), own.begin(), own.end());
  profiles.insert(profiles.end(), BuiltInProfiles().begin(), BuiltInProfiles().end());
  std::string known;
  for (const store::Profile& profile : profiles)
    known += (known.empty() ? "; there are " : ", ") + profile.name;
  throw InputError("--profile: there is no profile \"" + name + "\"" + known);
}

}  // namespace vrx::tool
