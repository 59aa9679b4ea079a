// The kernels of color_space_batch.cpp, one per instruction set (numeric/lane_kernels.h).

#ifndef VRXMATH_BATCH_COLOR_SPACE_KERNELS_H_
#define VRXMATH_BATCH_COLOR_SPACE_KERNELS_H_

#include <cstddef>

#include <vrxmath/batch/batch_table.h>
#include <vrxmath/colorimetry/uniform_space_formulas.h>
#include <vrxmath/numeric/lane_kernels.h>

namespace vrx {

using SpaceKernel = void (*)(const SpaceTerms& terms, const Column<const double>* from,
                             const Column<double>* to, std::size_t count);

struct ColorSpaceKernels {
  SpaceKernel xyzToLab, xyzToLabOnly, labToXyz;
  SpaceKernel xyzToLuv, xyzToLuvOnly, luvToXyz;
  SpaceKernel xyzToHunter, xyzToHunterOnly, hunterToXyz;
  SpaceKernel xyzToDin99, xyzToAppearance, xyzToOklab, xyzToItp;  ///< with chroma and hue
  SpaceKernel chromaHue;
};

}  // namespace vrx

#endif  // VRXMATH_BATCH_COLOR_SPACE_KERNELS_H_
