// The kernels of tristimulus_batch.cpp, one per instruction set (numeric/lane_kernels.h).

#ifndef VRXMATH_BATCH_TRISTIMULUS_KERNELS_H_
#define VRXMATH_BATCH_TRISTIMULUS_KERNELS_H_

#include <cstddef>

#include <vrxmath/numeric/lane_kernels.h>

namespace vrx {

/// Where the tristimulus values of one illuminant go, and the weights that make them.
struct TristimulusTarget {
  const double* weights;  ///< 40 for X, 40 for Y, 40 for Z
  double* first[3];
  std::ptrdiff_t stride;
};

struct TristimulusKernels {
  void (*fromDouble)(const double* curves, std::ptrdiff_t stride, std::size_t count,
                     const TristimulusTarget* targets, std::size_t targetCount);
  void (*fromFloat)(const float* curves, std::ptrdiff_t stride, std::size_t count,
                    const TristimulusTarget* targets, std::size_t targetCount);
};

}  // namespace vrx

#endif  // VRXMATH_BATCH_TRISTIMULUS_KERNELS_H_
