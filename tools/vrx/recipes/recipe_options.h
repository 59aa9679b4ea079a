// The common part of the commands that look for recipes: choice and limits of components, criteria, and how a recipe is
// written.

#ifndef TOOLS_VRX_RECIPES_RECIPE_OPTIONS_H_
#define TOOLS_VRX_RECIPES_RECIPE_OPTIONS_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <vrxio/systems/components.h>
#include <vrxmath/matching/recipe_types.h>

#include "tools/vrx/input/conditions.h"
#include "tools/vrx/input/curve_input.h"
#include "tools/vrx/input/surface_options.h"
#include "tools/vrx/output/color_system_file.h"
#include "tools/vrx/output/output.h"

namespace vrx::tool {

class Command;

/// By what recipes are found and told apart.
struct CriterionOptions {
  ViewingOptions viewing;
  SystemOptions system;
  std::string weights;
  RecipeObjective objective = RecipeObjective::kTristimulus;
  GivenSpecular specular = GivenSpecular::kNotGiven;
  double tolerance = RecipeDefaults::kTolerance;
  std::string trace;

  /// Writes them into the settings, for the colour system of the file `path`. Throws InputError for what cannot be used.
  void Apply(const ColorSystem& colorSystem, const std::string& path, CRecipeSettings& settings) const;
};

/// Adds `--illuminants`, `--observer`, `--weights`, `--system`, `--parameters`, `--objective`, `--specular` and
/// `--tolerance`.
void AddCriterionOptions(Command& owner, CriterionOptions& options);

/// The purpose of the colorants of a search: a recipe, or additions to a batch.
enum class RecipePurpose { kRecipe, kAddition };

/// Which components, how many and how much of them.
struct ChoiceOptions {
  std::vector<std::string> require;
  std::vector<std::string> exclude;
  std::string limits;
  double minAmount = 0.0;  ///< percent
  bool withinRange = false;
  int maxColorants = RecipeDefaults::kMostColorants;

  /// Writes them into the settings. The ids of the components whose costs are given, which may be 0. Throws InputError for
  /// what cannot be used.
  std::vector<uint32_t> Apply(const ColorSystem& system, CRecipeSettings& settings) const;
};

/// Adds `--max-colorants`, `--require`, `--exclude` and `--limits`.
void AddChoiceOptions(Command& owner, ChoiceOptions& options, RecipePurpose purpose);

/// The options of every command that searches.
struct SearchOptions {
  std::string system;
  ChoiceOptions choice;
  CriterionOptions criterion;
  int top = RecipeDefaults::kTop;
  double batchSize = RecipeDefaults::kBatchSize;
  double resolution = 0.0;
  int threads = RecipeDefaults::kThreads;
  double maxSubsets = static_cast<double>(RecipeDefaults::kMostSubsets);
  CurveInputOptions input;
  Format format;

  /// Writes them into the settings, and says which components have no cost where others have one. Throws InputError for what
  /// cannot be used.
  void Apply(const ColorSystem& colorSystem, CRecipeSettings& settings) const;
};

/// Adds choice and criterion, `--resolution`, `--top`, `--threads`, `--max-subsets`, the options of curves and the format.
void AddSearchOptions(Command& owner, SearchOptions& options, RecipePurpose purpose);

/// An amount of a recipe of a batch size, with the decimals of FormulaText.
std::string AmountText(double amount, double batchSize);

/// A formula as "1:94;7:1.5;16:4.5": components and amounts, these with as many decimals as shares of 1e-6 of a batch take,
/// and at least four, but without zeros at the end.
std::string FormulaText(const CDbFormula& formula, double batchSize);
/// Components by number, as "9;14".
std::string ComponentsText(const CDWordArray1& ids);
/// What people call a component: its name, with "(id:7)" behind it where the name means another one, too.
std::string ComponentTitle(const ColorSystem& system, uint32_t id);
/// Components by name, as "Pyrrole Red, Carbon Black".
std::string NamedComponentsText(const CDWordArray1& ids, const ColorSystem& system);
/// A formula for people: "94 Titanium White + 4.5 Cerulean Blue", the largest amount first.
std::string NamedFormulaText(const CDbFormula& formula, const ColorSystem& system, double batchSize);

/// The backings of a file: its first curve is the black one, its second the white one. They are held against what is `taken`, as
/// RefuseOtherSpecular does.
void ReadBackings(const std::string& path, const CurveInputOptions& input, const TakenSpecular& taken,
                  CReflData& black, CReflData& white);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_RECIPES_RECIPE_OPTIONS_H_
