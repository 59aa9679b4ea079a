// The manual page, the completions of bash and the page of all options, made from what the commands declare, so that none can
// drift.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <functional>
#include <span>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <vrxio/measurement/names.h>

#include "tools/vrx/base/command_line.h"
#include "tools/vrx/base/help_texts.h"
#include "tools/vrx/base/reader_names.h"

namespace vrx::tool {
namespace {

std::vector<const CLI::App*> CommandsOf(const CLI::App& app) {
  return app.get_subcommands([](const CLI::App*) { return true; });
}

// The options in the order of the help: the command's own, then those of each heading.
std::vector<const CLI::Option*> OptionsOf(const CLI::App& app) {
  std::vector<const CLI::Option*> options;
  for (const std::string& heading : HeadingsOf(app)) {
    for (const CLI::Option* option : app.get_options([](const CLI::Option*) { return true; })) {
      if (option->get_group() == heading) options.push_back(option);
    }
  }
  return options;
}

// "--format", or "FILE" for an argument.
std::string NameOf(const CLI::Option& option) {
  const std::vector<std::string>& names = option.get_lnames();
  return names.empty() ? option.get_name(true) : "--" + names.front();
}

// All names that an option goes by, such as "--illuminants" and "--illuminant".
std::vector<std::string> NamesOf(const CLI::Option& option) {
  std::vector<std::string> names;
  for (const std::string& name : option.get_lnames()) names.push_back("--" + name);
  if (names.empty()) names.push_back(NameOf(option));
  return names;
}

std::string Joined(const std::vector<std::string>& words, std::string_view between) {
  std::string text;
  for (const std::string& word : words) text.append(text.empty() ? "" : between).append(word);
  return text;
}

bool IsArgument(const CLI::Option& option) {
  return option.get_lnames().empty() && option.get_snames().empty();
}

// Troff -----------------------------------------------------------------------------------------------------

// Text in which neither a dash nor a backslash nor a first point or apostrophe means anything else.
std::string Escaped(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    if ((c == '.' || c == '\'') && (escaped.empty() || escaped.back() == '\n')) escaped += "\\&";
    if (c == '\\') {
      escaped += "\\e";
    } else if (c == '-') {
      escaped += "\\-";
    } else {
      escaped += c;
    }
  }
  return escaped;
}

// The text behind an option's name: "FILE", "table|csv|json [table]".
std::string ValueOf(const CLI::Option& option) {
  return option.get_items_expected_max() == 0 ? "" : option.get_option_text();
}

void WriteSynopsis(const std::string& path, const CLI::App& command, std::ostream& out) {
  out << ".B " << Escaped(path) << "\n";
  for (const CLI::Option* option : OptionsOf(command)) {
    if (!IsArgument(*option)) continue;
    const std::string name = Escaped(NameOf(*option));
    out << (option->get_required() ? ".I " + name : ".RI [ " + name + " ]") << "\n";
  }
  out << ".RI [ options ]\n";
}

void WriteCommand(const std::string& path, const CLI::App& command, std::ostream& out) {
  out << ".SS " << Escaped(path) << "\n" << Escaped(command.get_description()) << ".\n.PP\n";
  if (CommandsOf(command).empty()) WriteSynopsis(path, command, out);
  for (const CLI::Option* option : OptionsOf(command)) {
    if (NameOf(*option) == "--help") continue;
    out << ".TP\n.BR \"" << Escaped(Joined(NamesOf(*option), ", ")) << "\"";
    if (const std::string value = ValueOf(*option); !value.empty()) out << " \" " << Escaped(value) << "\"";
    out << "\n" << Escaped(MeaningOf(command, *option)) << "\n";
  }
  out << ".PP\n.nf\n" << Escaped(command.get_footer()) << "\n.fi\n";
  for (const CLI::App* nested : CommandsOf(command))
    WriteCommand(path + " " + nested->get_name(), *nested, out);
}

// Bash ------------------------------------------------------------------------------------------------------

// The words that an option takes, as its text tells them, or the names that it knows.
std::string WordsOf(const CLI::Option& option) {
  const std::string name = NameOf(option);
  std::string words;
  if (name == "--system") {
    for (int32_t system = 0; system < kDifferenceSystems; ++system)
      words.append(ShortNameOf(system)).append(" ");
  } else if (name == "--illuminants" || name == "ILLUMINANT") {
    for (int32_t i = 0; i < kBuiltInIlluminants; ++i) words += CodeOf(static_cast<vrxIlluminant>(i)) + " ";
  } else {
    const std::string text = ValueOf(option);
    const std::string choices = text.substr(0, text.find(' '));
    if (choices.find('|') == std::string::npos || choices.find('.') != std::string::npos) return "";
    for (const std::string& word : SplitList(choices, '|')) words += word + " ";
  }
  if (!words.empty()) words.pop_back();
  return words;
}

// The cases of one command: what follows its options, and its options or the commands within it.
void WriteCases(const std::string& path, const CLI::App& command, std::ostream& values, std::ostream& words) {
  std::vector<std::string> names;
  for (const CLI::App* nested : CommandsOf(command)) {
    names.push_back(nested->get_name());
    const std::string nestedPath = path.empty() ? nested->get_name() : path + " " + nested->get_name();
    WriteCases(nestedPath, *nested, values, words);
  }
  bool isFirstArgument = true;
  for (const CLI::Option* option : OptionsOf(command)) {
    const std::string choices = WordsOf(*option);
    // The first argument stands behind the command itself.
    std::vector<std::string> before;
    if (!IsArgument(*option)) {
      before = NamesOf(*option);
      names.insert(names.end(), before.begin(), before.end());
    } else if (isFirstArgument) {
      before = {command.get_name()};
      isFirstArgument = false;
    }
    if (choices.empty()) continue;
    for (const std::string& name : before) {
      values << "    '" << path << " " << name << "') choices='" << choices << "' ;;\n";
    }
  }
  words << "    '" << path << "') words='" << Joined(names, " ") << "' ;;\n";
}

// Markdown --------------------------------------------------------------------------------------------------

// Text that Markdown shows as it is, within a cell of a table.
std::string Cell(std::string_view text) {
  std::string cell;
  for (const char c : text) {
    if (c == '|' || c == '*' || c == '<' || c == '\\' || c == '_') cell += '\\';
    cell += c == '\n' ? ' ' : c;
  }
  return cell;
}

// An option as the page has it.
struct OptionRow {
  std::string names, value, meaning;
  std::string usual;  // the default, which the text of the help has in brackets at the end: "NAME [cmc]"
};

OptionRow RowOf(const CLI::App& command, const CLI::Option& option) {
  OptionRow row;
  for (const std::string& name : NamesOf(option)) row.names += (row.names.empty() ? "`" : ", `") + name + "`";
  row.value = ValueOf(option);
  row.meaning = MeaningOf(command, option);
  const std::size_t bracket = row.value.ends_with(']') ? row.value.rfind('[') : std::string::npos;
  if (bracket == std::string::npos || (bracket > 0 && row.value[bracket - 1] != ' ')) return row;
  row.usual = row.value.substr(bracket + 1, row.value.size() - bracket - 2);
  row.value.erase(bracket == 0 ? 0 : bracket - 1);
  return row;
}

void WriteTableHead(std::string_view heading, std::ostream& out) {
  out << "\n| " << heading << " | value | meaning | default |\n|---|---|---|---|\n";
}

void WriteTableRow(const OptionRow& row, std::ostream& out) {
  out << "| " << row.names << " | " << Cell(row.value) << " | " << Cell(row.meaning) << " | "
      << Cell(row.usual) << " |\n";
}

// Every command, and those within one, with the words that call it.
struct NamedCommand {
  std::string path;
  const CLI::App* command;
};

std::vector<NamedCommand> NamedCommands(const CLI::App& app, const std::string& path) {
  std::vector<NamedCommand> commands;
  for (const CLI::App* command : CommandsOf(app)) {
    const std::string name = path + " " + command->get_name();
    const std::vector<NamedCommand> within = NamedCommands(*command, name);
    commands.push_back({name, command});
    commands.insert(commands.end(), within.begin(), within.end());
  }
  return commands;
}

// A shared option as one command has it.
struct SharedOption {
  std::string command;
  OptionRow row;
};

// The default of most commands first, then what others have in its place: "D65,A,CWF; D65 for delta, sort".
std::string UsualOf(const std::vector<SharedOption>& options) {
  std::vector<std::pair<std::string, std::vector<std::string>>> defaults;
  for (const auto& [command, row] : options) {
    auto found = std::ranges::find(defaults, row.usual, [](const auto& entry) { return entry.first; });
    if (found == defaults.end()) found = defaults.insert(found, {row.usual, {}});
    found->second.push_back(command.substr(command.find(' ') + 1));
  }
  std::ranges::stable_sort(defaults, std::greater<>(), [](const auto& entry) { return entry.second.size(); });
  std::string text = defaults.front().first;
  for (const auto& [usual, commands] : std::span(defaults).subspan(1)) {
    text += "; " + (usual.empty() ? "none" : usual) + " for " + Joined(commands, ", ");
  }
  return text;
}

// The table of a heading that several commands share. Where commands say different things of an option, each has its row.
void WriteSharedTable(std::string_view heading, const std::vector<NamedCommand>& commands,
                      std::ostream& out) {
  std::vector<std::vector<SharedOption>> rows;
  for (const auto& [path, command] : commands) {
    for (const CLI::Option* option : OptionsOf(*command)) {
      if (option->get_group() != heading) continue;
      const OptionRow row = RowOf(*command, *option);
      auto found = std::ranges::find_if(rows, [&](const std::vector<SharedOption>& other) {
        const OptionRow& first = other.front().row;
        return first.names == row.names && first.value == row.value && first.meaning == row.meaning;
      });
      if (found == rows.end()) found = rows.insert(found, std::vector<SharedOption>());
      found->push_back({path, row});
    }
  }
  out << "\n### " << heading << "\n";
  WriteTableHead("option", out);
  for (const std::vector<SharedOption>& options : rows) {
    OptionRow row = options.front().row;
    row.usual = UsualOf(options);
    WriteTableRow(row, out);
  }
}

// "Also the options under Light, Input and Output."
void WriteSharedHeadings(const CLI::App& command, std::ostream& out) {
  std::vector<std::string> headings;
  for (const std::string& heading : HeadingsOf(command)) {
    if (IsSharedHeading(heading)) headings.push_back(heading);
  }
  if (headings.empty()) return;
  const std::string last = headings.back();
  headings.pop_back();
  out << "\nAlso the shared options of " << Joined(headings, ", ") << (headings.empty() ? "" : " and ")
      << last << ".\n";
}

void WriteOptionTable(const NamedCommand& named, std::ostream& out) {
  out << "\n### " << named.path << "\n\n" << Cell(named.command->get_description()) << ".\n";
  std::string heading;
  for (const CLI::Option* option : OptionsOf(*named.command)) {
    if (NameOf(*option) == "--help" || IsSharedHeading(option->get_group())) continue;
    if (option->get_group() != heading) {
      heading = option->get_group();
      WriteTableHead(heading == "Options" ? "Arguments and options" : heading, out);
    }
    WriteTableRow(RowOf(*named.command, *option), out);
  }
  WriteSharedHeadings(*named.command, out);
}

}  // namespace

std::string OptionsPage(const Command& tool) {
  const std::vector<NamedCommand> commands = NamedCommands(*tool.app_, "vrx");
  std::ostringstream out;
  out << "# Options of the vrx tool\n\n## Options that several commands share\n";
  for (const std::string_view heading : SharedHeadings()) WriteSharedTable(heading, commands, out);
  std::string group;
  for (const NamedCommand& named : commands) {
    const bool isNested = named.command->get_parent() != tool.app_;
    if (!isNested && named.command->get_group() != group) {
      group = named.command->get_group();
      out << "\n## " << group << "\n";
    }
    WriteOptionTable(named, out);
  }
  return out.str();
}

std::string ManualPage(const Command& tool) {
  const CLI::App& app = *tool.app_;
  const std::string version = app.version();
  std::ostringstream out;
  out << ".TH VRX 1 \"\" \"" << version << "\" \"User Commands\"\n.SH NAME\nvrx \\- "
      << Escaped(app.get_description()) << "\n.SH SYNOPSIS\n.B vrx\n.I COMMAND\n.RI [ options ]\n"
      << ".SH DESCRIPTION\nResults go to standard output, messages to standard error. A file name of \\- is "
         "standard\n"
      << "input. Curves are tables of comma-separated values whose header names the wavelengths.\n"
      << ".SH COMMANDS\n";
  for (const CLI::App* command : CommandsOf(app)) WriteCommand("vrx " + command->get_name(), *command, out);
  out << ".SH EXIT STATUS\n.TP\n.B 0\ndone; with \\fBjudge \\-\\-strict\\fR: every trial passes\n"
      << ".TP\n.B 1\nwith \\fBjudge \\-\\-strict\\fR: a trial fails or gets a warning\n"
      << ".TP\n.B 2\nbad options or bad input, or results that could not be written\n"
      << ".SH ENVIRONMENT\n.TP\n.B NO_COLOR\nwhen it is set, tables on a terminal are not coloured\n";
  return out.str();
}

std::string BashCompletions(const Command& tool) {
  std::ostringstream values, words;
  WriteCases("", *tool.app_, values, words);
  return "# Completions of vrx for bash, as 'vrx manual bash' prints them.\n"
         "_vrx() {\n"
         "  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD-1]} path= choices= "
         "words= i word\n"
         "  for ((i = 1; i < COMP_CWORD; i++)); do\n"
         "    word=${COMP_WORDS[i]}\n"
         "    case \"$path\" in\n"
         "    '' | settings) [[ $word == -* ]] || path=${path:+$path }$word ;;\n"
         "    esac\n"
         "  done\n"
         "  case \"$path $previous\" in\n" +
         values.str() +
         "  esac\n"
         "  case \"$path\" in\n" +
         words.str() +
         "  esac\n"
         "  if [[ -n $choices ]]; then\n"
         "    words=$choices\n"
         "  elif [[ $current != -* && -n $path && $path != settings ]]; then\n"
         "    words=\n"
         "  fi\n"
         "  COMPREPLY=($(compgen -W \"$words\" -- \"$current\"))\n"
         "}\n"
         "complete -o default -F _vrx vrx\n";
}

}  // namespace vrx::tool
