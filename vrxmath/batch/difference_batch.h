// Colour differences of many pairs, in any of the difference systems, as ComputeDifference gives them for one.

#ifndef VRXMATH_BATCH_DIFFERENCE_BATCH_H_
#define VRXMATH_BATCH_DIFFERENCE_BATCH_H_

#include <cstddef>
#include <cstdint>
#include <span>

#include <vrxmath/batch/batch_run.h>
#include <vrxmath/batch/batch_view.h>
#include <vrxmath/colorimetry/difference_systems.h>
#include <vrxmath/export.h>

namespace vrx {

/// Many colours under one illuminant and observer. A system reads the tristimulus values (FMC-2, GE-PQS II), the
/// coordinates (most), or both (XYZ/Yxy); what it does not read may be an empty view. The coordinates are L, a, b, C and h
/// in degrees in the space in which the system judges (CoordinatesBatch).
/// A colour is unset when X, Y, Z are, or L, a, b for a system that reads coordinates alone.
struct ColorBatch {
  BatchView<const double, 3> xyz;
  BatchView<const double, 5> lab;
};

/// Differences of n samples from their standards.
/// In:      `standards`: one for all samples, or one each; `angle`: the aspecular measuring angle in degrees, for Audi and
///          DIN6175.
/// Out:     seven elements a row in the order of CDeltaValues; all unset when either colour is.
/// Errors:  CInvalidArgException, before anything is written, for an unknown system, for a view that the system reads and
///          that is missing, and for counts that do not fit.
/// False when the progress callback stopped it.
VRX_API bool DifferenceBatch(const CDifferenceSettings& settings, double angle, const ColorBatch& standards,
                             const ColorBatch& samples, const BatchView<double, 7>& differences,
                             const BatchRun& run = {});

/// The total differences alone, which is faster. `standards` and `samples`: n, or one for all.
VRX_API bool TotalDifferenceBatch(const CDifferenceSettings& settings, double angle,
                                  const ColorBatch& standards, const ColorBatch& samples,
                                  std::span<double> totals, const BatchRun& run = {});

}  // namespace vrx

#endif  // VRXMATH_BATCH_DIFFERENCE_BATCH_H_
