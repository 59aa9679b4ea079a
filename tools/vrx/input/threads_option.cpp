#include "tools/vrx/input/threads_option.h"

#include <charconv>
#include <string>

#include <vrxmath/batch/batch_run.h>

#include "tools/vrx/base/command.h"

namespace vrx::tool {

unsigned ThreadsOption::Count() const {
  return given > 0 ? static_cast<unsigned>(given) : CoreCount();
}

void AddThreadsOption(Command& owner, ThreadsOption& threads) {
  Command command = owner.Group("Output");
  constexpr int kMost = 256;
  command.AddOption("--threads", threads.given, "Number of threads; results are the same for any number")
      .Shows("0 to 256 [0: all cores]")
      .Check([](const std::string& text) {
        int count = 0;
        const char* const end = text.data() + text.size();
        const bool whole = std::from_chars(text.data(), end, count).ptr == end;
        return whole && count >= 0 && count <= kMost ? ""
                                                     : "must be a whole number from 0 (all cores) to 256";
      });
}

}  // namespace vrx::tool
