// A part of many samples to colours, as the batch functions over samples take it, block by block.

#ifndef VRXMATH_BATCH_COLOR_BLOCKS_H_
#define VRXMATH_BATCH_COLOR_BLOCKS_H_

#include <cstddef>
#include <cstdint>
#include <span>

#include <vrxmath/batch/batch_conditions.h>
#include <vrxmath/batch/color_space_kernels.h>
#include <vrxmath/batch/sample_colors.h>

namespace vrx {

/// From tristimulus values to the coordinates of a space, with chroma and hue where it has them.
inline SpaceKernel CoordinatesKernel(CoordinateSpace space) {
  const auto& kernels = CurrentKernels<ColorSpaceKernels>();
  switch (space) {
    case CoordinateSpace::kLab:
      return kernels.xyzToLab;
    case CoordinateSpace::kLuv:
      return kernels.xyzToLuv;
    case CoordinateSpace::kHunter:
      return kernels.xyzToHunter;
    case CoordinateSpace::kCam02Ucs:
    case CoordinateSpace::kCam16Ucs:
      return kernels.xyzToAppearance;
    case CoordinateSpace::kOklab:
      return kernels.xyzToOklab;
    case CoordinateSpace::kItp:
      return kernels.xyzToItp;
    default:
      return kernels.xyzToDin99;
  }
}

/// What an illuminant and observer contribute to a space; throws as RequireWeightTable.
inline SpaceTerms RequireTerms(CoordinateSpace space, vrxIlluminant illuminant, std::int32_t observer) {
  return SpaceTermsOf(space, RequireViewing(illuminant, observer));
}

/// Throws CInvalidArgException unless samples have colours under `illuminants` illuminants.
void RequireColorsUnder(const Samples& samples, std::size_t illuminants);

/// The tristimulus values of `count` samples from `from` on, under every illuminant.
void FillXyz(const Samples& samples, std::span<const vrxIlluminant> illuminants, std::int32_t observer,
             std::size_t from, std::size_t count, std::span<const BatchView<double, 3>> xyz);

/// Their L*a*b* under the illuminant at index `j`, whose terms may be those of any space, of those tristimulus values or as it was given.
void FillLab(const Samples& samples, std::size_t j, const SpaceTerms& terms, std::size_t from,
             const BatchView<const double, 3>& xyz, const BatchView<double, 5>& lab);

}  // namespace vrx

#endif  // VRXMATH_BATCH_COLOR_BLOCKS_H_
