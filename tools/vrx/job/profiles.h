// Profiles: options that belong together under a name, kept in a job or in the settings of this user.

#ifndef TOOLS_VRX_JOB_PROFILES_H_
#define TOOLS_VRX_JOB_PROFILES_H_

#include <string>
#include <utility>
#include <vector>

#include <vrxstore/store.h>

namespace vrx::tool {

/// The options of a profile: that of the job, which `job` or VRX_JOB names, else that of the settings, else a built-in one. Throws
/// InputError where there is none.
std::vector<std::pair<std::string, std::string>> LoadProfile(const std::string& name, const std::string& job);

/// Those that are always there: "print", D50 and 2 degrees (ISO 13655) with CIEDE2000. A profile of that name goes before.
const std::vector<store::Profile>& BuiltInProfiles();

/// The profiles of the settings, and a new or changed one. Throws InputError when they cannot be read and written.
std::vector<store::Profile> ProfilesOfSettings();
void SetProfileOfSettings(const store::Profile& profile);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_JOB_PROFILES_H_
