// The terminal that the tool may be talking to: whether there is one, its width, its colours.

#ifndef TOOLS_VRX_BASE_TERMINAL_H_
#define TOOLS_VRX_BASE_TERMINAL_H_

#include <array>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace vrx::tool {

/// True when `file` is shown on a terminal.
bool IsTerminal(std::FILE* file);

/// True when results may be coloured: standard output is a terminal that is not "dumb", and the environment
/// variable NO_COLOR is unset or empty.
bool UseColour();

/// The columns of the terminal that standard output is shown on; 0 when it is none, or its width is not known.
std::size_t TerminalWidth();

/// Hears how far work is, in place of a progress bar: what is done, out of `total`.
using ProgressListener = void (*)(uint64_t done, uint64_t total);
/// Sets who hears it from then on; null for nobody.
void SetProgressListener(ProgressListener listener);

/// A progress bar on standard error; nothing at all when that is no terminal and nobody listens. It goes away when it is
/// destroyed.
class ProgressBar {
 public:
  /// `total`: what `Update` counts up to, 0 when it is not known.
  explicit ProgressBar(uint64_t total);
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;
  ~ProgressBar();

  void Update(uint64_t done) {
    if (done >= next_) Draw(done);
  }

 private:
  void Draw(uint64_t done);

  uint64_t total_;
  uint64_t next_;  // where the bar has to be drawn anew; never, when there is none
  bool drawn_ = false;
};

/// While one of these exists, the first Ctrl-C or request to end (SIGTERM) is noted instead of ending the process, so that work
/// can stop in order; the second one ends it. A process that was started with interrupts ignored keeps ignoring them. They may
/// be nested.
class InterruptWatch {
 public:
  InterruptWatch();
  InterruptWatch(const InterruptWatch&) = delete;
  InterruptWatch& operator=(const InterruptWatch&) = delete;
  ~InterruptWatch();

  /// True when one was noted.
  [[nodiscard]] bool IsNoted() const;
  /// Throws Interrupted then.
  void Check() const;

 private:
  static constexpr std::array kSignals{SIGINT, SIGTERM};
  std::array<void (*)(int), kSignals.size()> before_{};
};

/// Ctrl-C was pressed, or an end asked for, during work that noted it. Passes every handler up to main.
struct Interrupted {};

/// Ends the process as the signal does that was noted when nobody handles it, so that scripts and shells see one; where the
/// system has no such end, returns the status that stands for it.
int EndByInterrupt();

/// The arguments behind the program's name, as UTF-8 on every system.
std::vector<std::string> Utf8Arguments(int argc, char** argv);

/// Makes the standard streams those of bytes, and a console of Windows one of UTF-8 and colours. Elsewhere they are.
void UseUtf8Streams();

/// A reader that goes away, and a limit to the size of files, end a write with an error instead of the process with a signal.
void TurnSignalsIntoErrors();

}  // namespace vrx::tool

#endif  // TOOLS_VRX_BASE_TERMINAL_H_
