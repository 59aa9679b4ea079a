// What is to be judged or searched, as curves or as colours, and its colours under several illuminants.

#ifndef VRXMATH_BATCH_SAMPLE_COLORS_H_
#define VRXMATH_BATCH_SAMPLE_COLORS_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <variant>
#include <vector>

#include <vrxmath/batch/batch_run.h>
#include <vrxmath/batch/batch_view.h>
#include <vrxmath/batch/difference_batch.h>
#include <vrxmath/batch/tristimulus_batch.h>
#include <vrxmath/colorimetry/illuminants.h>
#include <vrxmath/colorimetry/values.h>
#include <vrxmath/export.h>

namespace vrx {

/// Colours without curves, as X, Y, Z: a view for each illuminant, or one view that stands for all of them.
struct XyzSamples {
  std::span<const BatchView<const double, 3>> under;
};
/// The same as L*, a*, b*, which stay as they are; X, Y, Z follow from them.
struct LabSamples {
  std::span<const BatchView<const double, 3>> under;
};

/// Many samples of one kind, curves on the library's grid or at an interval of their own. A curve is unset when its first number is, a
/// colour when all of its numbers are.
using Samples = std::variant<CurveBatch, CurveBatch32, XyzSamples, LabSamples, FineCurveBatch>;

/// How many samples there are. Throws CInvalidArgException for curves that are not whole and for views of several lengths.
[[nodiscard]] VRX_API std::size_t SampleCount(const Samples& samples);

/// Colours of n samples under m illuminants.
struct ColorTable {
  /// Colours under one illuminant.
  struct Under {
    std::vector<double> xyz;  ///< rows of X, Y, Z
    std::vector<double> lab;  ///< rows of the coordinates, chroma and hue in degrees
  };
  std::vector<Under> under;  ///< by illuminant

  std::size_t size() const { return under.empty() ? 0 : under.front().lab.size() / 5; }
  /// A sample's colour under the illuminant at index `j`.
  Color At(std::size_t j, std::size_t sample) const {
    const double *x = &under[j].xyz[3 * sample], *l = &under[j].lab[5 * sample];
    return {{x[0], x[1], x[2]}, {l[0], l[1], l[2], l[3], l[4]}};
  }
  /// As the batch functions over colours read them, one batch an illuminant.
  std::vector<ColorBatch> Batches() const {
    std::vector<ColorBatch> batches;
    batches.reserve(under.size());
    for (const Under& colors : under) batches.push_back({colors.xyz, colors.lab});
    return batches;
  }
};

/// The colours of samples under several illuminants, in one pass over their curves.
/// In:      `system`: the difference system in whose space the coordinates are (CoordinatesBatch).
/// Out:     rows of an unset sample are unset. Empty when the progress callback stopped it.
/// Errors:  CInvalidArgException for an unknown system, an illuminant and observer without a weighting table, and counts that
///          do not fit.
[[nodiscard]] VRX_API ColorTable ColorsOf(const Samples& samples, std::int32_t system,
                                          std::span<const vrxIlluminant> illuminants, std::int32_t observer,
                                          const BatchRun& run = {});

}  // namespace vrx

#endif  // VRXMATH_BATCH_SAMPLE_COLORS_H_
