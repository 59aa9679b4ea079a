// vrx log: where the diagnostic log goes, and switching it.

#include <algorithm>
#include <array>
#include <filesystem>
#include <memory>
#include <string>

#include <vrxmath/support/diagnostic_log.h>
#include <vrxmath/support/settings.h>

#include "tools/vrx/commands/command.h"
#include "tools/vrx/commands/commands.h"
#include "tools/vrx/output/output.h"

namespace vrx::tool {
namespace {

constexpr std::array<const char*, 3> kModeNames = {"off", "box", "file"};

struct LogOptions {
  std::string sensor;
  std::string general;
  std::string directory;
  Format format = Format::kTable;
};

// Modes 3 to 5 are set by hand and do as 0 to 2; others enable a channel and do nothing.
std::string ModeName(int32_t mode) {
  return mode >= 0 && mode <= 5 ? kModeNames[static_cast<std::size_t>(mode % 3)] : "nothing";
}

void Require(bool stored) {
  if (!stored) throw InputError("the settings of the log cannot be stored");
}

void Switch(DiagChannel channel, const std::string& name) {
  if (name.empty()) return;
  const auto mode = std::find(kModeNames.begin(), kModeNames.end(), name) - kModeNames.begin();
  Require(SetSettingInt(kDiagSection, DiagModeValue(channel), static_cast<int32_t>(mode)));
}

// The log appends its file name to the directory as it stands, from whichever directory the host runs in.
void SetDirectory(const std::string& directory) {
  if (directory.empty()) return;
  const std::string path = (std::filesystem::absolute(directory) / "").lexically_normal().string();
  if (!std::filesystem::is_directory(path)) throw InputError(directory + " is not a directory");
  Require(SetSettingString(kDiagSection, kDiagPathValue, CString::FromUtf8(path)));
}

void Show(Format format) {
  OutputStream output;
  const auto rows = MakeRowWriter(format, output, {{"channel"}, {"mode"}, {"messages"}, {"file"}});
  for (const DiagChannel channel : {DiagChannel::kColorSensor, DiagChannel::kGeneral}) {
    const int32_t mode = GetSettingInt(kDiagSection, DiagModeValue(channel), 0);
    rows->Text(CString(DiagModeValue(channel)).ToUtf8());
    rows->Integer(mode);
    rows->Text(ModeName(mode));
    rows->Text(DiagFileName().ToUtf8());
    rows->EndRow();
  }
  rows->Finish();
  output.Finish();
}

void RunLog(const LogOptions& options) {
  SetDirectory(options.directory);
  Switch(DiagChannel::kColorSensor, options.sensor);
  Switch(DiagChannel::kGeneral, options.general);
  Show(options.format);
}

}  // namespace

void AddLog(CLI::App& app, int& status) {
  const auto options = std::make_shared<LogOptions>();
  CLI::App* command = app.add_subcommand("log", "Show and switch the diagnostic log");
  const CLI::IsMember isMode(std::vector<std::string>(kModeNames.begin(), kModeNames.end()));
  command->add_option("--sensor", options->sensor, "Instrument traffic: off, box or file")->check(isMode);
  command->add_option("--general", options->general, "Everything else: off, box or file")->check(isMode);
  command->add_option("--directory", options->directory, "Where the file VrxDebug.txt is written");
  AddFormatOption(*command, options->format);
  command->footer(
      "A new mode rules in processes that start after it was set.\n\n"
      "Examples:\n"
      "  vrx log                                     the modes and the file\n"
      "  vrx log --sensor file --directory /var/tmp  trace the instrument to /var/tmp/VrxDebug.txt\n"
      "  vrx log --sensor off --general off\n");
  command->callback([options, &status] {
    RunLog(*options);
    status = kExitPass;
  });
}

}  // namespace vrx::tool
