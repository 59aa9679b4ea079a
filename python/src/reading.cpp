// Measurement files as lists and arrays.

#include <span>
#include <string>
#include <vector>

#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <vrxio/curve_reader.h>
#include <vrxio/input_error.h>
#include <vrxio/measurement_files.h>
#include <vrxio/names.h>

#include "python/src/module.h"
#include "python/src/views.h"

namespace vrx::python {
namespace {

io::ReadOptions OptionsOf(const std::string& form, bool fraction) {
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
  if (fraction) options.scale = io::ReadOptions::Scale::kFraction;
  return options;
}

// What was read, column by column.
struct Columns {
  std::vector<std::string> ids, names, geometries;
  std::vector<double> numbers;  // 40 a curve, or 3 a colour
  io::Sample::Kind kind = io::Sample::kCurve;
  std::string form;
  std::vector<std::string> notes;
};

Columns ReadColumns(const std::string& path, const io::ReadOptions& options) {
  io::CurveReader reader(io::OpenMeasurements(path, options), io::Content::kCurvesOrColors);
  Columns columns;
  columns.kind = reader.Kind();
  columns.form = reader.Source().FormName();
  io::CurveRow row;
  while (reader.Next(row)) {
    columns.ids.emplace_back(row.id);
    columns.names.emplace_back(row.name);
    columns.geometries.push_back(io::GeometryName(row.geometry));
    const double* values = row.kind == io::Sample::kCurve ? row.curve.GetData() : row.color.data();
    columns.numbers.insert(columns.numbers.end(), values,
                           values + (row.kind == io::Sample::kCurve ? kSamples : 3));
  }
  columns.notes = reader.Source().Notes();
  return columns;
}

py::dict Read(const std::string& path, const std::string& form, bool fraction) {
  const io::ReadOptions options = OptionsOf(form, fraction);
  Columns columns;
  {
    const py::gil_scoped_release unlocked;
    columns = ReadColumns(path, options);
  }
  const auto rows = static_cast<py::ssize_t>(columns.ids.size());
  const py::ssize_t width = columns.kind == io::Sample::kCurve ? static_cast<py::ssize_t>(kSamples) : 3;
  const py::array_t<double> numbers({rows, width}, columns.numbers.data());
  py::dict result;
  result["ids"] = columns.ids;
  result["names"] = columns.names;
  result["geometries"] = columns.geometries;
  const std::pair<const char*, io::Sample::Kind> fields[] = {
      {"curves", io::Sample::kCurve}, {"xyz", io::Sample::kXyz}, {"lab", io::Sample::kLab}};
  for (const auto& [name, kind] : fields)
    result[name] = columns.kind == kind ? py::object(numbers) : py::none();
  result["form"] = columns.form;
  result["notes"] = columns.notes;
  return result;
}

}  // namespace

void DefineReading(py::module_& module) {
  module.def("read", &Read, py::arg("path"), py::arg("form"), py::arg("fraction"));
}

}  // namespace vrx::python
