
#include "tools/vrx/base/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <iostream>
#include <new>

#include <vrxio/measurement/names.h>
#include <vrxmath/platform/exceptions.h>

#include "tools/vrx/base/build_facts.h"
#include "tools/vrx/base/command.h"
#include "tools/vrx/base/help_texts.h"
#include "tools/vrx/base/output_error.h"
#include "tools/vrx/base/same_file.h"
#include "tools/vrx/base/text.h"

namespace vrx::tool {

namespace {

// The files of options that were given; standard input and output are none.
std::vector<std::string> FilesOf(const std::vector<CLI::Option*>& options) {
  std::vector<std::string> files;
  for (const CLI::Option* option : options) {
    if (option->count() == 0) continue;
    for (const std::string& file : option->results()) {
      if (file != "-") files.push_back(file);
    }
  }
  return files;
}

void RefuseClashes(const FileOptions& options) {
  const std::vector<std::string> read = FilesOf(options.read);
  std::vector<std::string> written;
  for (const std::string& file : FilesOf(options.written)) {
    if (std::ranges::any_of(read, [&](const std::string& other) { return AreOneFile(file, other); })) {
      throw InputError(file + ": this file is read as input; write to another one");
    }
    if (std::ranges::any_of(written, [&](const std::string& other) { return AreOneFile(file, other); })) {
      throw InputError(file + ": two results cannot go into one file; choose another name");
    }
    written.push_back(file);
  }
}

// An option or argument whose values are texts.
template <class VALUE>
CLI::Option* AddText(CLI::App& app, const std::string& name, VALUE& value, const std::string& description) {
  CLI::Option* const option = app.add_option(name, value, description);
  if (name.starts_with('-')) {
    option->check(
        [](const std::string& text) { return std::string(text.empty() ? "the text is empty" : ""); });
  }
  return option;
}

}  // namespace

Option& Option::Required() {
  option_->required();
  return *this;
}

Option& Option::Shows(const std::string& text) {
  option_->option_text(text);
  return *this;
}

Option& Option::Check(const OptionCheck& check) {
  option_->check(check);
  return *this;
}

Option& Option::Excludes(const Option& other) {
  option_->excludes(other.option_);
  return *this;
}

Option& Option::Needs(const Option& other) {
  option_->needs(other.option_);
  return *this;
}

Option& Option::ReadsFile() {
  files_->read.push_back(option_);
  return *this;
}

Option& Option::WritesFile() {
  files_->written.push_back(option_);
  return *this;
}

Command Command::Group(const std::string& heading) const {
  Command group = *this;
  group.heading_ = heading;
  return group;
}

Option Command::Added(CLI::Option* option) const {
  if (!heading_.empty()) option->group(heading_);
  return {option, files_};
}

Command Command::AddCommand(const std::string& name, const std::string& description) {
  app_->require_subcommand(1);
  return {app_->add_subcommand(name, description), status_};
}

Option Command::AddOption(const std::string& name, std::string& value, const std::string& description) {
  return Added(AddText(*app_, name, value, description));
}

Option Command::AddOption(const std::string& name, double& value, const std::string& description) {
  return Added(app_->add_option(name, value, description));
}

Option Command::AddOption(const std::string& name, int& value, const std::string& description) {
  return Added(app_->add_option(name, value, description));
}

Option Command::AddOption(const std::string& name, std::vector<std::string>& values,
                          const std::string& description) {
  CLI::Option* const option = AddText(*app_, name, values, description);
  if (name.starts_with('-')) option->allow_extra_args(false);
  return Added(option);
}

Option Command::AddFlag(const std::string& name, bool& value, const std::string& description) {
  return Added(app_->add_flag(name, value, description));
}

Option Command::AddWords(const std::string& name, const std::vector<std::string>& words,
                         const std::function<void(std::size_t)>& take, const std::string& description) {
  const auto store = [name, words, take](const std::string& text) {
    const auto found = std::ranges::find(words, CLI::detail::to_lower(text));
    if (found != words.end()) return take(static_cast<std::size_t>(found - words.begin()));
    std::string known;
    for (std::size_t i = 0; i < words.size(); ++i) {
      known += i == 0 ? "" : i + 1 == words.size() ? " and " : ", ";
      known += words[i];
    }
    throw InputError(name + ": \"" + text + "\" is not one of " + known);
  };
  std::string shown;
  for (const std::string& word : words) shown += (shown.empty() ? "" : "|") + word;
  CLI::Option* const option = app_->add_option_function<std::string>(name, store, description);
  return Added(option->option_text(shown + " [" + words.front() + "]"));
}

bool Command::IsGiven(const std::string& name) const {
  return app_->count(name) > 0;
}

std::vector<std::pair<std::string, std::string>> Command::GivenOptions(const std::string& without) const {
  std::vector<std::pair<std::string, std::string>> given;
  for (const CLI::Option* option : app_->get_options([](const CLI::Option*) { return true; })) {
    if (option->count() == 0 || option->get_lnames().empty() || option->get_group() == without) continue;
    const bool isFlag = option->get_items_expected() == 0;
    for (const std::string& value : option->results())
      given.emplace_back("--" + option->get_lnames().front(), isFlag ? "" : value);
  }
  return given;
}

void Command::SetNotes(const std::string& notes) {
  app_->footer(notes);
}

void Command::SetAction(const std::function<int()>& action) {
  app_->callback([action, status = status_, files = files_] {
    RefuseClashes(*files);
    *status = action();
  });
}

namespace {

constexpr const char* kNoMemory = "not enough memory";

int Complain(const std::string& reason) {
  PrintMessage(reason);
  return kExitBadInput;
}

// Help and version go to standard output; a failing write must not look like success.
int ShowHelp(const CLI::App& app, const CLI::ParseError& request) {
  app.exit(request, std::cout, std::cerr);
  std::cout.flush();
  return std::cout || errno == EPIPE ? kExitPass : Complain("cannot write to standard output");
}

// The words that could stand where an unknown one stands: options of the command that was named, or commands.
std::vector<std::string> KnownWords(const CLI::App& app, bool isOption) {
  const CLI::App* at = &app;
  while (!at->get_subcommands().empty()) at = at->get_subcommands().front();
  std::vector<std::string> words;
  if (!isOption) {
    for (const CLI::App* command : at->get_subcommands([](const CLI::App*) { return true; })) {
      words.push_back(command->get_name());
    }
    return words;
  }
  for (const CLI::Option* option : at->get_options([](const CLI::Option*) { return true; })) {
    for (const std::string& name : option->get_lnames()) words.push_back("--" + name);
  }
  return words;
}

// The message about a word that stands where another one was expected, such as a misspelt command or option.
std::string Misunderstood(const CLI::App& app, const CLI::ParseError& error) {
  const std::vector<std::string> rest = app.remaining(true);
  if (rest.empty()) return "";
  const bool isExtra = dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr;
  const bool isMissing = dynamic_cast<const CLI::RequiredError*>(&error) != nullptr;
  if (!isExtra && !isMissing) return "";
  const bool isOption = rest.front().starts_with('-');
  const std::string word = isOption ? rest.front().substr(0, rest.front().find('=')) : rest.front();
  const std::string hint = DidYouMean(word, KnownWords(app, isOption));
  return isExtra ? hint : "; \"" + rest.front() + "\" is not known" + hint;
}

// The value of an option among arguments; empty where it is not given.
std::string ValueAmong(std::span<const std::string> arguments, const std::string& option) {
  for (std::size_t i = 0; i < arguments.size() && arguments[i] != "--"; ++i) {
    if (arguments[i] == option && i + 1 < arguments.size()) return arguments[i + 1];
    if (arguments[i].starts_with(option + "=")) return arguments[i].substr(option.size() + 1);
  }
  return {};
}

// Whether arguments give an option, or one that it is not given with.
bool IsAmong(std::span<const std::string> arguments, const CLI::Option& option) {
  std::vector<std::string> names = option.get_lnames();
  for (const CLI::Option* other : option.get_excludes()) {
    const std::vector<std::string>& more = other->get_lnames();
    names.insert(names.end(), more.begin(), more.end());
  }
  return std::ranges::any_of(names, [&](const std::string& name) {
    return std::ranges::any_of(arguments, [&](const std::string& argument) {
      return argument == "--" + name || argument.starts_with("--" + name + "=");
    });
  });
}

// The arguments, with the options of the profile that they name behind the words of the command.
std::vector<std::string> WithProfile(const CLI::App& app, std::span<const std::string> arguments,
                                     const ProfileSource& profiles) {
  std::vector<std::string> all(arguments.begin(), arguments.end());
  const std::string name = ValueAmong(arguments, "--profile");
  if (name.empty() || !profiles) return all;
  const CLI::App* command = &app;
  std::size_t words = 0;
  for (; words < all.size(); ++words) {
    const auto within = command->get_subcommands([](const CLI::App*) { return true; });
    const auto next = std::ranges::find_if(
        within, [&](const CLI::App* one) { return one->get_name() == arguments[words]; });
    if (next == within.end()) break;
    command = *next;
  }
  if (command->get_option_no_throw("--profile") == nullptr) return all;
  std::vector<std::string> added;
  for (const auto& [option, value] : profiles(name, ValueAmong(arguments, "--job"))) {
    const CLI::Option* const known = command->get_option_no_throw(option);
    if (known == nullptr || IsAmong(arguments, *known)) continue;
    added.push_back(option);
    if (!value.empty()) added.back().append("=").append(value);
  }
  all.insert(all.begin() + static_cast<std::ptrdiff_t>(words), added.begin(), added.end());
  return all;
}

// The command that the arguments name to begin with is all that a run needs to know; else it needs all of them, for the help
// and for what was perhaps meant. Half of the time of a short run goes into their hundreds of options.
std::span<const CommandEntry> CommandsFor(std::span<const std::string> arguments,
                                          std::span<const CommandEntry> commands) {
  if (arguments.empty()) return commands;
  const auto named = std::ranges::find(commands, arguments.front(), &CommandEntry::name);
  if (named == commands.end() || named->needsAll) return commands;
  return commands.subspan(static_cast<std::size_t>(named - commands.begin()), 1);
}

}  // namespace

int RunTool(std::span<const std::string> arguments, std::span<const CommandEntry> commands,
            const std::string& version, const ProfileSource& profiles) {
  int status = kExitPass;
  CLI::App app{"Turns measured reflectance curves into colour values, differences and verdicts.", "vrx"};
  app.allow_windows_style_options(false);  // a path may begin with a slash everywhere
  LayOutHelp(app);
  app.set_help_flag("-h,--help", "Print this help and exit");
  app.set_version_flag(
      "--version", [&version] { return "vrx " + version + "\n" + BuildFacts(); },
      "Print the version, how it was built and what it uses of this machine, and exit");
  app.footer("Run vrx COMMAND --help for the options of a command, with examples.");
  Command tool(&app, &status);
  for (const CommandEntry& command : CommandsFor(arguments, commands)) {
    command.add(tool);
    app.get_subcommand(command.name)->group(command.group);
  }
  try {
    const std::vector<std::string> all = WithProfile(app, arguments, profiles);
    app.parse(std::vector<std::string>(all.rbegin(), all.rend()));
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) return ShowHelp(app, error);
    PrintMessage(error.what() + Misunderstood(app, error));
    std::fputs("Run with --help for more information.\n", stderr);
    return kExitBadInput;
  } catch (const ReaderGone&) {
    return kExitBadInput;
  } catch (const InputError& error) {
    return Complain(error.what());
  } catch (const OutputError& error) {
    return Complain(error.what());
  } catch (const CMemoryException&) {
    return Complain(kNoMemory);
  } catch (const CException& error) {
    return Complain(error.what());
  } catch (const std::bad_alloc&) {
    return Complain(kNoMemory);
  }
  return status;
}

}  // namespace vrx::tool
