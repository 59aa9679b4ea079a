#include "python/src/curves.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include <pybind11/stl.h>

#include <vrxio/measurement/headings.h>
#include <vrxio/measurement/wavelength_grid.h>

#include "python/src/module.h"
#include "python/src/views.h"

namespace vrx::python {
namespace {

// A column of a table: its wavelength and its place.
using Place = std::pair<double, py::ssize_t>;

[[noreturn]] void Fail(const char* name, const std::string& reason) {
  throw py::value_error(std::string(name) + ": " + reason);
}

bool IsNumber(const py::handle& label) {
  return PyNumber_Check(label.ptr()) != 0 && !py::isinstance<py::str>(label);
}

// Labels that were not given: 0, 1, 2 ...
bool OnlyCount(const std::vector<py::object>& labels) {
  for (std::size_t i = 0; i < labels.size(); ++i) {
    if (!IsNumber(labels[i]) || labels[i].cast<double>() != static_cast<double>(i)) return false;
  }
  return true;
}

double WavelengthOf(const py::object& label) {
  return io::WavelengthOf(IsNumber(label) ? py::str(py::float_(label)).cast<std::string>()
                                          : py::str(label).cast<std::string>());
}

// The columns of wavelengths, ascending.
std::vector<Place> PlacesOf(const std::vector<py::object>& labels, const char* name) {
  std::vector<Place> places;
  for (std::size_t i = 0; i < labels.size(); ++i) {
    const double nm = WavelengthOf(labels[i]);
    if (nm > 0) places.emplace_back(nm, static_cast<py::ssize_t>(i));
  }
  std::ranges::sort(places);
  const auto same = std::ranges::adjacent_find(places, {}, &Place::first);
  if (same != places.end()) Fail(name, "the wavelength " + std::to_string(same->first) + " stands twice");
  return places;
}

void Warn(const std::string& text) {
  if (PyErr_WarnEx(PyExc_UserWarning, text.c_str(), 1) != 0) throw py::error_already_set();
}

bool AreOnGrid(const std::vector<double>& wavelengths) {
  return wavelengths == io::LibraryWavelengths();
}

// Rows of values at `wavelengths`, which ascend, on the library's grid.
py::array_t<double> OnGrid(const Rows& rows, const std::vector<double>& wavelengths, const char* name) {
  const io::WavelengthGrid grid(wavelengths);
  if (grid.IsNarrow()) Warn(std::string(name) + ": " + grid.Description());
  std::vector<py::ssize_t> shape = rows.lead;
  shape.push_back(static_cast<py::ssize_t>(kSamples));
  py::array_t<double> curves(shape);
  double* target = curves.mutable_data();
  for (std::size_t i = 0; i < rows.count; ++i) {
    grid.Convert({rows.Doubles() + i * rows.stride, rows.width}, target + i * kSamples);
  }
  return curves;
}

void RequireWavelengths(std::size_t count, const char* name) {
  constexpr std::size_t kFewest = 3;
  if (count < kFewest) Fail(name, "at least 3 wavelengths are expected, got " + std::to_string(count));
}

// The curves of a DataFrame or a Series by its labels.
py::object CurvesOfTable(const py::handle& table, const py::handle& index, const char* name,
                         std::size_t otherWidth) {
  std::vector<py::object> labels;
  for (const py::handle label : index) labels.push_back(py::reinterpret_borrow<py::object>(label));
  if (OnlyCount(labels)) return table.attr("to_numpy")();
  const std::vector<Place> places = PlacesOf(labels, name);
  if (places.empty()) {
    if (otherWidth != 0 && labels.size() == otherWidth) return table.attr("to_numpy")();
    Fail(name, "no label is a wavelength, such as 400 or \"400 nm\"; values by their place are .to_numpy()");
  }
  RequireWavelengths(places.size(), name);
  py::list columns;
  std::vector<double> wavelengths;
  for (const auto& [nm, place] : places) {
    columns.append(place);
    wavelengths.push_back(nm);
  }
  const bool isSeries = !py::hasattr(table, "columns");
  const py::object chosen =
      isSeries ? table.attr("iloc")[columns]
               : table.attr("iloc")[py::make_tuple(py::slice(0, py::len(table), 1), columns)];
  const py::object values = chosen.attr("to_numpy")(py::dtype::of<double>());
  if (AreOnGrid(wavelengths)) return values;
  return OnGrid(RowsOf(values, name, wavelengths.size()), wavelengths, name);
}

// Values whose last axis is in the order of the wavelengths, whatever that is.
py::array Resample(const py::object& values, const std::vector<double>& wavelengths) {
  RequireWavelengths(wavelengths.size(), "wavelengths");
  std::vector<Place> places;
  for (std::size_t i = 0; i < wavelengths.size(); ++i) {
    constexpr double kShortest = 100, kLongest = 10000;
    if (!(wavelengths[i] >= kShortest && wavelengths[i] <= kLongest))
      Fail("wavelengths", "between 100 and 10000 nm are expected");
    places.emplace_back(wavelengths[i], static_cast<py::ssize_t>(i));
  }
  std::ranges::sort(places);
  if (std::ranges::adjacent_find(places, {}, &Place::first) != places.end())
    Fail("wavelengths", "one stands twice");
  const Rows given = RowsOf(values, "values", wavelengths.size());
  std::vector<py::ssize_t> shape = given.lead;
  shape.push_back(static_cast<py::ssize_t>(given.width));
  py::array_t<double> ascending(shape);
  double* target = ascending.mutable_data();
  std::vector<double> sorted;
  for (const Place& place : places) sorted.push_back(place.first);
  for (std::size_t i = 0; i < given.count; ++i) {
    const double* row = given.Doubles() + i * given.stride;
    for (const Place& place : places) *target++ = row[place.second];
  }
  if (AreOnGrid(sorted)) return ascending;
  return OnGrid(RowsOf(ascending, "values", sorted.size()), sorted, "values");
}

}  // namespace

Rows CurvesOf(const py::handle& argument, const char* name, bool floats, std::size_t otherWidth) {
  const bool isTable = !py::isinstance<py::array>(argument) && py::hasattr(argument, "iloc");
  if (!isTable) return RowsOf(argument, name, kSamples, floats, otherWidth);
  const bool hasColumns = py::hasattr(argument, "columns");
  return RowsOf(CurvesOfTable(argument, argument.attr(hasColumns ? "columns" : "index"), name, otherWidth),
                name, kSamples, floats, otherWidth);
}

void DefineCurves(py::module_& module) {
  module.def(
      "curves",
      [](const py::object& values, bool orColors) {
        constexpr std::size_t kColor = 3;
        const Rows rows = CurvesOf(values, "curves", false, orColors ? kColor : 0);
        return rows.array;
      },
      py::arg("values"), py::kw_only(), py::arg("or_colors") = false,
      "Curves as every function takes them, in an array of float64: tables by their labels.");
  module.def(
      "resample", &Resample, py::arg("values"), py::arg("wavelengths"),
      R"(Curves at any wavelengths on the grid that every function takes, as curves of files are brought to it.

A wavelength that was measured is taken as it is; between measured ones goes Lagrange's cubic through the two nearest on each
side (ASTM E2022), beyond the ends the last measured value (CIE 15). Finer steps than 10 nm are not averaged.

Parameters
----------
values : array_like, shape (..., n)
    Reflectance in percent.
wavelengths : sequence of n
    In nm, in any order, at any spacing; at least 3.

Returns
-------
numpy.ndarray, shape (..., 40)
    At 360, 370 ... 750 nm. A UserWarning says so where a part of 400 to 700 nm was not measured.

Examples
--------
>>> import vrxmath as vrx
>>> vrx.resample([40.0, 42.0, 44.0], [700, 550, 400])[[0, 4, 19, 39]].round(3)
array([44., 44., 42., 40.])
)");
}

}  // namespace vrx::python
