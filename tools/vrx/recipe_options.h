// What the commands that look for recipes have in common: choice and limits of components, criteria, and how a recipe is
// written.

#ifndef TOOLS_VRX_RECIPE_OPTIONS_H_
#define TOOLS_VRX_RECIPE_OPTIONS_H_

#include <string>
#include <vector>

#include <vrxmath/matching/recipe.h>

#include "tools/vrx/color_system_file.h"
#include "tools/vrx/conditions.h"
#include "tools/vrx/output/output.h"

namespace vrx::tool {

class Command;

/// By what recipes are found and told apart.
struct CriterionOptions {
  ViewingOptions viewing;
  SystemOptions system;
  std::string weights;
  RecipeObjective objective = RecipeObjective::kTristimulus;
  SaundersonMode specular = SaundersonMode::kIncluded;
  double tolerance = 1.0;

  /// Writes them into the settings. Throws InputError for what cannot be used.
  void Apply(CRecipeSettings& settings) const;
};

/// Adds `--illuminants`, `--observer`, `--weights`, `--system`, `--parameters`, `--objective`, `--specular` and
/// `--tolerance`.
void AddCriterionOptions(Command& command, CriterionOptions& options);

/// Which components, how many and how much of them.
struct ChoiceOptions {
  std::vector<std::string> require;
  std::vector<std::string> exclude;
  std::string limits;
  double minAmount = 0.0;  ///< percent
  int maxColorants = 4;

  void Apply(const ColorSystem& system, CRecipeSettings& settings) const;
};

/// Adds `--require`, `--exclude`, `--limits`, `--min-amount` and `--max-colorants`.
void AddChoiceOptions(Command& command, ChoiceOptions& options);

/// The component of a system by its id or its name in any case. Throws InputError, in which `option` says where it stood.
const CComponent& FindComponent(const ColorSystem& system, std::string_view text, const std::string& option);

/// What a fault means for a user. `target` and `batch` are what messages call them.
std::string FaultText(const RecipeOutcome& outcome, const ColorSystem& system,
                      const CRecipeSettings& settings, const std::string& target,
                      const std::string& batch = "the batch");

/// A formula as "1:94;7:1.5;16:4.5": components and amounts, these with at most four decimals.
std::string FormulaText(const CDbFormula& formula);
/// A formula for people: "94 Titanium White + 4.5 Cerulean Blue", the largest amount first.
std::string NamedFormulaText(const CDbFormula& formula, const ColorSystem& system);

/// The backings of a file: its first curve is the black one, its second the white one.
void ReadBackings(const std::string& path, CReflData& black, CReflData& white);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_RECIPE_OPTIONS_H_
