// The kernels of color_value_batch.cpp, one set per instruction set (numeric/lane_kernels.h).

#ifndef VRXMATH_BATCH_COLOR_VALUE_KERNELS_H_
#define VRXMATH_BATCH_COLOR_VALUE_KERNELS_H_

#include <cstddef>
#include <cstdint>

#include <vrxmath/batch/batch_table.h>
#include <vrxmath/colorimetry/display_formulas.h>
#include <vrxmath/colorimetry/index_formulas.h>
#include <vrxmath/numeric/lane_kernels.h>

namespace vrx {

struct DisplayTerms {
  DisplayMatrix matrix;
  const DisplayCurve* curve;
};

struct ColorValueKernels {
  void (*index)(const IndexTerms& terms, const Column<const double>* xyz, const Column<double>& values,
                std::size_t count);
  /// To red, green, blue; and whether the display can show the colour as a fourth.
  void (*display)(const DisplayTerms& terms, const Column<const double>* xyz, const Column<std::uint8_t>* rgb,
                  std::size_t count);
  void (*displayAndFlag)(const DisplayTerms& terms, const Column<const double>* xyz,
                         const Column<std::uint8_t>* rgbAndFlag, std::size_t count);
};

}  // namespace vrx

#endif  // VRXMATH_BATCH_COLOR_VALUE_KERNELS_H_
