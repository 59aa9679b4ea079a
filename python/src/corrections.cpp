// What to add to a batch that came out wrong, which batch of a stock becomes a target, and recipes of leftovers.

#include <cstddef>
#include <string>
#include <vector>

#include <pybind11/stl.h>

#include <vrxmath/matching/batch_correction.h>
#include <vrxmath/matching/batch_diagnosis.h>
#include <vrxmath/matching/leftovers.h>
#include <vrxmath/matching/recipe_costs.h>
#include <vrxmath/matching/stock_correction.h>

#include "python/src/arrays.h"
#include "python/src/color_system.h"
#include "python/src/curves.h"
#include "python/src/module.h"
#include "python/src/recipe_search.h"
#include "python/src/views.h"

namespace vrx::python {
namespace {

py::dict FieldsOf(const System& system, const CCorrection& correction) {
  py::dict fields;
  fields["amounts"] = system.AmountsOf(correction.additions);
  fields["formula"] = system.NamedAmountsOf(correction.additions);
  fields["differences"] = ArrayOf(correction.differences);
  fields["total"] = correction.total;
  fields["cost"] = correction.cost;
  fields["within_tolerance"] = correction.isWithinTolerance;
  fields["curve"] = ArrayOf(correction.curve);
  return fields;
}

// What the curve of a batch says of its formula: what is suspected, by name percent written and found, and whether anything
// explains it.
struct Found {
  py::dict suspected;
  bool isExplained = true;

  void AddTo(py::dict& fields) const {
    fields["suspected"] = suspected;
    fields["explained"] = isExplained;
  }
};

// Puts what is in a batch in the place of its formula.
Found Diagnose(const System& system, const CRecipeSettings& recipe, CBatch& batch) {
  const CDiagnosisSettings settings = DiagnosisBefore(recipe, system.file.calibrated);
  CBatchDiagnosis diagnosis;
  Found found;
  if (!DiagnoseBatch(system.file.data, batch, settings, diagnosis)) return found;
  batch.formula = diagnosis.best.formula;
  found.isExplained = diagnosis.isExplained;
  for (const CSuspectedAmount& amount : diagnosis.best.suspected) {
    found.suspected[py::str(system.Label(system.PlaceOfId(amount.componentId)))] =
        py::make_tuple(100.0 * amount.written, 100.0 * amount.found);
  }
  return found;
}

// What corrections of a batch and of a stock have in common.
CCorrectionSettings CorrectionSettingsOf(const System& system, const py::dict& given) {
  CCorrectionSettings settings;
  settings.recipe = RecipeSettingsOf(system, given);
  settings.recipe.resolution = NumberOf(given, "resolution", 0, 1e9);
  settings.mostAddition = NumberOf(given, "max_addition", 0, 10'000) / 100.0;
  settings.margin = NumberOf(given, "margin", 0, 99.999) / 100.0;
  settings.aim = OneOf<CorrectionAim>(given, "aim",
                                      {{"smallest", CorrectionAim::kSmallest},
                                       {"cheapest", CorrectionAim::kCheapest},
                                       {"nearest", CorrectionAim::kNearest}});
  RefuseFault(system, settings.recipe, CheckCosts(system.file.data, settings), "aim=\"cheapest\"");
  TellFree(system, settings.recipe, given);
  return settings;
}

py::tuple Correct(const System& system, const py::object& formula, const py::object& measured,
                  const py::object& target, const py::dict& given) {
  const Rows amounts = RowsOf(formula, "formula", system.ids.size());
  const Rows curve = CurvesOf(measured, "measured");
  const Rows aim = CurvesOf(target, "target", false, 3);
  if (amounts.count != 1 || curve.count != 1 || aim.count != 1) {
    throw py::value_error("formula, measured and target: one row each is expected");
  }
  CCorrectionSettings settings = CorrectionSettingsOf(system, given);
  CBatch batch;
  batch.formula = system.FormulaOf(amounts.Doubles());
  batch.curve = CurveAt(curve.Doubles());
  batch.size = NumberOf(given, "batch_size", 1e-9, 1e9);
  settings.allowNew = given["allow_new"].cast<bool>();
  for (const CDbFormulaElement& line : batch.formula)
    settings.own.Add(static_cast<uint32_t>(line.componentId));
  const Found said = given["trust_formula"].cast<bool>() ? Found() : Diagnose(system, settings.recipe, batch);
  const CRecipeTarget wanted = RecipeTargetOf(aim, 0);
  CCorrection before;
  CCorrectionArray corrections;
  Search(system, settings.recipe, [&] {
    return CorrectBatch(system.file.data, system.file.rules, batch, wanted, settings, before, corrections);
  });
  py::list found;
  for (const CCorrection& correction : corrections) {
    py::dict fields = FieldsOf(system, correction);
    said.AddTo(fields);
    found.append(fields);
  }
  py::dict asItIs = FieldsOf(system, before);
  said.AddTo(asItIs);
  return py::make_tuple(asItIs, found);
}

// A stock: a formula, a curve and a size for each batch.
CArrayVarex<CBatch> StockOf(const System& system, const py::object& formulas, const py::object& measured,
                            const py::object& sizes) {
  const Rows amounts = RowsOf(formulas, "formulas", system.ids.size());
  const Rows curves = CurvesOf(measured, "measured");
  const auto numbers = sizes.cast<std::vector<double>>();
  if (curves.count == 0 || amounts.count != curves.count || numbers.size() != curves.count) {
    throw py::value_error("formulas, measured and sizes: as many rows of each are expected");
  }
  CArrayVarex<CBatch> stock;
  for (std::size_t i = 0; i < curves.count; ++i) {
    CBatch batch;
    batch.formula = system.FormulaOf(amounts.Doubles() + i * amounts.stride);
    batch.curve = CurveAt(curves.Doubles() + i * curves.stride);
    batch.size = numbers[i];
    if (!(batch.size > 0.0)) throw py::value_error("sizes: numbers above 0 are expected");
    stock.Add(batch);
  }
  return stock;
}

// A stock as its curves say it is, without the batches that nothing explains.
struct FoundStock {
  CArrayVarex<CBatch> batches;
  std::vector<Found> found;      // of these
  std::vector<int32_t> places;   // of these in what was given
  std::vector<int32_t> leftOut;  // places of the others
};

FoundStock TakeStock(const System& system, const CArrayVarex<CBatch>& given, const CRecipeSettings& recipe,
                     bool trustFormula) {
  FoundStock stock;
  for (int32_t i = 0; i < given.GetSize(); ++i) {
    CBatch batch = given[i];
    const Found found = trustFormula ? Found() : Diagnose(system, recipe, batch);
    (found.isExplained ? stock.places : stock.leftOut).push_back(i);
    if (!found.isExplained) continue;
    stock.batches.Add(batch);
    stock.found.push_back(found);
  }
  if (stock.batches.IsEmpty()) {
    throw py::value_error(
        "measured: no curve is explained by its formula; trust_formula=True takes the formulas as written");
  }
  return stock;
}

CRecipeTarget OneTarget(const py::object& target) {
  const Rows aim = CurvesOf(target, "target", false, 3);
  if (aim.count != 1) throw py::value_error("target: one row is expected");
  return RecipeTargetOf(aim, 0);
}

py::tuple CorrectAll(const System& system, const py::object& formulas, const py::object& measured,
                     const py::object& sizes, const py::object& target, const py::dict& given) {
  const CRecipeTarget wanted = OneTarget(target);
  CCorrectionSettings settings = CorrectionSettingsOf(system, given);
  const FoundStock stock = TakeStock(system, StockOf(system, formulas, measured, sizes), settings.recipe,
                                     given["trust_formula"].cast<bool>());
  CStockCorrectionArray corrections;
  Search(system, settings.recipe, [&] {
    return CorrectStock(system.file.data, system.file.rules, stock.batches, wanted, settings, corrections);
  });
  py::list found;
  for (const CStockCorrection& each : corrections) {
    py::dict fields = FieldsOf(system, each.correction);
    const auto place = static_cast<std::size_t>(each.batch);
    stock.found[place].AddTo(fields);
    fields["batch"] = stock.places[place];
    fields["before"] = each.before;
    fields["helps"] = each.helps;
    found.append(fields);
  }
  return py::make_tuple(found, stock.leftOut);
}

py::tuple UseStock(const System& system, const py::object& formulas, const py::object& measured,
                   const py::object& sizes, const py::object& target, const py::dict& given) {
  const CArrayVarex<CBatch> all = StockOf(system, formulas, measured, sizes);
  const CRecipeTarget wanted = OneTarget(target);
  CRecipeSettings settings = RecipeSettingsOf(system, given);
  settings.batchSize = NumberOf(given, "batch_size", 1e-9, 1e9);
  settings.resolution = NumberOf(given, "resolution", 0, settings.batchSize);
  const FoundStock stock = TakeStock(system, all, settings, given["trust_formula"].cast<bool>());
  TellFree(system, settings, given);
  CLeftoverRecipeArray recipes;
  Search(system, settings, [&] {
    return UseLeftovers(system.file.data, system.file.rules, stock.batches, wanted, settings, recipes);
  });
  py::list found;
  for (const CLeftoverRecipe& each : recipes) {
    py::dict fields;
    CDoubleArray1 used;
    used.SetSize(all.GetSize());
    used.Fill(0.0);
    py::dict suspected;
    for (int32_t i = 0; i < each.used.GetSize(); ++i) {
      const auto place = static_cast<std::size_t>(i);
      used[stock.places[place]] = each.used[i];
      if (each.used[i] > 0.0 && !stock.found[place].suspected.empty())
        suspected[py::int_(stock.places[place])] = stock.found[place].suspected;
    }
    fields["used"] = ArrayOf(used);
    fields["total"] = each.total;
    fields["suspected"] = suspected;
    fields["recipe"] = FieldsOf(system, each.recipe);
    found.append(fields);
  }
  return py::make_tuple(found, stock.leftOut);
}

}  // namespace

void DefineCorrections(py::module_& module) {
  module.def("correct_stock", &CorrectAll, py::arg("color_system"), py::arg("formulas"), py::arg("measured"),
             py::arg("sizes"), py::arg("target"), py::arg("settings"));
  module.def("use_leftovers", &UseStock, py::arg("color_system"), py::arg("formulas"), py::arg("measured"),
             py::arg("sizes"), py::arg("target"), py::arg("settings"));
  module.def("correct", &Correct, py::arg("color_system"), py::arg("formula"), py::arg("measured"),
             py::arg("target"), py::arg("settings"));
}

}  // namespace vrx::python
