#include <vrxmath/batch/colorant_kernels.h>

#include <vrxmath/batch/lane_rows.h>
#include <vrxmath/colorant/optical_formulas.h>

namespace vrx {
namespace {

using Settings = StrengthSumSettings;

// What was computed from a number; a NaN stays one, where the formulas over single numbers have a fixed value for it.
VRX_LANE_INLINE Lanes UnlessNaN(Lanes x, Lanes computed) {
  return Select(x == x, computed, x);
}

struct Ks {
  static VRX_LANE_INLINE Lanes Of(const Settings&, Lanes R) { return UnlessNaN(R, KsOfReflectance(R)); }
};
struct Density {
  static VRX_LANE_INLINE Lanes Of(const Settings&, Lanes R) { return UnlessNaN(R, DensityOfReflectance(R)); }
};
struct ToInternal {
  static VRX_LANE_INLINE Lanes Of(const Settings& s, Lanes R) {
    return InternalReflectance(R, s.k1, s.k2, s.mode);
  }
};
struct ToMeasured {
  static VRX_LANE_INLINE Lanes Of(const Settings& s, Lanes R) {
    return MeasuredReflectance(R, s.k1, s.k2, s.mode);
  }
};

template <class TRANSFORM>
void Transform(const Settings& settings, const Column<const double>* from, const Column<double>* to,
               std::size_t count) {
  OverRows<Widths<1>, Widths<1>>(from, to, count, [settings](const Lanes* x, Lanes* y) VRX_LANE_LAMBDA {
    y[0] = TRANSFORM::Of(settings, x[0]);
  });
}

// The internal reflectance of a measured sample, both in percent.
VRX_LANE_INLINE Lanes InternalPercent(const Settings& s, Lanes percent) {
  const Lanes internal = CorrectedSample(InternalReflectance(percent * 0.01, s.k1, s.k2, s.mode));
  return Select(IsUnset(internal), internal, internal * 100.0);
}

void StrengthSum(const Settings& settings, const Column<const double>* from, const Column<double>* to,
                 std::size_t count) {
  OverRows<Widths<40>, Widths<1>>(from, to, count, [settings](const Lanes* x, Lanes* y) VRX_LANE_LAMBDA {
    constexpr double kVanishing = 1e-7;
    Lanes sum = 0.0;
    for (std::int32_t i = settings.first; i <= settings.last; ++i) {
      const Lanes internal = InternalPercent(settings, x[i]);
      sum += UnlessNaN(x[i],
                       settings.useAbsorbance ? DensityOfReflectance(internal) : KsOfReflectance(internal));
    }
    y[0] = Select(Abs(sum) < kVanishing, Lanes(kVanishing), sum);
  });
}

}  // namespace

template <>
const ColorantKernels& KernelsOf<ColorantKernels, VRX_LANES>() {
  static constexpr ColorantKernels kKernels = {&Transform<Ks>, &Transform<Density>, &Transform<ToInternal>,
                                               &Transform<ToMeasured>, &StrengthSum};
  return kKernels;
}

}  // namespace vrx
