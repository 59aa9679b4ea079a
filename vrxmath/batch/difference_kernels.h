// The kernels of the difference systems, one set per instruction set (numeric/lane_kernels.h).

#ifndef VRXMATH_BATCH_DIFFERENCE_KERNELS_H_
#define VRXMATH_BATCH_DIFFERENCE_KERNELS_H_

#include <cstddef>

#include <vrxmath/batch/batch_table.h>
#include <vrxmath/batch/difference_batch.h>
#include <vrxmath/colorimetry/difference_table.h>
#include <vrxmath/numeric/lane_kernels.h>

namespace vrx {

/// X, Y, Z, L, a, b, C, h. Those that a system does not read may have no address.
struct ColorColumns {
  Column<const double> of[8];
};

/// Standards and samples, one of which may be the same colour for all rows, to seven columns or to the total's.
using DifferenceKernel = void (*)(const DifferenceContext& context, const ColorColumns& standards,
                                  const ColorColumns& samples, const Column<double>* out, std::size_t count);

struct DifferenceKernels {
  struct System {
    bool readsXyz, readsLab;
    DifferenceKernel pairs, oneStandard;  ///< seven elements
    DifferenceKernel totals, totalsOneStandard, totalsOneSample;
  };
  System systems[kDifferenceSystems];
  System ownFormulas[kDifferenceSystems];  ///< by the formula that the system's name promises

  /// The kernels of the settings' system, which must exist.
  const System& Of(const CDifferenceSettings& settings) const {
    return settings.ownFormula ? ownFormulas[settings.system] : systems[settings.system];
  }
};

/// The columns of `count` colours from `from` on; a batch of one colour is taken as it is.
inline ColorColumns ColumnsOf(const ColorBatch& colors, std::size_t from, std::size_t count) {
  ColorColumns columns{};
  const auto append = [&](const auto& view, std::size_t at) {
    if (view.empty()) return;
    const auto part = view.size() == 1 ? ColumnsOf(view, 0, 1) : ColumnsOf(view, from, count);
    for (std::size_t k = 0; k < part.size(); ++k) columns.of[at + k] = part[k];
  };
  append(colors.xyz, 0);
  append(colors.lab, 3);
  return columns;
}

}  // namespace vrx

#endif  // VRXMATH_BATCH_DIFFERENCE_KERNELS_H_
