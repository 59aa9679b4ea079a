
#include "tools/vrx/base/terminal.h"

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdlib>
#include <limits>
#include <string>
#include <string_view>

#if defined(_WIN32)
#include <fcntl.h>
#include <io.h>

#include <vrxmath/platform/win32/win32.h>

#include "tools/vrx/base/windows_arguments.h"
#else
#include <sys/ioctl.h>
#include <unistd.h>
#endif

namespace vrx::tool {

namespace {

std::atomic<int> notedSignal{0};
static_assert(std::atomic<int>::is_always_lock_free, "a signal handler sets it");

extern "C" void NoteSignal(int signal) {
  notedSignal = signal;
  std::signal(signal, SIG_DFL);
}

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
#if defined(_WIN32)
  // Consoles before Windows 10 show escapes as they stand.
  DWORD mode = 0;
  if (!::GetConsoleMode(::GetStdHandle(STD_OUTPUT_HANDLE), &mode)) return false;
  if ((mode & ENABLE_VIRTUAL_TERMINAL_PROCESSING) == 0) return false;
#endif
  return IsTerminal(stdout) && Environment("NO_COLOR").empty() && Environment("TERM") != "dumb";
}

std::size_t TerminalWidth() {
  if (!IsTerminal(stdout)) return 0;
#if defined(_WIN32)
  CONSOLE_SCREEN_BUFFER_INFO screen = {};
  if (::GetConsoleScreenBufferInfo(::GetStdHandle(STD_OUTPUT_HANDLE), &screen)) {
    return static_cast<std::size_t>(screen.srWindow.Right - screen.srWindow.Left + 1);
  }
#elif defined(TIOCGWINSZ)
  winsize size = {};
  if (ioctl(fileno(stdout), TIOCGWINSZ, &size) == 0) return size.ws_col;
#endif
  return 0;
}

namespace {
constexpr std::size_t kBarWidth = 40;
ProgressListener progressListener = nullptr;
}  // namespace

void SetProgressListener(ProgressListener listener) {
  progressListener = listener;
}

ProgressBar::ProgressBar(uint64_t total)
    : total_(total),
      next_(total > 0 && (progressListener != nullptr || IsTerminal(stderr))
                ? 0
                : std::numeric_limits<uint64_t>::max()) {}

ProgressBar::~ProgressBar() {
  if (!drawn_) return;
  // Blanks, as consoles before Windows 10 and dumb terminals obey no escape sequence; "^C" is a terminal's echo of Ctrl-C.
  std::fprintf(stderr, "\r%*s\r", static_cast<int>(kBarWidth + std::string_view("[] 100 %^C").size()), "");
  std::fflush(stderr);
}

void ProgressBar::Draw(uint64_t done) {
  next_ = done + total_ / 100 + 1;
  if (progressListener != nullptr) return progressListener(done, total_);
  const uint64_t percent = std::min<uint64_t>(100, done * 100 / total_);
  const auto filled = static_cast<std::size_t>(percent * kBarWidth / 100);
  const std::string bar = std::string(filled, '#') + std::string(kBarWidth - filled, '.');
  std::fprintf(stderr, "\r[%s] %3d %%", bar.c_str(), static_cast<int>(percent));
  std::fflush(stderr);
  drawn_ = true;
}

InterruptWatch::InterruptWatch() {
  for (std::size_t i = 0; i < kSignals.size(); ++i) {
    before_[i] = std::signal(kSignals[i], NoteSignal);
    if (before_[i] == SIG_IGN) std::signal(kSignals[i], SIG_IGN);
  }
}

InterruptWatch::~InterruptWatch() {
  for (std::size_t i = 0; i < kSignals.size(); ++i) {
    std::signal(kSignals[i], IsNoted() && before_[i] != SIG_IGN ? SIG_DFL : before_[i]);
  }
}

bool InterruptWatch::IsNoted() const {
  return notedSignal != 0;
}

void InterruptWatch::Check() const {
  if (IsNoted()) throw Interrupted();
}

int EndByInterrupt() {
  const int signal = notedSignal != 0 ? notedSignal.load() : SIGINT;
#if !defined(_WIN32)
  std::signal(signal, SIG_DFL);
  std::raise(signal);
#endif
  constexpr int kEndedBySignal = 128;  // and its number, what shells call it
  return kEndedBySignal + signal;
}

#if defined(_WIN32)
std::vector<std::string> Utf8Arguments(int, char**) {
  return WindowsArguments(platform_internal::FromSystem(::GetCommandLineW()));
}

namespace {
UINT codePageBefore = 0;
}

void UseUtf8Streams() {
  for (std::FILE* stream : {stdin, stdout, stderr}) _setmode(_fileno(stream), _O_BINARY);
  codePageBefore = ::GetConsoleOutputCP();
  if (codePageBefore == 0) return;  // there is no console
  ::SetConsoleOutputCP(CP_UTF8);
  std::atexit([] { ::SetConsoleOutputCP(codePageBefore); });
  for (std::FILE* stream : {stdout, stderr}) {
    const HANDLE console = ::GetStdHandle(stream == stdout ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE);
    DWORD mode = 0;
    if (!::GetConsoleMode(console, &mode)) continue;
    ::SetConsoleMode(console, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
    // A console decodes each write by itself, and without a buffer each byte would be one.
    std::setvbuf(stream, nullptr, _IOFBF, std::size_t{1} << 14);
  }
}
#else
std::vector<std::string> Utf8Arguments(int argc, char** argv) {
  return {argv + (argc > 0 ? 1 : 0), argv + argc};
}

void UseUtf8Streams() {}
#endif

void TurnSignalsIntoErrors() {
#if defined(SIGPIPE)
  std::signal(SIGPIPE, SIG_IGN);
#endif
#if defined(SIGXFSZ)
  std::signal(SIGXFSZ, SIG_IGN);
#endif
}

}  // namespace vrx::tool
