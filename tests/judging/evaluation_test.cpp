#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include <vrxmath/colorimetry/color_differences.h>
#include <vrxmath/colorimetry/color_spaces.h>
#include <vrxmath/judging/evaluation.h>

#include "tests/testing/colors.h"
#include "tests/testing/messages.h"

namespace vrx {
namespace {

using test::MakeDelta;
using test::MakeLab;

CReflDataArray Curves(std::vector<double> levels) {
  CReflDataArray curves;
  curves.SetSize(static_cast<int32_t>(levels.size()));
  for (int32_t g = 0; g < curves.GetSize(); ++g) {
    // A slope, so that the colour is no grey.
    for (int32_t i = 0; i < kWavelengths; ++i) curves[g][i] = levels[static_cast<std::size_t>(g)] + 0.5 * i;
  }
  return curves;
}

TEST(Shade, WordsAndThresholds) {
  struct Row {
    double a, b, dL, da, db;
    const char* text;
  };
  const Row rows[] = {
      {1, 1, 0.1, 0.0, 0.0, "Lighter, , "},
      {1, 1, -0.1, 0.0, 0.0, "Darker, , "},
      {1, 1, 0.0999, 0.1, -0.1, " , , "},
      {1, 1, 0.0, 0.1001, 0.1001, " ,Redder,Yellower"},
      {1, 1, 0.0, -0.1001, -0.1001, " ,Less Red,Less Yellow"},
      {-1, -1, 0.0, 0.2, 0.2, " ,Less Green,Less Blue"},
      {-1, -1, 0.0, -0.2, -0.2, " ,Greener,Bluer"},
      {1, 1, 0.0, 0.2, -0.2, " ,Redder,Less Yellow"},
      {0, 0, -5.0, -0.5, -0.5, "Darker,Less Red,Less Yellow"},  // zero is the red and the yellow side
  };
  for (const Row& row : rows) {
    const ShadeWords shade = DescribeShade(MakeLab(50, row.a, row.b), MakeDelta(row.dL, row.da, row.db));
    EXPECT_EQ(ShadeText(shade).ToUtf8(), row.text);
  }
}

TEST(Shade, CodesAndColours) {
  const ShadeWords lighter = DescribeShade(MakeLab(50, 1, -1), MakeDelta(1, 1, 1));
  EXPECT_EQ(lighter.words, (std::array<ShadeWord, 3>{kLighter, kRedder, kLessBlue}));
  EXPECT_EQ(lighter.colors, (std::array<uint32_t, 3>{0xFFFFFF, 0x0000FF, 0xFF0000}));
  EXPECT_EQ(DescribeShade(MakeLab(50, 1, 1), MakeDelta(1, 0, 0), true).colors[0], 0u);
  const ShadeWords greener = DescribeShade(MakeLab(50, -1, 1), MakeDelta(-1, -1, 1));
  EXPECT_EQ(greener.colors, (std::array<uint32_t, 3>{0, 0x008000, 0x00FFFF}));
}

TEST(Evaluation, NormalizeAndConditions) {
  CVarexCalc calc;
  calc.method = 5;
  calc.Normalize();
  EXPECT_EQ(calc.method, 0);
  EXPECT_EQ(calc.illuminants[1], vrxIllumA);
  calc.method = 5;
  calc.Normalize();  // nothing happens twice
  EXPECT_EQ(calc.method, 5);

  CIllumArray list = calc.illuminants;
  bool primary = true;
  EXPECT_FALSE(calc.SetConditions(list, kObserver10, &primary));
  list[2] = vrxIllumF7;
  EXPECT_TRUE(calc.SetConditions(list, kObserver10, &primary));
  EXPECT_FALSE(primary);
  list[0] = vrxIllumC;
  EXPECT_TRUE(calc.SetConditions(list, kObserver10, &primary));
  EXPECT_TRUE(primary);
  EXPECT_TRUE(calc.SetConditions(list, kObserver2, &primary));
  EXPECT_TRUE(primary);
}

TEST(Evaluation, ValuesFollowTheConditions) {
  test::MessageRecorder messages;
  CVarexCalc calc;
  calc.SetStandard(Curves({20, 40}));  // before there are conditions
  calc.Normalize();
  CIllumArray list = calc.illuminants;
  list[1] = vrxIllumF7;
  ASSERT_TRUE(calc.SetConditions(list, kObserver2));
  CEvaluationArray results;
  calc.Evaluate(Curves({20, 40}), results);
  for (const CEvaluation& result : results) EXPECT_EQ(result.overall, kPass) << result.illuminant;
  EXPECT_EQ(calc.differences[1][1][6], 0.0);
  EXPECT_EQ(messages.Take(), test::IndexErrors(0));

  // Without curves the values of an illuminant that stays are kept, under the same observer only.
  CTrisValuesIllDataArray given;
  given.SetSize(1);
  for (const double Y : {20.0, 21.0, 22.0}) given[0].Add(CTrisValues(Y, Y, Y));
  calc.SetTrialValues(given);
  list[0] = vrxIllumCWF, list[2] = vrxIllumA;
  calc.SetConditions(list, kObserver2);
  EXPECT_EQ(calc.valuesA[0][0].tristimulus, given[0][2]);
  EXPECT_EQ(calc.valuesA[0][1].tristimulus, given[0][1]);
  EXPECT_TRUE(IsUnset(calc.valuesA[0][2]) && IsUnset(calc.differences[0][2]));
  calc.SetConditions(list, kObserver10);
  EXPECT_TRUE(IsUnset(calc.valuesA[0][0]));
}

TEST(Evaluation, Din99IsJudgedByItsOwnFormulaWhenAsked) {
  CVarexCalc calc;
  calc.Normalize();
  calc.method = vrxSystemDin99;
  calc.SetStandard(Curves({20}));
  CEvaluationArray results;
  calc.Evaluate(Curves({21.5}), results);
  EXPECT_EQ(calc.differences[0][0], calc.labDifferences[0][0]);
  calc.methodSettings.ownFormula = true;
  calc.Judge(results);
  CDeltaValues din99;
  DeltaDin99(calc.valuesB[0][0].lab, calc.valuesA[0][0].lab, 1.0, 1.0, din99);
  EXPECT_EQ(calc.differences[0][0], din99);
  calc.boxTolerances[0][0][0].Fill(din99[6] * 0.99);
  EXPECT_EQ(calc.JudgeAt(0, kAnyGeometry, 0, din99).overall, kFail);
  EXPECT_EQ(calc.JudgeAt(0, 0, 0, MakeDelta(0.1, 0, 0)).box, kPass);
  EXPECT_FALSE(calc.JudgeAt(0, 0, 0, CDeltaValues()).available);
}

TEST(Evaluation, CurvesToVerdictsPerGeometryAndIlluminant) {
  CVarexCalc calc;
  calc.Normalize();
  calc.angles.SetCodes(2);
  calc.SetStandard(Curves({20, 40}));
  CEvaluationArray results;
  calc.Evaluate(Curves({20, 41}), results);
  ASSERT_EQ(results.GetSize(), 6);
  for (int k = 0; k < 6; ++k) {
    EXPECT_EQ(results[k].geometry, k / 3);
    EXPECT_EQ(results[k].illuminant, k % 3);
    EXPECT_TRUE(results[k].available);
    EXPECT_EQ(results[k].overall, kPass) << k;
    EXPECT_EQ(results[k].shade.words[0], k / 3 == 0 ? kShadeNone : kLighter) << k;
  }
  // The record holds what the colour functions give.
  CColorValues standard, trial;
  Curves({40})[0].Tristimulus(vrxIllumA, kObserver10, standard.tristimulus);
  Curves({41})[0].Tristimulus(vrxIllumA, kObserver10, trial.tristimulus);
  FillCoordinates(0, vrxIllumA, kObserver10, standard);
  FillCoordinates(0, vrxIllumA, kObserver10, trial);
  CDeltaValues delta;
  DeltaEab(standard.lab, trial.lab, delta);
  EXPECT_TRUE(calc.differences[1][1] == delta);

  calc.Evaluate(Curves({20, 60}), results);
  EXPECT_EQ(results[3].box, kFail);
  EXPECT_EQ(results[3].total, kFail);
}

TEST(Evaluation, AnUnmeasuredPairNeverPasses) {
  CVarexCalc calc;
  calc.Normalize();
  CReflDataArray curves = Curves({20, 30});
  calc.SetStandard(Curves({20}));
  CEvaluationArray results;
  calc.Evaluate(curves, results);
  ASSERT_EQ(results.GetSize(), 6);
  EXPECT_EQ(results[0].overall, kPass);
  EXPECT_FALSE(results[3].available);  // the standard has no second geometry
  EXPECT_EQ(results[3].overall, kFail);
  CString text(u"old");
  CIntArray1 codes;
  uint32_t colors[3];
  EXPECT_FALSE(calc.DescribeShadeAt(1, 0, false, text, codes, colors));
  EXPECT_FALSE(calc.DescribeShadeAt(9, 0, false, text, codes, colors));
  EXPECT_TRUE(text.IsEmpty());
  EXPECT_TRUE(calc.DescribeShadeAt(0, 0, false, text, codes, colors));
  EXPECT_EQ(text.ToUtf8(), " , , ");
  EXPECT_EQ(codes.GetSize(), 3);
}

TEST(Evaluation, ShadeWordsComeFromLabWhateverTheMethod) {
  std::string expected;
  for (int method = 0; method < kDifferenceSystems; ++method) {
    CVarexCalc calc;
    calc.Normalize();
    calc.method = method;
    calc.methodSettings = DefaultSettings(method);
    calc.SetStandard(Curves({20}));
    CEvaluationArray results;
    calc.Evaluate(Curves({23}), results);
    const std::string text = ShadeText(results[0].shade).ToUtf8();
    if (method == 0) expected = text;
    EXPECT_EQ(text, expected) << method;
  }
  EXPECT_EQ(expected, "Lighter,Less Red,Less Yellow");
}

TEST(Evaluation, TheGeometryAngleWeighsEffectPaints) {
  CVarexCalc calc;
  calc.Normalize();
  calc.method = vrxSystemDin6175;
  calc.angles.SetCodes(std::vector<uint8_t>{4, 11, 41});  // 15, 110 and -15 degrees
  calc.SetStandard(Curves({20, 20, 20}));
  CEvaluationArray results;
  calc.Evaluate(Curves({21, 21, 21}), results);
  EXPECT_LT(calc.differences[0][0][6], calc.differences[1][0][6]);  // wider near the gloss
  EXPECT_EQ(calc.differences[2][0], calc.differences[0][0]);        // on either side of it
}

TEST(Evaluation, VerdictsOfTheBox) {
  CVarexCalc calc;
  calc.Normalize();
  calc.boxTolerances.SetAngleCount(1);
  struct Row {
    double d0, factor;
    Verdict verdict;
  };
  const Row rows[] = {{1.5, 0.75, kWarning}, {1.125, 0.75, kPass}, {-1.2, 0.75, kWarning},
                      {1.51, 0.75, kFail},   {1.5, 1.0, kPass},    {-1.5, 1.0, kPass}};
  for (const Row& row : rows) {
    calc.warningFactor = row.factor;
    EXPECT_EQ(calc.JudgeBox(0, 0, 0, MakeDelta(row.d0, 0, 0)), row.verdict) << row.d0;
    EXPECT_EQ(calc.JudgeBox(0, kAnyGeometry, 0, MakeDelta(row.d0, 0, 0)), row.verdict) << row.d0;
  }
}

TEST(Evaluation, HueLimitsAreChordsOnTheCircleOfTheStandard) {
  CVarexCalc calc;
  calc.Normalize();
  calc.method = vrxSystemLch;
  calc.warningFactor = 0.5;
  calc.boxTolerances.SetAngleCount(1);
  CBoxTolData& box = calc.boxTolerances[0][0][0];
  calc.valuesA.SetSize(1);
  calc.valuesB.SetSize(1);
  calc.valuesA[0].SetSize(1);
  calc.valuesB[0].SetSize(1);
  const auto judge = [&](double C, double standardHue, double trialHue, double plus, double minus) {
    box.SetTolerance(2, plus, minus);
    const double degree = M_PI / 180.0;
    calc.valuesB[0][0].lab =
        MakeLab(50, C * std::cos(standardHue * degree), C * std::sin(standardHue * degree));
    calc.valuesA[0][0].lab = MakeLab(50, C * std::cos(trialHue * degree), C * std::sin(trialHue * degree));
    CDeltaValues delta;
    DeltaEab(calc.valuesB[0][0].lab, calc.valuesA[0][0].lab, delta);
    const Verdict verdict = calc.JudgeBox(0, 0, 0, delta);
    EXPECT_EQ(calc.JudgeBox(0, kAnyGeometry, 0, delta), verdict);
    return verdict;
  };
  // On a circle of radius 10 a chord of 10 spans 60 degrees, one of 5 spans 28.955.
  struct Row {
    double C, standardHue, trialHue, plus, minus;
    Verdict verdict;
  };
  const Row rows[] = {
      {10, 40, 99.9, 10, 10, kWarning}, {10, 40, 100.1, 10, 10, kFail},  {10, 40, 68, 10, 10, kPass},
      {10, 40, 70, 10, 10, kWarning},   {10, 40, 341, 10, 10, kWarning}, {10, 40, 339, 10, 10, kFail},
      {10, 350, 20, 10, 10, kWarning},  {10, 350, 20, 2, 10, kFail},     {10, 350, 320, 2, 10, kPass},
      {10, 40, 219, 21, 21, kWarning},                              // limits beyond the diameter: any hue
      {10, 40, 40, 0, 0, kPass},        {10, 40, 41, 0, 0, kFail},  // no room at all is not the full circle
      {10, 40, 40, -1, 3, kFail},       {10, 40, 28.5, -1, 3, kPass},  // a box moved off the standard
      {0.5, 40, 200, 8, -5, kFail},     {0.5, 40, 40, 8, -5, kPass},   // so far that both ends are opposite
  };
  for (const Row& row : rows) {
    EXPECT_EQ(judge(row.C, row.standardHue, row.trialHue, row.plus, row.minus), row.verdict)
        << row.standardHue << " -> " << row.trialHue << " within +" << row.plus << " -" << row.minus;
  }
  EXPECT_EQ(judge(10, 40, 40.002, 5e-4, 5e-4), kWarning) << "hardly any room";
}

TEST(Evaluation, EllipsoidsDecideWhereTheyAreAskedTo) {
  CVarexCalc calc;
  calc.Normalize();
  EXPECT_FALSE(calc.BuildEllipses());  // dE*ab has no ellipsoid
  calc.method = vrxSystemCmc;
  calc.methodSettings.parameters = {2.0, 1.0, 0.7, 1.0};
  calc.SetStandard(Curves({30.0, 40.0}));
  ASSERT_TRUE(calc.BuildEllipses());
  ASSERT_EQ(calc.ellipseTolerances[0].GetSize(), 2);
  EXPECT_EQ(calc.ellipseTolerances[0][1][2],
            EllipseForStandard(calc.valuesB[1][2].lab, {vrxSystemCmc, {2.0, 1.0, 0.7, 1.0}}));

  int seen[3] = {};
  for (const double shift : {0.1, 0.5, 0.8, 0.9, 1.0, 1.1, 1.3, 2.0, 4.0}) {
    CEvaluationArray byBox, byEllipse;
    calc.judgeByEllipse = false;
    calc.Evaluate(Curves({30.0 + shift, 40.0 + shift}), byBox);
    calc.judgeByEllipse = true;
    calc.Evaluate(Curves({30.0 + shift, 40.0 + shift}), byEllipse);
    for (int32_t k = 0; k < byEllipse.GetSize(); ++k) {
      const CEvaluation& result = byEllipse[k];
      // A shift in lightness hardly turns the hue: the ellipsoid and the total of CMC agree.
      const double total = calc.differences[result.geometry][result.illuminant][6] / 0.7;
      const Verdict expected = total > 1.0 ? kFail : total > 0.75 ? kWarning : kPass;
      EXPECT_EQ(result.ellipse, expected) << shift << ' ' << total;
      EXPECT_EQ(result.overall, std::min(result.ellipse, result.total));
      EXPECT_EQ(byBox[k].overall, std::min(byBox[k].box, byBox[k].total));
      ++seen[result.overall];
    }
  }
  for (const int count : seen) EXPECT_GT(count, 0);

  // New entries take the factor of the method; the old ones stay as they were set.
  calc.angles.SetCodes(2);
  calc.ResizeTolerances(2);
  EXPECT_EQ(calc.ellipseTolerances[1][1][0][CEllipseData::kCommercialFactor], 0.7);
  EXPECT_DOUBLE_EQ(calc.ellipseTolerances[1][1][0][CEllipseData::kMajorAxis], 1.5 * 0.7);
  calc.method = vrxSystemLab;
  calc.ResizeTolerances(3);
  EXPECT_EQ(calc.ellipseTolerances[2][1][0], CEllipseData());
  EXPECT_EQ(calc.boxTolerances[2].GetSize(), 2);
  EXPECT_THROW(calc.ResizeTolerances(-1), CInvalidArgException);
}

}  // namespace
}  // namespace vrx
