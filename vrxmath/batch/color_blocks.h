// A part of many samples to colours, as the batch functions over samples take it, block by block.

#ifndef VRXMATH_BATCH_COLOR_BLOCKS_H_
#define VRXMATH_BATCH_COLOR_BLOCKS_H_

#include <cstddef>
#include <cstdint>
#include <span>

#include <vrxmath/batch/color_space_kernels.h>
#include <vrxmath/batch/sample_colors.h>

namespace vrx {

/// From tristimulus values to the coordinates of a space, with chroma and hue where it has them.
inline SpaceKernel CoordinatesKernel(CoordinateSpace space) {
  const auto& kernels = CurrentKernels<ColorSpaceKernels>();
  if (space == CoordinateSpace::kHunter) return kernels.xyzToHunter;
  return space == CoordinateSpace::kLuv ? kernels.xyzToLuv : kernels.xyzToLab;
}

/// Throws CInvalidArgException unless samples have colours under `illuminants` illuminants.
void RequireColorsUnder(const Samples& samples, std::size_t illuminants);

/// The tristimulus values of `count` samples from `from` on, under every illuminant.
void FillXyz(const Samples& samples, std::span<const vrxIlluminant> illuminants, std::int32_t observer,
             std::size_t from, std::size_t count, std::span<const BatchView<double, 3>> xyz);

/// Their L*a*b* under the illuminant at index `j`, of those tristimulus values or as it was given.
void FillLab(const Samples& samples, std::size_t j, const Viewing& viewing, std::size_t from,
             const BatchView<const double, 3>& xyz, const BatchView<double, 5>& lab);

}  // namespace vrx

#endif  // VRXMATH_BATCH_COLOR_BLOCKS_H_
