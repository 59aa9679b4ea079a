// The kernels of figure_batch.cpp, one set per instruction set (numeric/lane_kernels.h).

#ifndef VRXMATH_BATCH_FIGURE_KERNELS_H_
#define VRXMATH_BATCH_FIGURE_KERNELS_H_

#include <cstddef>

#include <vrxmath/batch/batch_table.h>
#include <vrxmath/colorimetry/density.h>
#include <vrxmath/numeric/lane_kernels.h>

namespace vrx {

struct FigureKernels {
  /// `curves`: 40 columns. To red, green, blue and visual.
  void (*densities)(const DensityWeights& weights, const Column<const double>* curves,
                    const Column<double>* densities, std::size_t count);
};

}  // namespace vrx

#endif  // VRXMATH_BATCH_FIGURE_KERNELS_H_
