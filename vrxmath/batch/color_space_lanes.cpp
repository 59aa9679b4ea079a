#include <vrxmath/batch/color_space_kernels.h>

#include <vrxmath/batch/lane_rows.h>
#include <vrxmath/colorimetry/uniform_space_formulas.h>

namespace vrx {
namespace {

using Rows = const Column<const double>*;
using Target = const Column<double>*;

template <std::size_t kOut>
VRX_LANE_INLINE void StoreLab(const LabOf<Lanes>& lab, Lanes* y) {
  const Lanes numbers[5] = {lab.L, lab.a, lab.b, lab.C, lab.h};
  for (std::size_t k = 0; k < kOut; ++k) y[k] = numbers[k];
}

// FORMULA::Of(terms, three numbers): coordinates of tristimulus values.
template <class FORMULA, std::size_t kOut>
void FromXyz(const SpaceTerms& given, Rows from, Target to, std::size_t count) {
  OverRows<Widths<3>, Widths<kOut>>(from, to, count,
                                    [terms = given](const Lanes* x, Lanes* y) VRX_LANE_LAMBDA {
                                      const XyzOf<Lanes> xyz = {x[0], x[1], x[2]};
                                      StoreLab<kOut>(FORMULA::Of(terms, xyz), y);
                                      MarkUnset<kOut>(
                                          IsUnset(xyz.X), [&] { return IsUnset(xyz); }, y);
                                    });
}

// The same with chroma and hue, in two stages.
template <class FORMULA>
void FromXyzWithHue(const SpaceTerms& given, Rows from, Target to, std::size_t count) {
  const auto kernel = InStages<4>(
      [terms = given](const Lanes* x, Carried carried) VRX_LANE_LAMBDA {
        const XyzOf<Lanes> xyz = {x[0], x[1], x[2]};
        const LabOf<Lanes> lab = FORMULA::Of(terms, xyz);
        carried.Set(0, lab.L);
        carried.Set(1, lab.a);
        carried.Set(2, lab.b);
        carried.Set(3, Select(IsUnset(xyz), Lanes(1.0), Lanes(0.0)));
      },
      [](Carried carried, Lanes* y) VRX_LANE_LAMBDA {
        LabOf<Lanes> lab = {carried.Get(0), carried.Get(1), carried.Get(2), 0.0, 0.0};
        FillChromaHue(lab);
        StoreLab<5>(lab, y);
        MarkUnset<5>(carried.Get(3) != 0.0, y);
      });
  OverRows<Widths<3>, Widths<5>>(from, to, count, kernel);
}

template <class FORMULA>
void ToXyz(const SpaceTerms& given, Rows from, Target to, std::size_t count) {
  OverRows<Widths<3>, Widths<3>>(from, to, count, [terms = given](const Lanes* x, Lanes* y) VRX_LANE_LAMBDA {
    const LabOf<Lanes> lab = {x[0], x[1], x[2], x[0], x[0]};  // chroma and hue are not read
    const XyzOf<Lanes> xyz = FORMULA::Of(terms, lab);
    y[0] = xyz.X, y[1] = xyz.Y, y[2] = xyz.Z;
    MarkUnset<3>(
        IsUnset(x[0]), [&] { return AreUnset(x); }, y);
  });
}

struct LabOfXyz {
  static VRX_LANE_INLINE LabOf<Lanes> Of(const SpaceTerms& t, const XyzOf<Lanes>& xyz) {
    return XyzToLabOnly(xyz, t.viewing.white);
  }
};
struct LuvOfXyz {
  static VRX_LANE_INLINE LabOf<Lanes> Of(const SpaceTerms& t, const XyzOf<Lanes>& xyz) {
    return XyzToLuvOnly(xyz, t.viewing.white);
  }
};
struct HunterOfXyz {
  static VRX_LANE_INLINE LabOf<Lanes> Of(const SpaceTerms& t, const XyzOf<Lanes>& xyz) {
    return XyzToHunter(xyz, t.viewing);
  }
};
struct Din99OfXyz {
  static VRX_LANE_INLINE LabOf<Lanes> Of(const SpaceTerms& t, const XyzOf<Lanes>& xyz) {
    return XyzToDin99Variant(xyz, t.viewing.white, t.din99);
  }
};
struct AppearanceOfXyz {
  static VRX_LANE_INLINE LabOf<Lanes> Of(const SpaceTerms& t, const XyzOf<Lanes>& xyz) {
    return UniformFromXyz(t.appearance, xyz);
  }
};
struct OklabOfXyz {
  static VRX_LANE_INLINE LabOf<Lanes> Of(const SpaceTerms& t, const XyzOf<Lanes>& xyz) {
    return XyzToOklab(xyz, t.response);
  }
};
struct ItpOfXyz {
  static VRX_LANE_INLINE LabOf<Lanes> Of(const SpaceTerms& t, const XyzOf<Lanes>& xyz) {
    return XyzToItp(xyz, t.response);
  }
};
struct XyzOfLab {
  static VRX_LANE_INLINE XyzOf<Lanes> Of(const SpaceTerms& t, const LabOf<Lanes>& lab) {
    return LabToXyz(lab, t.viewing.white);
  }
};
struct XyzOfLuv {
  static VRX_LANE_INLINE XyzOf<Lanes> Of(const SpaceTerms& t, const LabOf<Lanes>& luv) {
    return LuvToXyz(luv, t.viewing.white);
  }
};
struct XyzOfHunter {
  static VRX_LANE_INLINE XyzOf<Lanes> Of(const SpaceTerms& t, const LabOf<Lanes>& lab) {
    return HunterToXyz(lab, t.viewing);
  }
};

void ChromaHueOfRows(const SpaceTerms&, Rows from, Target to, std::size_t count) {
  OverRows<Widths<3>, Widths<5>>(from, to, count, [](const Lanes* x, Lanes* y) VRX_LANE_LAMBDA {
    LabOf<Lanes> lab = {x[0], x[1], x[2], x[0], x[0]};
    FillChromaHue(lab);
    StoreLab<5>(lab, y);
    MarkUnset<5>(
        IsUnset(x[0]), [&] { return AreUnset(x); }, y);
  });
}

}  // namespace

template <>
const ColorSpaceKernels& KernelsOf<ColorSpaceKernels, VRX_LANES>() {
  static constexpr ColorSpaceKernels kKernels = {
      .xyzToLab = &FromXyzWithHue<LabOfXyz>,
      .xyzToLabOnly = &FromXyz<LabOfXyz, 3>,
      .labToXyz = &ToXyz<XyzOfLab>,
      .xyzToLuv = &FromXyzWithHue<LuvOfXyz>,
      .xyzToLuvOnly = &FromXyz<LuvOfXyz, 3>,
      .luvToXyz = &ToXyz<XyzOfLuv>,
      .xyzToHunter = &FromXyz<HunterOfXyz, 5>,
      .xyzToHunterOnly = &FromXyz<HunterOfXyz, 3>,
      .hunterToXyz = &ToXyz<XyzOfHunter>,
      .xyzToDin99 = &FromXyzWithHue<Din99OfXyz>,
      .xyzToAppearance = &FromXyzWithHue<AppearanceOfXyz>,
      .xyzToOklab = &FromXyzWithHue<OklabOfXyz>,
      .xyzToItp = &FromXyzWithHue<ItpOfXyz>,
      .chromaHue = &ChromaHueOfRows,
  };
  return kKernels;
}

}  // namespace vrx
