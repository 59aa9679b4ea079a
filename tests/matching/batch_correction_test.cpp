#include <vrxmath/matching/batch_correction.h>

#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <utility>

#include "tests/matching/made_up_paints.h"

namespace vrx {
namespace {

using test::MadeUpPaints;
using test::Mixture;

struct Outcome {
  RecipeOutcome outcome;
  CCorrection before;
  CCorrectionArray corrections;
};

Outcome Correct(const CColorantSystemData& system, const CBatch& batch, const CReflData& target,
                const CCorrectionSettings& settings, const CColorantRulesData& rules = {}) {
  CRecipeTarget recipeTarget;
  recipeTarget.curve = target;
  Outcome result;
  result.outcome =
      CorrectBatch(system, rules, batch, recipeTarget, settings, result.before, result.corrections);
  return result;
}

CCorrectionSettings Settings(CorrectionAim aim, double tolerance) {
  CCorrectionSettings settings;
  settings.aim = aim;
  settings.recipe.tolerance = tolerance;
  settings.recipe.mostColorants = 2;
  return settings;
}

// A batch with the share c0 of a colorant becomes one with c1 by adding (c1 - c0) / (1 - c1) of its size.
TEST(BatchCorrection, AddsWhatTheSharesAskFor) {
  for (const int32_t model : {kModelCoatings, kModelTextiles}) {
    const CColorantSystemData system = MadeUpPaints(model);
    for (const double c1 : {0.06, 0.10, 0.15}) {
      constexpr double c0 = 0.05, size = 250.0;
      CBatch batch;
      batch.formula = Mixture({{1, 1.0 - c0}, {7, c0}});
      batch.curve = PredictReflectance(batch.formula, system);
      batch.size = size;
      const CReflData target = PredictReflectance(Mixture({{1, 1.0 - c1}, {7, c1}}), system);
      // Under one-constant models shares are of the substrate: the batch has size (1 - c0) of it.
      const double expected = model == kModelCoatings
                                  ? size * (c1 - c0) / (1.0 - c1)
                                  : size * (1.0 - c0) * (c1 / (1.0 - c1) - c0 / (1.0 - c0));
      const Outcome nearest = Correct(system, batch, target, Settings(CorrectionAim::kNearest, 0.01));
      ASSERT_EQ(nearest.outcome.fault, RecipeFault::kNone);
      ASSERT_FALSE(nearest.corrections.IsEmpty());
      const CCorrection& best = nearest.corrections[0];
      ASSERT_EQ(best.additions.GetSize(), 1) << c1;
      EXPECT_EQ(best.additions[0].componentId, 7);
      EXPECT_NEAR(best.total, expected, 1e-6 * size) << c1;
      EXPECT_LT(best.worst, 1e-6);
      EXPECT_GT(nearest.before.worst, 0.5);

      // Within a tolerance less is enough, and just so.
      const Outcome smallest = Correct(system, batch, target, Settings(CorrectionAim::kSmallest, 0.4));
      const CCorrection& least = smallest.corrections[0];
      EXPECT_TRUE(least.isWithinTolerance);
      EXPECT_LT(least.total, best.total);
      EXPECT_NEAR(least.worst, 0.4, 0.01);
    }
  }
}

// The batch is what was measured: its own error is corrected too.
TEST(BatchCorrection, StartsFromTheMeasuredBatch) {
  const CColorantSystemData system = MadeUpPaints();
  CBatch batch;
  batch.formula = Mixture({{1, 90.0}, {3, 10.0}});
  const CReflData target = PredictReflectance(batch.formula, system);
  batch.curve = PredictReflectance(Mixture({{1, 93.0}, {3, 7.0}}), system);  // weighed wrong
  const Outcome found = Correct(system, batch, target, Settings(CorrectionAim::kSmallest, 0.3));
  ASSERT_FALSE(found.corrections.IsEmpty());
  EXPECT_EQ(found.corrections[0].additions[0].componentId, 3);
  EXPECT_NEAR(found.corrections[0].total, 3.1, 1.0);  // about the 3 of 97 that are missing

  CCorrectionSettings tight = Settings(CorrectionAim::kNearest, 0.01);
  tight.mostAddition = 0.01;
  for (const CCorrection& correction : Correct(system, batch, target, tight).corrections) {
    EXPECT_LE(correction.total, 1.0 + 1e-9);
    EXPECT_FALSE(correction.isWithinTolerance);
  }
  tight = Settings(CorrectionAim::kSmallest, 0.3);
  tight.recipe.resolution = 0.25;
  const CCorrection rounded = Correct(system, batch, target, tight).corrections[0];
  EXPECT_EQ(4.0 * rounded.total, std::floor(4.0 * rounded.total));
  tight.recipe.components.Add({3, CRecipeComponent::kOffered, 0.0, 1.0, 5.0});
  tight.recipe.components.Add({4, CRecipeComponent::kOffered, 0.0, 1.0, 0.1});
  tight.aim = CorrectionAim::kCheapest;
  double last = 0.0;
  for (const CCorrection& correction : Correct(system, batch, target, tight).corrections) {
    EXPECT_GE(correction.cost, last);
    last = correction.isWithinTolerance ? correction.cost : last;
  }
  CColorantRulesData rules;
  CDWordArray1 row;
  row.Add(1), row.Add(3), row.Add(4);  // white and yellow are in the batch
  rules.AppendRow(row);
  for (const CCorrection& correction : Correct(system, batch, target, tight, rules).corrections) {
    for (const CDbFormulaElement& line : correction.additions) EXPECT_NE(line.componentId, 4);
  }
}

// New colorants come in only where the batch's own do not reach the tolerance, and some of it stays in hand.
TEST(BatchCorrection, OwnColorantsFirstAndAMargin) {
  const CColorantSystemData system = MadeUpPaints();
  CBatch batch;
  batch.formula = Mixture({{1, 95.0}, {5, 4.0}, {7, 1.0}});
  batch.curve = PredictReflectance(batch.formula, system);
  CCorrectionSettings settings = Settings(CorrectionAim::kSmallest, 0.4);
  settings.margin = 0.25;
  settings.allowNew = false;
  const CReflData near = PredictReflectance(Mixture({{1, 94.0}, {5, 4.0}, {7, 2.0}}), system);
  for (const CCorrection& correction : Correct(system, batch, near, settings).corrections) {
    for (const CDbFormulaElement& line : correction.additions) {
      EXPECT_TRUE(line.componentId == 1 || line.componentId == 5 || line.componentId == 7);
    }
  }
  const CCorrection least = Correct(system, batch, near, settings).corrections[0];
  EXPECT_LE(least.worst, 0.3 + 1e-6);
  EXPECT_GT(least.worst, 0.25);
  settings.own.Add(3);
  const CReflData far = PredictReflectance(Mixture({{1, 91.0}, {5, 4.0}, {7, 1.0}, {3, 4.0}}), system);
  ASSERT_FALSE(Correct(system, batch, far, settings).corrections.IsEmpty());
  EXPECT_EQ(Correct(system, batch, far, settings).corrections[0].additions[0].componentId, 3)
      << "own, though forgotten";
  settings.own.RemoveAll();
  EXPECT_TRUE(Correct(system, batch, far, settings).corrections[0].isWithinTolerance)
      << "new where own is not enough";
}

TEST(BatchCorrection, AnswersAndFaults) {
  const CColorantSystemData system = MadeUpPaints();
  CBatch batch;
  batch.formula = Mixture({{2, 1.0}});  // black
  batch.curve = PredictReflectance(batch.formula, system);
  const Outcome same = Correct(system, batch, batch.curve, Settings(CorrectionAim::kSmallest, 0.5));
  ASSERT_EQ(same.corrections.GetSize(), 1);
  EXPECT_TRUE(same.corrections[0].additions.IsEmpty()) << "nothing is needed";

  CBatch white;
  white.formula = Mixture({{1, 1.0}});
  white.curve = PredictReflectance(white.formula, system);
  CReflData whiter = white.curve;
  for (double& percent : whiter) percent += 3.0;
  EXPECT_TRUE(Correct(system, white, whiter, Settings(CorrectionAim::kSmallest, 0.5)).corrections.IsEmpty())
      << "nothing makes it whiter";

  using Change = std::function<void(CBatch&, CReflData&, CCorrectionSettings&)>;
  const std::pair<RecipeFault, Change> rows[] = {
      {RecipeFault::kBatchFormula, [](auto& of, auto&, auto&) { of.formula = CDbFormula(); }},
      {RecipeFault::kBatchFormula,
       [](auto& of, auto&, auto&) {
         of.formula = Mixture({{77, 1.0}});
       }},
      {RecipeFault::kBatchNotMeasured, [](auto& of, auto&, auto&) { of.curve[3] = NAN; }},
      {RecipeFault::kBatchNotMeasured, [](auto& of, auto&, auto&) { of.curve = CReflData(); }},
      {RecipeFault::kBatchBelowSurface, [](auto& of, auto&, auto&) { of.curve[9] = 2.0; }},
      {RecipeFault::kTargetNotMeasured, [](auto&, auto& target, auto&) { target[3] = NAN; }},
      {RecipeFault::kSettings, [](auto&, auto&, auto& settings) { settings.mostAddition = 0.0; }},
      {RecipeFault::kSettings, [](auto&, auto&, auto& settings) { settings.mostAddition = 100.1; }},
      {RecipeFault::kNone, [](auto&, auto&, auto& settings) { settings.mostAddition = 100.0; }},
      {RecipeFault::kSettings, [](auto&, auto&, auto& settings) { settings.recipe.mostColorants = 6; }},
      {RecipeFault::kSettings, [](auto& of, auto&, auto&) { of.size = -1.0; }},
      {RecipeFault::kSettings, [](auto&, auto&, auto& settings) { settings.margin = 1.0; }},
      {RecipeFault::kSettings, [](auto&, auto&, auto& settings) { settings.margin = -0.1; }},
      {RecipeFault::kTooManySubsets, [](auto&, auto&, auto& settings) { settings.recipe.mostSubsets = 35; }},
  };
  for (const auto& [fault, change] : rows) {
    CBatch bad = white;
    CReflData target = whiter;
    CCorrectionSettings settings = Settings(CorrectionAim::kSmallest, 0.5);
    change(bad, target, settings);
    EXPECT_EQ(Correct(system, bad, target, settings).outcome.fault, fault) << static_cast<int>(fault);
  }
}

}  // namespace
}  // namespace vrx
