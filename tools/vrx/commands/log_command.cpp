// vrx log: where the diagnostic log goes, and switching it.

#include <array>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <vrxio/text/path.h>
#include <vrxmath/platform/files.h>
#include <vrxmath/platform/settings_store.h>
#include <vrxmath/support/diagnostic_log.h>
#include <vrxmath/support/settings.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/commands/commands.h"
#include "tools/vrx/output/output.h"

namespace vrx::tool {
namespace {

constexpr std::array<const char*, 3> kModeNames = {"off", "box", "file"};

constexpr int32_t kAsItIs = -1;

struct LogOptions {
  int32_t sensor = kAsItIs;
  int32_t general = kAsItIs;
  std::string directory;
  Format format = Format::kTable;
};

// Modes 3 to 5 are set by hand and do as 0 to 2; others enable a channel and do nothing.
std::string ModeName(int32_t mode) {
  return mode >= 0 && mode <= 5 ? kModeNames[static_cast<std::size_t>(mode % 3)] : "nothing";
}

void Require(bool stored) {
  if (!stored)
    throw InputError("the settings of the log cannot be stored in " +
                     platform_internal::SystemSettingsPlace());
}

void Switch(DiagChannel channel, int32_t mode) {
  if (mode != kAsItIs) Require(SetSettingInt(kDiagSection, DiagModeValue(channel), mode));
}

// The log appends its file name to the directory as it stands, from whichever directory the host runs in.
void SetDirectory(const std::string& directory) {
  if (directory.empty()) return;
  const std::filesystem::path given = io::PathOf(directory);
  const std::string path = io::Utf8Of((std::filesystem::absolute(given) / "").lexically_normal());
  if (!std::filesystem::is_directory(given)) throw InputError(directory + " is not a directory");
  const CString stored = CString::FromUtf8(path);
  if (stored.GetLength() > kMaxSettingText) throw InputError(directory + " is too long a path for the log");
  FileReplacer probe;  // makes a file beside the log's and removes it again
  if (!probe.Open(stored.ToUtf8() + "VrxDebug.txt")) {
    throw InputError(directory + " cannot hold the log VrxDebug.txt: " + probe.GetError());
  }
  Require(SetSettingString(kDiagSection, kDiagPathValue, stored));
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

void AddLog(Command& tool) {
  const auto options = std::make_shared<LogOptions>();
  const std::vector<std::string> modes(kModeNames.begin(), kModeNames.end());
  Command command = tool.AddCommand("log", "Show the diagnostic log or switch it on and off");
  command.AddChoice("--sensor", options->sensor, modes, "Log the traffic with instruments")
      .Shows("off|box|file");
  command.AddChoice("--general", options->general, modes, "Log everything else").Shows("off|box|file");
  command.AddOption("--directory", options->directory, "Folder to write the file VrxDebug.txt to");
  AddFormatOption(command, options->format);
  command.SetNotes(
      "A new mode takes effect in processes that start afterwards.\n\n"
      "Examples:\n"
      "  vrx log                                     # the modes and the file\n"
      "  vrx log --sensor file --directory /var/tmp  # trace the instrument to /var/tmp/VrxDebug.txt\n"
      "  vrx log --sensor off --general off\n");
  command.SetAction([options] {
    RunLog(*options);
    return kExitPass;
  });
}

}  // namespace vrx::tool
