#include <vrxmath/batch/color_space_kernels.h>

#include <vrxmath/batch/lane_rows.h>
#include <vrxmath/colorimetry/space_formulas.h>

namespace vrx {
namespace {

using Rows = const Column<const double>*;
using Target = const Column<double>*;

// Writes coordinates, unset where the mask says so.
template <std::size_t kOut, class MASK>
VRX_LANE_INLINE void StoreLab(const LabOf<Lanes>& lab, MASK unset, Lanes* y) {
  const Lanes none = kUnset;
  y[0] = Select(unset, none, lab.L);
  y[1] = Select(unset, none, lab.a);
  y[2] = Select(unset, none, lab.b);
  if constexpr (kOut == 5) {
    y[3] = Select(unset, none, lab.C);
    y[4] = Select(unset, none, lab.h);
  }
}

template <class MASK>
VRX_LANE_INLINE void StoreXyz(const XyzOf<Lanes>& xyz, MASK unset, Lanes* y) {
  const Lanes none = kUnset;
  y[0] = Select(unset, none, xyz.X);
  y[1] = Select(unset, none, xyz.Y);
  y[2] = Select(unset, none, xyz.Z);
}

// FORMULA::Of(viewing, three numbers): coordinates of tristimulus values.
template <class FORMULA, std::size_t kOut>
void FromXyz(const Viewing& viewing, Rows from, Target to, std::size_t count) {
  OverRows<Widths<3>, Widths<kOut>>(from, to, count, [viewing](const Lanes* x, Lanes* y) VRX_LANE_LAMBDA {
    const XyzOf<Lanes> xyz = {x[0], x[1], x[2]};
    StoreLab<kOut>(FORMULA::Of(viewing, xyz), IsUnset(xyz), y);
  });
}

template <class FORMULA>
void ToXyz(const Viewing& viewing, Rows from, Target to, std::size_t count) {
  OverRows<Widths<3>, Widths<3>>(from, to, count, [viewing](const Lanes* x, Lanes* y) VRX_LANE_LAMBDA {
    const LabOf<Lanes> lab = {x[0], x[1], x[2], x[0], x[0]};  // chroma and hue are not read
    StoreXyz(FORMULA::Of(viewing, lab), IsUnset(x[0]) & IsUnset(x[1]) & IsUnset(x[2]), y);
  });
}

struct LabOfXyz {
  static VRX_LANE_INLINE LabOf<Lanes> Of(const Viewing& v, const XyzOf<Lanes>& xyz) {
    return XyzToLab(xyz, v.white);
  }
};
struct LabOnlyOfXyz {
  static VRX_LANE_INLINE LabOf<Lanes> Of(const Viewing& v, const XyzOf<Lanes>& xyz) {
    return XyzToLabOnly(xyz, v.white);
  }
};
struct LuvOfXyz {
  static VRX_LANE_INLINE LabOf<Lanes> Of(const Viewing& v, const XyzOf<Lanes>& xyz) {
    return XyzToLuv(xyz, v.white);
  }
};
struct LuvOnlyOfXyz {
  static VRX_LANE_INLINE LabOf<Lanes> Of(const Viewing& v, const XyzOf<Lanes>& xyz) {
    return XyzToLuvOnly(xyz, v.white);
  }
};
struct HunterOfXyz {
  static VRX_LANE_INLINE LabOf<Lanes> Of(const Viewing& v, const XyzOf<Lanes>& xyz) {
    return XyzToHunter(xyz, v);
  }
};
struct XyzOfLab {
  static VRX_LANE_INLINE XyzOf<Lanes> Of(const Viewing& v, const LabOf<Lanes>& lab) {
    return LabToXyz(lab, v.white);
  }
};
struct XyzOfLuv {
  static VRX_LANE_INLINE XyzOf<Lanes> Of(const Viewing& v, const LabOf<Lanes>& luv) {
    return LuvToXyz(luv, v.white);
  }
};
struct XyzOfHunter {
  static VRX_LANE_INLINE XyzOf<Lanes> Of(const Viewing& v, const LabOf<Lanes>& lab) {
    return HunterToXyz(lab, v);
  }
};

void ChromaHueOfRows(const Viewing&, Rows from, Target to, std::size_t count) {
  OverRows<Widths<3>, Widths<5>>(from, to, count, [](const Lanes* x, Lanes* y) VRX_LANE_LAMBDA {
    LabOf<Lanes> lab = {x[0], x[1], x[2], x[0], x[0]};
    FillChromaHue(lab);
    StoreLab<5>(lab, IsUnset(x[0]) & IsUnset(x[1]) & IsUnset(x[2]), y);
  });
}

}  // namespace

template <>
const ColorSpaceKernels& KernelsOf<ColorSpaceKernels, VRX_LANES>() {
  static constexpr ColorSpaceKernels kKernels = {
      &FromXyz<LabOfXyz, 5>,    &FromXyz<LabOnlyOfXyz, 3>, &ToXyz<XyzOfLab>,
      &FromXyz<LuvOfXyz, 5>,    &FromXyz<LuvOnlyOfXyz, 3>, &ToXyz<XyzOfLuv>,
      &FromXyz<HunterOfXyz, 5>, &FromXyz<HunterOfXyz, 3>,  &ToXyz<XyzOfHunter>,
      &ChromaHueOfRows,
  };
  return kKernels;
}

}  // namespace vrx
