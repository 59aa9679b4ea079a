// The kernels of judgement_batch.cpp, one set per instruction set (numeric/lane_kernels.h).

#ifndef VRXMATH_BATCH_JUDGEMENT_KERNELS_H_
#define VRXMATH_BATCH_JUDGEMENT_KERNELS_H_

#include <cstddef>
#include <cstdint>

#include <vrxmath/batch/batch_table.h>
#include <vrxmath/numeric/lane_kernels.h>
#include <vrxmath/tolerance/ellipse_formulas.h>
#include <vrxmath/tolerance/interval.h>
#include <vrxmath/tolerance/verdict.h>

namespace vrx {

/// The intervals of a box, and those scaled by the warning factor.
struct BoxLimits {
  Interval tolerance[3], warning[3];
};

struct JudgementKernels {
  /// Three components to a verdict.
  void (*box)(const BoxLimits& limits, const Column<const double>* differences,
              const Column<Verdict>& verdicts, std::size_t count);
  void (*ellipse)(const EllipseTerms& ellipse, double warning, const Column<const double>* differences,
                  const Column<Verdict>& verdicts, std::size_t count);
  void (*total)(double limit, double warningFactor, const Column<const double>& totals,
                const Column<Verdict>& verdicts, std::size_t count);
  /// L*, a*, b* of the trial, dL*, da*, db* to three words.
  void (*shade)(const Column<const double>* colors, const Column<std::int32_t>* words, std::size_t count);
};

}  // namespace vrx

#endif  // VRXMATH_BATCH_JUDGEMENT_KERNELS_H_
