// The nearest standards of a colour in a library of many, by a difference system, exactly.
//
//   std::vector<NearestMatch> matches(10 * trialCount);
//   FindNearestBatch(settings, 45.0, trials, libraries, 10, matches);   // one batch an illuminant
//
// Under several illuminants a standard is as far away as it is under the worst of them, so that a metamer, which matches
// under one lamp only, is not taken for a match.

#ifndef VRXMATH_BATCH_NEAREST_H_
#define VRXMATH_BATCH_NEAREST_H_

#include <cstddef>
#include <span>

#include <vrxmath/batch/batch_run.h>
#include <vrxmath/batch/difference_batch.h>
#include <vrxmath/colorimetry/difference_systems.h>
#include <vrxmath/export.h>
#include <vrxmath/foundation/numbers.h>

namespace vrx {

/// One of the nearest standards.
struct NearestMatch {
  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);
  std::size_t index = kNone;   ///< of the standard in its library; kNone where there are fewer standards
  double difference = kUnset;  ///< total difference, the largest of those under the illuminants
};

/// The nearest of n standards to each of m trials, nearest first; of equally near ones the first in the library.
/// In:      `trials` and `libraries`: one batch an illuminant, of m and of n colours, which hold what the system reads
///          (ColorBatch); the library's colours are the standards of the differences. `angle` as for DifferenceBatch.
///          `count`: how many to find for each, at least 1.
/// Out:     `matches`: m x count. A standard that is unset, or whose difference is NaN, under some illuminant is never
///          found; a trial that is unset finds none.
/// Errors:  CInvalidArgException, before anything is written, for an unknown system, no illuminant, a view that is missing,
///          and counts that do not fit.
/// False when the progress callback (rows are trials) stopped it.
VRX_API bool FindNearestBatch(const CDifferenceSettings& settings, double angle,
                              std::span<const ColorBatch> trials, std::span<const ColorBatch> libraries,
                              std::size_t count, std::span<NearestMatch> matches, const BatchRun& run = {});

}  // namespace vrx

#endif  // VRXMATH_BATCH_NEAREST_H_
