// Figures of many samples that laboratories report beside the difference: densities of print, Munsell notations, colour inconstancy.
//
// Errors of every function: CInvalidArgException, before anything is written, for counts that do not fit. Each returns false when
// the progress callback stopped it.

#ifndef VRXMATH_BATCH_FIGURE_BATCH_H_
#define VRXMATH_BATCH_FIGURE_BATCH_H_

#include <cstdint>
#include <span>

#include <vrxmath/batch/batch_run.h>
#include <vrxmath/batch/batch_view.h>
#include <vrxmath/batch/tristimulus_batch.h>
#include <vrxmath/colorimetry/density.h>
#include <vrxmath/colorimetry/single_figures.h>
#include <vrxmath/export.h>

namespace vrx {

/// Densities of every curve, as DensitiesOf: through red, green and blue, and visual. CInvalidArgException for an unknown status.
VRX_API bool DensityBatch(DensityStatus status, const CurveBatch& curves,
                          const BatchView<double, 4>& densities, const BatchRun& run = {});

/// Munsell notations of X, Y, Z under C and 2 degrees, as MunsellFromXyz: hue, value, chroma, and 1 where it is extrapolated, else 0.
/// On threads, not in lanes: every notation is found by steps of its own.
VRX_API bool MunsellBatch(const BatchView<const double, 3>& xyz, const BatchView<double, 4>& notations,
                          const BatchRun& run = {});

/// Colour inconstancy of every curve, as InconstancyIndex. CInvalidArgException for an unknown system and for a pair without
/// a weighting table.
VRX_API bool InconstancyBatch(vrxIlluminant reference, vrxIlluminant test, std::int32_t observer,
                              const CurveBatch& curves, const CDifferenceSettings& settings,
                              std::span<double> values,
                              AdaptationTransform transform = AdaptationTransform::kCat16,
                              const BatchRun& run = {});

}  // namespace vrx

#endif  // VRXMATH_BATCH_FIGURE_BATCH_H_
