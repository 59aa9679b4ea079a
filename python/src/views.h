// Rows of Python arrays as the views of the batch functions.

#ifndef PYTHON_SRC_VIEWS_H_
#define PYTHON_SRC_VIEWS_H_

#include <algorithm>
#include <cstddef>
#include <span>

#include <vrxmath/batch/batch_view.h>
#include <vrxmath/batch/sample_colors.h>
#include <vrxmath/batch/tristimulus_batch.h>
#include <vrxmath/colorimetry/color_records.h>
#include <vrxmath/colorimetry/weighting.h>

#include "python/src/arrays.h"

namespace vrx::python {

inline constexpr std::size_t kSamples = 40;  ///< of a curve

/// `count` rows of an argument of doubles from `from` on.
template <std::size_t kWidth>
BatchView<const double, kWidth> ViewOf(const Rows& rows, std::size_t from, std::size_t count) {
  return {std::span(rows.Doubles() + from * rows.stride, (count - 1) * rows.stride + kWidth), rows.stride};
}

/// Rows of a block; one that stands for all is one row.
template <std::size_t kWidth>
BatchView<const double, kWidth> ViewOf(const RowBlock& rows) {
  return {std::span(rows.data, (rows.count - 1) * rows.stride + kWidth), rows.stride};
}

/// The same rows of a contiguous result.
template <std::size_t kWidth>
BatchView<double, kWidth> TargetOf(double* data, std::size_t from, std::size_t count) {
  return {std::span(data + from * kWidth, count * kWidth)};
}

/// The curve of `kSamples` numbers.
inline CReflData CurveAt(const double* samples) {
  CReflData curve;
  std::copy_n(samples, kSamples, curve.GetData());
  return curve;
}

/// Rows of curves for sums at 5 or 1 nm (CurvesForSums).
inline bool AreFine(const Rows& rows) {
  return rows.width == static_cast<std::size_t>(FineSamples(5)) ||
         rows.width == static_cast<std::size_t>(FineSamples(1));
}

/// `samples`: one behind the other, of rows that are fine.
inline FineCurveBatch FineBatch(const Rows& rows, std::span<const double> samples) {
  return {samples, (kPowerSamples - 1) / static_cast<std::int32_t>(rows.width - 1)};
}
inline FineCurveBatch FineBatch(const Rows& rows, std::size_t from, std::size_t count) {
  return FineBatch(rows, std::span(rows.Doubles() + from * rows.width, count * rows.width));
}

/// `count` rows of an argument of curves from `from` on, as the library takes samples.
inline Samples SamplesOf(const Rows& rows, std::size_t from, std::size_t count) {
  if (AreFine(rows)) return FineBatch(rows, from, count);
  if (count == 0) return CurveBatch{};
  const std::size_t begin = from * rows.stride, length = (count - 1) * rows.stride + kSamples;
  if (rows.isFloat) return CurveBatch32{std::span(rows.Floats() + begin, length), rows.stride};
  return CurveBatch{std::span(rows.Doubles() + begin, length), rows.stride};
}

/// Curves of either precision to the tristimulus values of all illuminants.
template <class ILLUMINANTS, class VIEWS>
void TristimulusOf(const Rows& curves, const ILLUMINANTS& illuminants, std::int32_t observer,
                   const VIEWS& xyz, std::size_t from, std::size_t count) {
  const std::size_t begin = from * curves.stride, length = (count - 1) * curves.stride + kSamples;
  if (AreFine(curves)) {
    TristimulusBatch(illuminants, observer, FineBatch(curves, from, count), xyz);
  } else if (curves.isFloat) {
    TristimulusBatch(illuminants, observer,
                     CurveBatch32{std::span(curves.Floats() + begin, length), curves.stride}, xyz);
  } else {
    TristimulusBatch(illuminants, observer,
                     CurveBatch{std::span(curves.Doubles() + begin, length), curves.stride}, xyz);
  }
}

}  // namespace vrx::python

#endif  // PYTHON_SRC_VIEWS_H_
