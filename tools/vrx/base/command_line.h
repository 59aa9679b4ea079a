// The command line as the commands declare it: what they are called, which options they take, what they do.
//
// A thin cover over the parser's own classes, which are templates of 60,000 lines: with it one source of the tool
// compiles them instead of every command.

#ifndef TOOLS_VRX_BASE_COMMAND_LINE_H_
#define TOOLS_VRX_BASE_COMMAND_LINE_H_

#include <cstddef>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace vrx::tool {

/// Looks at a text that was given; returns what is wrong with it, or an empty text.
using OptionCheck = std::function<std::string(const std::string& text)>;

/// The options and arguments of a command whose values are files.
struct FileOptions {
  std::vector<CLI::Option*> read, written;
};

/// One option or argument of a command; a handle, to be copied.
class Option {
 public:
  Option(CLI::Option* option, std::shared_ptr<FileOptions> files)
      : option_(option), files_(std::move(files)) {}

  Option& Required();
  /// The text that the help shows behind the name: the kind of value, and the default in brackets.
  Option& Shows(const std::string& text);
  Option& Check(const OptionCheck& check);
  /// The two are never given together.
  Option& Excludes(const Option& other);
  /// This one is given only beside the other.
  Option& Needs(const Option& other);
  /// Its values are files that the run reads, or writes. A run whose results would go over one of the files that it reads, or
  /// two of them into one file, is refused before it begins.
  Option& ReadsFile();
  Option& WritesFile();

 private:
  CLI::Option* option_;
  std::shared_ptr<FileOptions> files_;
};

/// A command that is being declared; a handle, to be copied. What options are stored in must outlive the parse:
/// it lives in a structure that the action shares.
class Command {
 public:
  Command(CLI::App* app, int* status) : app_(app), status_(status) {}

  /// The same command, whose options go under a heading of their own in the help, behind the command's other options. For
  /// options that several commands share.
  [[nodiscard]] Command Group(const std::string& heading) const;

  /// A command within this one. One of those must then be named, unless this one has an action.
  Command AddCommand(const std::string& name, const std::string& description);

  /// An option when `name` begins with a dash, else an argument. Several names of one option are separated by commas. An
  /// option refuses an empty text, as an unset variable of a script leaves it: it would pass for not given.
  Option AddOption(const std::string& name, std::string& value, const std::string& description);
  Option AddOption(const std::string& name, double& value, const std::string& description);
  Option AddOption(const std::string& name, int& value, const std::string& description);
  /// An argument takes all that are left, an option one each time it is given.
  Option AddOption(const std::string& name, std::vector<std::string>& values, const std::string& description);
  Option AddFlag(const std::string& name, bool& value, const std::string& description);
  /// One of a few words, in any case; `value` becomes the index of the word, for an enumeration the enumerator.
  template <class ENUM>
  Option AddChoice(const std::string& name, ENUM& value, const std::vector<std::string>& words,
                   const std::string& description) {
    return AddWords(
        name, words, [&value](std::size_t index) { value = static_cast<ENUM>(index); }, description);
  }

  /// True when the option was given; for actions.
  bool IsGiven(const std::string& name) const;
  /// The options that were given, by their names, with their values; a flag has an empty one. Arguments are none of them, nor are
  /// options under the heading `without`.
  std::vector<std::pair<std::string, std::string>> GivenOptions(const std::string& without) const;

  /// The text below the options: how to read the results, and examples, each on a line that begins "  vrx ".
  void SetNotes(const std::string& notes);
  /// The work of the command. The exit status is what it returns; whatever it throws ends the run.
  void SetAction(const std::function<int()>& action);

 private:
  friend std::string ManualPage(const Command& tool);
  friend std::string BashCompletions(const Command& tool);
  friend std::string OptionsPage(const Command& tool);

  Option Added(CLI::Option* option) const;
  Option AddWords(const std::string& name, const std::vector<std::string>& words,
                  const std::function<void(std::size_t)>& take, const std::string& description);

  CLI::App* app_;
  int* status_;
  std::shared_ptr<FileOptions> files_ = std::make_shared<FileOptions>();
  std::string heading_;  // of the options that are added; empty for the usual one
};

/// The manual page of the tool and all its commands, in the language of man.
std::string ManualPage(const Command& tool);
/// A script that completes commands, options and their words in bash.
std::string BashCompletions(const Command& tool);
/// The page of all commands and their options, in Markdown.
std::string OptionsPage(const Command& tool);

/// Adds one subcommand to the tool: its options, its help with an example, and what it does. The options live in a
/// structure that the action shares; results go through `OutputStream` (output.h), messages to standard error.
using AddCommand = void (*)(Command& tool);

/// A subcommand of the tool.
struct CommandEntry {
  const char* name;
  AddCommand add;
  const char* group;      ///< the heading that the help has it under
  bool needsAll = false;  ///< it looks at the other commands, too
};

/// The options of a profile by its name; `job`: the file that --job names, empty for none. Throws InputError for an unknown one.
using ProfileSource = std::function<std::vector<std::pair<std::string, std::string>>(const std::string& name,
                                                                                     const std::string& job)>;

/// Parses the arguments of a run, without the program's name, and runs the one of `commands`, which are in the order of the
/// help, that they name. Returns the exit status; a sentence on standard error says why it is kExitBadInput. `version` is
/// what --version prints, with BuildFacts(). The options of the profile that --profile names count where the command has them and the arguments do not
/// give them. Throws what no command means to throw.
int RunTool(std::span<const std::string> arguments, std::span<const CommandEntry> commands,
            const std::string& version, const ProfileSource& profiles = nullptr);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_BASE_COMMAND_LINE_H_
