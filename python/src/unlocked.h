// Work without the interpreter's lock, which Ctrl+C stops and the end of the interpreter does not disturb.

#ifndef PYTHON_SRC_UNLOCKED_H_
#define PYTHON_SRC_UNLOCKED_H_

#include <chrono>
#include <exception>
#include <pybind11/pybind11.h>

namespace vrx::python {

namespace py = pybind11;

/// The time of a call in which its thread does not hold the interpreter's lock. A thread that would take the lock back
/// while the interpreter ends stays where it is until the process is gone: CPython would unwind its stack, which nothing
/// of C++ survives.
class Unlocked {
 public:
  /// Lets go of the lock.
  Unlocked();
  /// Whether the work goes on, asked now and then on the thread of the call: false after Ctrl+C, whose exception
  /// TakeBack then throws, and while the interpreter ends.
  bool GoesOn();
  /// Takes the lock back, once, at the end of the work.
  void TakeBack();
  /// Throws what stopped the work, if anything did. With the lock.
  void ThrowIfStopped() const;

  Unlocked(const Unlocked&) = delete;
  Unlocked& operator=(const Unlocked&) = delete;

 private:
  PyThreadState* state_;
  std::chrono::steady_clock::time_point asked_;
  bool isInterrupted_ = false;
};

/// Calls `work(goesOn)` without the lock; what it throws comes out when the lock is back.
template <class WORK>
void WithoutLock(const WORK& work) {
  Unlocked unlocked;
  std::exception_ptr failure;
  try {
    work([&] { return unlocked.GoesOn(); });
  } catch (...) {
    failure = std::current_exception();
  }
  unlocked.TakeBack();
  if (failure) std::rethrow_exception(failure);
  unlocked.ThrowIfStopped();
}

/// Lets the calls of other threads come to an end before the interpreter does. Called once, when the module is imported.
void StopCallsAtExit();

}  // namespace vrx::python

#endif  // PYTHON_SRC_UNLOCKED_H_
