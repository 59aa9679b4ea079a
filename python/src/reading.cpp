// Measurement files as lists and arrays.

#include <span>
#include <string>
#include <vector>

#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <vrxio/files/measurement_table.h>
#include <vrxio/measurement/names.h>
#include <vrxio/measurement/value_scale.h>
#include <vrxio/text/input_error.h>

#include "python/src/module.h"
#include "python/src/tables.h"
#include "python/src/unlocked.h"
#include "python/src/views.h"

namespace vrx::python {

io::ReadOptions::Form FormNamed(const std::string& form) {
  using Form = io::ReadOptions::Form;
  const std::pair<const char*, Form> forms[] = {{"", Form::kByContent},
                                                {"csv", Form::kCsv},
                                                {"cgats", Form::kCgats},
                                                {"cxf", Form::kCxf},
                                                {"json", Form::kJson}};
  const auto* found =
      std::find_if(std::begin(forms), std::end(forms), [&](const auto& row) { return form == row.first; });
  if (found == std::end(forms))
    throw py::value_error("form: \"csv\", \"cgats\", \"cxf\" or \"json\" is expected");
  return found->second;
}

io::ReadOptions ReadOptionsOf(const std::string& form, const std::string& scale) {
  io::ReadOptions options;
  options.form = FormNamed(form);
  if (scale == "fraction") {
    options.scale = io::ReadOptions::Scale::kFraction;
  } else if (scale == "percent") {
    options.scale = io::ReadOptions::Scale::kPercent;
  } else if (!scale.empty()) {
    throw py::value_error("scale: \"percent\" or \"fraction\" is expected");
  }
  return options;
}

namespace {

// The numbers of a column as rows of `width`; None when it is not one of all samples.
py::object ArrayOf(const std::vector<double>& column, std::size_t rows, std::size_t width) {
  if (column.empty()) return py::none();
  return py::array_t<double>({static_cast<py::ssize_t>(rows), static_cast<py::ssize_t>(width)},
                             column.data());
}

std::vector<std::string> GeometriesOf(const io::MeasurementTable& table) {
  std::vector<std::string> names;
  for (const std::int32_t geometry : table.geometries) names.push_back(io::GeometryName(geometry));
  return names;
}

py::dict Read(const std::string& path, const std::string& form, const std::string& scale) {
  const io::ReadOptions options = ReadOptionsOf(form, scale);
  io::MeasurementTable columns;
  try {
    WithoutLock([&](const auto&) { columns = io::ReadMeasurementTable(path, options); });
  } catch (const io::ScaleError& error) {
    throw py::value_error(error.Statement() + "; choose with scale=\"fraction\" or scale=\"percent\"");
  }
  const std::size_t rows = columns.ids.size();
  py::dict result;
  result["ids"] = columns.ids;
  result["names"] = columns.names;
  result["geometries"] = GeometriesOf(columns);
  result["curves"] = ArrayOf(columns.curves, rows, kSamples);
  result["xyz"] = ArrayOf(columns.xyz, rows, 3);
  result["lab"] = ArrayOf(columns.lab, rows, 3);
  result["form"] = columns.form;
  result["illuminant"] =
      columns.illuminant < 0 ? "" : io::CodeOf(static_cast<vrxIlluminant>(columns.illuminant));
  result["observer"] =
      columns.observer < 0 ? py::object(py::none()) : py::int_(io::DegreesOf(columns.observer));
  result["notes"] = columns.notes;
  result["warnings"] = columns.warnings;
  return result;
}

}  // namespace

void DefineReading(py::module_& module) {
  module.def("read", &Read, py::arg("path"), py::arg("form"), py::arg("scale"));
}

}  // namespace vrx::python
