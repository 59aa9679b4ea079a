// Costs of a search: which components have one, and whether an order by cost says anything.

#ifndef VRXMATH_MATCHING_RECIPE_COSTS_H_
#define VRXMATH_MATCHING_RECIPE_COSTS_H_

#include <cstdint>
#include <span>
#include <vector>

#include <vrxmath/colorant/colorant_system.h>
#include <vrxmath/export.h>
#include <vrxmath/matching/batch_correction.h>
#include <vrxmath/matching/recipe_types.h>

namespace vrx {

/// kNoCosts for recipes in the order of their cost where nothing that may be in one costs anything; kNone otherwise, and for
/// settings that the search refuses for another reason.
[[nodiscard]] VRX_API RecipeOutcome CheckCosts(const CColorantSystemData& system,
                                               const CRecipeSettings& settings);
/// The same for the cheapest additions to a batch.
[[nodiscard]] VRX_API RecipeOutcome CheckCosts(const CColorantSystemData& system,
                                               const CCorrectionSettings& settings);

/// The ids, ascending, of what may be in a recipe and counts as free because its cost is not among those that are `priced`, which
/// may be 0. Empty where nothing costs anything: then there is nothing that it would be cheaper than.
[[nodiscard]] VRX_API std::vector<uint32_t> ComponentsWithoutCost(const CColorantSystemData& system,
                                                                  const CRecipeSettings& settings,
                                                                  std::span<const uint32_t> priced);

}  // namespace vrx

#endif  // VRXMATH_MATCHING_RECIPE_COSTS_H_
