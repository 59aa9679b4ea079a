#include "tools/vrx/terminal.h"

#include <csignal>
#include <cstdlib>
#include <string_view>

#if defined(_WIN32)
#include <io.h>
#else
#include <unistd.h>
#endif

namespace vrx::tool {

namespace {

std::string_view Environment(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : "";
}

}  // namespace

bool IsTerminal(std::FILE* file) {
#if defined(_WIN32)
  return _isatty(_fileno(file)) != 0;
#else
  return isatty(fileno(file)) != 0;
#endif
}

bool UseColour() {
  return IsTerminal(stdout) && Environment("NO_COLOR").empty() && Environment("TERM") != "dumb";
}

void IgnoreBrokenPipes() {
#if defined(SIGPIPE)
  std::signal(SIGPIPE, SIG_IGN);
#endif
}

}  // namespace vrx::tool
