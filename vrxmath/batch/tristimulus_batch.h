// Many reflectance curves to tristimulus values, for one or several illuminants in one pass over the curves.

#ifndef VRXMATH_BATCH_TRISTIMULUS_BATCH_H_
#define VRXMATH_BATCH_TRISTIMULUS_BATCH_H_

#include <cstddef>
#include <cstdint>
#include <span>

#include <vrxmath/batch/batch_run.h>
#include <vrxmath/batch/batch_view.h>
#include <vrxmath/colorimetry/illuminants.h>
#include <vrxmath/export.h>

namespace vrx {

/// n reflectance curves: percent at 360, 370 ... 750 nm, 40 samples a curve, curve after curve. `stride` is the distance
/// of two curves in samples, where something stands between them.
template <class SAMPLE>
struct CurveBatchOf {
  std::span<const SAMPLE> samples;
  std::size_t stride = 40;
};
using CurveBatch = CurveBatchOf<double>;
/// Single precision, as databases store curves; each sample is widened exactly.
using CurveBatch32 = CurveBatchOf<float>;

/// n reflectance curves at their own interval of 5 or 1 nm: percent at 360, 365 ... or 361 ... 780 nm, 85 or 421 samples a curve, curve
/// after curve.
struct FineCurveBatch {
  std::span<const double> samples;
  std::int32_t interval = 5;
};

/// How many curves there are. Throws CInvalidArgException for a stride below 40, samples that make no whole curves, and an interval
/// other than 5 and 1.
[[nodiscard]] VRX_API std::size_t CurveCount(const CurveBatch& curves);
[[nodiscard]] VRX_API std::size_t CurveCount(const CurveBatch32& curves);
[[nodiscard]] VRX_API std::size_t CurveCount(const FineCurveBatch& curves);

/// Tristimulus values of n curves under each of m illuminants (ASTM E308, as CReflData::Tristimulus).
/// Out:     xyz[j]: X, Y, Z of every curve under illuminants[j]. Rows n x 3m are m views of 3 numbers with the stride 3m.
///          Unset for a curve that is unset (its first sample is).
/// Errors:  CInvalidArgException, before anything is written, when a count of xyz or of its rows does not fit, or an
///          illuminant and observer have no weighting table (the index message is not shown).
/// False when the progress callback stopped it.
VRX_API bool TristimulusBatch(std::span<const vrxIlluminant> illuminants, std::int32_t observer,
                              const CurveBatch& curves, std::span<const BatchView<double, 3>> xyz,
                              const BatchRun& run = {});
VRX_API bool TristimulusBatch(std::span<const vrxIlluminant> illuminants, std::int32_t observer,
                              const CurveBatch32& curves, std::span<const BatchView<double, 3>> xyz,
                              const BatchRun& run = {});

/// The same of curves at 5 or 1 nm by weights of their own (FineTristimulus).
VRX_API bool TristimulusBatch(std::span<const vrxIlluminant> illuminants, std::int32_t observer,
                              const FineCurveBatch& curves, std::span<const BatchView<double, 3>> xyz,
                              const BatchRun& run = {});

/// The same as the first for one illuminant.
VRX_API bool TristimulusBatch(vrxIlluminant illuminant, std::int32_t observer, const CurveBatch& curves,
                              const BatchView<double, 3>& xyz, const BatchRun& run = {});
VRX_API bool TristimulusBatch(vrxIlluminant illuminant, std::int32_t observer, const CurveBatch32& curves,
                              const BatchView<double, 3>& xyz, const BatchRun& run = {});

}  // namespace vrx

#endif  // VRXMATH_BATCH_TRISTIMULUS_BATCH_H_
