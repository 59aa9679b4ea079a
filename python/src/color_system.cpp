// Colour systems: their components and formulas, and the curves that formulas give.

#include "python/src/color_system.h"

#include <algorithm>
#include <filesystem>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <utility>

#include <pybind11/stl.h>

#include <vrxio/measurement/names.h>
#include <vrxio/systems/components.h>
#include <vrxio/systems/taken_surface.h>
#include <vrxmath/colorant/component_names.h>
#include <vrxmath/formula/prediction.h>
#include <vrxmath/foundation/numbers.h>
#include <vrxmath/matching/prediction_error.h>

#include "python/src/arrays.h"
#include "python/src/blocks.h"
#include "python/src/module.h"
#include "python/src/names.h"
#include "python/src/paths.h"
#include "python/src/views.h"

namespace vrx::python {
namespace {

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

std::optional<SaundersonMode> GivenSpecular(const py::object& specular) {
  if (specular.is_none()) return {};
  return SpecularNamed(specular.cast<std::string>());
}

// Refuses curves of which their geometries, one for each or none, say that their surface was measured the other way. Without a system
// they are for a calibration, which takes what `specular` says.
void RefuseOtherSpecular(const System* system, const py::object& specular, const std::string& name,
                         const std::vector<std::string>& geometries) {
  const std::optional<SaundersonMode> given = GivenSpecular(specular);
  if (system != nullptr) (void)system->SpecularOf(specular);
  const io::TakenSpecular taken =
      system != nullptr ? io::TakenBy(system->file, given) : io::TakenAlone(given);
  const auto setting = [](std::string_view value) {
    return "specular" + (value.empty() ? std::string() : "=\"" + std::string(value) + "\"");
  };
  for (std::size_t i = 0; i < geometries.size(); ++i) {
    const std::string other =
        io::OtherSpecularText({}, io::ParseGeometry(geometries[i]), taken, {"its geometry", setting});
    if (!other.empty()) throw py::value_error(name + ": curve " + std::to_string(i) + ": " + other);
  }
}

// Warns of formulas whose colorants must not be used together.
void WarnAboutRules(const System& system, const Rows& rows) {
  constexpr py::ssize_t kCaller = 2;  // of the function in Python that calls the module
  constexpr std::size_t kMost = 12;
  if (system.file.rules.GetRules().IsEmpty()) return;
  std::string places;
  std::size_t count = 0;
  for (std::size_t i = 0; i < rows.count; ++i) {
    CDWordArray1 ids;
    CDoubleArray1 amounts;
    system.FormulaOf(rows.Doubles() + i * rows.stride).GetLines(ids, amounts);
    if (system.file.rules.IsAllowed(ids)) continue;
    if (++count <= kMost) places.append(count == 1 ? "" : ", ").append(std::to_string(i));
  }
  if (count == 0) return;
  const std::string text = "formulas: " + std::to_string(count) + (count == 1 ? " has" : " have") +
                           " colorants that must not be used together: " + places +
                           (count > kMost ? ", ..." : "");
  if (PyErr_WarnEx(PyExc_UserWarning, text.c_str(), kCaller) != 0) throw py::error_already_set();
}

py::array Predict(const System& system, const py::object& amounts, const py::object& specular,
                  const py::object& out, int threads) {
  const SaundersonMode mode = system.SpecularOf(specular);
  const Rows rows = RowsOf(amounts, "formulas", system.ids.size());
  py::array_t<double> result = ResultArray(rows.lead, {static_cast<py::ssize_t>(kSamples)}, out);
  if (Overlap(result, rows.array)) throw py::value_error("out: it lies over an argument");
  WarnAboutRules(system, rows);
  double* const target = result.mutable_data();
  InBlocks(rows.count, threads, [&](std::size_t from, std::size_t count) {
    for (std::size_t i = from; i < from + count; ++i) {
      const CDbFormula formula = system.FormulaOf(rows.Doubles() + i * rows.stride);
      const CReflData curve = PredictReflectance(formula, system.file.data, mode);
      std::copy_n(curve.GetData(), kSamples, target + kSamples * i);
      const bool isUnset = formula.IsEmpty() || IsUnset(curve);
      if (isUnset) std::fill_n(target + kSamples * i, kSamples, std::numeric_limits<double>::quiet_NaN());
    }
  });
  return result;
}

// What nine of ten predictions like each formula are off at most, and its components outside of their calibrated range.
py::tuple ExpectedError(const System& system, const py::object& amounts) {
  const Rows rows = RowsOf(amounts, "formulas", system.ids.size());
  py::array_t<double> expected(rows.lead);
  py::list outside;
  for (std::size_t i = 0; i < rows.count; ++i) {
    const CDbFormula formula = system.FormulaOf(rows.Doubles() + i * rows.stride);
    const CPredictionError error = PredictionError(formula, system.file.data, system.file.calibrated);
    const bool isKnown = !formula.IsEmpty() && !IsUnset(error.nineOfTen);
    expected.mutable_data()[i] = isKnown ? error.nineOfTen : std::numeric_limits<double>::quiet_NaN();
    py::list beyond;
    for (const uint32_t id : error.outside) beyond.append(system.Label(system.PlaceOfId(id)));
    outside.append(beyond);
  }
  return py::make_tuple(expected, outside);
}

}  // namespace

System::System(io::ColorSystem given) : file(std::move(given)) {
  for (const CComponent* component : io::ComponentsInOrder(file)) {
    ids.push_back(component->GetId());
    names.push_back(component->GetName().ToUtf8());
  }
}

std::size_t System::PlaceOfId(uint32_t id) const {
  const auto found = std::ranges::find(ids, id);
  if (found == ids.end()) throw std::out_of_range("no component " + std::to_string(id));
  return static_cast<std::size_t>(found - ids.begin());
}

std::size_t System::PlaceOf(const py::handle& component) const {
  std::string fault = "the colour system has no component " + py::repr(component).cast<std::string>();
  if (py::isinstance<py::str>(component)) {
    const CComponent* const found = io::FindComponent(file, component.cast<std::string>(), fault);
    if (found != nullptr) return PlaceOfId(found->GetId());
  } else if (PyIndex_Check(component.ptr()) != 0 && !PyBool_Check(component.ptr())) {
    const auto id = py::reinterpret_steal<py::object>(PyNumber_Index(component.ptr())).cast<int64_t>();
    const auto found = std::ranges::find(ids, id);
    if (found != ids.end()) return static_cast<std::size_t>(found - ids.begin());
  }
  throw py::value_error("component: " + fault);
}

const std::string& System::Label(std::size_t place) const {
  if (labels.empty()) labels.resize(ids.size());
  std::string& label = labels[place];
  if (label.empty()) label = io::TellingName(file, *io::ComponentOfId(file, ids[place]));
  return label;
}

CDbFormula System::FormulaOf(const double* amounts) const {
  CDbFormula formula;
  for (std::size_t k = 0; k < ids.size(); ++k) {
    if (amounts[k] == 0.0) continue;
    CDbFormulaElement line;
    line.componentId = static_cast<int32_t>(ids[k]);
    line.amount = amounts[k];
    formula.Add(line);
  }
  return formula;
}

py::array_t<double> System::AmountsOf(const CDbFormula& formula) const {
  py::array_t<double> amounts(static_cast<py::ssize_t>(ids.size()));
  double* const row = amounts.mutable_data();
  std::fill_n(row, ids.size(), 0.0);
  for (const CDbFormulaElement& line : formula) {
    row[PlaceOfId(static_cast<uint32_t>(line.componentId))] += line.amount;
  }
  return amounts;
}

py::dict System::NamedAmountsOf(const CDbFormula& formula) const {
  const py::array_t<double> amounts = AmountsOf(formula);
  py::dict named;
  for (std::size_t k = 0; k < ids.size(); ++k) {
    if (amounts.data()[k] != 0.0) named[py::str(Label(k))] = amounts.data()[k];
  }
  return named;
}

SaundersonMode System::SpecularOf(const py::object& given) const {
  std::string complaint;
  const SaundersonMode mode = io::SpecularOf(file, GivenSpecular(given), complaint);
  if (!complaint.empty()) throw py::value_error("specular: " + complaint);
  return mode;
}

void DefineColorSystem(py::module_& module) {
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
      .def("place", &System::PlaceOf, py::arg("component"),
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
  module.def("predict", &Predict, py::arg("color_system"), py::arg("amounts"), py::kw_only(),
             py::arg("specular"), py::arg("out"), py::arg("threads"));
  module.def("expected_error", &ExpectedError, py::arg("color_system"), py::arg("amounts"));
  module.def("refuse_other_specular", &RefuseOtherSpecular, py::arg("color_system").none(true),
             py::arg("specular"), py::arg("name"), py::arg("geometries"));
}

}  // namespace vrx::python
