// vrx job add-profile, profiles: options under a name.

#include <memory>
#include <string>

#include "tools/vrx/base/command.h"
#include "tools/vrx/base/text.h"
#include "tools/vrx/commands/job_commands.h"
#include "tools/vrx/input/curve_input.h"
#include "tools/vrx/job/job_options.h"
#include "tools/vrx/job/profiles.h"
#include "tools/vrx/judging/judging_options.h"
#include "tools/vrx/output/output.h"

namespace vrx::tool {
namespace {

struct ProfileOptions {
  JobOptions job;
  std::string name;
  JudgingOptions judging;
  CurveInputOptions input;
  Format format = Format::kTable;
};

std::string OptionsOf(const store::Profile& profile) {
  std::string text;
  for (const auto& [option, value] : profile.options)
    text.append(text.empty() ? "" : " ").append(option).append(value.empty() ? "" : " ").append(value);
  return text;
}

// A name stands for one profile, in whatever case it is written, and what it stood for before is told.
void LookAtExisting(const std::vector<store::Profile>& profiles, const store::Profile& added,
                    const std::string& place) {
  for (const store::Profile& profile : profiles) {
    if (!EqualsIgnoringCase(profile.name, added.name)) continue;
    if (profile.name != added.name) {
      throw InputError(place + ": there is a profile \"" + profile.name +
                       "\" already, and names in other letters are the same; give its name to replace it");
    }
    if (profile.options != added.options)
      PrintMessage(place + ": profile \"" + added.name + "\" is replaced; it was " + OptionsOf(profile));
  }
}

void RunAdd(const ProfileOptions& options, const Command& command) {
  store::Profile profile{options.name, command.GivenOptions("Job")};
  std::erase_if(profile.options, [](const auto& option) { return option.first == "--profile"; });
  if (profile.options.empty()) throw InputError("a profile needs at least one option");
  static_cast<void>(SettingsOf(options.judging));  // what cannot be used is refused now
  static_cast<void>(options.input.Reading());
  if (options.job.File().empty()) {
    LookAtExisting(ProfilesOfSettings(), profile, "settings");
    SetProfileOfSettings(profile);
  } else {
    const auto job = OpenJob(options.job);
    LookAtExisting(job->Profiles(), profile, options.job.Shown());
    job->SetProfile(profile, options.job.Author());
  }
}

void RunList(const ProfileOptions& options) {
  const std::string file = options.job.Shown();
  OutputStream output;
  const auto rows = MakeRowWriter(options.format, output, {{"profile"}, {"kept in"}, {"options"}});
  const auto write = [&rows](const std::vector<store::Profile>& profiles, const std::string& place) {
    for (const store::Profile& profile : profiles) {
      rows->Text(profile.name);
      rows->Text(place);
      rows->Text(OptionsOf(profile));
      rows->EndRow();
    }
  };
  if (!file.empty()) write(OpenJob(options.job)->Profiles(), file);
  write(ProfilesOfSettings(), "settings");
  write(BuiltInProfiles(), "vrx");
  rows->Finish();
  output.Finish();
}

}  // namespace

void AddJobProfiles(Command& job) {
  const auto options = std::make_shared<ProfileOptions>();
  Command add = job.AddCommand("add-profile", "Keep options under a name, for --profile");
  add.AddOption("NAME", options->name, "Name of the profile, such as the customer's").Required();
  AddJudgingOptions(add, options->judging, UsualIlluminants());
  AddCurveInputOptions(add, options->input);
  AddJobChangeOptions(add, options->job);
  add.SetAction([options, add] {
    RunAdd(*options, add);
    return kExitPass;
  });
  add.SetNotes(
      "With a job the profile is kept there, otherwise in the settings of this user. --profile NAME gives a "
      "command\n"
      "those options of it that the command has; what the command line says goes first.\n\n"
      "Example:\n"
      "  vrx job add-profile ACME --system cmc --parameters 2:1 --illuminants D65,TL84,A --tolerance 1\n");
  Command list = job.AddCommand("profiles", "List the profiles of a job and of this user");
  AddJobOptions(list, options->job);
  AddFormatOption(list, options->format);
  SetAction(list, options, RunList);
  list.SetNotes("Example:\n  vrx job profiles\n");
}

}  // namespace vrx::tool
