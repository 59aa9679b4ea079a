#include "python/src/curves.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <vrxio/measurement/headings.h>
#include <vrxio/measurement/names.h>
#include <vrxio/measurement/sample_columns.h>
#include <vrxio/measurement/wavelength_grid.h>
#include <vrxio/text/decimal.h>
#include <vrxmath/colorimetry/fine_weights.h>
#include <vrxmath/foundation/ks_data.h>
#include <vrxmath/foundation/numbers.h>

#include "python/src/arrow.h"
#include "python/src/blocks.h"
#include "python/src/module.h"
#include "python/src/views.h"

namespace vrx::python {
namespace {

// By which a CurveArray gives its values and their wavelengths.
constexpr const char* kCurvesMethod = "__vrx_curves__";

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

// The places of wavelengths in any order. The rules are those of files.
Bands BandsOf(std::span<const double> wavelengths, const char* name) {
  std::vector<std::pair<double, std::size_t>> sorted;
  for (std::size_t i = 0; i < wavelengths.size(); ++i) sorted.emplace_back(wavelengths[i], i);
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

// Rows with values at `bands` on the grid of an interval, in `out` where that is given. Rows on a fine grid lie one behind the other.
Curves OnGrid(Rows rows, const Bands& bands, const char* name, const py::object& out, int interval) {
  const io::WavelengthGrid grid(bands.nm, interval);
  if (grid.IsNarrow()) Warn(std::string(name) + ": " + grid.Warning());
  const std::vector<double> nodes = io::GridWavelengths(interval);
  const std::size_t width = nodes.size();
  const bool isOnGrid = bands.nm == nodes;
  const bool isPlaced = width == kSamples || (!rows.isFloat && (rows.stride == width || rows.count <= 1));
  if (isOnGrid && bands.AreInOrder() && out.is_none() && isPlaced) return {std::move(rows), {}};
  if (rows.isFloat) {
    const py::object mask = rows.mask;
    rows = RowsOf(py::array_t<double>::ensure(rows.array), name, rows.width);
    rows.mask = mask;
  }
  py::array_t<double> curves = ResultApart(rows.lead, {static_cast<py::ssize_t>(width)}, out, {&rows});
  double* target = curves.mutable_data();
  InBlocks(rows.count, 1, [&](std::size_t from, std::size_t count) {
    std::vector<double> scratch;
    for (std::size_t i = from; i < from + count; ++i) {
      const std::span<const double> row = Ascending(rows.Doubles() + i * rows.stride, bands, scratch);
      if (std::ranges::all_of(row, [](double value) { return IsUnset(value); })) {
        FillNaN(target + i * width, width);
      } else {
        grid.Convert(row, target + i * width);
      }
    }
  });
  Curves result{RowsOf(curves, name, width), isOnGrid ? std::string() : grid.Description()};
  result.mask = rows.mask;
  return result;
}

// Labels ----------------------------------------------------------------------------------------------------

// What has neither an iloc nor a method of a CurveArray, asked without looking for them.
bool IsPlain(const py::handle& argument) {
  return py::isinstance<py::array>(argument) || PyList_CheckExact(argument.ptr()) ||
         PyTuple_CheckExact(argument.ptr());
}

bool IsTable(const py::handle& argument) {
  return !IsPlain(argument) && py::hasattr(argument, "iloc");
}

bool IsCurveArray(const py::handle& argument) {
  return !IsPlain(argument) && py::hasattr(argument, kCurvesMethod);
}

// Columns of Arrow that are taken as such: tables of pandas and a CurveArray may hand them over, too.
bool AreColumnsOfArrow(const py::handle& argument) {
  return !IsPlain(argument) && !IsTable(argument) && !IsCurveArray(argument) && IsArrow(argument);
}

bool IsLabelOfNumber(const py::handle& label) {
  return PyNumber_Check(label.ptr()) != 0 && !py::isinstance<py::str>(label);
}

// Columns that have labels.
class LabelledColumns {
 public:
  virtual ~LabelledColumns() = default;
  virtual py::list Names() const = 0;
  // The numbers of columns, in that order.
  virtual py::object Values(const std::vector<std::size_t>& places, const char* name) const = 0;
  virtual bool HoldsNumbers(std::size_t place) const = 0;
};

// Those of a DataFrame of pandas, or the entries of a Series.
class FrameColumns : public LabelledColumns {
 public:
  explicit FrameColumns(const py::handle& table) : table_(table), isFrame_(py::hasattr(table, "columns")) {}

  py::list Names() const override { return py::list(table_.attr(isFrame_ ? "columns" : "index")); }

  py::object Values(const std::vector<std::size_t>& places, const char* name) const override {
    const py::object columns = py::cast(places);
    try {
      const py::object chosen =
          isFrame_
              ? table_.attr("iloc")[py::make_tuple(py::slice(py::none(), py::none(), py::none()), columns)]
              : table_.attr("iloc")[columns];
      return chosen.attr("to_numpy")(py::dtype::of<double>(), py::arg("na_value") = std::nan(""));
    } catch (py::error_already_set& error) {
      if (!error.matches(PyExc_ValueError) && !error.matches(PyExc_TypeError)) throw;
      throw py::type_error(std::string(name) + ": its columns hold something that is no number");
    }
  }

  bool HoldsNumbers(std::size_t place) const override {
    if (!isFrame_) return IsLabelOfNumber(table_.attr("iloc")[py::int_(place)]);
    const auto kind = table_.attr("dtypes").attr("iloc")[py::int_(place)].attr("kind").cast<std::string>();
    return kind.find_first_of("iufcb") != std::string::npos;
  }

 private:
  py::handle table_;
  bool isFrame_;
};

// Those of a table of Arrow.
class ArrowTableColumns : public LabelledColumns {
 public:
  explicit ArrowTableColumns(const ArrowTable& table) : table_(table) {}

  py::list Names() const override {
    py::list names;
    for (const ArrowColumn& column : table_.columns) names.append(column.label);
    return names;
  }

  py::object Values(const std::vector<std::size_t>& places, const char* name) const override {
    py::list columns;
    for (const std::size_t place : places) {
      const ArrowColumn& column = table_.columns[place];
      if (!column.numbers)
        Fail(name, "its column \"" + column.label + "\" holds no numbers of type float or double");
      columns.append(column.numbers);
    }
    return py::module_::import("numpy").attr("ma").attr("stack")(columns, py::arg("axis") = 1);
  }

  bool HoldsNumbers(std::size_t place) const override { return table_.columns[place].holdsNumbers; }

 private:
  const ArrowTable& table_;
};

// What the labels of columns say.
class Labels {
 public:
  explicit Labels(const LabelledColumns& columns) : columns_(columns) {
    for (const py::handle label : columns.Names()) {
      labels_.push_back(py::reinterpret_borrow<py::object>(label));
      texts_.push_back((IsLabelOfNumber(label) ? py::str(py::float_(labels_.back())) : py::str(label))
                           .cast<std::string>());
      wavelengths_.push_back(io::WavelengthOf(texts_.back()));
    }
  }

  // Labels that were not given: 0, 1, 2 ...
  bool OnlyCount() const {
    for (std::size_t i = 0; i < labels_.size(); ++i) {
      if (!IsLabelOfNumber(labels_[i]) || labels_[i].cast<double>() != static_cast<double>(i)) return false;
    }
    return true;
  }

  bool HaveWavelengths() const {
    return std::ranges::any_of(wavelengths_, [](double nm) { return nm != 0; });
  }

  // The places of the columns of wavelengths, in their order.
  std::vector<std::size_t> Places() const {
    std::vector<std::size_t> places;
    for (std::size_t i = 0; i < wavelengths_.size(); ++i) {
      if (wavelengths_[i] != 0) places.push_back(i);
    }
    return places;
  }

  std::vector<double> Wavelengths() const {
    std::vector<double> wavelengths;
    for (const std::size_t place : Places()) wavelengths.push_back(wavelengths_[place]);
    return wavelengths;
  }

  // The places of the columns L*, a*, b*; none where one is missing.
  std::vector<std::size_t> PlacesOfLab() const {
    std::vector<std::size_t> places;
    for (const io::ColorColumn color : {io::kColumnL, io::kColumnA, io::kColumnB}) {
      const auto isIt = [color](const std::string& text) {
        const io::Heading meaning = io::MeaningOf(text);
        return meaning.role == io::ColumnRole::kColor && meaning.color == color;
      };
      const auto found = std::ranges::find_if(texts_, isIt);
      if (found == texts_.end()) return {};
      places.push_back(static_cast<std::size_t>(found - texts_.begin()));
    }
    return places;
  }

  // All labels, for a message.
  std::string All() const {
    return Shown([](std::size_t) { return true; });
  }

  // The labels of columns of numbers that are neither wavelengths nor what a file of curves has besides.
  std::string Unknown() const {
    return Shown([this](std::size_t i) {
      return wavelengths_[i] == 0 && io::MeaningOf(texts_[i]).role == io::ColumnRole::kUnknown &&
             columns_.HoldsNumbers(i);
    });
  }

 private:
  template <class CHOICE>
  std::string Shown(const CHOICE& isShown) const {
    constexpr std::size_t kMost = 5;
    std::string shown;
    std::size_t count = 0;
    for (std::size_t i = 0; i < labels_.size(); ++i) {
      if (!isShown(i)) continue;
      if (++count > kMost) return shown + ", ...";
      shown += (shown.empty() ? "" : ", ") + py::repr(labels_[i]).cast<std::string>();
    }
    return shown;
  }

  const LabelledColumns& columns_;
  std::vector<py::object> labels_;
  std::vector<std::string> texts_;
  std::vector<double> wavelengths_;  // 0 for a label that is none
};

// Measured values ---------------------------------------------------------------------------------------------

// Values as they were measured, at wavelengths in the order of the columns; at none for rows on the grid and for colours.
struct Measured {
  Rows rows;
  std::vector<double> nm;
  const char* source = "";  // what the wavelengths are of, for messages
};

Measured ByPlace(const py::handle& values, const char* name, const py::handle& wavelengths, bool floats,
                 std::size_t otherWidth) {
  if (wavelengths.is_none()) return {RowsOf(values, name, kSamples, floats, otherWidth), {}, name};
  std::vector<double> nm = GivenWavelengths(wavelengths);
  Rows rows = RowsOf(values, name, nm.size(), floats, otherWidth);
  if (rows.width != nm.size()) nm.clear();
  return {std::move(rows), std::move(nm), "wavelengths"};
}

void RequireSame(const std::vector<double>& own, const py::handle& wavelengths, const char* name) {
  if (!wavelengths.is_none() && GivenWavelengths(wavelengths) != own)
    Fail(name, "it says its own wavelengths, and `wavelengths` says others");
}

// By the labels of columns.
Measured ByLabels(const LabelledColumns& columns, const char* name, const py::handle& wavelengths,
                  std::size_t otherWidth) {
  const Labels labels(columns);
  if (!labels.HaveWavelengths()) {
    const std::vector<std::size_t> lab = otherWidth != 0 ? labels.PlacesOfLab() : std::vector<std::size_t>();
    if (!lab.empty()) return {RowsOf(columns.Values(lab, name), name, lab.size()), {}, name};
    Fail(name, "no label is a wavelength, such as 400 or \"400 nm\": " + labels.All() +
                   "; `wavelengths` says those of all columns");
  }
  std::vector<double> nm = labels.Wavelengths();
  RequireSame(nm, wavelengths, name);
  const std::string unknown = wavelengths.is_none() ? labels.Unknown() : std::string();
  if (!unknown.empty())
    Fail(name, "no wavelengths: " + unknown + "; leave these columns out, or say `wavelengths`, too");
  return {RowsOf(columns.Values(labels.Places(), name), name, nm.size()), nm, name};
}

Measured OfTable(const py::handle& table, const char* name, const py::handle& wavelengths,
                 std::size_t otherWidth) {
  const FrameColumns columns(table);
  const Labels labels(columns);
  if (labels.OnlyCount() || (!wavelengths.is_none() && !labels.HaveWavelengths()))
    return ByPlace(table.attr("to_numpy")(), name, wavelengths, false, otherWidth);
  return ByLabels(columns, name, wavelengths, otherWidth);
}

// The column of a table of Arrow that holds curves or colours as lists; null where its columns are single numbers.
const ArrowColumn* ColumnOfLists(const ArrowTable& table, const char* name) {
  const ArrowColumn* found = nullptr;
  for (const ArrowColumn& column : table.columns) {
    if (!column.isList) continue;
    if (found != nullptr) {
      Fail(name, "the columns \"" + found->label + "\" and \"" + column.label +
                     "\" both hold lists; hand over the one of the curves");
    }
    found = &column;
  }
  return found != nullptr || table.columns.size() != 1 || !table.columns.front().label.empty()
             ? found
             : &table.columns.front();
}

Measured OfArrowTable(const ArrowTable& table, const char* name, const py::handle& wavelengths, bool floats,
                      std::size_t otherWidth) {
  const ArrowColumn* lists = ColumnOfLists(table, name);
  if (lists == nullptr) return ByLabels(ArrowTableColumns(table), name, wavelengths, otherWidth);
  if (!lists->numbers) Fail(name, "a column of float, of double, or of lists of them is expected");
  if (lists->wavelengths.empty()) return ByPlace(lists->numbers, name, wavelengths, floats, otherWidth);
  std::vector<double> nm = io::ParseNumbers(lists->wavelengths, "wavelengths of an Arrow column");
  RequireSame(nm, wavelengths, name);
  return {RowsOf(lists->numbers, name, nm.size(), floats), std::move(nm), name};
}

Measured OfCurveArray(const py::handle& argument, const char* name, const py::handle& wavelengths,
                      bool floats) {
  const py::tuple both = argument.attr(kCurvesMethod)();
  std::vector<double> nm = GivenWavelengths(both[1]);
  RequireSame(nm, wavelengths, name);
  return {RowsOf(both[0], name, nm.size(), floats), std::move(nm), name};
}

Measured MeasuredOf(const py::handle& argument, const char* name, const py::handle& wavelengths, bool floats,
                    std::size_t otherWidth) {
  if (IsTable(argument)) return OfTable(argument, name, wavelengths, otherWidth);
  if (IsCurveArray(argument)) return OfCurveArray(argument, name, wavelengths, floats);
  if (AreColumnsOfArrow(argument))
    return OfArrowTable(ArrowTableOf(argument, name), name, wavelengths, floats, otherWidth);
  return ByPlace(argument, name, wavelengths, floats, otherWidth);
}

Curves TakeCurves(const py::handle& argument, const char* name, const py::handle& wavelengths, bool floats,
                  std::size_t otherWidth, const py::object& out) {
  if (wavelengths.is_none() && IsPlain(argument))  // what most calls are
    return {RowsOf(argument, name, kSamples, floats, otherWidth), {}};
  Measured measured = MeasuredOf(argument, name, wavelengths, floats, otherWidth);
  if (measured.nm.empty()) return {std::move(measured.rows), {}};
  const Bands bands = BandsOf(measured.nm, measured.source);
  return OnGrid(std::move(measured.rows), bands, name, out, kWavelengthStep);
}

py::array_t<double> ArrayOfNumbers(const std::vector<double>& numbers) {
  return py::array_t<double>(static_cast<py::ssize_t>(numbers.size()), numbers.data());
}

// The names of samples in a table of Arrow: its first column of texts.
py::object IdsOfArrow(const ArrowTable& table) {
  for (const ArrowColumn& column : table.columns) {
    if (column.texts) return py::tuple(column.texts);
  }
  return py::none();
}

// What a CurveArray holds: values and wavelengths, ascending, what will be done to them, and the names that came with them.
py::tuple Ascended(const py::object& values, const py::object& wavelengths) {
  py::object ids = py::none();
  Measured measured;
  const bool isArrow = AreColumnsOfArrow(values);
  if (isArrow) {
    const ArrowTable table = ArrowTableOf(values, "values");
    measured = OfArrowTable(table, "values", wavelengths, true, 0);
    ids = IdsOfArrow(table);
  } else {
    measured = MeasuredOf(values, "values", wavelengths, true, 0);
  }
  if (measured.nm.empty()) measured.nm = io::LibraryWavelengths();
  const Bands bands = BandsOf(measured.nm, measured.source);
  const io::WavelengthGrid grid(bands.nm);
  py::list notes;
  if (bands.nm != io::LibraryWavelengths()) notes.append(grid.Description());
  if (grid.IsNarrow()) notes.append(grid.Warning());
  const py::object ellipsis = py::reinterpret_borrow<py::object>(Py_Ellipsis);
  // Arrays of Python's may change later and are copied; columns of Arrow never do.
  const py::object places = isArrow && bands.AreInOrder()
                                ? py::object(py::slice(static_cast<py::ssize_t>(bands.places.front()),
                                                       static_cast<py::ssize_t>(bands.places.back() + 1), 1))
                                : py::cast(bands.places);
  py::object ascending = measured.rows.array[py::make_tuple(ellipsis, places)];
  ascending = WithMasks(ascending, measured.rows.lead, {&measured.rows});
  return py::make_tuple(ascending, ArrayOfNumbers(bands.nm), notes, ids);
}

py::object Resample(const py::object& values, const py::object& wavelengths, const py::object& out) {
  Curves curves = TakeCurves(values, "values", wavelengths, false, 0, out);
  if (!curves.note.empty() || curves.array.is(out)) return WithMasks(curves.array, curves.lead, {&curves});
  py::array_t<double> result = ResultApart(curves.lead, {static_cast<py::ssize_t>(kSamples)}, out, {&curves});
  for (std::size_t i = 0; i < curves.count; ++i)
    std::copy_n(curves.Doubles() + i * curves.stride, kSamples, result.mutable_data() + i * kSamples);
  return WithMasks(result, curves.lead, {&curves});
}

}  // namespace

Curves CurvesAt(const py::handle& argument, const char* name, const py::handle& wavelengths, bool floats,
                std::size_t otherWidth) {
  return TakeCurves(argument, name, wavelengths, floats, otherWidth, py::none());
}

Curves CurvesForSums(const py::handle& argument, const char* name, const py::handle& wavelengths,
                     int interval) {
  if (interval == kWavelengthStep) return CurvesAt(argument, name, wavelengths, true);
  if (!IsFineInterval(interval)) throw py::value_error("interval: 10, 5 or 1 is expected");
  const std::vector<double> nodes = io::GridWavelengths(interval);
  if (wavelengths.is_none() && IsPlain(argument)) {
    const Bands bands = BandsOf(nodes, name);
    return OnGrid(RowsOf(argument, name, nodes.size()), bands, name, py::none(), interval);
  }
  Measured measured = MeasuredOf(argument, name, wavelengths, false, nodes.size());
  if (measured.nm.empty() && measured.rows.width != nodes.size())
    Fail(name, "nothing says that these values are measured at " + std::to_string(interval) + " nm or finer");
  const Bands bands = BandsOf(measured.nm.empty() ? nodes : measured.nm, measured.source);
  const std::string fault = io::FaultOfInterval(bands.nm, interval);
  if (!fault.empty()) Fail(name, fault);
  return OnGrid(std::move(measured.rows), bands, name, py::none(), interval);
}

Rows CurvesOf(const py::handle& argument, const char* name, bool floats, std::size_t otherWidth) {
  return CurvesAt(argument, name, py::none(), floats, otherWidth);
}

bool AreCurves(const py::handle& argument, const py::handle& wavelengths) {
  if (!wavelengths.is_none()) return true;
  if (IsCurveArray(argument)) return true;
  if (IsTable(argument) && Labels(FrameColumns(argument)).HaveWavelengths()) return true;
  if (AreColumnsOfArrow(argument)) return true;
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
      "ascending", &Ascended, py::arg("values"), py::arg("wavelengths"),
      "Measured values and their wavelengths, both ascending, and what is done to bring them to the grid.");
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
