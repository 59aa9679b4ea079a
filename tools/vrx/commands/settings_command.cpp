// vrx settings: the application's per-user settings, read and changed from the command line.

#include <charconv>
#include <memory>
#include <optional>
#include <string>
#include <variant>

#include <vrxmath/platform/settings_store.h>
#include <vrxmath/support/settings.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/commands/commands.h"
#include "tools/vrx/output/output.h"

namespace vrx::tool {
namespace {

struct SettingsOptions {
  std::string section;
  std::string name;
  std::string value;
  bool asText = false;
  Format format = Format::kTable;
};

SettingsKey OpenSection(const std::string& section) {
  const std::optional<SettingsKey> key = OpenSettingsSection(CString::FromUtf8(section));
  if (!key) {
    const std::string where = section.empty() ? "" : " of section \"" + section + "\"";
    throw InputError("the settings" + where + " cannot be read and written in " +
                     platform_internal::SystemSettingsPlace());
  }
  return *key;
}

std::string ValueText(const SettingValue& value) {
  if (const auto* number = std::get_if<int32_t>(&value)) return std::to_string(*number);
  return std::get<CString>(value).ToUtf8();
}

// A whole number is an integer unless the user wants a text.
SettingValue ValueFrom(const std::string& text, bool asText) {
  int32_t number = 0;
  const char* end = text.data() + text.size();
  const auto parsed = std::from_chars(text.data(), end, number);
  if (asText || parsed.ptr != end) return CString::FromUtf8(text);
  if (parsed.ec == std::errc::result_out_of_range) {
    throw InputError(text + " is beyond the 32 bits of an integer; --text stores it as text");
  }
  return parsed.ec == std::errc() ? SettingValue(number) : CString::FromUtf8(text);
}

void RunGet(const SettingsOptions& options) {
  const std::optional<SettingValue> value =
      OpenSection(options.section).Read(CString::FromUtf8(options.name));
  if (!value) throw InputError("section \"" + options.section + "\" has no setting \"" + options.name + "\"");
  OutputStream output;
  output.AppendShown(ValueText(*value));
  output.Append('\n');
  output.Finish();
}

void RunSet(const SettingsOptions& options) {
  const SettingValue value = ValueFrom(options.value, options.asText);
  if (!OpenSection(options.section).Write(CString::FromUtf8(options.name), value)) {
    throw InputError("the setting \"" + options.name + "\" cannot be stored in " +
                     platform_internal::SystemSettingsPlace());
  }
}

// A key's path below the root, as it is given to the operations.
std::string SectionName(const SettingsPath& key, std::size_t rootDepth) {
  std::string name;
  for (std::size_t i = rootDepth; i < key.size(); ++i) {
    if (i > rootDepth) name += '\\';
    name += key[i].ToUtf8();
  }
  return name;
}

void RunList(const SettingsOptions& options) {
  const std::size_t rootDepth = OpenSection("").Path().size();
  OutputStream output;
  const auto rows = MakeRowWriter(options.format, output, {{"section"}, {"name"}, {"type"}, {"value"}});
  for (const SettingsEntry& entry : OpenSection(options.section).List()) {
    rows->Text(SectionName(entry.key, rootDepth));
    rows->Text(entry.name.ToUtf8());
    const auto* number = std::get_if<int32_t>(&entry.value);
    rows->Text(number != nullptr ? "integer" : "text");
    if (number != nullptr && options.format == Format::kJson) {
      rows->Integer(*number);
    } else {
      rows->Text(ValueText(entry.value));
    }
    rows->EndRow();
  }
  rows->Finish();
  output.Finish();
}

}  // namespace

void AddSettings(Command& tool) {
  const auto options = std::make_shared<SettingsOptions>();
  Command command = tool.AddCommand("settings", "Read and change the application's settings for this user");
  Command get = command.AddCommand("get", "Print one value");
  Command set = command.AddCommand("set", "Store one value");
  Command list = command.AddCommand("list", "List the values of one section, or of all");
  for (Command action : {get, set}) {
    action.AddOption("SECTION", options->section, "Section; \\ separates it from one within it").Required();
    action.AddOption("NAME", options->name, "Name of the value, in upper or lower case").Required();
  }
  set.AddOption("VALUE", options->value,
                "Value; a whole number is stored as an integer, anything else as text")
      .Required();
  set.AddFlag("--text", options->asText, "Store a number as text");
  list.AddOption("SECTION", options->section, "List only this section and those within it");
  AddFormatOption(list, options->format);
  SetAction(get, options, RunGet);
  SetAction(set, options, RunSet);
  SetAction(list, options, RunList);
  get.SetNotes("Example:\n  vrx settings get Diagnostics \"Color Sensor\"\n");
  set.SetNotes(
      "Examples:\n"
      "  vrx settings set Diagnostics General 2\n"
      "  vrx settings set Import Decimals 2 --text\n");
  list.SetNotes("Examples:\n  vrx settings list\n  vrx settings list Diagnostics --format json\n");
  command.SetNotes(
      "Examples:\n"
      "  vrx settings list\n"
      "  vrx settings set Diagnostics General 2\n"
      "  vrx settings get Diagnostics \"Color Sensor\"\n");
}

}  // namespace vrx::tool
