#include <vrxmath/batch/figure_kernels.h>

#include <vrxmath/batch/lane_rows.h>

namespace vrx {
namespace {

void DensityRows(const DensityWeights& given, const Column<const double>* curves,
                 const Column<double>* densities, std::size_t count) {
  OverRows<Widths<40>, Widths<4>>(
      curves, densities, count, [weights = given](const Lanes* x, Lanes* y) VRX_LANE_LAMBDA {
        const auto unset = IsUnset(x[0]);
        for (int filter = 0; filter < 4; ++filter) {
          const double* const w = weights.products[filter];
          Lanes light = 0.0;
          for (int i = 0; i < 40; ++i) light += w[i] * x[i];
          const auto none = unset | !(light > 0.0);
          const Lanes part = light / weights.whole[filter];
          y[filter] = Select(none, Lanes(kUnset), -Log10(Select(none, Lanes(1.0), part)));
        }
      });
}

}  // namespace

template <>
const FigureKernels& KernelsOf<FigureKernels, VRX_LANES>() {
  static constexpr FigureKernels kKernels = {&DensityRows};
  return kKernels;
}

}  // namespace vrx
