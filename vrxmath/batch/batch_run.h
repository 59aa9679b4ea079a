// How a batch function is run: on the calling thread, or on several; with somebody who watches and may stop it.

#ifndef VRXMATH_BATCH_BATCH_RUN_H_
#define VRXMATH_BATCH_BATCH_RUN_H_

#include <cstddef>
#include <functional>

#include <vrxmath/export.h>

namespace vrx {

/// How a batch function is run. By default on the calling thread alone: the library starts no thread unless it is asked.
/// Results do not depend on the count of threads.
struct BatchRun {
  /// Threads that work, the calling one included; 0: as many as the machine has cores.
  unsigned threads = 1;
  /// Called on the calling thread, at least once, with the count of rows that are done, of which other threads may add the
  /// last ones after its last call. False stops the work: the
  /// function returns false unless it was done already, and which rows were written is not defined. What it throws
  /// comes out of the function once every thread has stopped.
  std::function<bool(std::size_t done)> progress;
};

/// Cores of the machine, at least 1.
VRX_API unsigned CoreCount() noexcept;

/// Calls `work(from, count)` for blocks that cover `rows` rows, on the threads that `run` asks for. Blocks begin at
/// multiples of `blockRows`, whatever the count of threads. Where the system starts no more threads those that run do all
/// the work. What `work` throws comes out once every thread has stopped; of several blocks that throw, from the first one.
/// Returns false when the progress callback stopped it.
VRX_API bool ForEachBlock(const BatchRun& run, std::size_t rows, std::size_t blockRows,
                          const std::function<void(std::size_t from, std::size_t count)>& work);

}  // namespace vrx

#endif  // VRXMATH_BATCH_BATCH_RUN_H_
