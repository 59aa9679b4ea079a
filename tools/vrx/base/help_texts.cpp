#include "tools/vrx/base/help_texts.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <set>

namespace vrx::tool {
namespace {

constexpr std::size_t kNameWidth = 30, kLineWidth = 100;

bool Any(const CLI::Option*) {
  return true;
}

// "; not with --pairs, --average", in the order of the declarations.
std::string Beside(const CLI::App& command, const std::set<CLI::Option*>& others, const std::string& words) {
  std::string text;
  for (const CLI::Option* option : command.get_options(Any)) {
    const bool isOne = std::ranges::any_of(others, [&](const CLI::Option* other) { return other == option; });
    if (isOne) text += (text.empty() ? "; " + words + " " : ", ") + option->get_name();
  }
  return text;
}

// The words of a text in lines, all but the first behind the column of names.
std::string Wrapped(const std::string& text) {
  std::string wrapped;
  std::size_t column = kNameWidth;
  for (const std::string& word : CLI::detail::split(text, ' ')) {
    if (column > kNameWidth && column + 1 + word.size() > kLineWidth) {
      wrapped += "\n" + std::string(kNameWidth, ' ');
      column = kNameWidth;
    } else if (column > kNameWidth) {
      wrapped += ' ';
      ++column;
    }
    wrapped += word;
    column += word.size();
  }
  return wrapped;
}

// A name and its meaning; a long name has a line to itself.
std::string Row(const std::string& name, const std::string& meaning) {
  std::string row = "  " + name;
  if (!meaning.empty()) {
    row += row.size() + 1 < kNameWidth ? std::string(kNameWidth - row.size(), ' ')
                                       : "\n" + std::string(kNameWidth, ' ');
    row += Wrapped(meaning);
  }
  return row + "\n";
}

class HelpLayout : public CLI::Formatter {
 public:
  HelpLayout() {
    label("Positionals", "Arguments");
    label("SUBCOMMAND", "COMMAND");
  }

  std::string make_positionals(const CLI::App* app) const override {
    std::string rows;
    for (const CLI::Option* option : app->get_options(Any)) {
      if (!option->get_positional()) continue;
      const std::string& text = option->get_option_text();
      rows += Row(option->get_name(true) + (text.empty() ? "" : " " + text), MeaningOf(*app, *option));
    }
    return rows.empty() ? "" : "\n" + get_label("Positionals") + ":\n" + rows;
  }

  std::string make_help(const CLI::App* app, std::string name, CLI::AppFormatMode mode) const override {
    return make_description(app) + make_usage(app, name) + make_positionals(app) + Groups(*app) +
           make_subcommands(app, mode) + "\n" + make_footer(app);
  }

  std::string make_option_opts(const CLI::Option* option) const override {
    if (!option->get_option_text().empty()) return " " + option->get_option_text();
    return option->get_items_expected_max() == 0 ? "" : " " + option->get_type_name();
  }

 private:
  std::string Groups(const CLI::App& app) const {
    std::string groups;
    for (const std::string& heading : HeadingsOf(app)) {
      std::string rows;
      for (const CLI::Option* option : app.get_options(Any)) {
        if (!option->nonpositional() || option->get_group() != heading) continue;
        rows += Row(option->get_name(false, true) + make_option_opts(option), MeaningOf(app, *option));
      }
      if (!rows.empty()) groups.append("\n").append(heading).append(":\n").append(rows);
    }
    return groups;
  }
};

}  // namespace

std::span<const std::string_view> SharedHeadings() {
  static constexpr std::array<std::string_view, 6> kHeadings = {"Light", "Difference", "Input",
                                                                "Job",   "Output",     "Report"};
  return kHeadings;
}

bool IsSharedHeading(std::string_view heading) {
  return std::ranges::find(SharedHeadings(), heading) != SharedHeadings().end();
}

std::vector<std::string> HeadingsOf(const CLI::App& command) {
  std::vector<std::string> headings = command.get_groups();
  const auto rank = [](const std::string& heading) {
    return std::ranges::find(SharedHeadings(), heading) - SharedHeadings().begin();
  };
  const auto shared = std::stable_partition(
      headings.begin(), headings.end(), [](const std::string& heading) { return !IsSharedHeading(heading); });
  std::sort(shared, headings.end(),
            [&](const std::string& a, const std::string& b) { return rank(a) < rank(b); });
  return headings;
}

std::string MeaningOf(const CLI::App& command, const CLI::Option& option) {
  const bool isNeeded = option.get_required() && option.nonpositional();
  return option.get_description() + (isNeeded ? "; required" : "") +
         Beside(command, option.get_needs(), "only with") +
         Beside(command, option.get_excludes(), "not with");
}

void LayOutHelp(CLI::App& app) {
  app.formatter(std::make_shared<HelpLayout>());
}

}  // namespace vrx::tool
