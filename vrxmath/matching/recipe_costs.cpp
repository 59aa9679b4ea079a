#include <vrxmath/matching/recipe_costs.h>

#include <algorithm>
#include <iterator>

#include <vrxmath/matching/offer.h>

namespace vrx {
namespace {

enum class CostsOf { kRecipes, kAdditions };

// What a search may use, by number; nothing where the search refuses its settings.
std::vector<uint32_t> Usable(const CColorantSystemData& system, const CRecipeSettings& settings,
                             CostsOf what) {
  Offer offer;
  std::vector<uint32_t> ids;
  const bool isRecipe = what == CostsOf::kRecipes;
  if (offer.Make(system, settings, isRecipe).fault != RecipeFault::kNone) return ids;
  for (const OfferedColorant& colorant : offer.colorants) ids.push_back(colorant.component->GetId());
  // Additions come on top of the batch, which has the substrate in it.
  if (isRecipe && offer.substrate != nullptr) ids.push_back(offer.substrate->GetId());
  if (offer.clear != nullptr) ids.push_back(offer.clear->GetId());
  std::sort(ids.begin(), ids.end());
  return ids;
}

bool HasCosts(const std::vector<uint32_t>& usable, const CRecipeSettings& settings) {
  return std::any_of(
      settings.components.begin(), settings.components.end(), [&](const CRecipeComponent& entry) {
        return entry.cost > 0.0 && std::binary_search(usable.begin(), usable.end(), entry.componentId);
      });
}

RecipeOutcome CheckCostsOf(CostsOf what, const CColorantSystemData& system, const CRecipeSettings& settings) {
  const std::vector<uint32_t> usable = Usable(system, settings, what);
  return {usable.empty() || HasCosts(usable, settings) ? RecipeFault::kNone : RecipeFault::kNoCosts};
}

}  // namespace

RecipeOutcome CheckCosts(const CColorantSystemData& system, const CRecipeSettings& settings) {
  return settings.order == RecipeOrder::kCost ? CheckCostsOf(CostsOf::kRecipes, system, settings)
                                              : RecipeOutcome{};
}

RecipeOutcome CheckCosts(const CColorantSystemData& system, const CCorrectionSettings& settings) {
  if (settings.aim != CorrectionAim::kCheapest) return {};
  // A correction does not heed the limits of recipes.
  CRecipeSettings recipe = settings.recipe;
  recipe.leastAmount = 0.0;
  for (CRecipeComponent& entry : recipe.components) entry.least = 0.0, entry.most = 1.0;
  return CheckCostsOf(CostsOf::kAdditions, system, recipe);
}

std::vector<uint32_t> ComponentsWithoutCost(const CColorantSystemData& system,
                                            const CRecipeSettings& settings,
                                            std::span<const uint32_t> priced) {
  const std::vector<uint32_t> usable = Usable(system, settings, CostsOf::kRecipes);
  std::vector<uint32_t> unpriced;
  if (!HasCosts(usable, settings)) return unpriced;
  std::copy_if(usable.begin(), usable.end(), std::back_inserter(unpriced),
               [&](uint32_t id) { return std::find(priced.begin(), priced.end(), id) == priced.end(); });
  return unpriced;
}

}  // namespace vrx
