// Leftovers: recipes that use up parts of batches that are in stock.

#ifndef VRXMATH_MATCHING_LEFTOVERS_H_
#define VRXMATH_MATCHING_LEFTOVERS_H_

#include <vrxmath/export.h>
#include <vrxmath/matching/batch_correction.h>

namespace vrx {

/// A recipe of which leftovers are a part.
struct CLeftoverRecipe {
  using MovesBitwise = CLeftoverRecipe;

  CDoubleArray1 used;  ///< of each leftover, in the unit of its size; 0 of those that are not in it
  double total = 0.0;  ///< of these
  /// Its formula has what is fresh, and costs are those of it. Traces and components outside of their range are those of the
  /// system; a leftover that is a trace is counted in `alike` alone.
  CRecipe recipe;
};
using CLeftoverRecipeArray = CArrayVarex<CLeftoverRecipe>;

/// The recipes for `settings.batchSize` of a target that use up most of a stock, best first.
/// In:      a two-constant system; leftovers with their measured curves and sizes, in the unit of the batch size.
/// Out:     recipes within the tolerance by how much of the stock they use, those of the same amount by their
///          difference; when there is none, the nearest. With a fault `recipes` is unchanged.
/// Method:  each leftover is a colorant (BatchConstants) of which there is only so much, and the least of fresh
///          components is looked for by the search for the cheapest recipe within the tolerance, whose mostColorants
///          counts leftovers and fresh colorants. The rules count what a leftover is made of.
/// Errors:  as FormulateRecipes and CorrectBatch; kNoMixingLaw for one-constant systems, whose leftovers are
///          substrates.
[[nodiscard]] VRX_API RecipeOutcome UseLeftovers(const CColorantSystemData& system,
                                                 const CColorantRulesData& rules,
                                                 const CArrayVarex<CBatch>& leftovers,
                                                 const CRecipeTarget& target, const CRecipeSettings& settings,
                                                 CLeftoverRecipeArray& recipes);

}  // namespace vrx

#endif  // VRXMATH_MATCHING_LEFTOVERS_H_
