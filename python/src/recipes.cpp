// Recipes of colours.

#include <functional>

#include <pybind11/stl.h>

#include <vrxmath/matching/calibration.h>
#include <vrxmath/matching/recipe.h>
#include <vrxmath/matching/recipe_costs.h>

#include "python/src/arrays.h"
#include "python/src/color_system.h"
#include "python/src/curves.h"
#include "python/src/module.h"
#include "python/src/recipe_search.h"
#include "python/src/views.h"

namespace vrx::python {
namespace {

// A load in percent, or a pair of its least and its most.
void ReadLoad(const py::object& load, CRecipeSettings& settings) {
  if (load.is_none()) return;
  const bool isRange = py::isinstance<py::sequence>(load);
  const auto [least, most] =
      isRange ? load.cast<std::pair<double, double>>() : std::pair(load.cast<double>(), load.cast<double>());
  if (!(least >= 0.0 && least <= most && most <= 100.0 && most > 0.0))
    throw py::value_error("load: percent of the recipe are expected, or a pair of the least and the most");
  settings.leastLoad = least / 100.0;
  settings.mostLoad = most / 100.0;
}

void ReadProduction(const System& system, const py::dict& given, CRecipeSettings& settings) {
  settings.order = OneOf<RecipeOrder>(given, "sort",
                                      {{"fewest", RecipeOrder::kFewest},
                                       {"color", RecipeOrder::kColor},
                                       {"metamerism", RecipeOrder::kMetamerism},
                                       {"cost", RecipeOrder::kCost},
                                       {"expected", RecipeOrder::kExpected},
                                       {"inconstancy", RecipeOrder::kInconstancy}});
  settings.batchSize = NumberOf(given, "batch_size", 1e-9, 1e9);
  settings.resolution = NumberOf(given, "resolution", 0, settings.batchSize);
  settings.thickness = NumberOf(given, "thickness", 0, 1e9);
  settings.leastOpacity = NumberOf(given, "min_opacity", 0, 100);
  settings.isWithinRange = given["within_range"].cast<bool>();
  settings.calibrated = system.file.calibrated;
  if (settings.isWithinRange && settings.calibrated.IsEmpty())
    throw py::value_error("within_range: the colour system has no calibrated ranges");
  ReadLoad(given["load"], settings);
  if (given["backings"].is_none()) return;
  const Rows backings = CurvesOf(given["backings"], "backings");
  if (backings.count != 2)
    throw py::value_error("backings: two curves are expected, the black one and the white one");
  settings.black = CurveAt(backings.Doubles());
  settings.white = CurveAt(backings.Doubles() + backings.stride);
}

py::list Match(const System& system, const py::object& targets, const py::dict& given) {
  const Rows rows = CurvesOf(targets, "targets", false, 3);
  CRecipeSettings settings = RecipeSettingsOf(system, given);
  ReadProduction(system, given, settings);
  RefuseFault(system, settings, CheckCosts(system.file.data, settings), "sort=\"cost\"");
  TellFree(system, settings, given);
  py::list all;
  for (std::size_t i = 0; i < rows.count; ++i) {
    CRecipeArray recipes;
    const CRecipeTarget target = RecipeTargetOf(rows, i);
    Search(system, settings,
           [&] { return FormulateRecipes(system.file.data, system.file.rules, target, settings, recipes); });
    py::list found;
    for (const CRecipe& recipe : recipes) found.append(FieldsOf(system, recipe));
    all.append(found);
  }
  return all;
}

// The defaults of searches by the names of the arguments, in their units.
py::dict RecipeDefaultsDict() {
  constexpr double kPercent = 100.0;
  py::dict defaults;
  defaults["max_colorants"] = RecipeDefaults::kMostColorants;
  defaults["top"] = RecipeDefaults::kTop;
  defaults["tolerance"] = RecipeDefaults::kTolerance;
  defaults["batch_size"] = RecipeDefaults::kBatchSize;
  defaults["thickness"] = RecipeDefaults::kThickness;
  defaults["max_addition"] = kPercent * RecipeDefaults::kMostAddition;
  defaults["stock_addition"] = kPercent * RecipeDefaults::kStockAddition;
  const CCalibrationSettings calibration;
  defaults["k1"] = calibration.k1;
  defaults["k2"] = calibration.k2;
  defaults["margin"] = kPercent * RecipeDefaults::kMargin;
  defaults["max_subsets"] = static_cast<double>(RecipeDefaults::kMostSubsets);
  defaults["threads"] = RecipeDefaults::kThreads;
  return defaults;
}

}  // namespace

void DefineRecipes(py::module_& module) {
  module.attr("recipe_defaults") = RecipeDefaultsDict();
  module.def("match", &Match, py::arg("color_system"), py::arg("targets"), py::arg("settings"));
}

}  // namespace vrx::python
