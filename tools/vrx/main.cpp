// vrx: the command-line tool.

#include <exception>
#include <stdexcept>
#include <string>
#ifdef __GLIBC__
#include <malloc.h>
#include <thread>
#endif

#include <vrxmath/platform/message_box.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/base/command_line.h"
#include "tools/vrx/base/terminal.h"
#include "tools/vrx/base/text.h"
#include "tools/vrx/commands/commands.h"
#include "tools/vrx/job/profiles.h"

namespace {

// An index error in the library means that input slipped through a check: it ends the run.
void ThrowMessage(vrx::WideView text, vrx::MessageIcon, void*) {
  throw std::runtime_error(vrx::CString(text).ToUtf8());
}

// One heap for each core: the C library would reserve 64 MiB of addresses for every thread, and threads beyond a limit of
// the process would find none.
void LimitHeaps() {
#ifdef __GLIBC__
  mallopt(M_ARENA_MAX, static_cast<int>(std::thread::hardware_concurrency()));
#endif
}

}  // namespace

int main(int argc, char** argv) try {
  LimitHeaps();
  vrx::SetMessageBoxHandler(ThrowMessage);
  vrx::tool::TurnSignalsIntoErrors();
  vrx::tool::UseUtf8Streams();
  return vrx::tool::RunTool(vrx::tool::Utf8Arguments(argc, argv), vrx::tool::AllCommands(), VRX_VERSION,
                            vrx::tool::LoadProfile);
} catch (const vrx::tool::Interrupted&) {
  return vrx::tool::EndByInterrupt();
} catch (const std::exception& error) {
  vrx::tool::PrintMessage(error.what());
  return vrx::tool::kExitBadInput;
}
