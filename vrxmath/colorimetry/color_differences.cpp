#include <vrxmath/colorimetry/color_differences.h>

#include <vrxmath/colorimetry/cie2000_formulas.h>
#include <vrxmath/colorimetry/color_spaces.h>
#include <vrxmath/colorimetry/difference_formulas.h>
#include <vrxmath/colorimetry/difference_table.h>
#include <vrxmath/colorimetry/uniform_space_formulas.h>
#include <vrxmath/colorimetry/weight_tables.h>

namespace vrx {
namespace {

// How many elements of a colour record a formula reads: up to the chroma, or the hue too.
constexpr int32_t kUpToB = CLabValues::kB + 1;
constexpr int32_t kUpToChroma = CLabValues::kChroma + 1;

// The elements of a record from DeltaEab that weighting formulas read.
Difference WeightableValues(const CDeltaValues& delta) {
  if (delta.GetSize() >= CDeltaValues::kValues) return delta.Values();
  Difference d{};
  d.dL = delta[CDeltaValues::kL];
  d.da = delta[CDeltaValues::kA];
  d.db = delta[CDeltaValues::kB];
  d.dC = delta[CDeltaValues::kChroma];
  d.dH = delta[CDeltaValues::kHue];
  return d;
}

// Writes the last four elements, which the weighted systems replace.
void StoreWeighted(const Difference& d, CDeltaValues& delta) {
  delta[CDeltaValues::kWeightedL] = d.weightedL;
  delta[CDeltaValues::kChroma] = d.dC;
  delta[CDeltaValues::kHue] = d.dH;
  delta[CDeltaValues::kTotal] = d.dE;
}

}  // namespace

void DeltaEab(const CLabValues& standard, const CLabValues& sample, CDeltaValues& delta) {
  delta.SetValues(EabDifference(standard.Values(kUpToChroma), sample.Values(kUpToChroma)));
}

DifferenceWeights CmcWeights(const CLabValues& standard) {
  return CmcWeights(standard.Values());
}

void DeltaCmc(const CLabValues& standard, double l, double c, CDeltaValues& delta) {
  Difference d = WeightableValues(delta);
  WeightCmc(standard.Values(), l, c, d);
  StoreWeighted(d, delta);
}

DifferenceWeights Cie94Weights(const CLabValues& standard) {
  return Cie94Weights(standard.Values(kUpToChroma));
}

void DeltaCie94(const CLabValues& standard, double kL, double kC, double kH, CDeltaValues& delta) {
  Difference d = WeightableValues(delta);
  WeightCie94(standard.Values(kUpToChroma), kL, kC, kH, d);
  StoreWeighted(d, delta);
}

Cie2000Terms Cie2000Weights(const CLabValues& standard, const CLabValues& sample, CLabValues& primedStandard,
                            CLabValues& primedSample) {
  const auto store = [](const CLabValues& lab, const Lab& p, CLabValues& primed) {
    primed = lab;
    primed[CLabValues::kA] = p.a;
    primed[CLabValues::kChroma] = p.C;
    primed[CLabValues::kHue] = p.h;
  };
  const auto pair = Cie2000Pair(standard.Values(kUpToChroma), sample.Values(kUpToChroma));
  store(standard, pair.standard, primedStandard);
  store(sample, pair.sample, primedSample);
  return pair.terms;
}

void DeltaCie2000(const CLabValues& standard, const CLabValues& sample, double kL, double kC, double kH,
                  CDeltaValues& delta) {
  Difference d{};
  WeightCie2000(standard.Values(kUpToChroma), sample.Values(kUpToChroma), kL, kC, kH, d);
  StoreWeighted(d, delta);
}

void DeltaFmc2(const CTrisValues& standard, const CTrisValues& sample, CDeltaValues& delta) {
  delta.SetValues(Fmc2Difference(standard.Values(), sample.Values()));
}

void DeltaGePqs2(const CTrisValues& standard, const CTrisValues& sample, CDeltaValues& delta) {
  delta.SetValues(GePqs2Difference(standard.Values(), sample.Values()));
}

void DeltaAudi(const CLabValues& standard, double angle, CDeltaValues& delta) {
  Difference d = WeightableValues(delta);
  WeightAudi(standard.Values(), angle, d);
  delta[CDeltaValues::kTotal] = d.dE;
}

void DeltaDin6175(const CLabValues& standard, double gL, double gC, double gH, double angle,
                  CDeltaValues& delta) {
  Difference d = WeightableValues(delta);
  WeightDin6175(standard.Values(), gL, gC, gH, angle, d);
  delta[CDeltaValues::kTotal] = d.dE;
}

void DeltaDin99(const CLabValues& standard, const CLabValues& sample, double kCH, double kE,
                CDeltaValues& delta) {
  delta.SetValues(Din99Difference(standard.Values(kUpToB), sample.Values(kUpToB), kCH, kE));
}

namespace {

// The space of a system; of any other number, L*a*b*.
CoordinateSpace SpaceOf(int32_t system) {
  const DifferenceSystem* row = FindDifferenceSystem(system);
  return row != nullptr ? row->space : CoordinateSpace::kLab;
}

}  // namespace

bool FillCoordinates(int32_t system, vrxIlluminant illuminant, int32_t observer, Color& color) {
  Viewing viewing;
  if (!FindViewing(illuminant, observer, viewing)) return false;
  const CoordinateSpace space = SpaceOf(system);
  color.lab = Coordinates(SpaceTermsOf(space, viewing), color.xyz);
  // A record that keeps its hue in radians does not round hues next to 360 degrees; nor is it done here then.
  const bool hasHue = space != CoordinateSpace::kHunter;
  if (hasHue && !HueInDegrees()) color.lab.h = HueRadians(color.lab.a, color.lab.b) * kDegreesPerRadian;
  return true;
}

void FillCoordinates(int32_t system, vrxIlluminant illuminant, int32_t observer, CColorValues& color) {
  if (IsUnset(color)) return color.lab.Fill(kUnset);
  switch (SpaceOf(system)) {
    case CoordinateSpace::kHunter:
      return XyzToHunter(illuminant, observer, color.tristimulus, color.lab);
    case CoordinateSpace::kLuv:
      return XyzToLuv(illuminant, observer, color.tristimulus, color.lab);
    case CoordinateSpace::kLab:
      return XyzToLab(illuminant, observer, color.tristimulus, color.lab);
    default: {
      Viewing viewing;
      if (!FindViewing(illuminant, observer, viewing)) return color.lab.Fill(kUnset);
      color.lab.SetValues(Coordinates(SpaceTermsOf(SpaceOf(system), viewing), color.tristimulus.Values()));
      ChromaHue(color.lab);  // in the unit of records to the last bit
    }
  }
}

namespace {

// A number that no system has is dE*ab, as stored results have it.
template <class VISITOR>
VRX_LANE_INLINE void VisitFormulaOrEab(const CDifferenceSettings& settings, VISITOR&& visitor) {
  if (!VisitDifferenceFormula(settings, visitor)) visitor(EabFormula());
}

}  // namespace

Difference ComputeDifference(const CDifferenceSettings& settings, const Color& standard, const Color& sample,
                             double angle) {
  Difference difference = kUnsetDifference;
  if (IsUnset(standard.xyz) || IsUnset(sample.xyz)) return difference;
  if (settings.system == kSystemChromaticity) {
    const Xy xy = Chromaticity(sample.xyz);
    difference.dL = xy.x;
    difference.da = xy.y;
    return difference;
  }
  const DifferenceContext context{settings.parameters, angle};
  VisitFormulaOrEab(settings, [&](auto formula) { difference = formula.Of(context, standard, sample); });
  return difference;
}

std::array<bool, 7> FilledElements(const CDifferenceSettings& settings) {
  // Two colours that differ in everything, so that no element is small.
  constexpr Color kStandard{{30.0, 25.0, 12.0}, {57.0, 29.0, 32.0, 43.18564576337837, 47.81655574603914}};
  constexpr Color kSample{{22.0, 28.0, 30.0}, {59.9, -19.0, 3.0, 19.235384061671343, 171.02737338510363}};
  std::array<bool, 7> filled{};
  VisitFormulaOrEab(settings, [&](auto formula) {
    const Difference d = formula.Of({settings.parameters, 45.0}, kStandard, kSample);
    filled = {!IsUnset(d.dL), !IsUnset(d.da), !IsUnset(d.db), !IsUnset(d.weightedL),
              !IsUnset(d.dC), !IsUnset(d.dH), !IsUnset(d.dE)};
  });
  return filled;
}

namespace {

// The values of a colour that a formula reads.
template <class FORMULA>
VRX_LANE_INLINE Color ReadColor(const CColorValues& color) {
  Color values{};
  if constexpr (FORMULA::kReadsXyz) values.xyz = color.tristimulus.Values();
  if constexpr (FORMULA::kLabElements > 0) values.lab = color.lab.Values(FORMULA::kLabElements);
  return values;
}

// One formula over records. Each has a function of its own: all of them in one would save and restore for the simplest what
// the longest needs.
template <class FORMULA>
[[gnu::noinline]] void StoreDifference(const DifferenceContext& context, const CColorValues& standard,
                                       const CColorValues& sample, CDeltaValues& delta) {
  delta.SetValues(FORMULA::Of(context, ReadColor<FORMULA>(standard), ReadColor<FORMULA>(sample)));
}

}  // namespace

void ComputeDifference(const CDifferenceSettings& settings, vrxIlluminant, int32_t,
                       const CColorValues& standard, const CColorValues& sample, double angle,
                       CDeltaValues& delta) {
  if (IsUnset(standard) || IsUnset(sample)) return delta.Fill(kUnset);
  if (settings.system == kSystemChromaticity) {
    return Chromaticity(sample.tristimulus, delta[CDeltaValues::kL], delta[CDeltaValues::kA]);
  }
  const DifferenceContext context{settings.parameters, angle};
  VisitFormulaOrEab(
      settings, [&](auto formula) { StoreDifference<decltype(formula)>(context, standard, sample, delta); });
}

}  // namespace vrx
