// The kernels of colorant_batch.cpp, one per instruction set (numeric/lane_kernels.h).

#ifndef VRXMATH_BATCH_COLORANT_KERNELS_H_
#define VRXMATH_BATCH_COLORANT_KERNELS_H_

#include <cstddef>

#include <vrxmath/batch/batch_table.h>
#include <vrxmath/batch/colorant_batch.h>
#include <vrxmath/numeric/lane_kernels.h>

namespace vrx {

/// One number to one; the settings give Saunderson's constants and mode where they are read.
using TransformKernel = void (*)(const StrengthSumSettings& settings, const Column<const double>* from,
                                 const Column<double>* to, std::size_t count);

struct ColorantKernels {
  TransformKernel ks, density, toInternal, toMeasured;
  TransformKernel strengthSum;  ///< from 40 columns
};

}  // namespace vrx

#endif  // VRXMATH_BATCH_COLORANT_KERNELS_H_
