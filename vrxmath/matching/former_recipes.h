// Former recipes: what was made and measured once, adapted to a new target.
//
// A former recipe knows what no calibration does: how its mixture really came out. The quotient of measured and
// predicted K/S at every wavelength (the performance factor) corrects the predictions of recipes that are like it.

#ifndef VRXMATH_MATCHING_FORMER_RECIPES_H_
#define VRXMATH_MATCHING_FORMER_RECIPES_H_

#include <cstdint>

#include <vrxmath/colorant/colorant_rules.h>
#include <vrxmath/colorant/colorant_system.h>
#include <vrxmath/export.h>
#include <vrxmath/matching/recipe_types.h>
#include <vrxmath/platform/wide_string.h>

namespace vrx {

/// A recipe that was made, and the curve that it gave.
struct CFormerRecipe {
  using MovesBitwise = CFormerRecipe;

  CString id;
  CDbFormula formula;  ///< amounts in any one unit
  CReflData curve;     ///< as measured, percent, in the mode of the search
};
using CFormerRecipeArray = CArrayVarex<CFormerRecipe>;

/// A former recipe that was brought to a target.
struct CAdaptedRecipe {
  using MovesBitwise = CAdaptedRecipe;

  int32_t former = 0;        ///< its place among the former recipes
  double before = kUnset;    ///< its own largest difference from the target, as it was measured
  int32_t newColorants = 0;  ///< that it did not have
  CRecipe recipe;            ///< its curve, and all that follows from it, with the performance factor
};
using CAdaptedRecipeArray = CArrayVarex<CAdaptedRecipe>;

/// Adapts the former recipes whose measured curves are nearest to a target.
/// In:      the settings of a search; of `top` former recipes the nearest are adapted. A target with a curve.
/// Out:     one recipe for each, within the tolerance first, then fewest new colorants, then the nearest. With the
///          colorants of the former recipe where these reach the tolerance, else with one more if that comes nearer.
///          Former recipes that cannot be predicted, or have excluded components, are passed over. With a fault
///          `adapted` is unchanged.
/// Formula: the target's K/S divided by the performance factor, held between 1/8 and 8, is what the calibration has to
///          predict; what it predicts, times the factor, is what is told.
/// Errors:  as FormulateRecipes; kNeedsCurve for a target without a curve.
[[nodiscard]] VRX_API RecipeOutcome AdaptFormerRecipes(
    const CColorantSystemData& system, const CColorantRulesData& rules, const CFormerRecipeArray& formers,
    const CRecipeTarget& target, const CRecipeSettings& settings, CAdaptedRecipeArray& adapted);

/// The number of former recipes that are passed over whatever the target is, by the reason.
struct CPassedOver {
  int32_t unpredictable = 0;  ///< without a measured curve, a colorant or a prediction
  int32_t notOffered = 0;     ///< with a colorant that is excluded or switched off
  int32_t tooMany = 0;        ///< with more colorants than a recipe may have

  int32_t Total() const { return unpredictable + notOffered + tooMany; }
};

/// Counts the former recipes that AdaptFormerRecipes passes over under the same settings; none where it has a fault.
[[nodiscard]] VRX_API CPassedOver CountPassedOver(const CColorantSystemData& system,
                                                  const CFormerRecipeArray& formers,
                                                  const CRecipeSettings& settings);

}  // namespace vrx

#endif  // VRXMATH_MATCHING_FORMER_RECIPES_H_
