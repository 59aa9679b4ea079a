// Recipes: which colorants, and how much of each, give a colour.
//
// Every subset of the colorants on offer is solved, not a sample of them: first the linearised problem, then Gauss-Newton
// steps on the colour differences under all illuminants at once (E. Allen, J. Opt. Soc. Am. 56, 1966, 1256-1259 and 64, 1974,
// 991-993, widened from three colorants and one illuminant). The same recipes and the same bits come out at any number of
// threads and on any machine.

#ifndef VRXMATH_MATCHING_RECIPE_H_
#define VRXMATH_MATCHING_RECIPE_H_

#include <vrxmath/colorant/colorant_rules.h>
#include <vrxmath/colorant/colorant_system.h>
#include <vrxmath/export.h>
#include <vrxmath/matching/recipe_types.h>

namespace vrx {

/// Why a search would refuse its target or settings, found without solving a subset; the count of subsets with it.
[[nodiscard]] VRX_API RecipeOutcome CheckRecipe(const CColorantSystemData& system,
                                                const CColorantRulesData& rules, const CRecipeTarget& target,
                                                const CRecipeSettings& settings);

/// The best recipes for a target, best first.
/// Out:    at most `top` recipes; when none is within the tolerance the nearest ones, so marked. With a fault `recipes`
///         is unchanged.
/// Method: a subset is left when a share reaches 0, since the subset without that colorant is solved anyway; one whose
///         solution lies beyond limits, and every subset of colorants with several levels, is solved with the limits and
///         the levels' curves in place. The best by order are predicted by PredictReflectance, after rounding, and
///         ordered by what that gives.
/// Errors: throws std::system_error when a thread cannot be started, and what progress throws.
[[nodiscard]] VRX_API RecipeOutcome FormulateRecipes(const CColorantSystemData& system,
                                                     const CColorantRulesData& rules,
                                                     const CRecipeTarget& target,
                                                     const CRecipeSettings& settings, CRecipeArray& recipes);

}  // namespace vrx

#endif  // VRXMATH_MATCHING_RECIPE_H_
