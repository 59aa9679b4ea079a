// The common part of the subcommands: how each is registered, how it ends, how it complains.

#ifndef TOOLS_VRX_COMMANDS_COMMAND_H_
#define TOOLS_VRX_COMMANDS_COMMAND_H_

#include "tools/vrx/command_line.h"
#include "tools/vrx/input/input.h"

namespace vrx::tool {

enum ExitStatus : int {
  kExitPass = 0,       ///< done; with --strict: everything passed
  kExitNotPassed = 1,  ///< with --strict: something failed or needs a warning
  kExitBadInput = 2,   ///< bad options or bad input, or results that could not be written; the reason is on
                       ///< standard error
};

/// Adds one subcommand to the tool: its options, its help with an example, and what it does. The options live in a
/// structure that the action shares; results go through `OutputStream` (output.h), messages to standard error.
using AddCommand = void (*)(Command& tool);

/// The subcommands, in the order of the help.
struct CommandEntry {
  const char* name;
  AddCommand add;
};

}  // namespace vrx::tool

#endif  // TOOLS_VRX_COMMANDS_COMMAND_H_
