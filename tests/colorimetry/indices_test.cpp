#include <cmath>
#include <gtest/gtest.h>
#include <string>

#include <vrxmath/colorimetry/color_spaces.h>
#include <vrxmath/colorimetry/indices.h>
#include <vrxmath/colorimetry/weight_tables.h>
#include <vrxmath/foundation/string_numbers.h>

#include "tests/testing/messages.h"

namespace vrx {
namespace {

const ColorIndex& IndexNamed(const std::string& label) {
  for (const ColorIndex& index : ColorIndices()) {
    if (IndexLabel(index, IndexForm::kDirect).ToUtf8() == label) return index;
  }
  ADD_FAILURE() << "no index " << label;
  return ColorIndices()[0];
}

CTrisValues WhiteOf(vrxIlluminant illuminant, int32_t observer) {
  CTrisValues white;
  WhitePoint(illuminant, observer, white);
  return white;
}

// Expected values worked out apart from the library from the published equations, for X = 80, Y = 85, Z = 92.
TEST(Indices, KnownAnswers) {
  const auto C = vrxIllumC, D65 = vrxIllumD65, D50 = vrxIllumD50, A = vrxIllumA;
  constexpr double kNone = kUnset;
  struct Row {
    const char* label;
    IndexForm form;
    vrxIlluminant illuminant;
    int32_t observer;
    double expected;
  };
  const auto direct = IndexForm::kDirect, recalculated = IndexForm::kRecalculated;
  const Row rows[] = {
      {"Whiteness: ASTM E313-1973", direct, C, 0, 56.696},
      {"Whiteness: ASTM E313-1973", direct, C, 1, kNone},
      {"Whiteness: ASTM E313-1973", direct, D65, 0, kNone},
      {"Whiteness: ASTM E313-1973", recalculated, D65, 0, 83.4590934},
      {"Whiteness: Taube", direct, C, 0, 56.2728},
      {"Whiteness: Taube", direct, A, 0, kNone},
      {"Whiteness: Taube", recalculated, D65, 0, 82.9995563},
      {"Whiteness: Berger", direct, D65, 0, 86.2},
      {"Whiteness: Berger", direct, D65, 1, 89.896},
      {"Whiteness: Berger", direct, C, 0, kNone},
      {"Whiteness: Berger", recalculated, C, 0, 71.0832194},
      // Sample: x = 80/257, y = 85/257. E313-20 whites: 0.3101, 0.3161 (C), 0.3127, 0.3290 (D65).
      {"Whiteness: ASTM E313-20", direct, C, 0, 59.1659533},
      {"Whiteness: ASTM E313-20", direct, D65, 0, 83.1759533},
      {"Whiteness: ASTM E313-20", direct, D65, 1, 87.4559533},
      {"Whiteness: ASTM E313-20", direct, D50, 1, 163.0259533},
      {"Whiteness: ASTM E313-20", direct, A, 0, kNone},
      {"Whiteness: CIE", direct, C, 0, kNone},
      {"Whiteness: CIE", direct, D65, 0, 83.2365666},
      {"Tint: CIE", direct, D65, 0, 2.5580780},
      {"Tint: CIE", direct, D50, 0, kNone},
      {"Tint: ASTM E313-20", direct, D65, 0, 2.5464981},
      {"Tint: ASTM E313-20", direct, D65, 1, 2.0949027},
      {"Yellowness: ASTM E313-1973", direct, C, 0, 8.3247059},
      {"Yellowness: ASTM E313-1973", direct, C, 1, kNone},
      {"Yellowness: ASTM E313-20", direct, C, 0, 5.5360000},
      {"Yellowness: ASTM E313-20", direct, C, 1, 4.4503529},
      {"Yellowness: ASTM E313-20", direct, D65, 0, -0.4729412},
      {"Yellowness: ASTM E313-20", direct, D65, 1, -1.9736471},
      {"Yellowness: ASTM E313-20", direct, D50, 0, kNone},
      {"Yellowness: ASTM D1925", direct, C, 0, 5.7411765},
      {"Yellowness: DIN 6167", direct, C, 0, 5.5670588},
      {"Yellowness: DIN 6167", direct, C, 1, kNone},
      {"Yellowness: DIN 6167", direct, D65, 0, -0.4658824},
      {"Yellowness: DIN 6167", direct, D65, 1, -1.9152941},
      {"Whiteness: Stensby", direct, C, 0, 56.7169021},
      {"Whiteness: Hunter", direct, C, 0, 76.0779454},
      {"Index: C/2\xC2\xB0", direct, C, 0, 20.3524863},
      {"Index: C/2\xC2\xB0", direct, D65, 0, kNone},
  };
  const CTrisValues xyz(80.0, 85.0, 92.0);
  for (const Row& row : rows) {
    const double got = IndexNamed(row.label).Function(row.form)(row.illuminant, row.observer, xyz);
    EXPECT_NEAR(got, row.expected, 1e-6)
        << row.label << ' ' << static_cast<int>(row.form) << ' ' << row.illuminant << ' ' << row.observer;
  }
}

// The anchor of the scales: the perfect white has whiteness 100, tint 0 and yellowness 0 under every
// pair, but for the digits to which coefficients are published.
TEST(Indices, ThePerfectWhiteAnchorsEveryScale) {
  for (const ColorIndex& index : ColorIndices()) {
    const std::string label = IndexLabel(index, IndexForm::kDirect).ToUtf8();
    if (label.starts_with("Index")) continue;
    const double anchor = label.starts_with("Whiteness") ? 100.0 : 0.0;
    for (int32_t number = 0; number < kBuiltInIlluminants; ++number) {
      const auto illuminant = static_cast<vrxIlluminant>(number);
      for (const int32_t observer : {kObserver2, kObserver10}) {
        for (const IndexForm form : {IndexForm::kDirect, IndexForm::kRecalculated}) {
          if (index.Function(form) == nullptr) continue;
          const double got = index.Function(form)(illuminant, observer, WhiteOf(illuminant, observer));
          if (!IsUnset(got)) {
            EXPECT_NEAR(got, anchor, 0.6) << label << ' ' << number << ' ' << observer;
          } else {
            EXPECT_EQ(form, IndexForm::kDirect) << label;
          }
        }
      }
    }
  }
  EXPECT_DOUBLE_EQ(WhitenessE313(vrxIllumC, kObserver2, WhiteOf(vrxIllumC, kObserver2)), 100.570016);
  EXPECT_EQ(WhitenessCie(vrxIllumD65, kObserver10, WhiteOf(vrxIllumD65, kObserver10)), 100.0);
}

// Recalculation knows a sample only by its ratios to white: the same ratios under any pair give the same
// index, that of the pair for which the coefficients were published.
TEST(Indices, RecalculationSeesRatiosToWhite) {
  const auto sampleOf = [](vrxIlluminant illuminant, int32_t observer) {
    const CTrisValues white = WhiteOf(illuminant, observer);
    return CTrisValues(0.82 * white[0], 85.0, 0.78 * white[2]);
  };
  for (const char* label :
       {"Whiteness: ASTM E313-1973", "Whiteness: Taube", "Whiteness: Berger", "Yellowness: ASTM E313-1973",
        "Yellowness: ASTM E313-20", "Yellowness: ASTM D1925", "Yellowness: DIN 6167"}) {
    const ColorIndex& index = IndexNamed(label);
    const vrxIlluminant home = index.label == kStringIndexLabel + 4 ? vrxIllumD65 : vrxIllumC;
    const double expected = index.direct(home, kObserver2, sampleOf(home, kObserver2));
    for (int32_t number = 0; number < kBuiltInIlluminants; ++number) {
      const auto illuminant = static_cast<vrxIlluminant>(number);
      EXPECT_NEAR(index.recalculated(illuminant, kObserver10, sampleOf(illuminant, kObserver10)), expected,
                  1e-9)
          << label << ' ' << number;
    }
  }
}

TEST(Indices, NothingInNothingOut) {
  test::MessageRecorder messages;
  const auto missing = static_cast<vrxIlluminant>(kBuiltInIlluminants);
  for (const ColorIndex& index : ColorIndices()) {
    for (const IndexForm form : {IndexForm::kDirect, IndexForm::kRecalculated}) {
      const IndexFunction function = index.Function(form);
      if (function == nullptr) continue;
      EXPECT_TRUE(IsUnset(function(vrxIllumC, kObserver2, CTrisValues()))) << index.label;
      EXPECT_TRUE(IsUnset(function(missing, kObserver2, CTrisValues(80.0, 85.0, 92.0)))) << index.label;
    }
  }
  EXPECT_TRUE(IsUnset(WhitenessCie(vrxIllumD65, kObserver2, CTrisValues(0.0, 0.0, 0.0))));
  EXPECT_FALSE(std::isfinite(YellownessD1925(vrxIllumC, kObserver2, CTrisValues(1.0, 0.0, 1.0))));
}

TEST(Indices, ShortLabels) {
  const ColorIndex& whiteness = IndexNamed("Whiteness: CIE");
  const ColorIndex& tint = IndexNamed("Tint: CIE");
  EXPECT_EQ(IndexLabel(whiteness, IndexForm::kRecalculated), u"Whiteness: CIE (Recalc)");
  EXPECT_EQ(IndexColumnLabel(tint, IndexForm::kDirect), u"Tint CIE");
  EXPECT_EQ(IndexColumnLabel(IndexNamed("Whiteness: Berger"), IndexForm::kDirect), u"Whiteness: Berger");
}

// Two curves that swing about the same grey, one slowly and one fast.
CReflData Swing(double period, double amplitude) {
  CReflData curve;
  for (int32_t i = 0; i < kWavelengths; ++i) curve[i] = 40.0 + amplitude * std::cos(i / period);
  return curve;
}

TEST(MetamerismIndex, ShowsOnlyWhatTheChangeOfIlluminantDoes) {
  const CReflData standard = Swing(6.0, 10.0), trial = Swing(3.0, 8.0);
  CReflData darker = standard;
  for (double& percent : darker) percent *= 0.9;
  const auto index = [&](vrxIlluminant test, const CReflData& other) {
    return MetamerismIndex(vrxIllumD65, test, kObserver10, standard, other);
  };
  EXPECT_EQ(index(vrxIllumA, standard), 0.0);
  EXPECT_NEAR(index(vrxIllumA, darker), 0.0, 1e-10);   // a residual mismatch alone is no metamerism
  EXPECT_NEAR(index(vrxIllumD65, trial), 0.0, 1e-10);  // nor is any without a change of illuminant
  EXPECT_GT(index(vrxIllumA, trial), 1.0);
  CReflData scaled = trial;
  for (double& percent : scaled) percent *= 1.1;
  EXPECT_NEAR(index(vrxIllumA, scaled), index(vrxIllumA, trial), 1e-10);
  EXPECT_TRUE(IsUnset(index(vrxIllumA, CReflData())));
  EXPECT_TRUE(IsUnset(MetamerismIndex(vrxIllumD65, vrxIllumA, kObserver10, standard, trial, {100, {}})));
}

// The definition step by step, in the difference system asked for.
TEST(MetamerismIndex, IsTheDifferenceOfTheCorrectedTrial) {
  const CReflData standard = Swing(6.0, 10.0), trial = Swing(3.0, 8.0);
  CTrisValues s1, t1, s2, t2;
  standard.Tristimulus(vrxIllumD65, kObserver2, s1);
  trial.Tristimulus(vrxIllumD65, kObserver2, t1);
  standard.Tristimulus(vrxIllumT84, kObserver2, s2);
  trial.Tristimulus(vrxIllumT84, kObserver2, t2);
  const CTrisValues corrected(t2[0] * s1[0] / t1[0], t2[1] * s1[1] / t1[1], t2[2] * s1[2] / t1[2]);
  CLabValues standardLab, correctedLab;
  XyzToLab(vrxIllumT84, kObserver2, s2, standardLab);
  XyzToLab(vrxIllumT84, kObserver2, corrected, correctedLab);
  for (const int32_t system : {vrxSystemLab, vrxSystemHunter}) {
    if (system == vrxSystemHunter) {
      XyzToHunter(vrxIllumT84, kObserver2, s2, standardLab);
      XyzToHunter(vrxIllumT84, kObserver2, corrected, correctedLab);
    }
    EXPECT_NEAR(
        MetamerismIndex(vrxIllumD65, vrxIllumT84, kObserver2, standard, trial, DefaultSettings(system)),
        std::hypot(correctedLab[0] - standardLab[0], correctedLab[1] - standardLab[1],
                   correctedLab[2] - standardLab[2]),
        1e-10);
  }
}

TEST(ContrastRatio, IsYOverBlackByYOverWhite) {
  const CTrisValues black(60.0, 63.0, 70.0), white(62.0, 70.0, 75.0);
  EXPECT_DOUBLE_EQ(ContrastRatio(black, white), 0.9);
  EXPECT_DOUBLE_EQ(Opacity(black, white), 90.0);
  EXPECT_TRUE(IsUnset(ContrastRatio(CTrisValues(), white)));
  EXPECT_TRUE(IsUnset(Opacity(black, CTrisValues())));
}

}  // namespace
}  // namespace vrx
