// How many threads a command works on, as an option.

#ifndef TOOLS_VRX_INPUT_THREADS_OPTION_H_
#define TOOLS_VRX_INPUT_THREADS_OPTION_H_

namespace vrx::tool {

class Command;

struct ThreadsOption {
  int given = 0;  ///< 0: not given

  /// The count that was given, else the cores of the machine.
  unsigned Count() const;
};

/// Adds `--threads`.
void AddThreadsOption(Command& owner, ThreadsOption& threads);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_INPUT_THREADS_OPTION_H_
