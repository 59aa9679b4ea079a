#include <vrxmath/colorimetry/indices.h>

#include <vrxmath/colorimetry/color_differences.h>
#include <vrxmath/colorimetry/color_spaces.h>
#include <vrxmath/colorimetry/weight_tables.h>
#include <vrxmath/colorimetry/weighting.h>
#include <vrxmath/foundation/string_numbers.h>
#include <vrxmath/platform/resources.h>

namespace vrx {
namespace {

struct Pair {
  vrxIlluminant illuminant;
  int32_t observer;
  bool operator==(const Pair&) const = default;
};
constexpr Pair kC2{vrxIllumC, kObserver2};

struct Values {
  double X, Y, Z;
};
Values ValuesOf(const CTrisValues& xyz) {
  return {xyz[0], xyz[1], xyz[2]};
}

// The whites to which recalculated forms refer; Y is 100 for every white.
struct ReferenceWhite {
  double X, Z;
};
constexpr ReferenceWhite kWhiteC2{98.074, 118.232};
constexpr ReferenceWhite kWhiteD65{95.047, 108.883};

// The sample with X and Z scaled from the white of its pair to the reference. False when there is no sample
// or no white.
bool Rescale(Pair pair, const CTrisValues& xyz, const ReferenceWhite& reference, Values& rescaled) {
  if (IsUnset(xyz)) return false;
  const double* table = WeightTable(pair.illuminant, pair.observer);
  if (table == nullptr) return false;
  rescaled = ValuesOf(xyz);
  rescaled.X *= reference.X / table[kTableWhite];
  rescaled.Z *= reference.Z / table[kTableWhite + 2];
  return true;
}

// Formulas that have both forms for C and 2 degrees.
using Formula = double (*)(const Values&);

double DirectC2(Formula formula, Pair pair, const CTrisValues& xyz) {
  return pair == kC2 && !IsUnset(xyz) ? formula(ValuesOf(xyz)) : kUnset;
}
double RecalculatedC2(Formula formula, Pair pair, const CTrisValues& xyz) {
  Values v;
  return Rescale(pair, xyz, kWhiteC2, v) ? formula(v) : kUnset;
}

double E313Whiteness(const Values& v) {
  return 3.388 * v.Z - 3.0 * v.Y;
}
double TaubeWhiteness(const Values& v) {
  return 3.3834 * v.Z - 3.0 * v.Y;
}
double E313Yellowness(const Values& v) {
  return 100.0 * (1.0 - 0.847 * v.Z / v.Y);
}
double C2Index(const Values& v) {
  return 253.1 - 620.88511 * v.Z / (1.275 * v.X + v.Y + 0.635025 * v.Z);
}

double BergerAt2(const Values& v) {
  return v.Y + 3.4 * v.Z - 3.895 * v.X;
}
double BergerAt10(const Values& v) {
  return v.Y + 3.448 * v.Z - 3.904 * v.X;
}

// Yellowness 100 (Cx X - Cz Z) / Y. The first row of a set is the one for C and 2 degrees.
struct YellownessRow {
  Pair pair;
  double Cx, Cz;
};
constexpr YellownessRow kD1925[] = {{kC2, 1.28, 1.06}};
constexpr YellownessRow kE313[] = {{kC2, 1.2769, 1.0592},
                                   {{vrxIllumC, kObserver10}, 1.2871, 1.0781},
                                   {{vrxIllumD65, kObserver2}, 1.2985, 1.1335},
                                   {{vrxIllumD65, kObserver10}, 1.3013, 1.1498}};
constexpr YellownessRow kDin6167[] = {{kC2, 1.277, 1.059},
                                      {{vrxIllumD65, kObserver2}, 1.298, 1.133},
                                      {{vrxIllumD65, kObserver10}, 1.301, 1.149}};

double Yellowness(const YellownessRow& row, const Values& v) {
  return 100.0 * (row.Cx * v.X - row.Cz * v.Z) / v.Y;
}
double DirectYellowness(std::span<const YellownessRow> rows, Pair pair, const CTrisValues& xyz) {
  if (IsUnset(xyz)) return kUnset;
  for (const YellownessRow& row : rows) {
    if (row.pair == pair) return Yellowness(row, ValuesOf(xyz));
  }
  return kUnset;
}
double RecalculatedYellowness(std::span<const YellownessRow> rows, Pair pair, const CTrisValues& xyz) {
  Values v;
  return Rescale(pair, xyz, kWhiteC2, v) ? Yellowness(rows[0], v) : kUnset;
}

// CIE whiteness and tint, which look at the chromaticity of the white.
struct WhiteChromaticity {
  double x, y;
};

bool WhiteOfTable(Pair pair, WhiteChromaticity& white) {
  const double* table = WeightTable(pair.illuminant, pair.observer);
  if (table == nullptr) return false;
  const double sum = table[kTableWhite] + table[kTableWhite + 1] + table[kTableWhite + 2];
  white = {table[kTableWhite] / sum, table[kTableWhite + 1] / sum};
  return true;
}

bool WhiteOfD65(Pair pair, WhiteChromaticity& white) {
  return pair.illuminant == vrxIllumD65 && WhiteOfTable(pair, white);
}

struct PrintedWhiteRow {
  Pair pair;
  WhiteChromaticity white;
};
constexpr PrintedWhiteRow kE313Whites[] = {
    {{vrxIllumC, kObserver2}, {0.3101, 0.3161}},   {{vrxIllumC, kObserver10}, {0.3104, 0.3191}},
    {{vrxIllumD65, kObserver2}, {0.3127, 0.3290}}, {{vrxIllumD65, kObserver10}, {0.3138, 0.3310}},
    {{vrxIllumD50, kObserver2}, {0.3457, 0.3585}}, {{vrxIllumD50, kObserver10}, {0.3477, 0.3595}},
};

bool WhiteOfE313(Pair pair, WhiteChromaticity& white) {
  for (const PrintedWhiteRow& row : kE313Whites) {
    if (row.pair != pair) continue;
    white = row.white;
    return true;
  }
  return false;
}

bool WhiteOfE313OrTable(Pair pair, WhiteChromaticity& white) {
  return WhiteOfE313(pair, white) || WhiteOfTable(pair, white);
}

using FindChromaticityOfWhite = bool (*)(Pair, WhiteChromaticity&);

// Finds the chromaticities of sample and white; false when either has none.
bool FindChromaticities(FindChromaticityOfWhite findWhite, Pair pair, const CTrisValues& xyz,
                        WhiteChromaticity& sample, WhiteChromaticity& white) {
  Chromaticity(xyz, sample.x, sample.y);
  return !(IsUnset(sample.x) && IsUnset(sample.y)) && findWhite(pair, white);
}

double CieWhiteness(FindChromaticityOfWhite findWhite, Pair pair, const CTrisValues& xyz) {
  WhiteChromaticity s, n;
  if (!FindChromaticities(findWhite, pair, xyz, s, n)) return kUnset;
  return xyz[1] + 800.0 * (n.x - s.x) + 1700.0 * (n.y - s.y);
}

double CieTint(FindChromaticityOfWhite findWhite, Pair pair, const CTrisValues& xyz) {
  WhiteChromaticity s, n;
  if (!FindChromaticities(findWhite, pair, xyz, s, n)) return kUnset;
  const double k = pair.observer == kObserver10 ? 900.0 : 1000.0;
  return k * (n.x - s.x) - 650.0 * (n.y - s.y);
}

// Hunter Lab of the sample, unset without a sample or a table.
const CLabValues& HunterLab(Pair pair, const CTrisValues& xyz) {
  thread_local CLabValues lab;  // kept, so that no call allocates
  lab.Fill(kUnset);
  if (!IsUnset(xyz)) XyzToHunter(pair.illuminant, pair.observer, xyz, lab);
  return lab;
}

}  // namespace

double WhitenessE313(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  return DirectC2(E313Whiteness, {illuminant, observer}, xyz);
}
double WhitenessE313Recalculated(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  return RecalculatedC2(E313Whiteness, {illuminant, observer}, xyz);
}

double WhitenessTaube(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  return DirectC2(TaubeWhiteness, {illuminant, observer}, xyz);
}
double WhitenessTaubeRecalculated(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  return RecalculatedC2(TaubeWhiteness, {illuminant, observer}, xyz);
}

double WhitenessBerger(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  if (illuminant != vrxIllumD65 || IsUnset(xyz)) return kUnset;
  if (observer == kObserver2) return BergerAt2(ValuesOf(xyz));
  return observer == kObserver10 ? BergerAt10(ValuesOf(xyz)) : kUnset;
}
double WhitenessBergerRecalculated(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  Values v;
  return Rescale({illuminant, observer}, xyz, kWhiteD65, v) ? BergerAt2(v) : kUnset;
}

double WhitenessCie(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  return CieWhiteness(WhiteOfTable, {illuminant, observer}, xyz);
}
double WhitenessCieD65(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  return CieWhiteness(WhiteOfD65, {illuminant, observer}, xyz);
}
double WhitenessE313Cie(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  return CieWhiteness(WhiteOfE313, {illuminant, observer}, xyz);
}
double WhitenessE313CieRecalculated(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  return CieWhiteness(WhiteOfE313OrTable, {illuminant, observer}, xyz);
}

double WhitenessStensby(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  const CLabValues& lab = HunterLab({illuminant, observer}, xyz);
  return IsUnset(lab) ? kUnset : lab[0] - 3.0 * lab[2] + 3.0 * lab[1];
}
double WhitenessHunter(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  const CLabValues& lab = HunterLab({illuminant, observer}, xyz);
  return IsUnset(lab) ? kUnset : lab[0] - 3.0 * lab[2];
}

double TintCie(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  return CieTint(WhiteOfTable, {illuminant, observer}, xyz);
}
double TintCieD65(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  return CieTint(WhiteOfD65, {illuminant, observer}, xyz);
}
double TintE313Cie(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  return CieTint(WhiteOfE313, {illuminant, observer}, xyz);
}
double TintE313CieRecalculated(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  return CieTint(WhiteOfE313OrTable, {illuminant, observer}, xyz);
}

double YellownessE313(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  return DirectC2(E313Yellowness, {illuminant, observer}, xyz);
}
double YellownessE313Recalculated(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  return RecalculatedC2(E313Yellowness, {illuminant, observer}, xyz);
}
double YellownessE313Cie(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  return DirectYellowness(kE313, {illuminant, observer}, xyz);
}
double YellownessE313CieRecalculated(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  return RecalculatedYellowness(kE313, {illuminant, observer}, xyz);
}
double YellownessD1925(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  return DirectYellowness(kD1925, {illuminant, observer}, xyz);
}
double YellownessD1925Recalculated(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  return RecalculatedYellowness(kD1925, {illuminant, observer}, xyz);
}
double YellownessDin6167(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  return DirectYellowness(kDin6167, {illuminant, observer}, xyz);
}
double YellownessDin6167Recalculated(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  return RecalculatedYellowness(kDin6167, {illuminant, observer}, xyz);
}

double IndexC2(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  return DirectC2(C2Index, {illuminant, observer}, xyz);
}

std::span<const ColorIndex> ColorIndices() {
  static constexpr ColorIndex kIndices[] = {
      {kStringIndexLabel, WhitenessE313, WhitenessE313Recalculated},
      {kStringIndexLabel + 1, WhitenessE313Cie, WhitenessE313CieRecalculated},
      {kStringIndexLabel + 2, WhitenessCieD65, WhitenessCie, kStringIndexColumnLabel},
      {kStringIndexLabel + 3, TintCieD65, TintCie, kStringIndexColumnLabel + 1},
      {kStringIndexLabel + 4, WhitenessBerger, WhitenessBergerRecalculated},
      {kStringIndexLabel + 5, WhitenessStensby, nullptr},
      {kStringIndexLabel + 6, WhitenessHunter, nullptr},
      {kStringIndexLabel + 7, WhitenessTaube, WhitenessTaubeRecalculated},
      {kStringIndexLabel + 8, YellownessE313, YellownessE313Recalculated},
      {kStringIndexLabel + 9, YellownessE313Cie, YellownessE313CieRecalculated},
      {kStringIndexLabel + 10, YellownessD1925, YellownessD1925Recalculated},
      {kStringIndexLabel + 11, YellownessDin6167, YellownessDin6167Recalculated},
      {kStringFurtherIndexLabel, TintE313Cie, TintE313CieRecalculated},
      {kStringFurtherIndexLabel + 1, IndexC2, nullptr},
  };
  return kIndices;
}

CString IndexLabel(const ColorIndex& index, IndexForm form) {
  const WideView label = FindString(index.label);
  return CString(form == IndexForm::kRecalculated ? label : label.substr(0, label.find(u" (")));
}

CString IndexColumnLabel(const ColorIndex& index, IndexForm form) {
  constexpr uint32_t kToRecalculated = 2;  // the two short labels of that form follow those of the direct one
  if (index.columnLabel == 0) return IndexLabel(index, form);
  return CString::Load(index.columnLabel + (form == IndexForm::kRecalculated ? kToRecalculated : 0));
}

double MetamerismIndex(vrxIlluminant reference, vrxIlluminant test, int32_t observer,
                       const CReflData& standard, const CReflData& trial,
                       const CDifferenceSettings& settings) {
  // Kept, so that no call allocates.
  thread_local CTrisValues standardMatch, trialMatch;
  thread_local CColorValues standardTest, trialTest;
  thread_local CDeltaValues delta;
  standard.Tristimulus(reference, observer, standardMatch);
  trial.Tristimulus(reference, observer, trialMatch);
  standard.Tristimulus(test, observer, standardTest.tristimulus);
  trial.Tristimulus(test, observer, trialTest.tristimulus);
  if (IsUnset(standardMatch) || IsUnset(trialMatch) || IsUnset(standardTest) || IsUnset(trialTest)) {
    return kUnset;
  }
  for (int32_t k = 0; k < 3; ++k) trialTest.tristimulus[k] *= standardMatch[k] / trialMatch[k];
  constexpr double kNoAngle = 0.0;
  delta.Fill(kUnset);
  FillCoordinates(settings.system, test, observer, standardTest);
  FillCoordinates(settings.system, test, observer, trialTest);
  ComputeDifference(settings, test, observer, standardTest, trialTest, kNoAngle, delta);
  return delta[6];
}

double ContrastRatio(const CTrisValues& overBlack, const CTrisValues& overWhite) {
  return IsUnset(overBlack) || IsUnset(overWhite) ? kUnset : overBlack[1] / overWhite[1];
}

double Opacity(const CTrisValues& overBlack, const CTrisValues& overWhite) {
  return IsUnset(overBlack) || IsUnset(overWhite) ? kUnset : 100.0 * overBlack[1] / overWhite[1];
}

}  // namespace vrx
