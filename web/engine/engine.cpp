// The tool's commands as one function: files in memory and options in JSON go in, results, messages and files come out. It is the
// code of the tool from the declaration of the options on, so that numbers, texts and reports are the same.

#include <emscripten.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include <vrxmath/colorimetry/difference_systems.h>
#include <vrxmath/platform/message_box.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/base/command_line.h"
#include "tools/vrx/base/terminal.h"
#include "tools/vrx/base/text.h"
#include "tools/vrx/commands/commands.h"

// Whoever runs the module hears how far it is, from 0 to 1, by Module.onProgress.
EM_JS(void, vrx_tell_progress, (double part), {
  if (Module['onProgress']) Module['onProgress'](part);
});

namespace vrx::web {
namespace {

using nlohmann::json;
using tool::CommandEntry;

// What a page offers.
std::span<const CommandEntry> Commands() {
  static constexpr std::array kCommands{
      CommandEntry{"judge", tool::AddJudge, "Judging"},  CommandEntry{"color", tool::AddColor, "Colour"},
      CommandEntry{"index", tool::AddIndex, "Colour"},   CommandEntry{"match", tool::AddMatch, "Recipes"},
      CommandEntry{"info", tool::AddInfo, "Files"},      CommandEntry{"convert", tool::AddConvert, "Files"},
      CommandEntry{"tables", tool::AddTables, "Colour"}, CommandEntry{"search", tool::AddSearch, "Judging"}};
  return kCommands;
}

std::string TextOf(const json& value) {
  return value.is_string() ? value.get<std::string>() : value.dump();
}

// An option of the command line; a name of a file may begin with a dash.
void AddOption(const std::string& name, const json& value, std::vector<std::string>& arguments) {
  if (value.is_array()) {
    for (const json& one : value) AddOption(name, one, arguments);
  } else if (value.is_boolean()) {
    if (value.get<bool>()) arguments.push_back("--" + name);
  } else if (!value.is_null()) {
    arguments.push_back("--" + name + "=" + TextOf(value));
  }
}

// {"command": "judge", "options": {"pairs": true, "illuminants": "D65,A"}, "files": ["standard.csv", "lot.csv"]}
std::vector<std::string> ArgumentsOf(const json& wanted) {
  std::vector<std::string> arguments{wanted.at("command").get<std::string>()};
  if (wanted.contains("options")) {
    for (const auto& [name, value] : wanted.at("options").items()) AddOption(name, value, arguments);
  }
  arguments.emplace_back("--");
  for (const json& file : wanted.at("files")) arguments.push_back(TextOf(file));
  return arguments;
}

void ThrowMessage(WideView text, MessageIcon, void*) {
  throw std::runtime_error(CString(text).ToUtf8());
}

// [{"name": "cmc", "title": "CMC(2.00:1.00)", "parameters": [{"name": "l", "value": 2}, ...], "inDeltaE": true}, ...]
std::string SystemsAsJson() {
  json systems = json::array();
  for (const DifferenceSystem& system : DifferenceSystems()) {
    const CDifferenceSettings usual = DefaultSettings(system.number);
    json parameters = json::array();
    for (std::size_t i = 0; i < system.parameterNames.size(); ++i) {
      if (system.parameterNames[i].empty()) continue;
      parameters.push_back({{"name", std::string(system.parameterNames[i])}, {"value", usual.parameters[i]}});
    }
    systems.push_back(
        {{"name", std::string(system.shortName)},
         {"title", DifferenceSystemName(system.number, NameLength::kLong, usual.parameters).ToUtf8()},
         {"parameters", parameters},
         {"inDeltaE", system.inDeltaE}});
  }
  return systems.dump();
}

void TellProgress(uint64_t done, uint64_t total) {
  vrx_tell_progress(static_cast<double>(done) / static_cast<double>(total));
}

int Run(const char* request) try {
  const json wanted = json::parse(request);
  if (wanted.contains("epoch")) setenv("SOURCE_DATE_EPOCH", TextOf(wanted.at("epoch")).c_str(), 1);
  return tool::RunTool(ArgumentsOf(wanted), Commands(), VRX_VERSION);
} catch (const tool::Interrupted&) {
  return tool::kExitBadInput;
} catch (const std::exception& error) {
  tool::PrintMessage(error.what());
  return tool::kExitBadInput;
}

}  // namespace
}  // namespace vrx::web

/// Runs a command as its JSON says. What it writes as results goes to the file /results, and what it says to /messages; files are those
/// of the module's file system. "epoch", seconds since 1970, is the moment that a report says. Returns the exit status of the tool.
extern "C" int vrx_engine_run(const char* request) {
  vrx::SetMessageBoxHandler(vrx::web::ThrowMessage);
  vrx::tool::SetProgressListener(vrx::web::TellProgress);
  if (std::freopen("/results", "w", stdout) == nullptr || std::freopen("/messages", "w", stderr) == nullptr) {
    return vrx::tool::kExitBadInput;
  }
  const int status = vrx::web::Run(request);
  std::fflush(stdout);
  std::fflush(stderr);
  return status;
}

/// The difference systems in JSON: names, parameters and their usual values. The text stays.
extern "C" const char* vrx_engine_systems() {
  static const std::string systems = vrx::web::SystemsAsJson();
  return systems.c_str();
}

int main() {
  return 0;
}
