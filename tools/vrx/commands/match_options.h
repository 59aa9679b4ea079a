// What vrx match reads and how it searches, for recipes from nothing and for those from a stock.

#ifndef VRXMATH_TOOLS_VRX_COMMANDS_MATCH_OPTIONS_H_
#define VRXMATH_TOOLS_VRX_COMMANDS_MATCH_OPTIONS_H_

#include <cstdint>
#include <string>
#include <vector>

#include <vrxmath/matching/recipe.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/output/output.h"
#include "tools/vrx/recipes/correction.h"
#include "tools/vrx/recipes/recipe_options.h"
#include "tools/vrx/recipes/recipe_search.h"
#include "tools/vrx/report/result_report.h"

namespace vrx::tool {

struct MatchOptions {
  SearchOptions search;
  std::string targets;
  RecipeOrder order = RecipeOrder::kFewest;
  std::string backings;
  double thickness = RecipeDefaults::kThickness;
  double minOpacity = 0.0;
  double liquor = 0.0;  // litres per kilogram of the substrate; 0: not given
  int prerank = 0;
  std::string load;
  std::string library;
  double parts = 0.0;
  std::string formulas;
  std::string stock;
  std::string mostAddition = PercentText(RecipeDefaults::kStockAddition);
  std::string margin = PercentText(RecipeDefaults::kMargin);
  bool trustFormula = false;
  ReportOptions report;
};

struct NamedTarget {
  std::string id;
  CRecipeTarget target;
  std::vector<int32_t> geometries;  ///< of its curves
};

/// The options of the command beside those of every search.
void AddMatchOptions(Command& command, MatchOptions& options);

/// Curves, or colours as L*, a*, b*. Curves of one id at several geometries are one target.
std::vector<NamedTarget> ReadTargets(MatchOptions& options, const ColorSystem& system, ResultReport& report);

/// Tells the report, too, what WarnAboutScales says of batches or recipes of `file` beside the targets.
void WarnAboutScales(const MatchOptions& options, const std::vector<NamedTarget>& targets,
                     const std::string& file, const std::vector<NamedBatch>& batches, ResultReport& report);

/// What the curves of every file are taken for.
TakenSpecular TakenOf(const MatchOptions& options, const ColorSystem& system);

/// How recipes are searched; InputError for options that do not fit the system.
CRecipeSettings SettingsOf(const MatchOptions& options, const ColorSystem& system);

/// What faults of a search for a target are called by.
RecipeNames NamesOf(const MatchOptions& options, const NamedTarget& target);

/// Tells the report the inputs and the conditions.
void DescribeRun(const MatchOptions& options, const CRecipeSettings& settings, ResultReport& report);

/// A column for the difference under each illuminant.
void AddDifferenceColumns(const CRecipeSettings& settings, std::vector<Column>& columns);

/// The column of costs, in a report only where a cost was given.
Column CostColumn(const CRecipeSettings& settings);

/// Recipes from the batches of a stock (--from-stock).
void MatchFromStock(MatchOptions& options);

}  // namespace vrx::tool

#endif  // VRXMATH_TOOLS_VRX_COMMANDS_MATCH_OPTIONS_H_
