// How options are shown: in the help, the manual page and the page of all options alike.

#ifndef TOOLS_VRX_BASE_HELP_TEXTS_H_
#define TOOLS_VRX_BASE_HELP_TEXTS_H_

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace vrx::tool {

/// The headings of options that several commands share, in the order in which the help has them, behind those that a command
/// has to itself.
std::span<const std::string_view> SharedHeadings();
bool IsSharedHeading(std::string_view heading);

/// The headings of a command's options: its own in the order of their declaration, then the shared ones.
std::vector<std::string> HeadingsOf(const CLI::App& command);

/// What an option does, with the options that it needs and those that it is not given with.
std::string MeaningOf(const CLI::App& command, const CLI::Option& option);

/// Has the help of a command, and of those added to it from then on, laid out for a terminal.
void LayOutHelp(CLI::App& app);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_BASE_HELP_TEXTS_H_
