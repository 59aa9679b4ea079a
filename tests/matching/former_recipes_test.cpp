// What was made before: former recipes that correct a calibration, and leftovers that are used up.

#include <algorithm>

#include <gtest/gtest.h>

#include <vrxmath/matching/former_recipes.h>
#include <vrxmath/matching/leftovers.h>
#include <vrxmath/matching/recipe.h>

#include "tests/matching/made_up_paints.h"

namespace vrx {
namespace {

using test::MadeUpPaints;
using test::Mixture;

// Paints as they really are: the blue is a quarter stronger than its calibration says, the white a little yellower.
CColorantSystemData RealPaints() {
  CColorantSystemData real = MadeUpPaints();
  CColorant changed[2];
  int32_t next = 0;
  for (const int32_t i : {0, 6}) {
    CColorantLevel level = real.colorants[i].GetLevel(0);
    for (int32_t w = 0; w < kWavelengths; ++w)
      level.values[0].absorption[w] *= i == 6 ? 1.25 : 1.0 + 0.01 * (40 - w);
    changed[next].SetId(real.colorants[i].GetId());
    changed[next].AppendLevel(level);
    real.colorants[i] = changed[next++];
  }
  return real;
}

TEST(FormerRecipes, CorrectWhatTheCalibrationGetsWrong) {
  const CColorantSystemData system = MadeUpPaints(), real = RealPaints();
  CFormerRecipeArray formers;
  const auto add = [&](const char* id, const CDbFormula& formula) {
    CFormerRecipe former;
    former.id = CString::FromUtf8(id);
    former.formula = formula;
    former.curve = PredictReflectance(formula, real);
    formers.Add(former);
  };
  add("near", Mixture({{1, 85.0}, {3, 9.0}, {7, 6.0}}));
  add("far", Mixture({{2, 50.0}, {5, 50.0}}));
  add("pair", Mixture({{1, 92.0}, {7, 8.0}}));
  CRecipeTarget target;
  target.curve = PredictReflectance(Mixture({{1, 82.0}, {3, 11.0}, {7, 7.0}}), real);
  CRecipeSettings settings;
  settings.tolerance = 0.3;
  settings.top = 2;
  CAdaptedRecipeArray adapted;
  ASSERT_EQ(AdaptFormerRecipes(system, {}, formers, target, settings, adapted).fault, RecipeFault::kNone);
  ASSERT_EQ(adapted.GetSize(), 2) << "the two nearest";
  EXPECT_EQ(adapted[0].former, 0);
  EXPECT_EQ(adapted[0].newColorants, 0);
  EXPECT_EQ(adapted[1].former, 2);
  EXPECT_EQ(adapted[1].newColorants, 1) << "the yellow";
  // One more colorant than the pair has, one that is excluded, and one that was never measured.
  CRecipeSettings narrow = settings;
  narrow.mostColorants = 2;
  narrow.components.Add({5, CRecipeComponent::kExcluded, 0.0, 1.0, 0.0});
  CFormerRecipeArray withUnmeasured = formers;
  withUnmeasured.Add(CFormerRecipe{});
  const CPassedOver passed = CountPassedOver(system, withUnmeasured, narrow);
  EXPECT_EQ(passed.tooMany, 1);
  EXPECT_EQ(passed.notOffered, 1);
  EXPECT_EQ(passed.unpredictable, 1);
  const auto trueWorst = [&](const CDbFormula& formula) {
    CRecipeSettings judge = settings;
    judge.order = RecipeOrder::kColor, judge.tolerance = 100.0;
    CReflData made = PredictReflectance(formula, real);
    double worst = 0.0;
    for (int32_t w = 0; w < kWavelengths; ++w) worst = std::max(worst, std::fabs(made[w] - target.curve[w]));
    return worst;
  };
  CRecipeArray plain;
  ASSERT_EQ(FormulateRecipes(system, {}, target, settings, plain).fault, RecipeFault::kNone);
  EXPECT_LT(trueWorst(adapted[0].recipe.formula), 0.25 * trueWorst(plain[0].formula));
  target.curve = CReflData();
  target.lab = CLabValues(50.0, 0.0, 0.0);
  EXPECT_EQ(AdaptFormerRecipes(system, {}, formers, target, settings, adapted).fault,
            RecipeFault::kNeedsCurve);
}

TEST(Leftovers, PartsOfSeveralAreUsedUp) {
  const CColorantSystemData system = MadeUpPaints();
  const auto batch = [&](const CDbFormula& formula, double size) {
    CBatch made;
    made.formula = formula;
    made.curve = PredictReflectance(formula, system);
    made.size = size;
    return made;
  };
  CArrayVarex<CBatch> stock;
  stock.Add(batch(Mixture({{1, 95.0}, {7, 5.0}}), 30.0));
  stock.Add(batch(Mixture({{1, 90.0}, {3, 10.0}}), 500.0));
  stock.Add(batch(Mixture({{2, 60.0}, {5, 40.0}}), 500.0));
  CRecipeTarget target;
  target.curve = PredictReflectance(Mixture({{1, 92.0}, {3, 5.0}, {7, 3.0}}), system);
  CRecipeSettings settings;
  settings.tolerance = 0.5;
  settings.batchSize = 100.0;
  settings.components.Add({7, CRecipeComponent::kOffered, 0.0, 1.0, 2.0});
  CLeftoverRecipeArray recipes;
  ASSERT_EQ(UseLeftovers(system, {}, stock, target, settings, recipes).fault, RecipeFault::kNone);
  ASSERT_FALSE(recipes.IsEmpty());
  const CLeftoverRecipe& best = recipes[0];
  EXPECT_TRUE(best.recipe.isWithinTolerance);
  EXPECT_GT(best.total, 75.0);
  EXPECT_LE(best.used[0], 30.0 + 1e-9) << "there is no more";
  EXPECT_EQ(best.used[2], 0.0);
  double fresh = 0.0, cost = 0.0;
  for (const CDbFormulaElement& line : best.recipe.formula) {
    fresh += line.amount;
    if (line.componentId == 7) cost = 2.0 * line.amount;
  }
  EXPECT_NEAR(best.total + fresh, 100.0, 1e-6);
  EXPECT_NEAR(best.recipe.cost, cost, 1e-9);
  for (int32_t i = 1; i < recipes.GetSize() && recipes[i].recipe.isWithinTolerance; ++i) {
    EXPECT_LE(recipes[i].total, recipes[i - 1].total + 1e-9);
  }
  // What a recipe names is of the system, also where a leftover is but a trace.
  settings.trace = 3.0;
  ASSERT_EQ(UseLeftovers(system, {}, stock, target, settings, recipes).fault, RecipeFault::kNone);
  int32_t folded = 0;
  for (const CLeftoverRecipe& recipe : recipes) {
    folded += recipe.recipe.alike;
    for (const uint32_t id : recipe.recipe.traces) {
      EXPECT_TRUE(std::any_of(system.colorants.begin(), system.colorants.end(),
                              [id](const CColorant& colorant) { return colorant.GetId() == id; }))
          << id;
    }
  }
  EXPECT_GT(folded, 0);
  settings.trace.reset();
  // Rules count what is in a leftover.
  CColorantRulesData rules;
  CDWordArray1 row;
  row.Add(7), row.Add(3);
  rules.AppendRow(row);
  ASSERT_EQ(UseLeftovers(system, rules, stock, target, settings, recipes).fault, RecipeFault::kNone);
  for (const CLeftoverRecipe& recipe : recipes) EXPECT_FALSE(recipe.used[0] > 0.0 && recipe.used[1] > 0.0);
}

}  // namespace
}  // namespace vrx
