// Measurement files as lists and arrays.

#include <memory>
#include <string>
#include <utility>
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

// The numbers of a column as rows of `width`, which take over its memory; None when it is not one of all samples.
py::object ArrayOf(std::vector<double>& column, std::size_t rows, std::size_t width) {
  if (column.empty()) return py::none();
  auto* kept = new std::vector<double>(std::move(column));
  const py::capsule base(kept, [](void* own) { delete static_cast<std::vector<double>*>(own); });
  return py::array_t<double>({static_cast<py::ssize_t>(rows), static_cast<py::ssize_t>(width)}, kept->data(),
                             base);
}

std::vector<std::string> GeometriesOf(const io::MeasurementTable& table) {
  std::vector<std::string> names;
  for (const std::int32_t geometry : table.geometries) names.push_back(io::GeometryName(geometry));
  return names;
}

// Calls a reader without the lock, and asks for the scale in the words of this module.
template <class READ>
void ReadUnlocked(const READ& read) {
  try {
    WithoutLock([&](const auto&) { read(); });
  } catch (const io::ScaleError& error) {
    throw py::value_error(error.Statement() + "; choose with scale=\"fraction\" or scale=\"percent\"");
  }
}

py::dict ColumnsOf(io::MeasurementTable& table) {
  const std::size_t rows = table.ids.size();
  py::dict result;
  result["ids"] = table.ids;
  result["names"] = table.names;
  result["geometries"] = GeometriesOf(table);
  result["curves"] = ArrayOf(table.curves, rows, kSamples);
  result["xyz"] = ArrayOf(table.xyz, rows, 3);
  result["lab"] = ArrayOf(table.lab, rows, 3);
  result["form"] = table.form;
  result["illuminant"] = table.illuminant < 0 ? "" : io::CodeOf(static_cast<vrxIlluminant>(table.illuminant));
  result["observer"] = table.observer < 0 ? py::object(py::none()) : py::int_(io::DegreesOf(table.observer));
  result["notes"] = table.notes;
  result["warnings"] = table.warnings;
  return result;
}

py::dict Read(const std::string& path, const std::string& form, const std::string& scale) {
  const io::ReadOptions options = ReadOptionsOf(form, scale);
  io::MeasurementTable table;
  ReadUnlocked([&] { table = io::ReadMeasurementTable(path, options); });
  return ColumnsOf(table);
}

std::unique_ptr<io::MeasurementBlocks> OpenBlocks(const std::string& path, const std::string& form,
                                                  const std::string& scale) {
  const io::ReadOptions options = ReadOptionsOf(form, scale);
  std::unique_ptr<io::MeasurementBlocks> blocks;
  ReadUnlocked([&] { blocks = std::make_unique<io::MeasurementBlocks>(path, options); });
  return blocks;
}

// The columns of the next samples, or None.
py::object NextBlock(io::MeasurementBlocks& blocks, std::size_t most) {
  io::MeasurementTable table;
  bool isThere = false;
  ReadUnlocked([&] { isThere = blocks.Next(table, most); });
  if (!isThere) return py::none();
  return ColumnsOf(table);
}

}  // namespace

void DefineReading(py::module_& module) {
  py::class_<io::MeasurementBlocks>(module, "MeasurementBlocks",
                                    "A file of measurements that is read in blocks.")
      .def(py::init(&OpenBlocks), py::arg("path"), py::arg("form"), py::arg("scale"))
      .def("next", &NextBlock, py::arg("most"),
           "The columns of the next samples, or None behind the last one.");
  module.def("read", &Read, py::arg("path"), py::arg("form"), py::arg("scale"));
}

}  // namespace vrx::python
