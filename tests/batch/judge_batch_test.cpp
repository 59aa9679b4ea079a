// A judgement of many is that of the evaluation context, to the last bit; reasons, rules and what has no difference.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include <vrxmath/batch/judge_batch.h>
#include <vrxmath/colorimetry/single_figures.h>
#include <vrxmath/foundation/angles.h>
#include <vrxmath/judging/evaluation.h>

namespace vrx {
namespace {

using Curve = std::array<double, 40>;

// Curves about greys and colours, and what a measurement should not be: black, far too bright, negative, noise, unset.
std::vector<Curve> Curves(std::size_t count, double spread, std::uint32_t seed) {
  std::mt19937 random(seed);
  std::uniform_real_distribution<double> about(-spread, spread), noise(-100.0, 1000.0);
  std::vector<Curve> curves(count);
  for (std::size_t i = 0; i < count; ++i) {
    for (std::size_t k = 0; k < 40; ++k) {
      const double base = 30.0 + static_cast<double>((i % 3) * k % 40);
      curves[i][k] = i % 9 == 8 ? noise(random) : base + about(random);
    }
  }
  if (count > 4) curves[1].fill(0.0), curves[2].fill(1e4), curves[3].fill(-5.0), curves[4][0] = kUnset;
  return curves;
}

CurveBatch BatchOf(const std::vector<Curve>& curves) {
  return {{curves.front().data(), 40 * curves.size()}};
}

CReflDataArray RecordOf(const Curve& curve) {
  CReflDataArray record;
  record.SetSize(1);
  std::ranges::copy(curve, record[0].begin());
  return record;
}

bool AreSame(double a, double b) {
  return a == b || (std::isnan(a) && std::isnan(b));
}

// How a system is asked for.
struct Case {
  CDifferenceSettings difference;
  std::uint8_t geometry;
  bool byEllipsoid;
  std::string Text() const {
    return "system " + std::to_string(difference.system) + (difference.ownFormula ? " own" : "") +
           ", geometry " + std::to_string(geometry) + (byEllipsoid ? ", ellipsoid" : ", box");
  }
};

JudgeConditions ConditionsOf(const Case& one) {
  JudgeConditions conditions;
  conditions.difference = one.difference;
  conditions.illuminants = {vrxIllumD65, vrxIllumA, vrxIllumCWF};
  conditions.angle = AngleOfCode(one.geometry);
  return conditions;
}

CBoxTolData Box() {
  CBoxTolData box;
  box.SetAll({2.0, 2.5, 1.0, 1.5, 3.0, 0.5, 2.0});
  return box;
}

CVarexCalc ContextOf(const Case& one, const Curve& standard) {
  CVarexCalc calc;
  calc.Normalize();
  calc.method = one.difference.system;
  calc.methodSettings = one.difference;
  calc.angles.SetCodes({&one.geometry, 1});
  calc.judgeByEllipse = one.byEllipsoid;
  calc.boxTolerances[0].SetSize(1);
  for (CBoxTolData& box : calc.boxTolerances[0][0]) box = Box();
  calc.SetStandard(RecordOf(standard));
  if (one.byEllipsoid && IsEllipseSystem(calc.method)) calc.BuildEllipses();
  return calc;
}

// A total that is no number passes in a context, after its components failed, and never here.
Verdict TotalOf(const CEvaluation& expected, double dE) {
  return std::isnan(dE) ? kFail : expected.total;
}

void ExpectSame(const JudgementUnder& got, const CVarexCalc& calc, const CEvaluation& expected, std::size_t j,
                const std::string& where) {
  const auto i = static_cast<std::ptrdiff_t>(j);
  const CDeltaValues &difference = calc.differences[0][i], &inLab = calc.labDifferences[0][i];
  const Color trial = calc.valuesA[0][i].Values();
  EXPECT_EQ(got.available, expected.available) << where;
  EXPECT_TRUE(std::ranges::equal(got.difference, difference, AreSame)) << where;
  EXPECT_TRUE(std::ranges::equal(got.labDifference, inLab, AreSame)) << where;
  EXPECT_TRUE(AreSame(got.trial.xyz.Y, trial.xyz.Y) && AreSame(got.trial.lab.h, trial.lab.h)) << where;
  EXPECT_EQ(got.components, calc.judgeByEllipse ? expected.ellipse : expected.box) << where;
  EXPECT_EQ(got.total, TotalOf(expected, difference[CDeltaValues::kTotal])) << where;
  EXPECT_EQ(got.verdict, std::min(got.components, got.total)) << where;
  EXPECT_EQ(got.words, expected.shade.words) << where;
  EXPECT_EQ(got.breach.limit == BrokenLimit::kNone, got.verdict == kPass) << where;
  if (calc.judgeByEllipse && got.available) {
    EXPECT_TRUE(AreSame(got.ellipsoidValue, calc.ellipseTolerances[0][0][i].Value(inLab))) << where;
  }
}

TEST(JudgeBatch, IsTheEvaluationContextToTheLastBit) {
  const std::vector<Curve> standards = Curves(7, 1.0, 1), trials = Curves(60, 2.0, 2);
  std::vector<std::size_t> standardOf(trials.size());
  for (std::size_t t = 0; t < trials.size(); ++t) standardOf[t] = t < 30 ? t % 7 : 5;
  CEvaluationArray evaluations;
  for (std::int32_t system = 0; system < kDifferenceSystems; ++system) {
    for (const std::uint8_t geometry : std::initializer_list<std::uint8_t>{0, 3, 20}) {
      for (const bool byEllipsoid : {false, true}) {
        if (byEllipsoid && !IsEllipseSystem(system)) continue;
        Case one{DefaultSettings(system), geometry, byEllipsoid};
        one.difference.ownFormula = geometry == 3;
        const JudgeConditions conditions = ConditionsOf(one);
        const JudgeLimits limits = byEllipsoid ? JudgeLimits(SystemEllipsoid()) : JudgeLimits(Box());
        const JudgeStandards prepared(conditions, BatchOf(standards), {limits});
        JudgementTable table;
        ASSERT_TRUE(JudgeTrials(conditions, prepared, standardOf, BatchOf(trials), table, {3, nullptr}));
        for (std::size_t t = 0; t < trials.size(); ++t) {
          CVarexCalc calc = ContextOf(one, standards[standardOf[t]]);
          calc.Evaluate(RecordOf(trials[t]), evaluations);
          for (std::size_t j = 0; j < 3; ++j) {
            ExpectSame(table.At(t, j), calc, evaluations[static_cast<std::ptrdiff_t>(j)], j,
                       one.Text() + ", trial " + std::to_string(t) + ", illuminant " + std::to_string(j));
          }
        }
      }
    }
  }
}

// One standard, pairs, standards of their own with limits and angles of their own: each trial is judged as if it were alone.
TEST(JudgeBatch, ATrialIsJudgedAsIfItWereAlone) {
  const std::vector<Curve> curves = Curves(1400, 2.0, 3);
  JudgeConditions conditions;
  conditions.difference = DefaultSettings(vrxSystemDin6175);
  std::vector<JudgeLimits> limits;
  std::vector<double> angles;
  std::vector<std::size_t> standardOf;
  for (std::size_t i = 0; i < curves.size(); ++i) {
    standardOf.push_back(i / 3 * 7 % curves.size());
    angles.push_back(i % 2 == 0 ? 15.0 : -45.0);
    for (std::size_t j = 0; j < 3; ++j) {
      CBoxTolData box = Box();
      box[static_cast<std::ptrdiff_t>(j)] = 0.5 + static_cast<double>(i % 5);
      limits.emplace_back(box);
    }
  }
  JudgementTable together, alone;
  JudgeTrials(conditions, JudgeStandards(conditions, BatchOf(curves), limits, angles), standardOf,
              BatchOf(curves), together, {4, nullptr});
  for (std::size_t t = 0; t < curves.size(); t += 37) {
    const std::size_t s = standardOf[t];
    const JudgeStandards standard(conditions, CurveBatch{curves[s]},
                                  {limits[3 * s], limits[3 * s + 1], limits[3 * s + 2]}, {angles[s]});
    JudgeTrials(conditions, standard, {}, CurveBatch{curves[t]}, alone);
    for (std::size_t j = 0; j < 3; ++j) {
      const JudgementUnder a = together.At(t, j), b = alone.At(0, j);
      EXPECT_TRUE(std::ranges::equal(a.difference, b.difference, AreSame)) << t;
      EXPECT_TRUE(a.verdict == b.verdict && a.components == b.components && a.breach.limit == b.breach.limit)
          << t;
    }
  }
}

// L*a*b* under one illuminant against a standard at (50, 0, 0), by dE*ab.
JudgementUnder JudgeLab(JudgeConditions conditions, const JudgeLimits& limits, std::array<double, 3> trial,
                        std::array<double, 3> standard = {50.0, 0.0, 0.0}) {
  if (conditions.difference.system == vrxSystemCmc) conditions.difference = {};
  conditions.illuminants = {vrxIllumD65};
  const BatchView<const double, 3> standards{std::span<const double>(standard)},
      trials{std::span<const double>(trial)};
  JudgementTable table;
  JudgeTrials(conditions, JudgeStandards(conditions, LabSamples{{&standards, 1}}, {limits}), {},
              LabSamples{{&trials, 1}}, table);
  return table.At(0, 0);
}

CBoxTolData BoxOf(const double (&limits)[7]) {
  CBoxTolData box;
  box.SetAll(limits);
  return box;
}

TEST(JudgeBatch, SaysWhichLimitWasBrokenAndByHowMuch) {
  constexpr double kOpen = std::numeric_limits<double>::infinity();
  const JudgeLimits box = BoxOf({1, 2, 1, 1, 0.5, 0.5, 3}),
                    total = BoxOf({kOpen, kOpen, kOpen, kOpen, kOpen, kOpen, 1.5}),
                    oneSided = BoxOf({kOpen, 1, kOpen, kOpen, kOpen, kOpen, kOpen});
  const struct {
    const char* name;
    JudgeLimits limits;
    VerdictRule rule;
    std::array<double, 3> trial;
    Verdict verdict;
    BrokenLimit limit;
    double value, bound;
  } kRows[] = {
      {"inside", box, VerdictRule::kWorse, {50.2, 0, 0}, kPass, BrokenLimit::kNone, kUnset, kUnset},
      {"b*, of which most is used",
       box,
       VerdictRule::kWorse,
       {51.5, 0, -1},
       kFail,
       BrokenLimit::kThird,
       -1,
       -0.5},
      {"the minus limit of L*", box, VerdictRule::kWorse, {47, 0, 0}, kFail, BrokenLimit::kFirst, -3, -2},
      {"the total beside its box",
       box,
       VerdictRule::kTotal,
       {47, 0, 2},
       kFail,
       BrokenLimit::kTotal,
       std::sqrt(13),
       3},
      {"a warning of the total",
       total,
       VerdictRule::kWorse,
       {51.2, 0, 0},
       kWarning,
       BrokenLimit::kTotal,
       1.2,
       1.125},
      {"components alone",
       box,
       VerdictRule::kComponents,
       {50, 0.9, 0},
       kWarning,
       BrokenLimit::kSecond,
       0.9,
       0.75},
      {"no limits of components",
       total,
       VerdictRule::kComponents,
       {90, 40, 40},
       kPass,
       BrokenLimit::kNone,
       kUnset,
       kUnset},
      {"one open side: far",
       oneSided,
       VerdictRule::kWorse,
       {99, 0, 0},
       kPass,
       BrokenLimit::kNone,
       kUnset,
       kUnset},
      {"one open side: its warning",
       oneSided,
       VerdictRule::kWorse,
       {49.2, 0, 0},
       kWarning,
       BrokenLimit::kFirst,
       -0.8,
       -0.75},
      {"one open side: beyond",
       oneSided,
       VerdictRule::kWorse,
       {48, 0, 0},
       kFail,
       BrokenLimit::kFirst,
       -2,
       -1},
      {"an ellipsoid", CEllipseData(), VerdictRule::kWorse, {50, 0, 3}, kFail, BrokenLimit::kEllipsoid, 2, 1},
  };
  for (const auto& row : kRows) {
    JudgeConditions conditions;
    conditions.rule = row.rule;
    const JudgementUnder got = JudgeLab(conditions, row.limits, row.trial);
    EXPECT_EQ(got.verdict, row.verdict) << row.name;
    EXPECT_EQ(got.breach.limit, row.limit) << row.name;
    EXPECT_NEAR(got.breach.value, row.value, 1e-12) << row.name;
    EXPECT_NEAR(got.breach.bound, row.bound, 1e-12) << row.name;
    if (got.verdict != kPass) {
      EXPECT_NEAR(got.breach.Excess(), row.value - row.bound, 1e-12) << row.name;
    }
  }
}

// On the circle of C* = 10 a quarter turn is a chord of 14.14; the box of L*C*h allows dH* of 1.
// Greys of ISO 105-A02 (changes) and A03 (staining): what passes is the reported half step.
// Everything behind the sums is the judgement of the colours that they make.
TEST(JudgeBatch, FineCurvesAreJudgedByTheirOwnSums) {
  const JudgeConditions conditions;
  std::vector<double> samples(3 * 85);
  for (std::size_t i = 0; i < samples.size(); ++i)
    samples[i] = 40.0 + static_cast<double>(i % 85 % (7 + i / 85));
  const FineCurveBatch standard{std::span<const double>(samples).first(85)}, trials{samples};
  std::vector<double> xyz(3 * 3 * 3);
  std::vector<BatchView<double, 3>> under;
  for (std::size_t j = 0; j < 3; ++j) under.emplace_back(std::span(xyz).subspan(9 * j, 9));
  ASSERT_TRUE(TristimulusBatch(conditions.illuminants, conditions.observer, trials, under));
  std::vector<BatchView<const double, 3>> first, all;
  for (const auto& view : under) first.emplace_back(view.Rows(0, 1)), all.emplace_back(view);
  JudgementTable byCurves, byColors;
  ASSERT_TRUE(JudgeTrials(conditions, JudgeStandards(conditions, standard), {}, trials, byCurves));
  ASSERT_TRUE(
      JudgeTrials(conditions, JudgeStandards(conditions, XyzSamples{first}), {}, XyzSamples{all}, byColors));
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 3; ++j)
      EXPECT_EQ(byCurves.At(i, j).difference, byColors.At(i, j).difference) << i << j;
  }
  EXPECT_GT(byCurves.At(2, 0).difference.back(), 0.1);
}

TEST(JudgeBatch, AGradeBelowTheLeastFails) {
  constexpr double kOpen = std::numeric_limits<double>::infinity();
  const struct {
    GreyScale scale;
    double least, limit, dL;
    Verdict verdict;
    BrokenLimit broken;
    double step, excess;
  } kRows[] = {
      {GreyScale::kChange, 4, kOpen, 1.7, kPass, BrokenLimit::kNone, 4, 0},
      {GreyScale::kChange, 4, kOpen, 2.1, kPass, BrokenLimit::kNone, 4, 0},  // 3.76
      {GreyScale::kChange, 4, kOpen, 2.5, kFail, BrokenLimit::kGrade, 3.5, -0.5},
      {GreyScale::kChange, 0, kOpen, 13.6, kPass, BrokenLimit::kNone, 1, 0},
      {GreyScale::kChange, 5, kOpen, 0.8, kFail, BrokenLimit::kGrade, 4.5, -0.5},
      {GreyScale::kChange, 4, 1.0, 2.5, kFail, BrokenLimit::kTotal, 3.5, 1.5},  // more of the total is used
      {GreyScale::kChange, 4, 2.4, 2.5, kFail, BrokenLimit::kGrade, 3.5, -0.5},
      {GreyScale::kStaining, 4, kOpen, 4.3, kPass, BrokenLimit::kNone, 4, 0},
      {GreyScale::kStaining, 4, kOpen, 6.0, kFail, BrokenLimit::kGrade, 3.5, -0.5},
  };
  for (const auto& row : kRows) {
    JudgeConditions conditions;
    conditions.grade = {row.scale, row.least};
    const JudgementUnder got = JudgeLab(conditions, TotalLimit(row.limit), {50 + row.dL, 0, 0});
    EXPECT_EQ(got.verdict, row.verdict) << row.dL;
    EXPECT_EQ(got.breach.limit, row.broken) << row.dL;
    EXPECT_EQ(HalfStepGrade(got.grade), row.step) << row.dL;
    if (row.verdict == kFail) {
      EXPECT_NEAR(got.breach.Excess(), row.excess, 1e-12) << row.dL;
    }
  }
  JudgeConditions conditions;
  conditions.grade = {GreyScale::kChange, 1};
  const JudgementUnder unset = JudgeLab(conditions, TotalLimit(kOpen), {kUnset, kUnset, kUnset});
  EXPECT_TRUE(unset.verdict == kFail && unset.breach.limit == BrokenLimit::kNoDifference &&
              IsUnset(unset.grade));
  EXPECT_TRUE(IsUnset(JudgeLab({}, CBoxTolData(), {50, 0, 0}).grade));
}

// Of the trial alone: the same against every standard, and never under the first illuminant.
TEST(JudgeBatch, InconstancyIsTheIndexOfTheTrial) {
  const std::vector<Curve> curves = Curves(600, 20.0, 11);
  JudgeConditions conditions;
  conditions.illuminants = {vrxIllumA, vrxIllumD65};
  conditions.inconstancy = {5.0};
  const JudgeStandards grey(conditions, CurveBatch{curves[6]},
                            {TotalLimit(std::numeric_limits<double>::infinity())});
  JudgementTable table;
  JudgeTrials(conditions, grey, {}, BatchOf(curves), table);
  std::array<int, 3> verdicts{};
  for (std::size_t i = 0; i < curves.size(); ++i) {
    const JudgementUnder first = table.At(i, 0), got = table.At(i, 1);
    const double index =
        InconstancyIndex(vrxIllumA, vrxIllumD65, kObserver10, RecordOf(curves[i])[0], conditions.difference);
    ASSERT_TRUE(AreSame(got.inconstancy, index)) << i << ": " << got.inconstancy << " " << index;
    EXPECT_TRUE(IsUnset(first.inconstancy));
    if (!got.available || std::isnan(index)) continue;
    const Verdict wanted = index > 5.0 ? kFail : index > 3.75 ? kWarning : kPass;
    ASSERT_EQ(got.verdict, wanted) << i;
    ++verdicts[static_cast<std::size_t>(got.verdict)];
    if (wanted == kPass) continue;
    EXPECT_EQ(got.breach.limit, BrokenLimit::kInconstancy);
    EXPECT_TRUE(got.breach.value == index && got.breach.bound == (wanted == kFail ? 5.0 : 3.75));
  }
  EXPECT_GT(std::ranges::min(verdicts), 0);
  conditions.inconstancy = {-1.0};
  EXPECT_THROW(JudgeTrials(conditions, grey, {}, BatchOf(curves), table), CInvalidArgException);
}

TEST(JudgeBatch, TheReasonOfAHueIsItsChord) {
  JudgeConditions conditions;
  conditions.difference = DefaultSettings(vrxSystemLch);
  const JudgementUnder got = JudgeLab(conditions, BoxOf({1, 1, 1, 1, 1, 1, 99}), {50, 0, 10}, {50, 10, 0});
  EXPECT_EQ(got.breach.limit, BrokenLimit::kThird);
  EXPECT_NEAR(got.breach.value, 10 * std::sqrt(2.0), 1e-9);
  EXPECT_EQ(got.breach.bound, 1.0);
  EXPECT_EQ(ElementOf(got.breach.limit, vrxSystemLch), CDeltaValues::kHue);
}

TEST(JudgeBatch, UnsetFollowsFromTheSamplesAndNoNumberNeverPasses) {
  JudgeConditions conditions;
  // A difference in the middle of what a record takes for unset.
  const JudgementUnder tiny = JudgeLab(conditions, CBoxTolData(), {1.00001, 1.00001, 1.00001}, {1, 1, 1});
  EXPECT_TRUE(tiny.available);
  EXPECT_EQ(tiny.verdict, kPass);
  EXPECT_NEAR(tiny.difference[6], std::sqrt(3.0) * 1e-5, 1e-15);
  const JudgementUnder unset = JudgeLab(conditions, CBoxTolData(), {kUnset, kUnset, kUnset});
  EXPECT_FALSE(unset.available);
  EXPECT_EQ(unset.verdict, kFail);
  EXPECT_EQ(unset.breach.limit, BrokenLimit::kNoDifference);
  // l = 0: the standard against itself is 0 / 0.
  conditions.difference = {vrxSystemCie94, {0, 1, 1, 1}};
  conditions.rule = VerdictRule::kTotal;
  const JudgementUnder none = JudgeLab(conditions, CBoxTolData(), {50, 0, 0});
  EXPECT_TRUE(std::isnan(none.difference[6]) && std::isnan(none.breach.Excess()));
  EXPECT_EQ(none.verdict, kFail);
  CBoxTolData limits;
  limits[CBoxTolData::kTotal] = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(JudgeLab({}, limits, {50, 0, 0}).verdict, kFail);
}

TEST(JudgeBatch, WhatDoesNotFitIsRefused) {
  const std::vector<Curve> curves = Curves(4, 1.0, 4);
  const JudgeConditions conditions;
  JudgeConditions unknown, none, noFactor;
  unknown.difference.system = kDifferenceSystems;
  none.illuminants = {static_cast<vrxIlluminant>(27)};
  noFactor.warningFactor = std::numeric_limits<double>::quiet_NaN();
  const JudgeStandards two(conditions, CurveBatch{{curves[0].data(), 80}});
  JudgementTable table;
  const std::size_t beyond[] = {0, 1, 2, 0};
  const std::function<void()> refused[] = {
      [&] { JudgeStandards(unknown, BatchOf(curves)); },
      [&] { JudgeStandards(none, BatchOf(curves)); },
      [&] {
        JudgeStandards(conditions, BatchOf(curves), {CBoxTolData(), CBoxTolData()});
      },
      [&] { JudgeStandards(conditions, BatchOf(curves), {CBoxTolData()}, {45.0}); },
      [&] { JudgeStandards({.difference = {}}, BatchOf(curves), {SystemEllipsoid()}); },
      [&] { JudgeTrials(conditions, two, {}, BatchOf(curves), table); },
      [&] { JudgeTrials(conditions, two, beyond, BatchOf(curves), table); },
      [&] {
        JudgeTrials(noFactor, two, {}, CurveBatch{{curves[0].data(), 80}}, table);
      },
      [&] {
        JudgeBatch(conditions, two, {}, CurveBatch{{curves[0].data(), 80}}, {});
      },
  };
  for (std::size_t i = 0; i < std::size(refused); ++i) EXPECT_THROW(refused[i](), CInvalidArgException) << i;
}

TEST(BatchRun, ExceptionsOfTheWorkComeOutAndThoseOfTheFirstBlock) {
  for (const unsigned threads : {1u, 5u}) {
    try {
      ForEachBlock({threads, nullptr}, 1000, 10, [](std::size_t from, std::size_t) {
        if (from >= 500) throw std::runtime_error(std::to_string(from));
      });
      ADD_FAILURE() << threads;
    } catch (const std::runtime_error& error) {
      EXPECT_STREQ(error.what(), "500") << threads;
    }
  }
}

}  // namespace
}  // namespace vrx
