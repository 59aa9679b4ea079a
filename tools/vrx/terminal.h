// What the tool knows about the terminal it may be talking to.

#ifndef TOOLS_VRX_TERMINAL_H_
#define TOOLS_VRX_TERMINAL_H_

#include <cstdio>

namespace vrx::tool {

/// True when `file` is shown on a terminal.
bool IsTerminal(std::FILE* file);

/// True when results may be coloured: standard output is a terminal that is not "dumb", and the environment
/// variable NO_COLOR is unset or empty.
bool UseColour();

/// A writer that goes away ends the write with an error instead of the process with a signal.
void IgnoreBrokenPipes();

}  // namespace vrx::tool

#endif  // TOOLS_VRX_TERMINAL_H_
