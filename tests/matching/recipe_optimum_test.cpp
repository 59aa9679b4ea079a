// Recipes against all mixtures of a grid: what is called the nearest, and the cheapest, is.

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <vector>

#include <vrxmath/colorimetry/color_differences.h>
#include <vrxmath/colorimetry/color_spaces.h>
#include <vrxmath/matching/recipe.h>

#include "tests/matching/made_up_paints.h"

namespace vrx {
namespace {

using test::MadeUpPaints;
using test::Mixture;

// Of the cheapest; the nearest is looked for on half as many. Sanitizers see the same code in a quarter of the mixtures.
#ifdef VRX_SANITIZED
constexpr double kGridStep = 0.02;
#else
constexpr double kGridStep = 0.01;
#endif

double WorstOf(const CReflData& target, const CReflData& curve, const CRecipeSettings& settings) {
  double worst = 0.0;
  for (const vrxIlluminant illuminant : settings.illuminants) {
    CColorValues standard, trial;
    const auto fill = [&](const CReflData& of, CColorValues& color) {
      of.Tristimulus(illuminant, settings.observer, color.tristimulus);
      FillCoordinates(settings.difference.system, illuminant, settings.observer, color);
    };
    fill(target, standard);
    fill(curve, trial);
    CDeltaValues delta;
    ComputeDifference(settings.difference, illuminant, settings.observer, standard, trial, 0.0, delta);
    worst = std::max(worst, delta[6]);
  }
  return worst;
}

// Calls `use` (ids, shares) for every mixture of three that a grid has and the limits allow, required ones in it.
void ForEachOfGrid(
    const CRecipeSettings& settings, double step,
    const std::function<void(const std::array<int32_t, 3>&, const std::array<double, 3>&)>& use) {
  std::array<CRecipeComponent, 9> entries{};
  for (const CRecipeComponent& entry : settings.components) entries[entry.componentId] = entry;
  const auto isAllowed = [&](int32_t id, double share) {
    const CRecipeComponent& entry = entries[static_cast<std::size_t>(id)];
    if (share == 0.0) return entry.use != CRecipeComponent::kRequired;
    return entry.use != CRecipeComponent::kExcluded && share >= entry.least - 1e-9 &&
           share <= entry.most + 1e-9;
  };
  for (int32_t a = 1; a <= 8; ++a) {
    for (int32_t b = a + 1; b <= 8; ++b) {
      for (int32_t c = b + 1; c <= 8; ++c) {
        const bool hasRequired =
            std::all_of(entries.begin(), entries.end(), [&](const CRecipeComponent& entry) {
              const auto id = static_cast<int32_t>(entry.componentId);
              return entry.use != CRecipeComponent::kRequired || id == a || id == b || id == c;
            });
        if (!hasRequired) continue;
        const int32_t steps = static_cast<int32_t>(std::lround(1.0 / step));
        for (int32_t i = 0; i <= steps; ++i) {
          for (int32_t j = 0; i + j <= steps; ++j) {
            const std::array<double, 3> shares = {step * i, step * j, step * (steps - i - j)};
            if (isAllowed(a, shares[0]) && isAllowed(b, shares[1]) && isAllowed(c, shares[2]))
              use({a, b, c}, shares);
          }
        }
      }
    }
  }
}

CReflData CurveOf(const std::array<int32_t, 3>& ids, const std::array<double, 3>& shares,
                  const CColorantSystemData& system) {
  return PredictReflectance(Mixture({{ids[0], shares[0]}, {ids[1], shares[1]}, {ids[2], shares[2]}}), system);
}

struct Row {
  const char* label;
  bool isOneLamp;
  std::vector<CRecipeComponent> components;
};

std::vector<Row> Rows() {
  const auto R = CRecipeComponent::kRequired, O = CRecipeComponent::kOffered;
  return {
      {"under three illuminants", false, {}},
      {"required, of no use", true, {{6, R, 0.0, 1.0, 0.0}}},
      {"required with least shares", true, {{7, R, 0.06, 1.0, 0.0}, {3, R, 0.02, 1.0, 0.0}}},
      {"largest shares", true, {{1, O, 0.0, 0.5, 0.0}, {2, O, 0.0, 0.04, 0.0}, {3, O, 0.0, 0.3, 0.0}}},
      {"all are limited",
       false,
       {{1, O, 0.02, 0.5, 0.0},
        {2, O, 0.02, 0.4, 0.0},
        {3, O, 0.02, 0.4, 0.0},
        {4, O, 0.02, 0.4, 0.0},
        {5, O, 0.02, 0.4, 0.0},
        {6, O, 0.02, 0.4, 0.0},
        {7, R, 0.04, 0.4, 0.0},
        {8, O, 0.02, 0.6, 0.0}}},
  };
}

CReflData Wavy(double level, double height) {
  CReflData curve;
  for (int32_t w = 0; w < kWavelengths; ++w) curve[w] = level + height * std::sin(0.15 * w);
  return curve;
}

TEST(RecipeOptimum, NoMixtureOfAGridIsNearer) {
  const CColorantSystemData system = MadeUpPaints();
  for (const CReflData& target : {Wavy(30.0, 12.0), Wavy(55.0, -10.0)}) {
    for (const Row& row : Rows()) {
      CRecipeSettings settings;
      settings.order = RecipeOrder::kColor;
      settings.mostColorants = 3;
      settings.tolerance = 0.01;
      settings.difference = DefaultSettings(vrxSystemLab);
      if (row.isOneLamp) settings.illuminants.SetSize(1);
      for (const CRecipeComponent& entry : row.components) settings.components.Add(entry);
      CRecipeTarget wanted;
      wanted.curve = target;
      CRecipeArray recipes;
      ASSERT_EQ(FormulateRecipes(system, {}, wanted, settings, recipes).fault, RecipeFault::kNone)
          << row.label;
      ASSERT_FALSE(recipes.IsEmpty()) << row.label;
      double nearest = 1e9;
      ForEachOfGrid(settings, 2.0 * kGridStep, [&](const auto& ids, const auto& shares) {
        nearest = std::min(nearest, WorstOf(target, CurveOf(ids, shares, system), settings));
      });
      EXPECT_LE(recipes[0].worst, 1.03 * nearest) << row.label;
    }
  }
}

TEST(RecipeOptimum, NoMixtureOfAGridIsCheaper) {
  const CColorantSystemData system = MadeUpPaints();
  for (const double tolerance : {1.0, 3.0}) {
    CRecipeSettings settings;
    settings.order = RecipeOrder::kCost;
    settings.mostColorants = 3;
    settings.tolerance = tolerance;
    for (uint32_t id = 1; id <= 8; ++id)
      settings.components.Add({id, CRecipeComponent::kOffered, 0.0, 1.0, 1.0 + (id * 5) % 7});
    CRecipeTarget wanted;
    wanted.curve = PredictReflectance(Mixture({{1, 60.0}, {3, 30.0}, {7, 10.0}}), system);
    CRecipeArray recipes;
    ASSERT_EQ(FormulateRecipes(system, {}, wanted, settings, recipes).fault, RecipeFault::kNone);
    double cheapest = 1e9;
    ForEachOfGrid(settings, kGridStep, [&](const auto& ids, const auto& shares) {
      double cost = 0.0;
      for (std::size_t i = 0; i < 3; ++i) cost += 100.0 * shares[i] * settings.components[ids[i] - 1].cost;
      if (cost < cheapest && WorstOf(wanted.curve, CurveOf(ids, shares, system), settings) <= tolerance)
        cheapest = cost;
    });
    EXPECT_LE(recipes[0].cost, cheapest * 1.0001) << tolerance;
    EXPECT_LE(recipes[0].worst, tolerance);
    EXPECT_GT(recipes[0].worst, 0.9 * tolerance) << "what the tolerance allows is used";
  }
}

}  // namespace
}  // namespace vrx
