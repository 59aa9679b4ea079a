#include "python/src/tables.h"

#include <cmath>
#include <string>
#include <vector>

#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <vrxio/measurement/names.h>

#include "python/src/arrays.h"
#include "python/src/names.h"
#include "python/src/views.h"

namespace vrx::python {
namespace {

// The numbers of a column, `width` a sample; none of a column that there is not.
std::vector<double> NumbersOf(const py::dict& columns, const char* name, std::size_t width,
                              std::size_t samples) {
  const py::object column = columns[name];
  std::vector<double> numbers;
  if (column.is_none()) return numbers;
  const Rows rows = RowsOf(column, name, width);
  if (rows.lead.size() != 1 || rows.count != samples)
    throw py::value_error(std::string(name) + ": a row for each id is expected");
  for (std::size_t i = 0; i < rows.count; ++i) {
    for (std::size_t k = 0; k < width; ++k) {
      const double number = rows.Doubles()[i * rows.stride + k];
      if (!std::isfinite(number))
        throw py::value_error(std::string(name) + ": row " + std::to_string(i) + " is no measurement");
      numbers.push_back(number);
    }
  }
  return numbers;
}

std::int32_t GeometryCode(const std::string& text) {
  const std::int32_t code = text.empty() ? io::kNoGeometry : io::ParseGeometry(text);
  if (!text.empty() && code < 0) throw py::value_error("geometries: " + io::GeometryRefusal(text));
  return code;
}

}  // namespace

io::MeasurementTable TableOf(const py::dict& columns) {
  io::MeasurementTable table;
  table.ids = columns["ids"].cast<std::vector<std::string>>();
  table.names = columns["names"].cast<std::vector<std::string>>();
  for (const std::string& text : columns["geometries"].cast<std::vector<std::string>>())
    table.geometries.push_back(GeometryCode(text));
  table.curves = NumbersOf(columns, "curves", kSamples, table.ids.size());
  table.xyz = NumbersOf(columns, "xyz", 3, table.ids.size());
  table.lab = NumbersOf(columns, "lab", 3, table.ids.size());
  const auto illuminant = columns["illuminant"].cast<std::string>();
  if (!illuminant.empty()) table.illuminant = IlluminantOf(py::str(illuminant));
  const py::object observer = columns["observer"];
  if (!observer.is_none()) table.observer = ObserverOf(observer.cast<int>());
  return table;
}

}  // namespace vrx::python
