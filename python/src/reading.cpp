// Measurement files as lists and arrays.

#include <span>
#include <string>
#include <vector>

#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <vrxio/files/curve_reader.h>
#include <vrxio/files/measurement_files.h>
#include <vrxio/measurement/names.h>
#include <vrxio/measurement/value_scale.h>
#include <vrxio/text/input_error.h>

#include "python/src/module.h"
#include "python/src/views.h"

namespace vrx::python {
namespace {

io::ReadOptions OptionsOf(const std::string& form, const std::string& scale) {
  using Form = io::ReadOptions::Form;
  io::ReadOptions options;
  const std::pair<const char*, Form> forms[] = {{"", Form::kByContent},
                                                {"csv", Form::kCsv},
                                                {"cgats", Form::kCgats},
                                                {"cxf", Form::kCxf},
                                                {"json", Form::kJson}};
  const auto* found =
      std::find_if(std::begin(forms), std::end(forms), [&](const auto& row) { return form == row.first; });
  if (found == std::end(forms))
    throw py::value_error("form: \"csv\", \"cgats\", \"cxf\" or \"json\" is expected");
  options.form = found->second;
  if (scale == "fraction") {
    options.scale = io::ReadOptions::Scale::kFraction;
  } else if (scale == "percent") {
    options.scale = io::ReadOptions::Scale::kPercent;
  } else if (!scale.empty()) {
    throw py::value_error("scale: \"percent\" or \"fraction\" is expected");
  }
  return options;
}

// The samples that were read, column by column.
struct Columns {
  std::vector<std::string> ids, names, geometries;
  std::vector<double> curves, xyz, lab;  // of each sample, or empty
  std::string form;
  std::vector<std::string> notes;
};

// Keeps a column that all samples have; one that a sample lacks is none.
void Keep(std::vector<double>& column, std::size_t rowsBefore, std::span<const double> values) {
  if (column.size() == rowsBefore * values.size()) column.insert(column.end(), values.begin(), values.end());
}

Columns ReadColumns(const std::string& path, const io::ReadOptions& options) {
  io::CurveReader reader(io::OpenMeasurements(path, options), io::Content::kCurvesOrColors);
  Columns columns;
  columns.form = reader.Source().FormName();
  io::CurveRow row;
  while (reader.Next(row)) {
    const std::size_t before = columns.ids.size();
    columns.ids.emplace_back(row.id);
    columns.names.emplace_back(row.name);
    const int32_t common = reader.Measured().layout->conditions.geometry;
    columns.geometries.push_back(io::GeometryName(row.geometry != io::kNoGeometry ? row.geometry : common));
    if (row.kind == io::Sample::kCurve) Keep(columns.curves, before, {row.curve.GetData(), kSamples});
    if (reader.Measured().hasXyz) Keep(columns.xyz, before, reader.Measured().xyz);
    if (reader.Measured().hasLab) Keep(columns.lab, before, reader.Measured().lab);
  }
  columns.notes = reader.Source().Notes();
  return columns;
}

// The numbers of a column as rows of `width`; None when it is not one of all samples.
py::object ArrayOf(const std::vector<double>& column, std::size_t rows, std::size_t width) {
  if (column.empty() || column.size() != rows * width) return py::none();
  return py::array_t<double>({static_cast<py::ssize_t>(rows), static_cast<py::ssize_t>(width)},
                             column.data());
}

py::dict Read(const std::string& path, const std::string& form, const std::string& scale) {
  const io::ReadOptions options = OptionsOf(form, scale);
  Columns columns;
  try {
    const py::gil_scoped_release unlocked;
    columns = ReadColumns(path, options);
  } catch (const io::ScaleError& error) {
    throw py::value_error(error.Statement() + "; say which by scale=\"fraction\" or scale=\"percent\"");
  }
  const std::size_t rows = columns.ids.size();
  py::dict result;
  result["ids"] = columns.ids;
  result["names"] = columns.names;
  result["geometries"] = columns.geometries;
  result["curves"] = ArrayOf(columns.curves, rows, kSamples);
  result["xyz"] = ArrayOf(columns.xyz, rows, 3);
  result["lab"] = ArrayOf(columns.lab, rows, 3);
  result["form"] = columns.form;
  result["notes"] = columns.notes;
  return result;
}

}  // namespace

void DefineReading(py::module_& module) {
  module.def("read", &Read, py::arg("path"), py::arg("form"), py::arg("scale"));
}

}  // namespace vrx::python
