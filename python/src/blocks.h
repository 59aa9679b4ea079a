// Batch calculations in blocks that stay in the cache, without the interpreter's lock: what a block wrote is brought into
// Python's form (NaN for unset) while it is still there.

#ifndef PYTHON_SRC_BLOCKS_H_
#define PYTHON_SRC_BLOCKS_H_

#include <algorithm>
#include <cstddef>
#include <limits>
#include <pybind11/pybind11.h>

#include <vrxmath/batch/batch_run.h>
#include <vrxmath/foundation/numbers.h>

#include "python/src/unlocked.h"

namespace vrx::python {

namespace py = pybind11;

inline constexpr std::size_t kBlockRows = 2048;

/// Throws ValueError for a negative count of threads.
inline void RequireThreads(int threads) {
  if (threads < 0) throw py::value_error("threads: 0 (all cores) or a positive number is expected");
}

/// Calls `work(from, count)` over all rows on the threads that were asked for (0: all cores). The first exception of a block
/// comes out once every thread has stopped; Ctrl+C stops them, too. Throws ValueError for a negative count of threads.
template <class WORK>
void InBlocks(std::size_t rows, int threads, const WORK& work) {
  RequireThreads(threads);
  WithoutLock([&](const auto& goesOn) {
    const BatchRun run{static_cast<unsigned>(threads), [&](std::size_t) { return goesOn(); }};
    ForEachBlock(run, rows, kBlockRows, work);
  });
}

inline void FillNaN(double* values, std::size_t count) {
  std::fill_n(values, count, std::numeric_limits<double>::quiet_NaN());
}

/// Whether the first `kNumbers` numbers of a row are unset.
template <std::size_t kNumbers>
bool IsUnsetRow(const double* row) {
  return std::all_of(row, row + kNumbers, [](double value) { return IsUnset(value); });
}

}  // namespace vrx::python

#endif  // PYTHON_SRC_BLOCKS_H_
