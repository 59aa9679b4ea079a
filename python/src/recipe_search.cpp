#include "python/src/recipe_search.h"

#include <algorithm>
#include <limits>
#include <map>
#include <set>
#include <string_view>
#include <vector>

#include <pybind11/stl.h>

#include <vrxmath/foundation/numbers.h>
#include <vrxmath/matching/recipe_costs.h>
#include <vrxmath/matching/recipe_faults.h>

#include "python/src/names.h"
#include "python/src/unlocked.h"
#include "python/src/views.h"

namespace vrx::python {
namespace {

using Entries = std::map<std::size_t, CRecipeComponent>;  // by the place of their component

CRecipeComponent& EntryOf(Entries& entries, const System& system, const py::handle& component) {
  const std::size_t place = system.PlaceOf(component);
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

std::vector<std::string> NamesOf(const System& system, const CDWordArray1& ids) {
  std::vector<std::string> names;
  for (const uint32_t id : ids) names.push_back(system.Label(system.PlaceOfId(id)));
  return names;
}

}  // namespace

double NumberOf(const py::dict& settings, const char* name, double least, double most) {
  const auto number = settings[name].cast<double>();
  if (number >= least && number <= most) return number;
  throw py::value_error(std::string(name) + ": a number from " +
                        py::str(py::float_(least)).cast<std::string>() + " to " +
                        py::str(py::float_(most)).cast<std::string>() + " is expected");
}

CRecipeSettings RecipeSettingsOf(const System& system, const py::dict& given) {
  CRecipeSettings settings;
  ReadChoice(system, given, settings);
  settings.illuminants.RemoveAll();
  for (const vrxIlluminant illuminant : DistinctIlluminantsOf(given["illuminants"])) {
    settings.illuminants.Add(illuminant);
  }
  settings.observer = ObserverOf(given["observer"].cast<int>());
  settings.difference = SettingsOf(given["system"].cast<std::string>(), given["parameters"]);
  settings.tolerance = NumberOf(given, "tolerance", 0, 1e9);
  settings.objective = OneOf<RecipeObjective>(given, "objective",
                                              {{"tristimulus", RecipeObjective::kTristimulus},
                                               {"spectral", RecipeObjective::kSpectral},
                                               {"combined", RecipeObjective::kCombined}});
  settings.mode = system.SpecularOf(given["specular"]);
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

void RefuseFault(const System& system, const CRecipeSettings& settings, const RecipeOutcome& outcome,
                 const char* cheapest) {
  if (outcome.fault == RecipeFault::kNone) return;
  const auto setting = [](std::string_view name, std::string_view value) {
    std::string text(name);
    std::ranges::replace(text, '-', '_');
    return value.empty() ? text : text + "=\"" + std::string(value) + "\"";
  };
  const RecipeNames names{"color_system", "limits", "target", "measured", "formula",
                          setting,        cheapest, "costs",  "backings", system.file.specular.has_value()};
  throw py::value_error(RecipeFaultText(outcome, system.file.data, settings, names));
}

void TellFree(const System& system, const CRecipeSettings& settings, const py::dict& given) {
  constexpr py::ssize_t kCaller = 2;  // of the function in Python that calls the module
  std::vector<uint32_t> priced;
  for (const auto& [component, cost] : given["costs"].cast<py::dict>())
    priced.push_back(system.ids[system.PlaceOf(component)]);
  std::string free;
  for (const uint32_t id : ComponentsWithoutCost(system.file.data, settings, priced))
    free.append(free.empty() ? "" : ", ").append(system.Label(system.PlaceOfId(id)));
  if (free.empty()) return;
  const std::string text = "no cost is known of " + free + "; they count as free";
  if (PyErr_WarnEx(PyExc_UserWarning, text.c_str(), kCaller) != 0) throw py::error_already_set();
}

void Search(const System& system, CRecipeSettings& settings, const std::function<RecipeOutcome()>& search) {
  RecipeOutcome outcome;
  WithoutLock([&](const auto& goesOn) {
    settings.progress = [&](double) { return goesOn(); };
    outcome = search();
  });
  RefuseFault(system, settings, outcome);
}

CRecipeTarget RecipeTargetOf(const Rows& rows, std::size_t i) {
  const double* const row = rows.Doubles() + i * rows.stride;
  CRecipeTarget target;
  if (rows.width == kSamples) {
    target.curve = CurveAt(row);
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

py::dict FieldsOf(const System& system, const CRecipe& recipe) {
  py::dict fields;
  fields["amounts"] = system.AmountsOf(recipe.formula);
  fields["formula"] = system.NamedAmountsOf(recipe.formula);
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

}  // namespace vrx::python
