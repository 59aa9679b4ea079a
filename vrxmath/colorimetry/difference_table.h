// The table of the difference systems: one row a system, with its formula. Everything that depends on the system reads
// this table; HACKING.md has the recipe for a new row.
//
// A formula is a class with one static template, Of, over values. VisitDifferenceFormula chooses it once, outside of any
// loop:
//
//   VisitDifferenceFormula(settings, [&](auto formula) {
//     for (...) result[i] = formula.Of(context, standard[i], sample[i]);
//   });

#ifndef VRXMATH_COLORIMETRY_DIFFERENCE_TABLE_H_
#define VRXMATH_COLORIMETRY_DIFFERENCE_TABLE_H_

#include <array>
#include <cstdint>
#include <span>
#include <tuple>
#include <type_traits>
#include <utility>

#include <vrxmath/colorimetry/cie2000_formulas.h>
#include <vrxmath/colorimetry/difference_formulas.h>
#include <vrxmath/colorimetry/difference_systems.h>
#include <vrxmath/colorimetry/values.h>
#include <vrxmath/numeric/lanes.h>

namespace vrx {

/// The input of a formula beside the two colours.
struct DifferenceContext {
  DifferenceContext() = default;
  DifferenceContext(const DifferenceParameters& given, double aspecular = 0.0)
      : parameters{given[0], given[1], given[2], given[3]}, angle(aspecular) {}

  // Not a std::array: an unoptimised kernel would leave its functions behind for the linker to share.
  double parameters[4] = {1.0, 1.0, 1.0, 1.0};
  double angle = 0.0;  ///< aspecular measuring angle in degrees, for effect paints
};

// The formulas of the systems. Each takes the standard and the sample in the space of its row, and says what it reads of
// them: tristimulus values, and how many coordinates (none, up to b, to the chroma, or to the hue); and whether it reads
// the measuring angle. SemiAxes are those of the ellipsoid about a standard on which the difference is 1, for the systems
// that have one.

/// CIE 1976 dE*ab of the coordinates, whichever space they are in (CIE 15).
struct EabFormula {
  static constexpr bool kReadsXyz = false;
  static constexpr int32_t kLabElements = 4;
  template <class T>
  VRX_LANE_INLINE static DifferenceOf<T> Of(const DifferenceContext&, const ColorOf<T>& s,
                                            const ColorOf<T>& t) {
    return EabDifference(s.lab, t.lab);
  }
};

/// dE CMC(l:c) (ISO 105-J03), parameters l and c.
struct CmcFormula {
  static constexpr bool kReadsXyz = false;
  static constexpr int32_t kLabElements = 5;
  template <class T>
  VRX_LANE_INLINE static DifferenceOf<T> Of(const DifferenceContext& c, const ColorOf<T>& s,
                                            const ColorOf<T>& t) {
    DifferenceOf<T> d = EabDifference(s.lab, t.lab);
    WeightCmc(s.lab, c.parameters[0], c.parameters[1], d);
    return d;
  }
  template <class T>
  VRX_LANE_INLINE static WeightsOf<T> SemiAxes(const DifferenceContext& c, const LabOf<T>& standard) {
    const WeightsOf<T> w = CmcWeights(standard);
    return {c.parameters[0] * w.SL, c.parameters[1] * w.SC, w.SH};
  }
};

/// The Euclidean difference in Hunter Lab.
struct HunterFormula {
  static constexpr bool kReadsXyz = false;
  static constexpr int32_t kLabElements = 3;
  template <class T>
  VRX_LANE_INLINE static DifferenceOf<T> Of(const DifferenceContext&, const ColorOf<T>& s,
                                            const ColorOf<T>& t) {
    return HunterDifference(s.lab, t.lab);
  }
};

/// FMC-2 in MacAdam units, from tristimulus values (ASTM D2244-85).
struct Fmc2Formula {
  static constexpr bool kReadsXyz = true;
  static constexpr int32_t kLabElements = 0;
  template <class T>
  VRX_LANE_INLINE static DifferenceOf<T> Of(const DifferenceContext&, const ColorOf<T>& s,
                                            const ColorOf<T>& t) {
    return Fmc2Difference(s.xyz, t.xyz);
  }
};

/// CIE94 with the standard's own chroma (CIE 116), parameters kL, kC and kH.
struct Cie94Formula {
  static constexpr bool kReadsXyz = false;
  static constexpr int32_t kLabElements = 4;
  template <class T>
  VRX_LANE_INLINE static DifferenceOf<T> Of(const DifferenceContext& c, const ColorOf<T>& s,
                                            const ColorOf<T>& t) {
    DifferenceOf<T> d = EabDifference(s.lab, t.lab);
    WeightCie94(s.lab, c.parameters[0], c.parameters[1], c.parameters[2], d);
    return d;
  }
  template <class T>
  VRX_LANE_INLINE static WeightsOf<T> SemiAxes(const DifferenceContext& c, const LabOf<T>& standard) {
    const WeightsOf<T> w = Cie94Weights(standard);
    return {c.parameters[0] * w.SL, c.parameters[1] * w.SC, c.parameters[2] * w.SH};
  }
};

/// Differences of X, Y, Z and of chromaticity, with dE*ab as their total.
struct XyzFormula {
  static constexpr bool kReadsXyz = true;
  static constexpr int32_t kLabElements = 4;
  template <class T>
  VRX_LANE_INLINE static DifferenceOf<T> Of(const DifferenceContext&, const ColorOf<T>& s,
                                            const ColorOf<T>& t) {
    return XyzDifference(s, t);
  }
};

/// GE-PQS II; see DeltaGePqs2 for the definition used here.
struct GePqs2Formula {
  static constexpr bool kReadsXyz = true;
  static constexpr int32_t kLabElements = 0;
  template <class T>
  VRX_LANE_INLINE static DifferenceOf<T> Of(const DifferenceContext&, const ColorOf<T>& s,
                                            const ColorOf<T>& t) {
    return GePqs2Difference(s.xyz, t.xyz);
  }
};

/// The Audi 2000 weights for effect paints, which depend on the measuring angle.
struct AudiFormula {
  static constexpr bool kReadsXyz = false;
  static constexpr bool kReadsAngle = true;
  static constexpr int32_t kLabElements = 5;
  template <class T>
  VRX_LANE_INLINE static DifferenceOf<T> Of(const DifferenceContext& c, const ColorOf<T>& s,
                                            const ColorOf<T>& t) {
    DifferenceOf<T> d = EabDifference(s.lab, t.lab);
    WeightAudi(s.lab, c.angle, d);
    return d;
  }
};

/// CIEDE2000 (ISO/CIE 11664-6), parameters kL, kC and kH.
struct Cie2000Formula {
  static constexpr bool kReadsXyz = false;
  static constexpr int32_t kLabElements = 4;
  template <class T>
  VRX_LANE_INLINE static DifferenceOf<T> Of(const DifferenceContext& c, const ColorOf<T>& s,
                                            const ColorOf<T>& t) {
    DifferenceOf<T> d = EabDifference(s.lab, t.lab);
    WeightCie2000(s.lab, t.lab, c.parameters[0], c.parameters[1], c.parameters[2], d);
    return d;
  }
  template <class T>
  VRX_LANE_INLINE static WeightsOf<T> SemiAxes(const DifferenceContext& c, const LabOf<T>& standard) {
    const WeightsOf<T> w = Cie2000Pair(standard, standard).terms.weights;
    return {c.parameters[0] * w.SL, c.parameters[1] * w.SC, c.parameters[2] * w.SH};
  }
};

/// DIN99 (DIN 6176:2001), parameters kCH and kE.
struct Din99Formula {
  static constexpr bool kReadsXyz = false;
  static constexpr int32_t kLabElements = 3;
  template <class T>
  VRX_LANE_INLINE static DifferenceOf<T> Of(const DifferenceContext& c, const ColorOf<T>& s,
                                            const ColorOf<T>& t) {
    return Din99Difference(s.lab, t.lab, c.parameters[0], c.parameters[1]);
  }
};

/// DIN 6175-2 for effect paints, parameters gL, gC and gH.
struct Din6175Formula {
  static constexpr bool kReadsXyz = false;
  static constexpr bool kReadsAngle = true;
  static constexpr int32_t kLabElements = 5;
  template <class T>
  VRX_LANE_INLINE static DifferenceOf<T> Of(const DifferenceContext& c, const ColorOf<T>& s,
                                            const ColorOf<T>& t) {
    DifferenceOf<T> d = EabDifference(s.lab, t.lab);
    WeightDin6175(s.lab, c.parameters[0], c.parameters[1], c.parameters[2], c.angle, d);
    return d;
  }
};

/// HyAB, lightness and the chromatic plane added up.
struct HyabFormula {
  static constexpr bool kReadsXyz = false;
  static constexpr int32_t kLabElements = 4;
  template <class T>
  VRX_LANE_INLINE static DifferenceOf<T> Of(const DifferenceContext&, const ColorOf<T>& s,
                                            const ColorOf<T>& t) {
    return HyabDifference(s.lab, t.lab);
  }
};

/// Whether a formula has an ellipsoid.
template <class FORMULA>
inline constexpr bool kHasEllipsoid = requires(Lab standard) {
  FORMULA::SemiAxes(DifferenceContext{}, standard);
};

/// Whether a formula depends on the measuring angle.
template <class FORMULA>
inline constexpr bool kFormulaReadsAngle = requires {
  FORMULA::kReadsAngle;
};

/// A row of the table: a system, the formula that the dispatch by number takes, and, where it differs, the one that the
/// system's name promises (CDifferenceSettings::ownFormula).
template <class FORMULA, class OWN_FORMULA = FORMULA>
struct SystemRow {
  using Formula = FORMULA;
  using OwnFormula = OWN_FORMULA;
  DifferenceSystem system;
};

namespace difference_table_internal {

inline constexpr CValueRange kHundredths{-80.0, 80.0, 0.05, 100.0, 2};
inline constexpr CValueRange kTenths{-999.9, 999.9, 1.0, 10.0, 1};
inline constexpr DifferenceParameters kOnes{1.0, 1.0, 1.0, 1.0};
inline constexpr CoordinateSpace kLab = CoordinateSpace::kLab, kLuv = CoordinateSpace::kLuv,
                                 kHunter = CoordinateSpace::kHunter, kDin99o = CoordinateSpace::kDin99o,
                                 kDin99b = CoordinateSpace::kDin99b, kDin99c = CoordinateSpace::kDin99c,
                                 kDin99d = CoordinateSpace::kDin99d, kCam02 = CoordinateSpace::kCam02Ucs,
                                 kCam16 = CoordinateSpace::kCam16Ucs, kOklab = CoordinateSpace::kOklab,
                                 kItp = CoordinateSpace::kItp;

inline constexpr CoordinateSource kXyz = CoordinateSource::kTristimulus,
                                  kXy = CoordinateSource::kChromaticity,
                                  kOfSpace = CoordinateSource::kCoordinates;
inline constexpr CoordinateColumn kAllFive[] = {
    {kOfSpace, 0}, {kOfSpace, 1}, {kOfSpace, 2}, {kOfSpace, 3}, {kOfSpace, 4}};
inline constexpr CoordinateColumn kFirstThree[] = {{kOfSpace, 0}, {kOfSpace, 1}, {kOfSpace, 2}};
inline constexpr CoordinateColumn kPolar[] = {{kOfSpace, 0}, {kOfSpace, 3}, {kOfSpace, 4}};
inline constexpr CoordinateColumn kTristimulus[] = {{kXyz, 0}, {kXyz, 1}, {kXyz, 2}};
inline constexpr CoordinateColumn kXyzAndXy[] = {{kXyz, 0}, {kXyz, 1}, {kXyz, 2}, {kXy, 0}, {kXy, 1}};
inline constexpr std::array<std::string_view, 4> kNoNames{}, kLcCf{"l", "c", "cf"}, kKlKcKh{"kL", "kC", "kH"},
    kKchKe{"kCH", "kE"}, kGlGcGh{"gL", "gC", "gH"};
inline constexpr CoordinateColumn kYxy[] = {{kXyz, 1}, {kXy, 0}, {kXy, 1}};

// clang-format off
inline constexpr std::tuple kRows{
    //                           number           short name  space    parameters             ellipsoid     in dE  components   coordinates  names of parameters
    SystemRow<EabFormula>{    {vrxSystemLab,     "lab",     kLab,    0, kOnes,                kNoEllipsoid, true,  kHundredths, kAllFive,    kNoNames}},
    SystemRow<CmcFormula>{    {vrxSystemCmc,     "cmc",     kLab,    3, {2.0, 1.0, 1.0, 1.0}, 2,            true,  kHundredths, kAllFive,    kLcCf}},
    SystemRow<HunterFormula>{ {vrxSystemHunter,  "hunter",  kHunter, 0, kOnes,                kNoEllipsoid, true,  kHundredths, kFirstThree, kNoNames}},
    SystemRow<Fmc2Formula>{   {vrxSystemFmc2,    "fmc2",    kLab,    0, kOnes,                kNoEllipsoid, false, kHundredths, kTristimulus, kNoNames}},
    SystemRow<Cie94Formula>{  {vrxSystemCie94,   "cie94",   kLab,    4, kOnes,                3,            true,  kHundredths, kAllFive,    kKlKcKh}},
    SystemRow<EabFormula>{    {vrxSystemLch,     "lch",     kLab,    0, kOnes,                kNoEllipsoid, true,  kHundredths, kPolar,      kNoNames}},
    SystemRow<EabFormula>{    {vrxSystemLuv,     "luv",     kLuv,    0, kOnes,                kNoEllipsoid, true,  kHundredths, kAllFive,    kNoNames}},
    SystemRow<XyzFormula>{    {vrxSystemXyz,     "xyz",     kLab,    0, kOnes,                kNoEllipsoid, false, kTenths,     kXyzAndXy,   kNoNames}},
    SystemRow<GePqs2Formula>{ {vrxSystemGePqs2,  "gepqs2",  kLab,    0, kOnes,                kNoEllipsoid, false, kHundredths, kYxy,        kNoNames}},
    SystemRow<AudiFormula>{   {vrxSystemAudi,    "audi",    kLab,    0, kOnes,                kNoEllipsoid, true,  kHundredths, kAllFive,    kNoNames}},
    SystemRow<EabFormula, Din99Formula>{
                              {vrxSystemDin99,   "din99",   kLab,    2, kOnes,                kNoEllipsoid, true,  kHundredths, kAllFive,    kKchKe}},
    SystemRow<Cie2000Formula>{{vrxSystemCie2000, "cie2000", kLab,    4, kOnes,                3,            true,  kHundredths, kAllFive,    kKlKcKh}},
    SystemRow<Din6175Formula>{{vrxSystemDin6175, "din6175", kLab,    3, kOnes,                kNoEllipsoid, true,  kHundredths, kAllFive,    kGlGcGh}},
    SystemRow<EabFormula>{    {vrxSystemDin99o,  "din99o",  kDin99o, 0, kOnes,                kNoEllipsoid, true,  kHundredths, kAllFive,    kNoNames}},
    SystemRow<EabFormula>{    {vrxSystemDin99b,  "din99b",  kDin99b, 0, kOnes,                kNoEllipsoid, true,  kHundredths, kAllFive,    kNoNames}},
    SystemRow<EabFormula>{    {vrxSystemDin99c,  "din99c",  kDin99c, 0, kOnes,                kNoEllipsoid, true,  kHundredths, kAllFive,    kNoNames}},
    SystemRow<EabFormula>{    {vrxSystemDin99d,  "din99d",  kDin99d, 0, kOnes,                kNoEllipsoid, true,  kHundredths, kAllFive,    kNoNames}},
    SystemRow<EabFormula>{    {vrxSystemCam02Ucs, "cam02ucs", kCam02, 0, kOnes,               kNoEllipsoid, true,  kHundredths, kAllFive,    kNoNames}},
    SystemRow<EabFormula>{    {vrxSystemCam16Ucs, "cam16ucs", kCam16, 0, kOnes,               kNoEllipsoid, true,  kHundredths, kAllFive,    kNoNames}},
    SystemRow<EabFormula>{    {vrxSystemOklab,   "oklab",   kOklab,  0, kOnes,                kNoEllipsoid, true,  kHundredths, kAllFive,    kNoNames}},
    SystemRow<EabFormula>{    {vrxSystemItp,     "itp",     kItp,    0, kOnes,                kNoEllipsoid, true,  kHundredths, kAllFive,    kNoNames}},
    SystemRow<HyabFormula>{   {vrxSystemHyab,    "hyab",    kLab,    0, kOnes,                kNoEllipsoid, true,  kHundredths, kAllFive,    kNoNames}},
};
// clang-format on

using Rows = std::remove_const_t<decltype(kRows)>;
static_assert(std::tuple_size_v<Rows> == kDifferenceSystems, "every difference system has one row");

// The row's properties with those that its formula states.
template <class FORMULA, class OWN_FORMULA>
constexpr DifferenceSystem SystemOf(const SystemRow<FORMULA, OWN_FORMULA>& row) {
  static_assert(FORMULA::kReadsXyz == OWN_FORMULA::kReadsXyz, "one answer for a system");
  DifferenceSystem system = row.system;
  system.readsXyz = FORMULA::kReadsXyz;
  system.readsAngle = kFormulaReadsAngle<FORMULA>;
  return system;
}
template <std::size_t... I>
constexpr std::array<DifferenceSystem, sizeof...(I)> SystemsOf(std::index_sequence<I...>) {
  return {SystemOf(std::get<I>(kRows))...};
}
inline constexpr auto kSystems = SystemsOf(std::make_index_sequence<kDifferenceSystems>());

constexpr bool RowsAreInOrder() {
  for (int32_t k = 0; k < kDifferenceSystems; ++k) {
    if (kSystems[static_cast<std::size_t>(k)].number != k) return false;
  }
  return true;
}
static_assert(RowsAreInOrder(), "a row stands at the number of its system");

template <std::size_t... I>
constexpr bool EllipsoidsMatch(std::index_sequence<I...>) {
  return ((kHasEllipsoid<typename std::tuple_element_t<I, Rows>::Formula> ==
           (kSystems[I].ellipsoidFactor != kNoEllipsoid)) &&
          ...);
}
static_assert(EllipsoidsMatch(std::make_index_sequence<kDifferenceSystems>()),
              "a system has the factor of an ellipsoid where its formula has the semi-axes");

template <class ROW, class VISITOR>
VRX_LANE_INLINE bool VisitRow(const CDifferenceSettings& settings, VISITOR& visitor) {
  if constexpr (!std::is_same_v<typename ROW::Formula, typename ROW::OwnFormula>) {
    if (settings.ownFormula) return visitor(typename ROW::OwnFormula{}), true;
  }
  return visitor(typename ROW::Formula{}), true;
}

template <class VISITOR, std::size_t... I>
VRX_LANE_INLINE bool Visit(const CDifferenceSettings& settings, VISITOR& visitor, std::index_sequence<I...>) {
  return ((settings.system == static_cast<int32_t>(I) &&
           VisitRow<std::tuple_element_t<I, Rows>>(settings, visitor)) ||
          ...);
}

}  // namespace difference_table_internal

/// Calls `visitor` with the formula that settings name. False, without a call, for an unknown system.
template <class VISITOR>
VRX_LANE_INLINE bool VisitDifferenceFormula(const CDifferenceSettings& settings, VISITOR&& visitor) {
  return difference_table_internal::Visit(settings, visitor, std::make_index_sequence<kDifferenceSystems>());
}

}  // namespace vrx

#endif  // VRXMATH_COLORIMETRY_DIFFERENCE_TABLE_H_
