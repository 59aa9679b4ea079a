// The kernels of appearance_batch.cpp, one set per instruction set (numeric/lane_kernels.h).

#ifndef VRXMATH_BATCH_APPEARANCE_KERNELS_H_
#define VRXMATH_BATCH_APPEARANCE_KERNELS_H_

#include <cstddef>

#include <vrxmath/batch/batch_table.h>
#include <vrxmath/colorimetry/adaptation_formulas.h>
#include <vrxmath/colorimetry/appearance_formulas.h>
#include <vrxmath/colorimetry/grade_formulas.h>
#include <vrxmath/numeric/lane_kernels.h>

namespace vrx {

struct AppearanceKernels {
  using Rows = const Column<const double>*;
  using Target = const Column<double>*;
  void (*adapt)(const Matrix3& matrix, Rows xyz, Target adapted, std::size_t count);
  void (*appearance)(const AppearanceTerms& terms, Rows xyz, Target appearance, std::size_t count);
  void (*xyz)(const AppearanceTerms& terms, Rows appearance, Target xyz, std::size_t count);
  /// Of one standard, or of one for every sample: ten columns.
  void (*grade)(GreyScale scale, const Lab& standard, Rows samples, Target grades, std::size_t count);
  void (*gradeOfPairs)(GreyScale scale, Rows standardsAndSamples, Target grades, std::size_t count);
};

}  // namespace vrx

#endif  // VRXMATH_BATCH_APPEARANCE_KERNELS_H_
