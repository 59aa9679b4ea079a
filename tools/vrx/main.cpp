// vrx: the command-line tool. Parses the command line, runs one subcommand and turns every failure into one
// sentence on standard error and an exit status.

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>
#include <vector>

#include <vrxmath/platform/message_box.h>

#include "tools/vrx/commands/command.h"
#include "tools/vrx/commands/commands.h"
#include "tools/vrx/output/terminal.h"

namespace vrx::tool {
namespace {

// An index error in the library means that input slipped through a check: it ends the run.
void ThrowMessage(WideView text, MessageIcon, void*) {
  throw std::runtime_error(CString(text).ToUtf8());
}

int Complain(const std::string& reason) {
  std::fprintf(stderr, "vrx: %s\n", reason.c_str());
  return kExitBadInput;
}

// Help and version go to standard output; a failing write must not look like success.
int ShowHelp(const CLI::App& app, const CLI::ParseError& request) {
  app.exit(request, std::cout, std::cerr);
  std::cout.flush();
  return std::cout ? kExitPass : Complain("cannot write to standard output");
}

// What stands where something else is missing, such as a misspelt command.
std::string Misunderstood(const CLI::App& app, const CLI::ParseError& error) {
  const std::vector<std::string> rest = app.remaining(true);
  const bool isMissing = dynamic_cast<const CLI::RequiredError*>(&error) != nullptr;
  return isMissing && !rest.empty() ? "; \"" + rest.front() + "\" is not known" : "";
}

int Run(int argc, char** argv) {
  int status = kExitPass;
  CLI::App app{"From measured reflectance curves to colour values, differences and verdicts.", "vrx"};
  app.set_version_flag("--version", "vrx " VRX_VERSION);
  app.require_subcommand(1);
  app.footer("vrx COMMAND --help shows the options of a command, with examples.");
  for (const CommandEntry& command : AllCommands()) command.add(app, status);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) return ShowHelp(app, error);
    return Complain(error.what() + Misunderstood(app, error) + "\nRun with --help for more information.");
  }
  return status;
}

}  // namespace
}  // namespace vrx::tool

int main(int argc, char** argv) try {
  vrx::SetMessageBoxHandler(vrx::tool::ThrowMessage);
  vrx::tool::IgnoreBrokenPipes();
  return vrx::tool::Run(argc, argv);
} catch (const std::exception& error) {
  return vrx::tool::Complain(error.what());
}
