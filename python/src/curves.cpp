#include "python/src/curves.h"

#include <algorithm>
#include <iterator>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include <pybind11/numpy.h>

#include <vrxio/measurement/headings.h>
#include <vrxio/measurement/sample_columns.h>
#include <vrxio/measurement/wavelength_grid.h>
#include <vrxio/text/decimal.h>
#include <vrxmath/foundation/numbers.h>

#include "python/src/blocks.h"
#include "python/src/module.h"
#include "python/src/views.h"

namespace vrx::python {
namespace {

// Wavelengths, ascending, and the places of their values in a row.
struct Bands {
  std::vector<double> nm;
  std::vector<std::size_t> places;

  bool AreInOrder() const {
    return std::ranges::is_sorted(places) && places.back() - places.front() + 1 == places.size();
  }
};

[[noreturn]] void Fail(const char* name, const std::string& reason) {
  throw py::value_error(std::string(name) + ": " + reason);
}

void Warn(const std::string& text) {
  const py::object category = py::module_::import("vrxmath").attr("MeasurementWarning");
  if (PyErr_WarnEx(category.ptr(), text.c_str(), 1) != 0) throw py::error_already_set();
}

// The places of wavelengths in any order; 0 is none. The rules are those of files.
Bands BandsOf(std::span<const double> wavelengths, const char* name) {
  std::vector<std::pair<double, std::size_t>> sorted;
  for (std::size_t i = 0; i < wavelengths.size(); ++i) {
    if (wavelengths[i] != 0) sorted.emplace_back(wavelengths[i], i);
  }
  std::ranges::sort(sorted);
  Bands bands;
  for (const auto& [nm, place] : sorted) {
    if (!bands.nm.empty() && bands.nm.back() == nm)
      Fail(name, "the wavelength " + io::ShortestText(nm) + " stands twice");
    bands.nm.push_back(nm);
    bands.places.push_back(place);
  }
  const io::WavelengthFault fault = io::FaultOfWavelengths(bands.nm);
  if (!fault.reason.empty()) Fail(name, fault.reason);
  return bands;
}

std::vector<double> GivenWavelengths(const py::handle& argument) {
  constexpr double kShortest = 100, kLongest = 10000;
  const auto isWavelength = [](double nm) { return nm >= kShortest && nm <= kLongest; };
  const auto list = py::array_t<double, py::array::c_style | py::array::forcecast>::ensure(argument);
  if (!list) PyErr_Clear();
  if (!list || list.ndim() != 1 || !std::all_of(list.data(), list.data() + list.size(), isWavelength))
    Fail("wavelengths", "a sequence of numbers from 100 to 10000 nm is expected");
  return {list.data(), list.data() + list.size()};
}

// The values of a row at ascending wavelengths.
std::span<const double> Ascending(const double* row, const Bands& bands, std::vector<double>& scratch) {
  if (bands.AreInOrder()) return {row + bands.places.front(), bands.places.size()};
  scratch.clear();
  for (const std::size_t place : bands.places) scratch.push_back(row[place]);
  return scratch;
}

// Rows with values at `bands` on the library's grid, in `out` where that is given.
Curves OnGrid(Rows rows, const Bands& bands, const char* name, const py::object& out) {
  const io::WavelengthGrid grid(bands.nm);
  if (grid.IsNarrow()) Warn(std::string(name) + ": " + grid.Warning());
  const bool isOnGrid = bands.nm == io::LibraryWavelengths();
  if (isOnGrid && bands.AreInOrder() && rows.width == kSamples && out.is_none()) return {std::move(rows), {}};
  py::array_t<double> curves = ResultArray(rows.lead, {static_cast<py::ssize_t>(kSamples)}, out);
  if (Overlap(curves, rows.array)) throw py::value_error(std::string("out: it lies over ") + name);
  double* target = curves.mutable_data();
  InBlocks(rows.count, 1, [&](std::size_t from, std::size_t count) {
    std::vector<double> scratch;
    for (std::size_t i = from; i < from + count; ++i) {
      const std::span<const double> row = Ascending(rows.Doubles() + i * rows.stride, bands, scratch);
      if (std::ranges::all_of(row, [](double value) { return IsUnset(value); })) {
        FillNaN(target + i * kSamples, kSamples);
      } else {
        grid.Convert(row, target + i * kSamples);
      }
    }
  });
  return {RowsOf(curves, name, kSamples), isOnGrid ? std::string() : grid.Description()};
}

// Labels ----------------------------------------------------------------------------------------------------

bool IsTable(const py::handle& argument) {
  return !py::isinstance<py::array>(argument) && py::hasattr(argument, "iloc");
}

std::vector<py::object> LabelsOf(const py::handle& table) {
  std::vector<py::object> labels;
  for (const py::handle label : table.attr(py::hasattr(table, "columns") ? "columns" : "index"))
    labels.push_back(py::reinterpret_borrow<py::object>(label));
  return labels;
}

bool IsLabelOfNumber(const py::handle& label) {
  return PyNumber_Check(label.ptr()) != 0 && !py::isinstance<py::str>(label);
}

// Labels that were not given: 0, 1, 2 ...
bool OnlyCount(const std::vector<py::object>& labels) {
  for (std::size_t i = 0; i < labels.size(); ++i) {
    if (!IsLabelOfNumber(labels[i]) || labels[i].cast<double>() != static_cast<double>(i)) return false;
  }
  return true;
}

// The wavelengths of labels; 0 for one that is none.
std::vector<double> WavelengthsOf(const std::vector<py::object>& labels) {
  std::vector<double> wavelengths;
  for (const py::object& label : labels) {
    wavelengths.push_back(io::WavelengthOf(
        (IsLabelOfNumber(label) ? py::str(py::float_(label)) : py::str(label)).cast<std::string>()));
  }
  return wavelengths;
}

bool HasWavelengths(const std::vector<double>& wavelengths) {
  return std::ranges::any_of(wavelengths, [](double nm) { return nm != 0; });
}

// The numbers of the columns of wavelengths of a table.
py::object ValuesOf(const py::handle& table, const std::vector<double>& wavelengths) {
  py::list columns;
  for (std::size_t i = 0; i < wavelengths.size(); ++i) {
    if (wavelengths[i] != 0) columns.append(i);
  }
  const py::object chosen =
      py::hasattr(table, "columns")
          ? table.attr("iloc")[py::make_tuple(py::slice(py::none(), py::none(), py::none()), columns)]
          : table.attr("iloc")[columns];
  return chosen.attr("to_numpy")(py::dtype::of<double>());
}

// The curves of a table by its labels.
Curves CurvesOfTable(const py::handle& table, const char* name, std::size_t otherWidth,
                     const py::object& out) {
  const std::vector<py::object> labels = LabelsOf(table);
  const std::vector<double> wavelengths = WavelengthsOf(labels);
  const bool areColors = otherWidth != 0 && labels.size() == otherWidth && !HasWavelengths(wavelengths);
  if (OnlyCount(labels) || areColors)
    return {RowsOf(table.attr("to_numpy")(), name, kSamples, false, otherWidth), {}};
  if (!HasWavelengths(wavelengths))
    Fail(name, "no label is a wavelength, such as 400 or \"400 nm\"; values by their place are .to_numpy()");
  std::vector<double> chosen;
  std::ranges::copy_if(wavelengths, std::back_inserter(chosen), [](double nm) { return nm != 0; });
  const Bands bands = BandsOf(chosen, name);
  return OnGrid(RowsOf(ValuesOf(table, wavelengths), name, chosen.size()), bands, name, out);
}

Curves TakeCurves(const py::handle& argument, const char* name, const py::handle& wavelengths, bool floats,
                  std::size_t otherWidth, const py::object& out) {
  if (IsTable(argument) && wavelengths.is_none()) return CurvesOfTable(argument, name, otherWidth, out);
  if (wavelengths.is_none()) return {RowsOf(argument, name, kSamples, floats, otherWidth), {}};
  const std::vector<double> nm = GivenWavelengths(wavelengths);
  const Bands bands = BandsOf(nm, "wavelengths");
  Rows rows = RowsOf(argument, name, nm.size(), floats && bands.nm == io::LibraryWavelengths(), otherWidth);
  if (rows.width != nm.size()) return {std::move(rows), {}};
  return OnGrid(std::move(rows), bands, name, out);
}

py::array Resample(const py::object& values, const py::object& wavelengths, const py::object& out) {
  Curves curves = TakeCurves(values, "values", wavelengths, false, 0, out);
  if (!curves.array.is(values) && (out.is_none() || curves.array.is(out))) return curves.array;
  py::array_t<double> result = ResultArray(curves.lead, {static_cast<py::ssize_t>(kSamples)}, out);
  for (std::size_t i = 0; i < curves.count; ++i)
    std::copy_n(curves.Doubles() + i * curves.stride, kSamples, result.mutable_data() + i * kSamples);
  return result;
}

}  // namespace

Curves CurvesAt(const py::handle& argument, const char* name, const py::handle& wavelengths, bool floats,
                std::size_t otherWidth) {
  return TakeCurves(argument, name, wavelengths, floats, otherWidth, py::none());
}

Rows CurvesOf(const py::handle& argument, const char* name, bool floats, std::size_t otherWidth) {
  return CurvesAt(argument, name, py::none(), floats, otherWidth);
}

bool AreCurves(const py::handle& argument, const py::handle& wavelengths) {
  if (!wavelengths.is_none()) return true;
  if (IsTable(argument) && HasWavelengths(WavelengthsOf(LabelsOf(argument)))) return true;
  const auto array = py::array::ensure(argument);
  if (!array) PyErr_Clear();
  return array && array.ndim() > 0 && array.shape(array.ndim() - 1) == static_cast<py::ssize_t>(kSamples);
}

void DefineCurves(py::module_& module) {
  module.def(
      "curves",
      [](const py::object& values, const py::object& wavelengths, bool orColors, const std::string& name) {
        constexpr std::size_t kColor = 3;
        return CurvesAt(values, name.c_str(), wavelengths, false, orColors ? kColor : 0).array;
      },
      py::arg("values"), py::arg("wavelengths") = py::none(), py::kw_only(), py::arg("or_colors") = false,
      py::arg("name") = "curves", "Curves as every function takes them, in an array of float64.");
  module.def(
      "resample", &Resample, py::arg("values"), py::arg("wavelengths") = py::none(), py::kw_only(),
      py::arg("out") = py::none(),
      R"(Curves at any wavelengths on the grid that every function takes, as curves of files are brought to it.

A wavelength that was measured is taken as it is; between measured ones goes Lagrange's cubic through the two nearest on each
side (ASTM E2022), beyond the ends the last measured value (CIE 15). Finer steps than 10 nm are not averaged.

Parameters
----------
values : array_like, shape (..., n)
    Reflectance in percent.
wavelengths : sequence of n
    In nm, in any order, 0.2 to 20 nm apart, at least 3 of them from 360 to 750 nm, without a gap of more than 5 nm and one and
    a half of the usual step. May be left out where ``values`` says its own.
out : numpy.ndarray, optional
    Where the result goes: C-contiguous float64 of the result's shape.

Returns
-------
numpy.ndarray, shape (..., 40)
    At 360, 370 ... 750 nm. A MeasurementWarning says so where a part of 400 to 700 nm was not measured.

Examples
--------
>>> import vrxmath as vrx
>>> vrx.resample(range(31, 0, -1), range(700, 390, -10))[[0, 4, 34, 39]]
array([ 1.,  1., 31., 31.])
)");
}

}  // namespace vrx::python
