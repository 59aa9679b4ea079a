// The common part of the subcommands: how each is registered, how it ends, how it complains.

#ifndef TOOLS_VRX_BASE_COMMAND_H_
#define TOOLS_VRX_BASE_COMMAND_H_

#include <memory>
#include <type_traits>

#include "tools/vrx/base/command_line.h"
#include "tools/vrx/base/reader_names.h"

namespace vrx::tool {

enum ExitStatus : int {
  kExitPass = 0,       ///< done; with --strict: everything passed
  kExitNotPassed = 1,  ///< with --strict: something failed or needs a warning
  kExitBadInput = 2,   ///< bad options or bad input, or results that could not be written; the reason is on
                       ///< standard error
};

/// Lets a command run `run` with its options; it passes unless that throws.
template <class OPTIONS>
void SetAction(Command& command, const std::shared_ptr<OPTIONS>& options,
               std::type_identity_t<void (*)(const OPTIONS&)> run) {
  command.SetAction([options, run] {
    run(*options);
    return kExitPass;
  });
}

}  // namespace vrx::tool

#endif  // TOOLS_VRX_BASE_COMMAND_H_
