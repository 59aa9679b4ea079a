#include <vrxmath/matching/recipe.h>

#include <algorithm>
#include <bit>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <utility>

#include <vrxmath/colorimetry/color_differences.h>
#include <vrxmath/colorimetry/color_spaces.h>
#include <vrxmath/colorimetry/single_figures.h>
#include <vrxmath/numeric/instruction_set.h>

#include "tests/matching/made_up_paints.h"

namespace vrx {
namespace {

using test::MadeUpPaints;
using test::Mixture;

// Sanitizers see the same code in fewer searches.
#ifdef VRX_SANITIZED
constexpr bool kFewer = true;
#else
constexpr bool kFewer = false;
#endif

CRecipeArray Recipes(const CColorantSystemData& system, const CReflData& curve,
                     const CRecipeSettings& settings, const CColorantRulesData& rules = {}) {
  CRecipeTarget target;
  target.curve = curve;
  CRecipeArray recipes;
  EXPECT_EQ(FormulateRecipes(system, rules, target, settings, recipes).fault, RecipeFault::kNone);
  EXPECT_FALSE(recipes.IsEmpty());
  return recipes;
}

// Components and the bits of all numbers of recipes.
std::string BitsOf(const CRecipeArray& recipes) {
  std::string text;
  const auto add = [&](double value) { text += std::to_string(std::bit_cast<uint64_t>(value)) + " "; };
  for (const CRecipe& recipe : recipes) {
    for (const CDbFormulaElement& line : recipe.formula) {
      text += std::to_string(line.componentId) + ":";
      add(line.amount);
    }
    for (const double difference : recipe.differences) add(difference);
    for (const double value : {recipe.metamerism, recipe.rms, recipe.cost}) add(value);
    text += "\n";
  }
  return text;
}

// From D65 to A and CWF, those that the settings have without being told.
double WorstInconstancy(const CReflData& curve) {
  const auto to = [&](vrxIlluminant test) {
    return InconstancyIndex(vrxIllumD65, test, kObserver10, curve, CRecipeSettings().difference);
  };
  return std::max(to(vrxIllumA), to(vrxIllumCWF));
}

CRecipeSettings Settings(RecipeOrder order = RecipeOrder::kFewest, int32_t mostColorants = 4) {
  CRecipeSettings settings;
  settings.order = order;
  settings.mostColorants = mostColorants;
  settings.tolerance = 0.01;
  return settings;
}

TEST(Recipes, AFormulaComesBackFromItsCurve) {
  const CDbFormula formulas[] = {
      Mixture({{5, 100.0}}),
      Mixture({{1, 99.0}, {2, 1.0}}),
      Mixture({{1, 80.0}, {3, 15.0}, {7, 5.0}}),
      Mixture({{1, 60.0}, {2, 5.0}, {4, 30.0}, {8, 5.0}}),
      Mixture({{1, 50.0}, {3, 20.0}, {5, 10.0}, {7, 5.0}, {8, 15.0}}),
  };
  for (const int32_t model : {kModelCoatings, kModelTextiles}) {
    const CColorantSystemData system = MadeUpPaints(model);
    for (const auto objective :
         {RecipeObjective::kTristimulus, RecipeObjective::kSpectral, RecipeObjective::kCombined}) {
      for (const auto mode : {SaundersonMode::kIncluded, SaundersonMode::kExcluded, SaundersonMode::kNone}) {
        const bool isSpectral = objective == RecipeObjective::kSpectral;
        if (kFewer && mode != (isSpectral ? SaundersonMode::kExcluded : SaundersonMode::kIncluded)) continue;
        for (const CDbFormula& formula : formulas) {
          CRecipeSettings settings = Settings(RecipeOrder::kFewest, 5);
          settings.objective = objective;
          settings.mode = mode;
          const bool hasSubstrate = model == kModelTextiles;
          if (hasSubstrate && formula[0].componentId != 1) continue;  // a dye needs its substrate
          settings.batchSize = hasSubstrate ? formula[0].amount : 100.0;
          const CReflData curve = PredictReflectance(formula, system, mode);
          const CRecipe best = Recipes(system, curve, settings)[0];
          ASSERT_EQ(best.formula.GetSize(), formula.GetSize()) << formula.GetSize();
          for (int32_t i = 0; i < formula.GetSize(); ++i) {
            EXPECT_EQ(best.formula[i].componentId, formula[i].componentId);
            EXPECT_NEAR(best.formula[i].amount, formula[i].amount, 1e-4) << formula.GetSize() << " " << i;
          }
          EXPECT_LT(best.worst, 1e-6);
          EXPECT_TRUE(best.isWithinTolerance);
        }
      }
    }
  }
}

TEST(Recipes, TheSameBitsWhateverDoesTheWork) {
  const CColorantSystemData system = MadeUpPaints();
  CReflData curve = PredictReflectance(Mixture({{1, 60.0}, {2, 5.0}, {4, 30.0}, {8, 5.0}}), system);
  for (int32_t w = 0; w < kWavelengths; ++w) curve[w] += 0.3 * ((w * 7) % 5 - 2);
  CRecipeSettings settings = Settings(RecipeOrder::kColor, 5);
  const std::string expected = BitsOf(Recipes(system, curve, settings));

  settings.threads = 3;
  EXPECT_EQ(BitsOf(Recipes(system, curve, settings)), expected) << "threads";
  const InstructionSet before = CurrentInstructionSet();
  for (const InstructionSet set : kInstructionSets) {
    if (!UseInstructionSet(set)) continue;
    EXPECT_EQ(BitsOf(Recipes(system, curve, settings)), expected) << InstructionSetName(set);
  }
  UseInstructionSet(before);

  // As many pre-ranked subsets as there are: all of them.
  settings.prerank = 1'000'000;
  EXPECT_EQ(BitsOf(Recipes(system, curve, settings)), expected) << "pre-ranked";
  settings.prerank = 5;
  const std::string fewer = BitsOf(Recipes(system, curve, settings));
  settings.threads = 1;
  EXPECT_EQ(BitsOf(Recipes(system, curve, settings)), fewer) << "pre-ranked, on one thread";
  settings.prerank = 0;

  CColorantSystemData permuted = system;
  for (int32_t i = 0; i < 8; ++i) permuted.colorants[i] = system.colorants[(5 * i + 3) % 8];
  EXPECT_EQ(BitsOf(Recipes(permuted, curve, settings)), expected) << "the order of components";
  CColorantSystemData larger = system;
  larger.colorants.Add(test::Paint(9, 50.0, 5.0, 60.0, 0.01, 90.0));
  settings.top = 40;
  CRecipeArray without;
  for (const CRecipe& recipe : Recipes(larger, curve, settings)) {
    if (recipe.formula[recipe.formula.GetSize() - 1].componentId != 9 && without.GetSize() < 10)
      without.Add(recipe);
  }
  EXPECT_EQ(BitsOf(without), expected) << "a colorant that is not used";
}

// With one illuminant the objective is the difference itself: no mixture of two that a fine grid has is nearer.
TEST(Recipes, NoPairOfAGridIsNearer) {
  const CColorantSystemData system = MadeUpPaints();
  CReflData curve;
  for (int32_t w = 0; w < kWavelengths; ++w) curve[w] = 30.0 + 12.0 * std::sin(0.15 * w);
  CRecipeSettings settings = Settings(RecipeOrder::kColor, 2);
  settings.difference = DefaultSettings(vrxSystemLab);
  settings.illuminants.SetSize(1);
  settings.top = 1;
  const CRecipe best = Recipes(system, curve, settings)[0];
  EXPECT_FALSE(best.isWithinTolerance) << "out of the gamut of pairs, and so marked";
  CColorValues standard, trial;
  const auto fill = [&](const CReflData& of, CColorValues& color) {
    of.Tristimulus(vrxIllumD65, kObserver10, color.tristimulus);
    FillCoordinates(vrxSystemLab, vrxIllumD65, kObserver10, color);
  };
  fill(curve, standard);
  double nearest = 1e9;
  for (int32_t a = 1; a <= 8; ++a) {
    for (int32_t b = a + 1; b <= 8; ++b) {
      for (double share = 0.0; share <= 100.0; share += 0.5) {
        fill(PredictReflectance(Mixture({{a, share}, {b, 100.0 - share}}), system), trial);
        CDeltaValues delta;
        ComputeDifference(settings.difference, vrxIllumD65, kObserver10, standard, trial, 0.0, delta);
        nearest = std::min(nearest, delta[6]);
      }
    }
  }
  // The steps run in the metric at the target; far from it that is the difference to within a few percent.
  EXPECT_LE(best.worst, 1.04 * nearest);
}

// A colorant whose K is larger by 30 % up to a share of 2 %.
CColorant StrongerInTraces(const CColorant& colorant) {
  CColorantLevel low = colorant.GetLevel(0);
  low.concentration = 0.02;
  for (double& K : low.values[0].absorption) K *= 1.3;
  CColorant changed;
  changed.SetId(colorant.GetId());
  changed.AppendLevel(low);
  changed.AppendLevel(colorant.GetLevel(0));
  return changed;
}

// The few that are asked for are the first of all: what the search leaves out early, to keep lists short, is none of them.
// With 14 colorants there are 1001 subsets of four.
TEST(Recipes, TheFirstOfAllAreFoundAmongThousands) {
  CColorantSystemData system = MadeUpPaints();
  const uint32_t last = kFewer ? 11 : 14;
  for (uint32_t id = 9; id <= last; ++id) {
    const double place = id - 9.0;
    system.colorants.Add(test::Paint(id, 2.0 + place, 3.0 + 6.0 * place, 7.0, 0.5 - 0.06 * place, 0.02));
  }
  const CReflData curve = PredictReflectance(Mixture({{1, 80.0}, {3, 15.0}, {7, 5.0}}), system);
  const struct {
    const char* label;
    RecipeOrder order;
    double tolerance, leastOpacity, most;
    bool hasLevels;
  } rows[] = {
      {"cost", RecipeOrder::kCost, 3.0, 0.0, 1.0, false},
      {"cost, hardly any within the tolerance", RecipeOrder::kCost, 0.001, 0.0, 1.0, false},
      {"cost of what hides", RecipeOrder::kCost, 3.0, 50.0, 1.0, false},
      {"metamerism", RecipeOrder::kMetamerism, 3.0, 0.0, 1.0, false},
      {"inconstancy", RecipeOrder::kInconstancy, 3.0, 0.0, 1.0, false},
      {"colour of what hides", RecipeOrder::kColor, 0.5, 50.0, 1.0, false},
      {"colour, where few hide", RecipeOrder::kColor, 0.5, 61.0, 1.0, false},
      {"colour, limited", RecipeOrder::kColor, 0.5, 0.0, 0.7, false},
      {"cost, limited", RecipeOrder::kCost, 3.0, 0.0, 0.7, false},
      {"colour, by levels", RecipeOrder::kColor, 0.5, 0.0, 1.0, true},
  };
  for (const auto& row : rows) {
    CColorantSystemData own = system;
    if (row.hasLevels) own.colorants[6] = StrongerInTraces(own.colorants[6]);
    CRecipeSettings settings = Settings(row.order);
    settings.tolerance = row.tolerance;
    settings.leastOpacity = row.leastOpacity;
    settings.black.Fill(5.0);
    settings.white.Fill(85.0);
    settings.thickness = 1.0;
    for (uint32_t id = 1; id <= last; ++id) {
      settings.components.Add({id, CRecipeComponent::kOffered, 0.0, row.most, 1.0 + (id * 5) % 7});
    }
    settings.top = 4000;
    CRecipeArray first = Recipes(own, curve, settings);
    EXPECT_GT(first.GetSize(), 3) << row.label;
    settings.top = 3;
    first.SetSize(3);
    EXPECT_EQ(BitsOf(Recipes(own, curve, settings)), BitsOf(first)) << row.label;
  }
}

TEST(Recipes, ChoiceLimitsAndRules) {
  const CColorantSystemData system = MadeUpPaints();
  const CReflData curve = PredictReflectance(Mixture({{1, 60.0}, {2, 5.0}, {4, 30.0}, {8, 5.0}}), system);
  const auto has = [](const CRecipe& recipe, int32_t id) {
    return std::any_of(recipe.formula.begin(), recipe.formula.end(),
                       [&](const CDbFormulaElement& line) { return line.componentId == id; });
  };
  CRecipeSettings settings = Settings(RecipeOrder::kColor);
  settings.components.Add({7, CRecipeComponent::kRequired, 0.01, 1.0, 0.0});
  settings.components.Add({8, CRecipeComponent::kExcluded, 0.0, 1.0, 0.0});
  settings.components.Add({1, CRecipeComponent::kOffered, 0.0, 0.55, 2.0});
  for (const CRecipe& recipe : Recipes(system, curve, settings)) {
    EXPECT_TRUE(has(recipe, 7));
    EXPECT_FALSE(has(recipe, 8));
    double cost = 0.0;
    for (const CDbFormulaElement& line : recipe.formula) {
      EXPECT_GE(line.amount, line.componentId == 7 ? 1.0 - 1e-9 : 0.0);
      EXPECT_LE(line.amount, line.componentId == 1 ? 55.0 + 1e-9 : 100.0);
      if (line.componentId == 1) cost = 2.0 * line.amount;
    }
    EXPECT_NEAR(recipe.cost, cost, 1e-9);
  }
  // Required colorants that the target has no use for are there with the least share that counts.
  CRecipeSettings useless = Settings(RecipeOrder::kColor);
  for (const uint32_t id : {1u, 3u, 5u, 6u})
    useless.components.Add({id, CRecipeComponent::kRequired, 0.0, 1.0, 0.0});
  const CRecipe spoilt = Recipes(system, PredictReflectance(Mixture({{1, 100.0}}), system), useless)[0];
  EXPECT_EQ(spoilt.colorants, 4);
  for (const CDbFormulaElement& line : spoilt.formula) {
    EXPECT_GE(line.amount, 0.001 - 1e-9);
    EXPECT_LE(line.amount, line.componentId == 1 ? 99.997 + 1e-9 : 0.01);
  }
  CColorantRulesData rules;
  CDWordArray1 row;
  row.Add(1), row.Add(4);
  rules.AppendRow(row);
  for (const CRecipe& recipe : Recipes(system, curve, Settings(RecipeOrder::kColor), rules)) {
    EXPECT_FALSE(has(recipe, 1) && has(recipe, 4));
  }
  CColorantSystemData switched = system;
  switched.componentsA.Add({4, kKindColorant, 0, false});
  EXPECT_FALSE(has(Recipes(switched, curve, Settings())[0], 4));
}

TEST(Recipes, NoiseRoundingOpacityAndOrders) {
  const CColorantSystemData system = MadeUpPaints();
  CReflData curve = PredictReflectance(Mixture({{1, 80.0}, {3, 15.0}, {7, 5.0}}), system);
  CRecipeSettings settings;
  for (int32_t w = 0; w < kWavelengths; ++w) curve[w] *= 1.0 + 0.001 * ((w * 13) % 3 - 1);
  EXPECT_EQ(Recipes(system, curve, settings)[0].colorants, 3) << "0.1 % of noise";

  settings.resolution = 0.5;
  settings.black.Fill(5.0);
  settings.white.Fill(85.0);
  settings.thickness = 3.0;
  settings.leastOpacity = 60.0;
  for (const CRecipe& recipe : Recipes(system, curve, settings)) {
    double total = 0.0;
    for (const CDbFormulaElement& line : recipe.formula) {
      EXPECT_EQ(2.0 * line.amount, std::floor(2.0 * line.amount));
      EXPECT_GT(line.amount, 0.0);
      total += line.amount;
    }
    EXPECT_EQ(total, 100.0);
    EXPECT_EQ(recipe.curve[9], PredictReflectance(recipe.formula, system)[9]) << "predicted after rounding";
    EXPECT_GE(recipe.opacity, 60.0);
  }
  settings = CRecipeSettings();
  settings.tolerance = 3.0;
  for (int32_t id = 1; id <= 8; ++id) {
    settings.components.Add({static_cast<uint32_t>(id), CRecipeComponent::kOffered, 0.0, 1.0, 9.0 - id});
  }
  for (const auto order :
       {RecipeOrder::kCost, RecipeOrder::kMetamerism, RecipeOrder::kInconstancy, RecipeOrder::kColor}) {
    settings.order = order;
    double last = 0.0;
    for (const CRecipe& recipe : Recipes(system, curve, settings)) {
      if (!recipe.isWithinTolerance) break;
      const double key = order == RecipeOrder::kCost          ? recipe.cost
                         : order == RecipeOrder::kMetamerism  ? recipe.metamerism
                         : order == RecipeOrder::kInconstancy ? WorstInconstancy(recipe.curve)
                                                              : recipe.worst;
      EXPECT_GE(key, last);
      last = key;
    }
    EXPECT_GT(last, 0.0);
  }
}

// Colorants whose curves depend on the concentration: what the levels of a paint predict comes back.
TEST(Recipes, ColorantsWithLevels) {
  CColorantSystemData system = MadeUpPaints();
  system.colorants[6] = StrongerInTraces(system.colorants[6]);
  const CReflData curve = PredictReflectance(Mixture({{1, 80.0}, {3, 15.0}, {7, 5.0}}), system);
  const CRecipe best = Recipes(system, curve, Settings())[0];
  ASSERT_EQ(best.colorants, 3);
  EXPECT_NEAR(best.formula[2].amount, 5.0, 1e-4);
}

TEST(Recipes, AColourWithoutACurve) {
  const CColorantSystemData system = MadeUpPaints();
  CRecipeTarget target;
  target.lab = CLabValues(55.0, 20.0, 25.0);
  CRecipeArray recipes;
  ASSERT_EQ(FormulateRecipes(system, {}, target, Settings(), recipes).fault, RecipeFault::kNone);
  CTrisValues xyz;
  CLabValues lab;
  recipes[0].curve.Tristimulus(vrxIllumD65, kObserver10, xyz);
  XyzToLab(vrxIllumD65, kObserver10, xyz, lab);
  for (int32_t i = 0; i < 3; ++i) EXPECT_NEAR(lab[i], target.lab[i], 1e-3);
  EXPECT_TRUE(IsUnset(recipes[0].differences[1]) && IsUnset(recipes[0].rms) &&
              IsUnset(recipes[0].metamerism));
}

TEST(Recipes, TellsWhyThereIsNone) {
  const auto limit = [](CRecipeSettings& settings, uint32_t id, CRecipeComponent::Use use, double least,
                        double most) {
    settings.components.Add({id, use, least, most, 0.0});
  };
  using Change =
      std::function<void(CColorantSystemData&, CColorantRulesData&, CRecipeTarget&, CRecipeSettings&)>;
  const auto R = CRecipeComponent::kRequired, E = CRecipeComponent::kExcluded, O = CRecipeComponent::kOffered;
  const std::pair<RecipeFault, Change> rows[] = {
      {RecipeFault::kNoMixingLaw,
       [](auto& system, auto&, auto&, auto&) { system.opticalModel = kModelMetallics; }},
      {RecipeFault::kNoSubstrate,
       [](auto& system, auto&, auto&, auto&) {
         system.opticalModel = kModelTextiles;
         system.colorants[0].SetKind(kKindColorant);
       }},
      {RecipeFault::kTargetNotMeasured, [](auto&, auto&, auto& target, auto&) { target.curve[9] = NAN; }},
      {RecipeFault::kTargetNotMeasured, [](auto&, auto&, auto& target, auto&) { target.curve[9] = kUnset; }},
      {RecipeFault::kTargetNotMeasured, [](auto&, auto&, auto& target, auto&) { target = {}; }},
      {RecipeFault::kTargetBelowSurface, [](auto&, auto&, auto& target, auto&) { target.curve[9] = 3.9; }},
      {RecipeFault::kNeedsCurve,
       [](auto&, auto&, auto& target, auto& settings) {
         target = {};
         target.lab = CLabValues(50.0, 0.0, 0.0);
         settings.objective = RecipeObjective::kSpectral;
       }},
      {RecipeFault::kUnknownComponent,
       [&](auto&, auto&, auto&, auto& settings) { limit(settings, 99, R, 0, 1); }},
      {RecipeFault::kContradiction,
       [&](auto&, auto&, auto&, auto& settings) {
         limit(settings, 3, R, 0, 1), limit(settings, 3, E, 0, 1);
       }},
      {RecipeFault::kTooFewAllowed,
       [&](auto&, auto&, auto&, auto& settings) {
         for (uint32_t id = 1; id <= 5; ++id) limit(settings, id, R, 0, 1);
       }},
      {RecipeFault::kTooFewAllowed,
       [&](auto&, auto&, auto&, auto& settings) {
         for (uint32_t id = 1; id <= 8; ++id) limit(settings, id, E, 0, 1);
       }},
      {RecipeFault::kLimits, [&](auto&, auto&, auto&, auto& settings) { limit(settings, 3, O, 0.6, 0.5); }},
      {RecipeFault::kLimits,
       [&](auto&, auto&, auto&, auto& settings) {
         limit(settings, 3, O, 0.0, 0.01), settings.leastAmount = 0.02;
       }},
      {RecipeFault::kLimitsTogether,
       [&](auto&, auto&, auto&, auto& settings) {
         limit(settings, 3, R, 0.6, 1), limit(settings, 4, R, 0.5, 1);
       }},
      {RecipeFault::kLimitsTogether,
       [&](auto&, auto&, auto&, auto& settings) {
         for (uint32_t id = 1; id <= 8; ++id) limit(settings, id, O, 0, 0.2);
       }},
      {RecipeFault::kEverythingForbidden,
       [&](auto&, auto& rules, auto&, auto& settings) {
         CDWordArray1 row;
         row.Add(3), row.Add(4);
         rules.AppendRow(row);
         limit(settings, 3, R, 0, 1), limit(settings, 4, R, 0, 1);
       }},
      {RecipeFault::kTooManySubsets, [](auto&, auto&, auto&, auto& settings) { settings.mostSubsets = 161; }},
      {RecipeFault::kSettings, [](auto&, auto&, auto&, auto& settings) { settings.mostColorants = 7; }},
      {RecipeFault::kSettings, [](auto&, auto&, auto&, auto& settings) { settings.weights.Add(1.0); }},
      {RecipeFault::kSettings, [](auto&, auto&, auto&, auto& settings) { settings.leastOpacity = 98.0; }},
      {RecipeFault::kSettings, [](auto&, auto&, auto&, auto& settings) { settings.illuminants.SetSize(0); }},
      {RecipeFault::kBackings,
       [](auto&, auto&, auto&, auto& settings) { settings.black.Fill(90.0), settings.white.Fill(4.0); }},
      {RecipeFault::kBackings,
       [](auto&, auto&, auto&, auto& settings) { settings.black.Fill(90.0), settings.white.Fill(90.0); }},
      {RecipeFault::kStopped,
       [](auto&, auto&, auto&, auto& settings) { settings.progress = [](double) { return false; }; }},
      {RecipeFault::kStopped,
       [](auto&, auto&, auto&, auto& settings) {
         settings.prerank = 1;
         settings.progress = [](double part) { return part < 1.0; };
       }},
  };
  for (std::size_t i = 0; i < std::size(rows); ++i) {
    CColorantSystemData system = MadeUpPaints();
    CColorantRulesData rules;
    CRecipeTarget target;
    target.curve.Fill(50.0);
    CRecipeSettings settings;
    rows[i].second(system, rules, target, settings);
    CRecipeArray recipes;
    const RecipeOutcome outcome = FormulateRecipes(system, rules, target, settings, recipes);
    EXPECT_EQ(outcome.fault, rows[i].first) << "row " << i;
    EXPECT_TRUE(recipes.IsEmpty()) << "row " << i;
    EXPECT_TRUE(outcome.fault != RecipeFault::kTooManySubsets || outcome.subsets == 162u);
  }
}

}  // namespace
}  // namespace vrx
