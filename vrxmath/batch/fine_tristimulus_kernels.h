// The kernel of fine_tristimulus_batch.cpp, one per instruction set (numeric/lane_kernels.h).

#ifndef VRXMATH_BATCH_FINE_TRISTIMULUS_KERNELS_H_
#define VRXMATH_BATCH_FINE_TRISTIMULUS_KERNELS_H_

#include <cstddef>

#include <vrxmath/numeric/lane_kernels.h>

namespace vrx {

/// Sums that are made side by side.
inline constexpr std::size_t kFineSums = 8;

struct FineTristimulusKernels {
  /// The weighted sums of `count` curves of `samples` numbers, one behind the other: kFineSums for each curve. `weights`: kFineSums for
  /// each sample. A sum runs from the first sample up, a product at a time.
  void (*sum)(const double* curves, std::size_t samples, std::size_t count, const double* weights,
              double* sums);
};

}  // namespace vrx

#endif  // VRXMATH_BATCH_FINE_TRISTIMULUS_KERNELS_H_
