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
#include <cstdint>
#include <map>
#include <span>
#include <vector>

#include <vrxmath/batch/batch_run.h>
#include <vrxmath/batch/difference_batch.h>
#include <vrxmath/batch/sample_colors.h>
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

/// Standards of several measuring geometries. A sample looks among those of its own geometry and those of which nobody said any;
/// one of which nobody said it looks among all.
class VRX_API StandardsByGeometry {
 public:
  /// Keeps references to both. `geometries`: a code of the library for each standard, below 0 where nobody said it; codes that the
  /// library does not have are geometries, too.
  StandardsByGeometry(const ColorTable& standards, const std::vector<std::int32_t>& geometries);

  /// The nearest standards of the samples, as FindNearestBatch gives them, at the aspecular angle of their geometries, or `angle`
  /// where they have none. A sample without a standard of its geometry finds none. Throws CInvalidArgException as that does, and for
  /// other counts of geometries than of colours. False when the progress callback stopped it.
  bool Find(const CDifferenceSettings& settings, double angle, const ColorTable& samples,
            std::span<const std::int32_t> geometries, std::size_t count, std::span<NearestMatch> matches,
            const BatchRun& run = {});

 private:
  struct Group {
    std::vector<std::size_t> rows;  // of the standards; empty for all of them
    ColorTable colors;
    std::vector<ColorBatch> batches;
  };
  const Group& GroupOf(std::int32_t geometry);

  const ColorTable& standards_;
  const std::vector<std::int32_t>& geometries_;
  std::map<std::int32_t, Group> groups_;  // by geometry, -1 for none
};

}  // namespace vrx

#endif  // VRXMATH_BATCH_NEAREST_H_
