// Colour systems: the curves of formulas, the recipes of colours, and what to add to a batch.

#include <algorithm>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <vrxio/measurement/names.h>
#include <vrxio/systems/color_system_file.h>
#include <vrxio/systems/components.h>
#include <vrxio/systems/taken_surface.h>
#include <vrxmath/colorant/component_names.h>
#include <vrxmath/formula/prediction.h>
#include <vrxmath/foundation/numbers.h>
#include <vrxmath/matching/batch_correction.h>
#include <vrxmath/matching/batch_diagnosis.h>
#include <vrxmath/matching/calibration.h>
#include <vrxmath/matching/leftovers.h>
#include <vrxmath/matching/recipe.h>
#include <vrxmath/matching/recipe_costs.h>
#include <vrxmath/matching/recipe_faults.h>
#include <vrxmath/matching/stock_correction.h>

#include "python/src/arrays.h"
#include "python/src/blocks.h"
#include "python/src/color_system.h"
#include "python/src/curves.h"
#include "python/src/module.h"
#include "python/src/names.h"
#include "python/src/paths.h"
#include "python/src/views.h"

namespace vrx::python {
namespace {

// The place of a component that is named by its number, or by what the tool takes: its name, or "id:7".
std::size_t PlaceOf(const System& system, const py::handle& component) {
  std::string fault = "the colour system has no component " + py::repr(component).cast<std::string>();
  if (py::isinstance<py::str>(component)) {
    const CComponent* const found = io::FindComponent(system.file, component.cast<std::string>(), fault);
    if (found != nullptr) return system.PlaceOfId(found->GetId());
  } else if (PyIndex_Check(component.ptr()) != 0 && !PyBool_Check(component.ptr())) {
    const auto id = py::reinterpret_steal<py::object>(PyNumber_Index(component.ptr())).cast<int64_t>();
    const auto found = std::ranges::find(system.ids, id);
    if (found != system.ids.end()) return static_cast<std::size_t>(found - system.ids.begin());
  }
  throw py::value_error("component: " + fault);
}

// Formulas of a file as rows of amounts in the order of the system.
py::tuple ReadFormulas(const System& system, const std::filesystem::path& path) {
  const std::vector<io::NamedFormula> formulas = io::ReadFormulas(ExistingFile(path), system.file);
  const std::size_t width = system.ids.size();
  py::list names;
  py::array_t<double> amounts({static_cast<py::ssize_t>(formulas.size()), static_cast<py::ssize_t>(width)});
  double* row = amounts.mutable_data();
  std::fill_n(row, formulas.size() * width, 0.0);
  for (const io::NamedFormula& formula : formulas) {
    names.append(formula.name);
    for (const CDbFormulaElement& line : formula.formula) {
      row[system.PlaceOfId(static_cast<uint32_t>(line.componentId))] += line.amount;
    }
    row += width;
  }
  return py::make_tuple(names, amounts);
}

// An amount of 0 is a component that is not there.
CDbFormula FormulaOf(const System& system, const double* amounts) {
  CDbFormula formula;
  for (std::size_t k = 0; k < system.ids.size(); ++k) {
    if (amounts[k] == 0.0) continue;
    CDbFormulaElement line;
    line.componentId = static_cast<int32_t>(system.ids[k]);
    line.amount = amounts[k];
    formula.Add(line);
  }
  return formula;
}

py::array_t<double> AmountsOf(const System& system, const CDbFormula& formula) {
  py::array_t<double> amounts(static_cast<py::ssize_t>(system.ids.size()));
  double* const row = amounts.mutable_data();
  std::fill_n(row, system.ids.size(), 0.0);
  for (const CDbFormulaElement& line : formula) {
    row[system.PlaceOfId(static_cast<uint32_t>(line.componentId))] += line.amount;
  }
  return amounts;
}

std::optional<SaundersonMode> ModeNamed(const py::object& specular) {
  if (specular.is_none()) return {};
  const auto text = specular.cast<std::string>();
  for (const auto mode : {SaundersonMode::kIncluded, SaundersonMode::kExcluded, SaundersonMode::kNone}) {
    if (text == io::SpecularName(mode)) return mode;
  }
  throw py::value_error("specular: \"included\", \"excluded\" or \"none\" is expected");
}

SaundersonMode ModeOf(const System& system, const py::object& specular) {
  std::string complaint;
  const SaundersonMode mode = io::SpecularOf(system.file, ModeNamed(specular), complaint);
  if (!complaint.empty()) throw py::value_error("specular: " + complaint);
  return mode;
}

// Refuses curves of which their geometries, one for each or none, say that their surface was measured the other way. Without a system
// they are for a calibration, which takes what `specular` says.
void RefuseOtherSpecular(const System* system, const py::object& specular, const std::string& name,
                         const std::vector<std::string>& geometries) {
  const std::optional<SaundersonMode> given = ModeNamed(specular);
  if (system != nullptr) (void)ModeOf(*system, specular);
  const io::TakenSpecular taken = system != nullptr
                                      ? io::TakenBy(system->file, given)
                                      : io::TakenSpecular{given.value_or(SaundersonMode::kNone), false};
  const auto setting = [](std::string_view value) {
    return "specular" + (value.empty() ? std::string() : "=\"" + std::string(value) + "\"");
  };
  for (std::size_t i = 0; i < geometries.size(); ++i) {
    const std::int32_t code = geometries[i].empty() ? io::kNoGeometry : io::ParseGeometry(geometries[i]);
    const std::string other = io::OtherSpecularText({}, code, taken, {"its geometry", setting});
    if (!other.empty()) throw py::value_error(name + ": curve " + std::to_string(i) + ": " + other);
  }
}

py::array Predict(const System& system, const py::object& amounts, const py::object& specular,
                  const py::object& out, int threads) {
  const SaundersonMode mode = ModeOf(system, specular);
  const Rows rows = RowsOf(amounts, "formulas", system.ids.size());
  py::array_t<double> result = ResultArray(rows.lead, {static_cast<py::ssize_t>(kSamples)}, out);
  if (Overlap(result, rows.array)) throw py::value_error("out: it lies over an argument");
  double* const target = result.mutable_data();
  InBlocks(rows.count, threads, [&](std::size_t from, std::size_t count) {
    for (std::size_t i = from; i < from + count; ++i) {
      const CDbFormula formula = FormulaOf(system, rows.Doubles() + i * rows.stride);
      const CReflData curve = PredictReflectance(formula, system.file.data, mode);
      std::copy_n(curve.GetData(), kSamples, target + kSamples * i);
      const bool isUnset = formula.IsEmpty() || IsUnset(curve);
      if (isUnset) std::fill_n(target + kSamples * i, kSamples, std::numeric_limits<double>::quiet_NaN());
    }
  });
  return result;
}

// Recipes ---------------------------------------------------------------------------------------------------

template <class VALUE>
VALUE OneOf(const py::dict& settings, const char* name,
            std::initializer_list<std::pair<const char*, VALUE>> values) {
  const auto text = settings[name].cast<std::string>();
  std::string expected;
  for (const auto& [known, value] : values) {
    if (text == known) return value;
    expected += (expected.empty() ? "\"" : "\", \"") + std::string(known);
  }
  throw py::value_error(std::string(name) + ": one of " + expected + "\" is expected");
}

double NumberOf(const py::dict& settings, const char* name, double least, double most) {
  const auto number = settings[name].cast<double>();
  if (number >= least && number <= most) return number;
  throw py::value_error(std::string(name) + ": a number from " +
                        py::str(py::float_(least)).cast<std::string>() + " to " +
                        py::str(py::float_(most)).cast<std::string>() + " is expected");
}

using Entries = std::map<std::size_t, CRecipeComponent>;  // by the place of their component

CRecipeComponent& EntryOf(Entries& entries, const System& system, const py::handle& component) {
  const std::size_t place = PlaceOf(system, component);
  CRecipeComponent& entry = entries[place];
  entry.componentId = system.ids[place];
  return entry;
}

// What an argument gives for components: `take` is called with each entry and its value. A component by its name and by its number
// is given twice.
void ReadOfEach(const System& system, const py::dict& given, const char* name, Entries& entries,
                const std::function<void(CRecipeComponent&, const py::handle&)>& take) {
  std::set<uint32_t> known;
  for (const auto& [component, value] : given[name].cast<py::dict>()) {
    CRecipeComponent& entry = EntryOf(entries, system, component);
    if (!known.insert(entry.componentId).second) {
      throw py::value_error(std::string(name) + ": component " + std::to_string(entry.componentId) +
                            " is given twice, by its name and by its number");
    }
    take(entry, value);
  }
}

// Required, excluded, limited and priced components.
void ReadChoice(const System& system, const py::dict& given, CRecipeSettings& settings) {
  Entries entries;
  for (const py::handle component : given["require"]) {
    EntryOf(entries, system, component).use = CRecipeComponent::kRequired;
  }
  for (const py::handle component : given["exclude"]) {
    CRecipeComponent& entry = EntryOf(entries, system, component);
    if (entry.use == CRecipeComponent::kRequired)
      throw py::value_error("exclude: a component is required, too");
    entry.use = CRecipeComponent::kExcluded;
  }
  ReadOfEach(system, given, "limits", entries, [](CRecipeComponent& entry, const py::handle& range) {
    const auto [least, most] = range.cast<std::pair<double, double>>();
    entry.least = least / 100.0;
    entry.most = most / 100.0;
  });
  ReadOfEach(system, given, "costs", entries, [](CRecipeComponent& entry, const py::handle& cost) {
    entry.cost = cost.cast<double>();
    if (!(entry.cost >= 0.0 && entry.cost <= 1e12))
      throw py::value_error("costs: numbers from 0 to 1e12 are expected");
  });
  for (const auto& [place, entry] : entries) settings.components.Add(entry);
  settings.mostColorants = static_cast<int32_t>(NumberOf(given, "max_colorants", 1, 6));
  settings.leastAmount = NumberOf(given, "min_amount", 0, 100) / 100.0;
}

CReflData CurveOf(const double* values) {
  CReflData curve;
  std::copy_n(values, kSamples, curve.GetData());
  return curve;
}

// The settings that searches for recipes and for corrections have in common; `given` has every setting by its name in Python.
CRecipeSettings SettingsOf(const System& system, const py::dict& given) {
  CRecipeSettings settings;
  ReadChoice(system, given, settings);
  settings.illuminants.RemoveAll();
  for (const vrxIlluminant illuminant : DistinctIlluminantsOf(given["illuminants"])) {
    settings.illuminants.Add(illuminant);
  }
  settings.observer = ObserverOf(given["observer"].cast<int>());
  settings.difference = python::SettingsOf(given["system"].cast<std::string>(), given["parameters"]);
  settings.tolerance = NumberOf(given, "tolerance", 0, 1e9);
  settings.objective = OneOf<RecipeObjective>(given, "objective",
                                              {{"tristimulus", RecipeObjective::kTristimulus},
                                               {"spectral", RecipeObjective::kSpectral},
                                               {"combined", RecipeObjective::kCombined}});
  settings.mode = ModeOf(system, given["specular"]);
  if (!given["weights"].is_none()) {
    for (const py::handle weight : given["weights"]) settings.weights.Add(weight.cast<double>());
    if (settings.weights.GetSize() != settings.illuminants.GetSize()) {
      throw py::value_error("weights: one number per illuminant is expected");
    }
  }
  if (!given["trace"].is_none()) settings.trace = NumberOf(given, "trace", 0, 1e6);
  settings.angle = NumberOf(given, "angle", 0, 180);
  settings.top = static_cast<int32_t>(NumberOf(given, "top", 1, 10'000));
  settings.threads = static_cast<uint32_t>(NumberOf(given, "threads", 0, 1024));
  settings.prerank = static_cast<int64_t>(NumberOf(given, "prerank", 0, 1e6));
  settings.mostSubsets = static_cast<uint64_t>(NumberOf(given, "max_subsets", 1, 1e15));
  return settings;
}

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
  settings.black = CurveOf(backings.Doubles());
  settings.white = CurveOf(backings.Doubles() + backings.stride);
}

// Refuses what there is no recipe for, in the words of the arguments.
void RefuseFault(const System& system, const CRecipeSettings& settings, const RecipeOutcome& outcome,
                 const char* cheapest = "") {
  if (outcome.fault == RecipeFault::kNone) return;
  const auto setting = [](std::string_view name, std::string_view value) {
    std::string text(name);
    std::ranges::replace(text, '-', '_');
    return value.empty() ? text : text + "=\"" + std::string(value) + "\"";
  };
  const RecipeNames names{"color_system", "limits", "target", "measured",
                          "formula",      setting,  cheapest, "costs"};
  throw py::value_error(RecipeFaultText(outcome, system.file.data, settings, names));
}

// Warns of what is free because nobody gave a cost of it.
void TellFree(const System& system, const CRecipeSettings& settings, const py::dict& given) {
  constexpr py::ssize_t kCaller = 2;  // of the function in Python that calls the module
  std::vector<uint32_t> priced;
  for (const auto& [component, cost] : given["costs"].cast<py::dict>())
    priced.push_back(system.ids[PlaceOf(system, component)]);
  std::string free;
  for (const uint32_t id : ComponentsWithoutCost(system.file.data, settings, priced))
    free.append(free.empty() ? "" : ", ").append(system.Label(system.PlaceOfId(id)));
  if (free.empty()) return;
  const std::string text = "no cost is known of " + free + "; they count as free";
  if (PyErr_WarnEx(PyExc_UserWarning, text.c_str(), kCaller) != 0) throw py::error_already_set();
}

// A search without the interpreter's lock, which Ctrl+C ends.
RecipeOutcome Search(const System& system, CRecipeSettings& settings,
                     const std::function<RecipeOutcome()>& search) {
  RecipeOutcome outcome;
  WithoutLock([&](const auto& goesOn) {
    settings.progress = [&](double) { return goesOn(); };
    outcome = search();
  });
  RefuseFault(system, settings, outcome);
  return outcome;
}

CRecipeTarget TargetOf(const Rows& rows, std::size_t i) {
  const double* const row = rows.Doubles() + i * rows.stride;
  CRecipeTarget target;
  if (rows.width == kSamples) {
    target.curve = CurveOf(row);
  } else {
    target.lab = CLabValues(row[0], row[1], row[2]);
  }
  return target;
}

double NanOf(double value) {
  return IsUnset(value) ? std::numeric_limits<double>::quiet_NaN() : value;
}

py::array_t<double> ArrayOf(const CDoubleArray1& values) {
  py::array_t<double> array(static_cast<py::ssize_t>(values.GetSize()));
  for (int32_t k = 0; k < values.GetSize(); ++k) array.mutable_data()[k] = NanOf(values[k]);
  return array;
}

py::array_t<double> ArrayOf(const CReflData& curve) {
  return py::array_t<double>(static_cast<py::ssize_t>(kSamples), curve.GetData());
}

std::vector<std::string> NamesOf(const System& system, const CDWordArray1& ids) {
  std::vector<std::string> names;
  for (const uint32_t id : ids) names.push_back(system.Label(system.PlaceOfId(id)));
  return names;
}

// The components of a formula by name, in the order of the system.
py::dict NamedAmountsOf(const System& system, const CDbFormula& formula) {
  const py::array_t<double> amounts = AmountsOf(system, formula);
  py::dict named;
  for (std::size_t k = 0; k < system.ids.size(); ++k) {
    if (amounts.data()[k] != 0.0) named[py::str(system.Label(k))] = amounts.data()[k];
  }
  return named;
}

py::dict FieldsOf(const System& system, const CRecipe& recipe) {
  py::dict fields;
  fields["amounts"] = AmountsOf(system, recipe.formula);
  fields["formula"] = NamedAmountsOf(system, recipe.formula);
  fields["differences"] = ArrayOf(recipe.differences);
  fields["metamerism"] = NanOf(recipe.metamerism);
  fields["inconstancy"] = NanOf(recipe.inconstancy);
  fields["rms"] = NanOf(recipe.rms);
  fields["cost"] = recipe.cost;
  fields["opacity"] = NanOf(recipe.opacity);
  fields["load"] = 100.0 * recipe.load;
  fields["load_by"] = LoadBasisText(recipe.loadBasis);
  fields["expected"] = NanOf(recipe.expected);
  fields["outside"] = NamesOf(system, recipe.outside);
  fields["folded"] = recipe.alike;
  fields["traces"] = NamesOf(system, recipe.traces);
  fields["within_tolerance"] = recipe.isWithinTolerance;
  fields["curve"] = ArrayOf(recipe.curve);
  return fields;
}

py::list Match(const System& system, const py::object& targets, const py::dict& given) {
  const Rows rows = CurvesOf(targets, "targets", false, 3);
  CRecipeSettings settings = SettingsOf(system, given);
  ReadProduction(system, given, settings);
  RefuseFault(system, settings, CheckCosts(system.file.data, settings), "sort=\"cost\"");
  TellFree(system, settings, given);
  py::list all;
  for (std::size_t i = 0; i < rows.count; ++i) {
    CRecipeArray recipes;
    const CRecipeTarget target = TargetOf(rows, i);
    Search(system, settings,
           [&] { return FormulateRecipes(system.file.data, system.file.rules, target, settings, recipes); });
    py::list found;
    for (const CRecipe& recipe : recipes) found.append(FieldsOf(system, recipe));
    all.append(found);
  }
  return all;
}

py::dict FieldsOf(const System& system, const CCorrection& correction) {
  py::dict fields;
  fields["amounts"] = AmountsOf(system, correction.additions);
  fields["formula"] = NamedAmountsOf(system, correction.additions);
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
  settings.recipe = SettingsOf(system, given);
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
  batch.formula = FormulaOf(system, amounts.Doubles());
  batch.curve = CurveOf(curve.Doubles());
  batch.size = NumberOf(given, "batch_size", 1e-9, 1e9);
  settings.allowNew = given["allow_new"].cast<bool>();
  for (const CDbFormulaElement& line : batch.formula)
    settings.own.Add(static_cast<uint32_t>(line.componentId));
  const Found said = given["trust_formula"].cast<bool>() ? Found() : Diagnose(system, settings.recipe, batch);
  const CRecipeTarget wanted = TargetOf(aim, 0);
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
    batch.formula = FormulaOf(system, amounts.Doubles() + i * amounts.stride);
    batch.curve = CurveOf(curves.Doubles() + i * curves.stride);
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
  return TargetOf(aim, 0);
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
  CRecipeSettings settings = SettingsOf(system, given);
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

void DefineFormulation(py::module_& module) {
  py::class_<System>(module, "ColorSystem",
                     R"(Colorants with their optical data, from a colour-system file (JSON).

Parameters
----------
path : str or os.PathLike

Attributes
----------
name, model : str
ids : list of int
names : list of str
    Of the components, in the order in which amounts are given.
)")
      .def(py::init([](const std::filesystem::path& path) {
             return System(io::ReadColorSystem(ExistingFile(path)));
           }),
           py::arg("path"))
      .def_property_readonly("name", [](const System& system) { return system.file.data.name.ToUtf8(); })
      .def_property_readonly(
          "model",
          [](const System& system) { return OpticalModelName(system.file.data.opticalModel).ToUtf8(); })
      .def_readonly("ids", &System::ids)
      .def_readonly("names", &System::names)
      .def("place", &PlaceOf, py::arg("component"),
           "The place of a component among the amounts: by its number, or by its name in any case, which no "
           "other may have, "
           "or \"id:7\" or \"name:7\" for a name that is a number.")
      .def("read_formulas", &ReadFormulas, py::arg("path"), R"(The formulas of a file.

Returns
-------
names : list of str
amounts : numpy.ndarray, shape (n, components)
)")
      .def(
          "to_json", [](const System& system) { return io::ColorSystemText(system.file); },
          "The text of a colour-system file that is read back to the same system.")
      .def("__len__", [](const System& system) { return system.ids.size(); })
      .def("__repr__", [](const System& system) {
        return "<ColorSystem \"" + system.file.data.name.ToUtf8() + "\", " +
               std::to_string(system.ids.size()) + " components>";
      });
  module.attr("recipe_defaults") = RecipeDefaultsDict();
  module.def("predict", &Predict, py::arg("color_system"), py::arg("amounts"), py::kw_only(),
             py::arg("specular"), py::arg("out"), py::arg("threads"));
  module.def("refuse_other_specular", &RefuseOtherSpecular, py::arg("color_system").none(true),
             py::arg("specular"), py::arg("name"), py::arg("geometries"));
  module.def("match", &Match, py::arg("color_system"), py::arg("targets"), py::arg("settings"));
  module.def("correct_stock", &CorrectAll, py::arg("color_system"), py::arg("formulas"), py::arg("measured"),
             py::arg("sizes"), py::arg("target"), py::arg("settings"));
  module.def("use_leftovers", &UseStock, py::arg("color_system"), py::arg("formulas"), py::arg("measured"),
             py::arg("sizes"), py::arg("target"), py::arg("settings"));
  module.def("correct", &Correct, py::arg("color_system"), py::arg("formula"), py::arg("measured"),
             py::arg("target"), py::arg("settings"));
}

}  // namespace vrx::python
