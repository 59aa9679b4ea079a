#include <vrxmath/colorimetry/indices.h>

#include <cmath>

#include <vrxmath/colorimetry/color_differences.h>
#include <vrxmath/colorimetry/space_formulas.h>
#include <vrxmath/colorimetry/weight_tables.h>
#include <vrxmath/foundation/string_numbers.h>
#include <vrxmath/platform/resources.h>

namespace vrx {
namespace {

// The whites to which recalculated forms refer; Y is 100 for every white.
constexpr White kWhiteC2{98.074, 100.0, 118.232};
constexpr White kWhiteD65{95.047, 100.0, 108.883};

// The index of a record from its terms; nothing is looked up for a sample that is not there.
template <IndexTermsFunction FIND_TERMS>
double Evaluate(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  if (IsUnset(xyz)) return kUnset;
  IndexTerms terms;
  return FIND_TERMS(illuminant, observer, terms) ? MeasuredIndexValue(terms, xyz.Values()) : kUnset;
}

// The scales of X and Z from the white of a pair to the reference.
bool Rescale(vrxIlluminant illuminant, int32_t observer, const White& reference, IndexTerms& terms) {
  White white;
  if (!FindWhite(illuminant, observer, white)) return false;
  terms.scaleX = reference.X / white.X;
  terms.scaleZ = reference.Z / white.Z;
  return true;
}

bool IsC2(vrxIlluminant illuminant, int32_t observer) {
  return illuminant == vrxIllumC && observer == kObserver2;
}

// Formulas that have both forms for C and 2 degrees.
template <IndexFormula FORMULA>
bool DirectC2(vrxIlluminant illuminant, int32_t observer, IndexTerms& terms) {
  terms.formula = FORMULA;
  return IsC2(illuminant, observer);
}
template <IndexFormula FORMULA>
bool RecalculatedC2(vrxIlluminant illuminant, int32_t observer, IndexTerms& terms) {
  terms.formula = FORMULA;
  return Rescale(illuminant, observer, kWhiteC2, terms);
}

bool DirectBerger(vrxIlluminant illuminant, int32_t observer, IndexTerms& terms) {
  terms.formula = observer == kObserver10 ? IndexFormula::kBergerAt10 : IndexFormula::kBergerAt2;
  return illuminant == vrxIllumD65 && (observer == kObserver2 || observer == kObserver10);
}
bool RecalculatedBerger(vrxIlluminant illuminant, int32_t observer, IndexTerms& terms) {
  terms.formula = IndexFormula::kBergerAt2;
  return Rescale(illuminant, observer, kWhiteD65, terms);
}

// Coefficients of a yellowness. The first row of a set is the one for C and 2 degrees.
struct YellownessRow {
  vrxIlluminant illuminant;
  int32_t observer;
  double Cx, Cz;
};
constexpr YellownessRow kD1925[] = {{vrxIllumC, kObserver2, 1.28, 1.06}};
constexpr YellownessRow kE313[] = {{vrxIllumC, kObserver2, 1.2769, 1.0592},
                                   {vrxIllumC, kObserver10, 1.2871, 1.0781},
                                   {vrxIllumD65, kObserver2, 1.2985, 1.1335},
                                   {vrxIllumD65, kObserver10, 1.3013, 1.1498}};
constexpr YellownessRow kDin6167[] = {{vrxIllumC, kObserver2, 1.277, 1.059},
                                      {vrxIllumD65, kObserver2, 1.298, 1.133},
                                      {vrxIllumD65, kObserver10, 1.301, 1.149}};

bool TakeCoefficients(const YellownessRow& row, IndexTerms& terms) {
  terms.formula = IndexFormula::kYellowness;
  terms.Cx = row.Cx;
  terms.Cz = row.Cz;
  return true;
}
template <const auto& ROWS>
bool DirectYellowness(vrxIlluminant illuminant, int32_t observer, IndexTerms& terms) {
  for (const YellownessRow& row : ROWS) {
    if (row.illuminant == illuminant && row.observer == observer) return TakeCoefficients(row, terms);
  }
  return false;
}
template <const auto& ROWS>
bool RecalculatedYellowness(vrxIlluminant illuminant, int32_t observer, IndexTerms& terms) {
  return TakeCoefficients(ROWS[0], terms) && Rescale(illuminant, observer, kWhiteC2, terms);
}

// CIE whiteness and tint, which look at the chromaticity of the white.
bool WhiteOfTable(vrxIlluminant illuminant, int32_t observer, Xy& white) {
  White n;
  if (!FindWhite(illuminant, observer, n)) return false;
  const double sum = n.X + n.Y + n.Z;
  white = {n.X / sum, n.Y / sum};
  return true;
}

bool WhiteOfD65(vrxIlluminant illuminant, int32_t observer, Xy& white) {
  return illuminant == vrxIllumD65 && WhiteOfTable(illuminant, observer, white);
}

struct PrintedWhite {
  vrxIlluminant illuminant;
  int32_t observer;
  Xy white;
};
constexpr PrintedWhite kE313Whites[] = {
    {vrxIllumC, kObserver2, {0.3101, 0.3161}},   {vrxIllumC, kObserver10, {0.3104, 0.3191}},
    {vrxIllumD65, kObserver2, {0.3127, 0.3290}}, {vrxIllumD65, kObserver10, {0.3138, 0.3310}},
    {vrxIllumD50, kObserver2, {0.3457, 0.3585}}, {vrxIllumD50, kObserver10, {0.3477, 0.3595}},
};

bool WhiteOfE313(vrxIlluminant illuminant, int32_t observer, Xy& white) {
  for (const PrintedWhite& row : kE313Whites) {
    if (row.illuminant != illuminant || row.observer != observer) continue;
    white = row.white;
    return true;
  }
  return false;
}

bool WhiteOfE313OrTable(vrxIlluminant illuminant, int32_t observer, Xy& white) {
  return WhiteOfE313(illuminant, observer, white) || WhiteOfTable(illuminant, observer, white);
}

using WhiteFunction = bool (*)(vrxIlluminant, int32_t, Xy&);

template <IndexFormula FORMULA, WhiteFunction WHITE>
bool Cie(vrxIlluminant illuminant, int32_t observer, IndexTerms& terms) {
  terms.formula = FORMULA;
  terms.k = observer == kObserver10 ? 900.0 : 1000.0;
  return WHITE(illuminant, observer, terms.white);
}

// Formulas over Hunter Lab, which any pair has.
template <IndexFormula FORMULA>
bool OverHunterLab(vrxIlluminant illuminant, int32_t observer, IndexTerms& terms) {
  terms.formula = FORMULA;
  return FindViewing(illuminant, observer, terms.viewing);
}

}  // namespace

double WhitenessE313(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  return Evaluate<DirectC2<IndexFormula::kE313Whiteness>>(illuminant, observer, xyz);
}
double WhitenessE313Recalculated(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  return Evaluate<RecalculatedC2<IndexFormula::kE313Whiteness>>(illuminant, observer, xyz);
}
double WhitenessTaube(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  return Evaluate<DirectC2<IndexFormula::kTaubeWhiteness>>(illuminant, observer, xyz);
}
double WhitenessTaubeRecalculated(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  return Evaluate<RecalculatedC2<IndexFormula::kTaubeWhiteness>>(illuminant, observer, xyz);
}
double WhitenessBerger(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  return Evaluate<DirectBerger>(illuminant, observer, xyz);
}
double WhitenessBergerRecalculated(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  return Evaluate<RecalculatedBerger>(illuminant, observer, xyz);
}
double WhitenessCie(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  return Evaluate<Cie<IndexFormula::kCieWhiteness, WhiteOfTable>>(illuminant, observer, xyz);
}
double WhitenessCieD65(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  return Evaluate<Cie<IndexFormula::kCieWhiteness, WhiteOfD65>>(illuminant, observer, xyz);
}
double WhitenessE313Cie(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  return Evaluate<Cie<IndexFormula::kCieWhiteness, WhiteOfE313>>(illuminant, observer, xyz);
}
double WhitenessE313CieRecalculated(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  return Evaluate<Cie<IndexFormula::kCieWhiteness, WhiteOfE313OrTable>>(illuminant, observer, xyz);
}
double WhitenessStensby(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  return Evaluate<OverHunterLab<IndexFormula::kStensby>>(illuminant, observer, xyz);
}
double WhitenessHunter(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  return Evaluate<OverHunterLab<IndexFormula::kHunter>>(illuminant, observer, xyz);
}
double TintCie(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  return Evaluate<Cie<IndexFormula::kCieTint, WhiteOfTable>>(illuminant, observer, xyz);
}
double TintCieD65(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  return Evaluate<Cie<IndexFormula::kCieTint, WhiteOfD65>>(illuminant, observer, xyz);
}
double TintE313Cie(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  return Evaluate<Cie<IndexFormula::kCieTint, WhiteOfE313>>(illuminant, observer, xyz);
}
double TintE313CieRecalculated(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  return Evaluate<Cie<IndexFormula::kCieTint, WhiteOfE313OrTable>>(illuminant, observer, xyz);
}
double YellownessE313(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  return Evaluate<DirectC2<IndexFormula::kE313Yellowness>>(illuminant, observer, xyz);
}
double YellownessE313Recalculated(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  return Evaluate<RecalculatedC2<IndexFormula::kE313Yellowness>>(illuminant, observer, xyz);
}
double YellownessE313Cie(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  return Evaluate<DirectYellowness<kE313>>(illuminant, observer, xyz);
}
double YellownessE313CieRecalculated(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  return Evaluate<RecalculatedYellowness<kE313>>(illuminant, observer, xyz);
}
double YellownessD1925(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  return Evaluate<DirectYellowness<kD1925>>(illuminant, observer, xyz);
}
double YellownessD1925Recalculated(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  return Evaluate<RecalculatedYellowness<kD1925>>(illuminant, observer, xyz);
}
double YellownessDin6167(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  return Evaluate<DirectYellowness<kDin6167>>(illuminant, observer, xyz);
}
double YellownessDin6167Recalculated(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  return Evaluate<RecalculatedYellowness<kDin6167>>(illuminant, observer, xyz);
}
double IndexC2(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  return Evaluate<DirectC2<IndexFormula::kC2Index>>(illuminant, observer, xyz);
}

std::span<const ColorIndex> ColorIndices() {
  // clang-format off
  static constexpr ColorIndex kIndices[] = {
      {kStringIndexLabel, "wi-e313-73", WhitenessE313, WhitenessE313Recalculated,
       DirectC2<IndexFormula::kE313Whiteness>, RecalculatedC2<IndexFormula::kE313Whiteness>,
       {"3.388 Z - 3 Y", "C/2", "Z to the white of C/2"}},
      {kStringIndexLabel + 1, "wi-e313", WhitenessE313Cie, WhitenessE313CieRecalculated,
       Cie<IndexFormula::kCieWhiteness, WhiteOfE313>, Cie<IndexFormula::kCieWhiteness, WhiteOfE313OrTable>,
       {"Y + 800 (xn - x) + 1700 (yn - y)", "C, D65, D50 with the white points of ASTM E313", "any other white"}},
      {kStringIndexLabel + 2, "wi-cie", WhitenessCieD65, WhitenessCie,
       Cie<IndexFormula::kCieWhiteness, WhiteOfD65>, Cie<IndexFormula::kCieWhiteness, WhiteOfTable>,
       {"Y + 800 (xn - x) + 1700 (yn - y)", "D65", "the white of any illuminant"}, kStringIndexColumnLabel},
      {kStringIndexLabel + 3, "ti-cie", TintCieD65, TintCie,
       Cie<IndexFormula::kCieTint, WhiteOfD65>, Cie<IndexFormula::kCieTint, WhiteOfTable>,
       {"k (xn - x) - 650 (yn - y), k = 1000 (2 degrees) or 900 (10 degrees)", "D65", "the white of any illuminant"},
       kStringIndexColumnLabel + 1},
      {kStringIndexLabel + 4, "wi-berger", WhitenessBerger, WhitenessBergerRecalculated,
       DirectBerger, RecalculatedBerger,
       {"Y + 3.4 Z - 3.895 X (2 degrees), Y + 3.448 Z - 3.904 X (10 degrees)", "D65",
        "X and Z to the white of D65/2, the formula of 2 degrees"}},
      {kStringIndexLabel + 5, "wi-stensby", WhitenessStensby, nullptr, OverHunterLab<IndexFormula::kStensby>, nullptr,
       {"L - 3 b + 3 a in Hunter Lab", "any", ""}},
      {kStringIndexLabel + 6, "wi-hunter", WhitenessHunter, nullptr, OverHunterLab<IndexFormula::kHunter>, nullptr,
       {"L - 3 b in Hunter Lab", "any", ""}},
      {kStringIndexLabel + 7, "wi-taube", WhitenessTaube, WhitenessTaubeRecalculated,
       DirectC2<IndexFormula::kTaubeWhiteness>, RecalculatedC2<IndexFormula::kTaubeWhiteness>,
       {"3.3834 Z - 3 Y", "C/2", "Z to the white of C/2"}},
      {kStringIndexLabel + 8, "yi-e313-73", YellownessE313, YellownessE313Recalculated,
       DirectC2<IndexFormula::kE313Yellowness>, RecalculatedC2<IndexFormula::kE313Yellowness>,
       {"100 (1 - 0.847 Z / Y)", "C/2", "Z to the white of C/2"}},
      {kStringIndexLabel + 9, "yi-e313", YellownessE313Cie, YellownessE313CieRecalculated,
       DirectYellowness<kE313>, RecalculatedYellowness<kE313>,
       {"100 (Cx X - Cz Z) / Y: C/2 1.2769, 1.0592; C/10 1.2871, 1.0781; D65/2 1.2985, 1.1335; D65/10 1.3013, 1.1498",
        "C, D65", "X and Z to the white of C/2, the formula of C/2"}},
      {kStringIndexLabel + 10, "yi-d1925", YellownessD1925, YellownessD1925Recalculated,
       DirectYellowness<kD1925>, RecalculatedYellowness<kD1925>,
       {"100 (1.28 X - 1.06 Z) / Y", "C/2", "X and Z to the white of C/2"}},
      {kStringIndexLabel + 11, "yi-din6167", YellownessDin6167, YellownessDin6167Recalculated,
       DirectYellowness<kDin6167>, RecalculatedYellowness<kDin6167>,
       {"100 (a X - b Z) / Y: C/2 1.277, 1.059; D65/2 1.298, 1.133; D65/10 1.301, 1.149", "C/2, D65",
        "X and Z to the white of C/2, the formula of C/2"}},
      {kStringFurtherIndexLabel, "ti-e313", TintE313Cie, TintE313CieRecalculated,
       Cie<IndexFormula::kCieTint, WhiteOfE313>, Cie<IndexFormula::kCieTint, WhiteOfE313OrTable>,
       {"k (xn - x) - 650 (yn - y), k = 1000 (2 degrees) or 900 (10 degrees)",
        "C, D65, D50 with the white points of ASTM E313", "any other white"}},
      {kStringFurtherIndexLabel + 1, "c2", IndexC2, nullptr, DirectC2<IndexFormula::kC2Index>, nullptr,
       {"253.1 - 620.88511 Z / (1.275 X + Y + 0.635025 Z)", "C/2", ""}},
  };
  // clang-format on
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
                       const CReflData& standard, const CReflData& trial, const CDifferenceSettings& settings,
                       double angle) {
  std::array<Xyz, 2> ofStandard, ofTrial;
  const bool measured = standard.Tristimulus(reference, observer, ofStandard[0]) &&
                        trial.Tristimulus(reference, observer, ofTrial[0]) &&
                        standard.Tristimulus(test, observer, ofStandard[1]) &&
                        trial.Tristimulus(test, observer, ofTrial[1]);
  return measured ? MetamerismIndex(test, observer, ofStandard, ofTrial, settings, angle) : kUnset;
}

double MetamerismIndex(vrxIlluminant test, int32_t observer, const std::array<Xyz, 2>& standard,
                       const std::array<Xyz, 2>& trial, const CDifferenceSettings& settings, double angle) {
  for (const auto* colors : {&standard, &trial}) {
    if (IsUnset((*colors)[0]) || IsUnset((*colors)[1])) return kUnset;
  }
  Color standardTest{standard[1], {}}, trialTest{trial[1], {}};
  trialTest.xyz.X *= standard[0].X / trial[0].X;
  trialTest.xyz.Y *= standard[0].Y / trial[0].Y;
  trialTest.xyz.Z *= standard[0].Z / trial[0].Z;
  for (Color* color : {&standardTest, &trialTest}) {
    if (!FillCoordinates(settings.system, test, observer, *color)) return kUnset;
  }
  return ComputeDifference(settings, standardTest, trialTest, std::fabs(angle)).dE;
}

double ContrastRatio(const CTrisValues& overBlack, const CTrisValues& overWhite) {
  return IsUnset(overBlack) || IsUnset(overWhite) ? kUnset
                                                  : overBlack[CTrisValues::kY] / overWhite[CTrisValues::kY];
}

double Opacity(const CTrisValues& overBlack, const CTrisValues& overWhite) {
  return IsUnset(overBlack) || IsUnset(overWhite)
             ? kUnset
             : 100.0 * overBlack[CTrisValues::kY] / overWhite[CTrisValues::kY];
}

}  // namespace vrx
