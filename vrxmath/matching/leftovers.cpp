#include <vrxmath/matching/leftovers.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include <vrxmath/formula/prediction.h>
#include <vrxmath/matching/curves.h>
#include <vrxmath/matching/offer.h>
#include <vrxmath/matching/recipe.h>

namespace vrx {
namespace {

class Stock {
 public:
  Stock(const CColorantSystemData& system, const CArrayVarex<CBatch>& leftovers,
        const CRecipeSettings& settings)
      : leftovers_(leftovers), own_(system), asked_(settings), settings_(settings) {}

  // The system with the leftovers as colorants, and the settings that make fresh components dear.
  RecipeFault Make() {
    if (MixingLawOf(own_.opticalModel) != MixingLaw::kTwoConstant) return RecipeFault::kNoMixingLaw;
    if (!(settings_.batchSize > 0.0)) return RecipeFault::kSettings;
    settings_.order = RecipeOrder::kCost;
    for (CRecipeComponent& entry : settings_.components) entry.cost = 0.0;
    PriceFresh();
    for (const CBatch& leftover : leftovers_) {
      const RecipeFault fault = AddLeftover(leftover);
      if (fault != RecipeFault::kNone) return fault;
    }
    return RecipeFault::kNone;
  }

  const CColorantSystemData& System() const { return own_; }
  const CRecipeSettings& Settings() const { return settings_; }

  // A recipe of the extended system as what it uses and what is fresh.
  CLeftoverRecipe Divided(const CRecipe& recipe) const {
    CLeftoverRecipe divided;
    divided.recipe = recipe;
    divided.recipe.formula.RemoveAll();
    divided.recipe.traces = OfSystem(recipe.traces);
    divided.recipe.outside = OfSystem(recipe.outside);
    divided.recipe.cost = 0.0;
    divided.used.SetSize(leftovers_.GetSize());
    divided.used.Fill(0.0);
    for (const CDbFormulaElement& line : recipe.formula) {
      const auto id = static_cast<uint32_t>(line.componentId);
      const auto leftover = std::find(ids_.begin(), ids_.end(), id);
      if (leftover == ids_.end()) {
        divided.recipe.formula.Add(line);
        divided.recipe.cost += line.amount * PriceOf(id);
      } else {
        divided.used[leftover - ids_.begin()] = line.amount;
        divided.total += line.amount;
      }
    }
    return divided;
  }

  // True when a rule's components are all in the fresh ones and the leftovers together.
  bool IsForbidden(const CLeftoverRecipe& recipe, const CColorantRulesData& rules) const {
    std::vector<uint32_t> present;
    const auto add = [&](const CDbFormula& formula) {
      for (const CDbFormulaElement& line : formula) {
        if (line.amount > 0.0) present.push_back(static_cast<uint32_t>(line.componentId));
      }
    };
    add(recipe.recipe.formula);
    for (int32_t i = 0; i < leftovers_.GetSize(); ++i) {
      if (recipe.used[i] > 0.0) add(leftovers_[i].formula);
    }
    const auto isPresent = [&](uint32_t id) {
      return std::find(present.begin(), present.end(), id) != present.end();
    };
    return std::any_of(rules.GetRules().begin(), rules.GetRules().end(), [&](const CDWordArray1& rule) {
      return !rule.IsEmpty() && std::all_of(rule.begin(), rule.end(), isPresent);
    });
  }

 private:
  // Without the leftovers, whose ids mean nothing outside of this search.
  CDWordArray1 OfSystem(const CDWordArray1& ids) const {
    CDWordArray1 own;
    for (const uint32_t id : ids) {
      if (std::find(ids_.begin(), ids_.end(), id) == ids_.end()) own.Add(id);
    }
    return own;
  }

  RecipeFault AddLeftover(const CBatch& leftover) {
    if (!IsMeasured(leftover.curve)) return RecipeFault::kBatchNotMeasured;
    if (CountAtFloor(leftover.curve, kFirstVisible, kLastVisible, own_.k1, own_.k2, settings_.mode) > 0) {
      return RecipeFault::kBatchBelowSurface;
    }
    CColorantLevel level(1);
    level.concentration = 1.0;
    const bool isUsable = leftover.size > 0.0 && std::isfinite(leftover.size) &&
                          BatchConstants(own_, leftover, settings_.mode, level.values[0]);
    if (!isUsable) return RecipeFault::kBatchFormula;
    CColorant colorant;
    colorant.SetId(FreeComponentId(own_));
    colorant.AppendLevel(level);
    ids_.push_back(colorant.GetId());
    own_.colorants.Add(colorant);
    CRecipeComponent entry;
    entry.componentId = colorant.GetId();
    entry.most = std::min(1.0, leftover.size / settings_.batchSize);
    settings_.components.Add(entry);
    return RecipeFault::kNone;
  }

  void PriceFresh() {
    const auto add = [&](const CComponent& component) {
      if (component.GetLevels().IsEmpty() || component.GetLevel(0).values.IsEmpty()) return;
      CRecipeComponent entry;
      entry.componentId = component.GetId();
      entry.cost = 1.0;
      settings_.components.Add(entry);
    };
    for (const CColorant& colorant : own_.colorants) add(colorant);
    for (const CResin& resin : own_.resins) add(resin);
  }

  double PriceOf(uint32_t id) const {
    double price = 0.0;
    for (const CRecipeComponent& entry : asked_.components) {
      if (entry.componentId == id && entry.cost != 0.0) price = entry.cost;
    }
    return price;
  }

  const CArrayVarex<CBatch>& leftovers_;
  CColorantSystemData own_;
  const CRecipeSettings& asked_;
  CRecipeSettings settings_;
  std::vector<uint32_t> ids_;
};

}  // namespace

RecipeOutcome UseLeftovers(const CColorantSystemData& system, const CColorantRulesData& rules,
                           const CArrayVarex<CBatch>& leftovers, const CRecipeTarget& target,
                           const CRecipeSettings& settings, CLeftoverRecipeArray& recipes) {
  CRecipeSettings wider = settings;
  constexpr int32_t kMore = 4;  // of which rules may take some away
  if (!rules.GetRules().IsEmpty()) wider.top = std::min(wider.top, 10'000) * kMore;
  Stock stock(system, leftovers, wider);
  const RecipeFault fault = stock.Make();
  if (fault != RecipeFault::kNone) return {fault};
  CRecipeArray found;
  const RecipeOutcome outcome = FormulateRecipes(stock.System(), rules, target, stock.Settings(), found);
  if (outcome.fault != RecipeFault::kNone) return outcome;
  CLeftoverRecipeArray divided;
  for (const CRecipe& recipe : found) {
    const CLeftoverRecipe each = stock.Divided(recipe);
    if (divided.GetSize() < settings.top && !stock.IsForbidden(each, rules)) divided.Add(each);
  }
  recipes = divided;
  return outcome;
}

}  // namespace vrx
