#include "python/src/unlocked.h"

#include <atomic>
#include <thread>

namespace vrx::python {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kBetweenSignals{50};
constexpr std::chrono::seconds kLongestGoodbye{5};

std::atomic<bool> isEnding{false};
std::atomic<std::thread::id> endingThread{};
std::atomic<int> callsUnderWay{0};

// Of a thread that is not the one which ends the interpreter.
bool MustNotReturn() {
  return isEnding.load() && endingThread.load() != std::this_thread::get_id();
}

[[noreturn]] void StayUntilTheEnd() {
  callsUnderWay.fetch_sub(1);
  for (;;) std::this_thread::sleep_for(std::chrono::hours(1));
}

void TakeLock(PyThreadState* state) {
  if (MustNotReturn()) StayUntilTheEnd();
  try {
    PyEval_RestoreThread(state);
  } catch (...) {  // CPython ends the thread by an exception that must not pass; nor may this handler end
    StayUntilTheEnd();
  }
}

}  // namespace

Unlocked::Unlocked() : state_(PyEval_SaveThread()), asked_(Clock::now()) {
  callsUnderWay.fetch_add(1);
  if (MustNotReturn()) StayUntilTheEnd();
}

bool Unlocked::GoesOn() {
  if (isInterrupted_ || MustNotReturn()) return false;
  const Clock::time_point now = Clock::now();
  if (now - asked_ < kBetweenSignals) return true;
  asked_ = now;
  TakeLock(state_);
  isInterrupted_ = PyErr_CheckSignals() != 0;
  state_ = PyEval_SaveThread();
  return !isInterrupted_;
}

void Unlocked::TakeBack() {
  TakeLock(state_);
  callsUnderWay.fetch_sub(1);
}

void Unlocked::ThrowIfStopped() const {
  if (isInterrupted_) throw py::error_already_set();
}

void StopCallsAtExit() {
  py::module_::import("atexit").attr("register")(py::cpp_function([] {
    endingThread = std::this_thread::get_id();
    isEnding = true;
    const Clock::time_point last = Clock::now() + kLongestGoodbye;
    const py::gil_scoped_release unlocked;
    while (callsUnderWay.load() > 0 && Clock::now() < last)
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }));
}

}  // namespace vrx::python
