// The words for what a search for recipes refuses: one sentence per fault, which every interface fills with its own names.

#ifndef VRXMATH_MATCHING_RECIPE_FAULTS_H_
#define VRXMATH_MATCHING_RECIPE_FAULTS_H_

#include <functional>
#include <string>
#include <string_view>

#include <vrxmath/colorant/colorant_system.h>
#include <vrxmath/export.h>
#include <vrxmath/matching/recipe_types.h>

namespace vrx {

/// How an interface names the parts of a search to its users, in UTF-8.
struct RecipeNames {
  std::string system;   ///< where the colour system stands
  std::string limits;   ///< where limits stand; empty: those of the setting `min-amount`
  std::string target;   ///< where the target stands
  std::string batch;    ///< of a correction: where its curve stands
  std::string formula;  ///< and its formula
  /// A setting such as "max-colorants", alone or with a value for it: `--max-colorants`, or `--specular excluded`.
  std::function<std::string(std::string_view setting, std::string_view value)> setting;
  std::string cheapest = {};  ///< what asks for the lowest cost
  std::string costs = {};     ///< where costs are given
  std::string backings = {};  ///< where the backings of the opacity stand
  bool isSurfaceOfSystem =
      false;  ///< the colour system says how its curves were measured, and no setting can say otherwise
};

/// The sentence for a fault, with the place where it is found in front; empty for kNone.
/// In:     the system and the settings of the search that gave `outcome`.
[[nodiscard]] VRX_API std::string RecipeFaultText(const RecipeOutcome& outcome,
                                                  const CColorantSystemData& system,
                                                  const CRecipeSettings& settings, const RecipeNames& names);

/// What a recipe's load rests on, in a word or two: "given", "opacity", "calibrated range", "undetermined", or "target".
[[nodiscard]] VRX_API const char* LoadBasisText(LoadBasis basis);

}  // namespace vrx

#endif  // VRXMATH_MATCHING_RECIPE_FAULTS_H_
