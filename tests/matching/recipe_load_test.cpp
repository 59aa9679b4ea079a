// What the colour of a recipe leaves open: traces, the load of a clear resin, ranges, geometries, and how far it is trusted.

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <utility>

#include <vrxmath/matching/prediction_error.h>
#include <vrxmath/matching/recipe.h>

#include "tests/matching/made_up_paints.h"

namespace vrx {
namespace {

using test::MadeUpPaints;
using test::Mixture;

constexpr int32_t kResin = 50;

CColorantSystemData Plastics() {
  CColorantSystemData system = MadeUpPaints(kModelPlastics);
  CResin resin(test::Paint(kResin, 0.0, 1.0, 1.0, 0.0, 0.0));
  system.resins.Add(resin);
  return system;
}

CRecipeArray Recipes(const CColorantSystemData& system, const CReflData& curve,
                     const CRecipeSettings& settings) {
  CRecipeTarget target;
  target.curve = curve;
  CRecipeArray recipes;
  EXPECT_EQ(FormulateRecipes(system, {}, target, settings, recipes).fault, RecipeFault::kNone);
  return recipes;
}

bool Has(const CRecipe& recipe, std::initializer_list<int32_t> ids) {
  return recipe.colorants == static_cast<int32_t>(ids.size()) &&
         std::all_of(ids.begin(), ids.end(), [&](int32_t id) {
           return std::any_of(recipe.formula.begin(), recipe.formula.end(),
                              [&](const CDbFormulaElement& line) { return line.componentId == id; });
         });
}

double AmountOf(const CRecipe& recipe, int32_t id) {
  for (const CDbFormulaElement& line : recipe.formula) {
    if (line.componentId == id) return line.amount;
  }
  return 0.0;
}

// Small shares that are seen are no traces: a pale shade of three dyes, and a little carbon in white.
TEST(RecipeTraces, AreToldByTheColourTheyGive) {
  const CColorantSystemData textiles = MadeUpPaints(kModelTextiles);
  CRecipeSettings settings;
  settings.mostColorants = 3;
  settings.top = 100;
  const CReflData pale = PredictReflectance(Mixture({{1, 100.0}, {3, 0.05}, {5, 0.04}, {7, 0.03}}), textiles);
  CRecipeArray found = Recipes(textiles, pale, settings);
  EXPECT_TRUE(std::any_of(found.begin(), found.end(), [](const CRecipe& r) { return Has(r, {3, 5, 7}); }));
  const int32_t groups = found.GetSize();
  settings.trace = 0.0;
  const CRecipeArray all = Recipes(textiles, pale, settings);
  const auto within = [](const CRecipeArray& recipes) {
    return std::count_if(recipes.begin(), recipes.end(),
                         [](const CRecipe& r) { return r.isWithinTolerance; });
  };
  EXPECT_GT(within(all), 3);
  EXPECT_LE(groups, all.GetSize());
  for (const CRecipe& recipe : all) EXPECT_TRUE(recipe.alike == 0 && recipe.traces.IsEmpty());
  settings.trace = 1000.0;
  found = Recipes(textiles, pale, settings);
  ASSERT_EQ(found.GetSize(), 1) << "all are alike when everything is a trace";
  EXPECT_GT(found[0].alike, 3);
  EXPECT_GE(found[0].traces.GetSize(), 3);
  settings.trace.reset();

  const CColorantSystemData paints = MadeUpPaints(kModelPlastics);
  const CReflData grey = PredictReflectance(Mixture({{1, 99.986}, {2, 0.014}}), paints);
  settings.tolerance = 0.1;
  settings.order = RecipeOrder::kColor;
  found = Recipes(paints, grey, settings);
  EXPECT_TRUE(std::any_of(found.begin(), found.end(), [](const CRecipe& r) { return Has(r, {1, 2}); }));
}

TEST(RecipeLoad, IsGivenBoundedOrSaidToBeOpen) {
  const CColorantSystemData system = Plastics();
  const CReflData curve = PredictReflectance(Mixture({{1, 1.9}, {7, 0.1}, {kResin, 98.0}}), system);
  CRecipeSettings open;
  open.tolerance = 0.01;
  open.mostColorants = 2;
  open.top = 1;
  CRecipeSettings given = open, limited = open, ranged = open, hiding = open, bounded = open;
  given.leastLoad = given.mostLoad = 0.03;
  limited.components.Add({1, CRecipeComponent::kOffered, 0.0, 0.019, 0.0});
  limited.components.Add({1, CRecipeComponent::kOffered, 0.019, 1.0, 0.0});
  ranged.calibrated.Add({1, 0.001, 0.038, 9, 1.0, 2.0});
  hiding.black.Fill(5.0);
  hiding.white.Fill(85.0);
  hiding.thickness = 40.0;
  hiding.leastOpacity = 90.0;
  bounded.leastLoad = 0.01, bounded.mostLoad = 0.05;
  const struct {
    const char* label;
    const CRecipeSettings* settings;
    LoadBasis basis;
    double load;  // 0: whatever it is
  } rows[] = {
      {"open", &open, LoadBasis::kUndetermined, 1.0},        {"given", &given, LoadBasis::kGiven, 0.03},
      {"bounded", &bounded, LoadBasis::kUndetermined, 0.05}, {"limited", &limited, LoadBasis::kGiven, 0.02},
      {"ranged", &ranged, LoadBasis::kRange, 0.04},          {"hiding", &hiding, LoadBasis::kOpacity, 0.0},
  };
  for (const auto& row : rows) {
    const CRecipeArray found = Recipes(system, curve, *row.settings);
    ASSERT_EQ(found.GetSize(), 1) << row.label;
    const CRecipe& recipe = found[0];
    EXPECT_EQ(recipe.loadBasis, row.basis) << row.label;
    EXPECT_EQ(recipe.colorants, 2) << row.label;
    if (row.load > 0.0) {
      EXPECT_NEAR(recipe.load, row.load, 1e-7) << row.label;
    }
    EXPECT_NEAR(AmountOf(recipe, 1), 95.0 * recipe.load, 1e-4) << row.label;
    EXPECT_NEAR(AmountOf(recipe, kResin), 100.0 * (1.0 - recipe.load), 1e-6) << row.label;
    EXPECT_LT(recipe.worst, 1e-4) << row.label;
  }
  const CRecipe hides = Recipes(system, curve, hiding)[0];
  EXPECT_GE(hides.opacity, 90.0);
  EXPECT_LT(hides.opacity, 90.01) << "the least load that hides";

  CRecipeSettings wrong = open;
  wrong.leastLoad = 0.5, wrong.mostLoad = 0.4;
  EXPECT_EQ(CheckRecipe(system, {}, {curve, {}, {}}, wrong).fault, RecipeFault::kLoad);
  EXPECT_EQ(CheckRecipe(MadeUpPaints(), {}, {curve, {}, {}}, given).fault, RecipeFault::kNoClear);
}

TEST(RecipeTrust, RangesAreToldAndKept) {
  const CColorantSystemData system = MadeUpPaints();
  const CReflData curve = PredictReflectance(Mixture({{1, 90.0}, {7, 10.0}}), system);
  CRecipeSettings settings;
  settings.tolerance = 0.01;
  settings.mostColorants = 2;
  for (uint32_t id = 1; id <= 8; ++id) settings.calibrated.Add({id, 0.2, 1.0, 3, 1.0, 2.0 + id});
  const CRecipe told = Recipes(system, curve, settings)[0];
  ASSERT_EQ(told.outside.GetSize(), 1);
  EXPECT_EQ(told.outside[0], 7u);
  EXPECT_NEAR(told.expected, 9.0 * 1.5, 1e-4) << "half more for a factor of two";
  settings.isWithinRange = true;
  for (const CRecipe& recipe : Recipes(system, curve, settings)) {
    EXPECT_TRUE(recipe.outside.IsEmpty());
    for (const CDbFormulaElement& line : recipe.formula) EXPECT_GE(line.amount, 20.0 - 1e-6);
  }
  settings.isWithinRange = false;
  settings.tolerance = 10.0;
  settings.order = RecipeOrder::kExpected;
  double last = 0.0;
  for (const CRecipe& recipe : Recipes(system, curve, settings)) {
    if (!recipe.isWithinTolerance) break;
    EXPECT_GE(recipe.expected, last);
    last = recipe.expected;
  }
  EXPECT_GT(last, 0.0);
  const CPredictionError partly =
      PredictionError(Mixture({{1, 9.0}, {99, 1.0}}), system, settings.calibrated);
  EXPECT_TRUE(IsUnset(partly.nineOfTen)) << "of 99 nothing is known";
  EXPECT_EQ(partly.half, 1.0);
  const CPredictionError oneLine =
                             PredictionError(Mixture({{1, 90.0}, {3, 10.0}}), system, settings.calibrated),
                         twoLines = PredictionError(Mixture({{3, 3.0}, {1, 90.0}, {3, 7.0}}), system,
                                                    settings.calibrated);
  EXPECT_EQ(twoLines.nineOfTen, oneLine.nineOfTen) << "lines of one component count together";
  EXPECT_EQ(twoLines.outside, oneLine.outside);
}

// The same solid colour at three angles, of which one is a little lighter: the largest difference counts, and is made small.
TEST(RecipeGeometries, TheWorstCounts) {
  const CColorantSystemData system = MadeUpPaints();
  CRecipeTarget target;
  target.curve = PredictReflectance(Mixture({{1, 80.0}, {3, 15.0}, {7, 5.0}}), system);
  CReflData lighter = target.curve, metallic = target.curve;
  for (int32_t w = 0; w < kWavelengths; ++w) lighter[w] += 1.0, metallic[w] += 30.0;
  target.others.Add(target.curve);
  target.others.Add(lighter);
  CRecipeSettings settings;
  settings.top = 1;
  settings.mostColorants = 3;
  settings.order = RecipeOrder::kColor;
  CRecipeArray recipes;
  ASSERT_EQ(FormulateRecipes(system, {}, target, settings, recipes).fault, RecipeFault::kNone);
  double largest = 0.0, least = 1e9;
  for (const CReflData* curve : {&target.curve, &lighter}) {
    CRecipeTarget one;
    one.curve = *curve;
    CRecipeSettings own = settings;
    own.tolerance = 100.0;
    CRecipeArray single;
    ASSERT_EQ(FormulateRecipes(system, {}, one, own, single).fault, RecipeFault::kNone);
    least = std::min(least, single[0].worst);
  }
  for (const double difference : recipes[0].differences) largest = std::max(largest, difference);
  EXPECT_EQ(recipes[0].worst, largest);
  EXPECT_GT(recipes[0].worst, least) << "no curve is both";
  EXPECT_LT(recipes[0].worst, 0.75);
  target.others.Add(metallic);
  EXPECT_EQ(FormulateRecipes(system, {}, target, settings, recipes).fault,
            RecipeFault::kTargetChangesWithAngle);
}

}  // namespace
}  // namespace vrx
