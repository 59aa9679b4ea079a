#include <vrxmath/batch/color_space_batch.h>

#include <vrxmath/batch/batch_conditions.h>
#include <vrxmath/batch/color_blocks.h>
#include <vrxmath/batch/color_space_kernels.h>
#include <vrxmath/colorimetry/difference_systems.h>

namespace vrx {
namespace {

constexpr std::size_t kSpaceBlockRows = 8192;

template <std::size_t kIn, std::size_t kOut>
bool Convert(SpaceKernel kernel, const SpaceTerms& terms, const BatchView<const double, kIn>& from,
             const BatchView<double, kOut>& to, const BatchRun& run) {
  RequireSameCount(from.size(), to.size());
  return ForEachBlock(run, from.size(), kSpaceBlockRows, [&](std::size_t first, std::size_t count) {
    kernel(terms, ColumnsOf(from, first, count).data(), ColumnsOf(to, first, count).data(), count);
  });
}

const ColorSpaceKernels& SpacesInUse() {
  return CurrentKernels<ColorSpaceKernels>();
}

// The terms of the spaces that need nothing but the white.
SpaceTerms Under(vrxIlluminant illuminant, std::int32_t observer) {
  return RequireTerms(CoordinateSpace::kLab, illuminant, observer);
}

}  // namespace

bool XyzToLabBatch(vrxIlluminant illuminant, std::int32_t observer, const BatchView<const double, 3>& xyz,
                   const BatchView<double, 5>& lab, const BatchRun& run) {
  return Convert(SpacesInUse().xyzToLab, Under(illuminant, observer), xyz, lab, run);
}
bool XyzToLabOnlyBatch(vrxIlluminant illuminant, std::int32_t observer, const BatchView<const double, 3>& xyz,
                       const BatchView<double, 3>& lab, const BatchRun& run) {
  return Convert(SpacesInUse().xyzToLabOnly, Under(illuminant, observer), xyz, lab, run);
}
bool LabToXyzBatch(vrxIlluminant illuminant, std::int32_t observer, const BatchView<const double, 3>& lab,
                   const BatchView<double, 3>& xyz, const BatchRun& run) {
  return Convert(SpacesInUse().labToXyz, Under(illuminant, observer), lab, xyz, run);
}

bool XyzToLuvBatch(vrxIlluminant illuminant, std::int32_t observer, const BatchView<const double, 3>& xyz,
                   const BatchView<double, 5>& luv, const BatchRun& run) {
  return Convert(SpacesInUse().xyzToLuv, Under(illuminant, observer), xyz, luv, run);
}
bool XyzToLuvOnlyBatch(vrxIlluminant illuminant, std::int32_t observer, const BatchView<const double, 3>& xyz,
                       const BatchView<double, 3>& luv, const BatchRun& run) {
  return Convert(SpacesInUse().xyzToLuvOnly, Under(illuminant, observer), xyz, luv, run);
}
bool LuvToXyzBatch(vrxIlluminant illuminant, std::int32_t observer, const BatchView<const double, 3>& luv,
                   const BatchView<double, 3>& xyz, const BatchRun& run) {
  return Convert(SpacesInUse().luvToXyz, Under(illuminant, observer), luv, xyz, run);
}

bool XyzToHunterBatch(vrxIlluminant illuminant, std::int32_t observer, const BatchView<const double, 3>& xyz,
                      const BatchView<double, 3>& lab, const BatchRun& run) {
  return Convert(SpacesInUse().xyzToHunterOnly, Under(illuminant, observer), xyz, lab, run);
}
bool HunterToXyzBatch(vrxIlluminant illuminant, std::int32_t observer, const BatchView<const double, 3>& lab,
                      const BatchView<double, 3>& xyz, const BatchRun& run) {
  return Convert(SpacesInUse().hunterToXyz, Under(illuminant, observer), lab, xyz, run);
}

bool ChromaHueBatch(const BatchView<double, 5>& lab, const BatchRun& run) {
  const BatchView<const double, 5> source = lab;
  return Convert(SpacesInUse().chromaHue, {}, source.Numbers<0, 3>(), lab, run);
}

bool CoordinatesBatch(std::int32_t system, vrxIlluminant illuminant, std::int32_t observer,
                      const BatchView<const double, 3>& xyz, const BatchView<double, 5>& lab,
                      const BatchRun& run) {
  const DifferenceSystem* const row = FindDifferenceSystem(system);
  if (row == nullptr) throw CInvalidArgException();
  const SpaceTerms terms = RequireTerms(row->space, illuminant, observer);
  return Convert(CoordinatesKernel(row->space), terms, xyz, lab, run);
}

}  // namespace vrx
