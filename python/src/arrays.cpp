#include "python/src/arrays.h"

#include <algorithm>
#include <numeric>

namespace vrx::python {
namespace {

std::vector<py::ssize_t> ShapeOf(const py::array& array) {
  return {array.shape(), array.shape() + array.ndim()};
}

// The stride, in bytes, of the leading axes taken as one; false when they are no single run of positive stride.
bool LeadStride(const py::array& array, py::ssize_t& stride) {
  const py::ssize_t axes = array.ndim() - 1;
  stride = array.shape(axes) * array.itemsize();
  py::ssize_t expected = 0;  // of the axis before, once one of more than one row was seen
  for (py::ssize_t axis = axes - 1; axis >= 0; --axis) {
    if (array.shape(axis) == 1) continue;
    if (expected == 0) {
      stride = expected = array.strides(axis);
    } else if (array.strides(axis) != expected) {
      return false;
    }
    expected *= array.shape(axis);
  }
  return stride > 0 && stride % array.itemsize() == 0;
}

bool UsableInPlace(const py::array& array, py::ssize_t& stride) {
  const py::ssize_t last = array.ndim() - 1;
  const bool contiguous = array.shape(last) <= 1 || array.strides(last) == array.itemsize();
  const bool aligned =
      reinterpret_cast<std::uintptr_t>(array.data()) % static_cast<std::uintptr_t>(array.itemsize()) == 0;
  return contiguous && aligned && LeadStride(array, stride);
}

// The argument as an array of float64, or of float32 where it is one and `floats` allows it.
py::array NumbersOf(const py::handle& argument, const char* name, bool floats) {
  if (floats && py::isinstance<py::array_t<float>>(argument))
    return py::reinterpret_borrow<py::array>(argument);
  if (py::isinstance<py::array_t<double>>(argument)) return py::reinterpret_borrow<py::array>(argument);
  py::array numbers = py::array_t<double, py::array::c_style | py::array::forcecast>::ensure(argument);
  if (!numbers) {
    PyErr_Clear();
    throw py::type_error(std::string(name) + ": numbers are expected, not " +
                         py::str(py::type::handle_of(argument).attr("__name__")).cast<std::string>());
  }
  return numbers;
}

std::string ExpectedShape(std::size_t width, std::size_t otherWidth) {
  std::string text = "(..., " + std::to_string(width) + ")";
  if (otherWidth != 0) text += " or (..., " + std::to_string(otherWidth) + ")";
  return text;
}

}  // namespace

std::string ShapeText(const std::vector<py::ssize_t>& shape) {
  std::string text = "(";
  for (std::size_t i = 0; i < shape.size(); ++i) text += (i == 0 ? "" : ", ") + std::to_string(shape[i]);
  return text + (shape.size() == 1 ? ",)" : ")");
}

Rows RowsOf(const py::handle& argument, const char* name, std::size_t width, bool floats,
            std::size_t otherWidth) {
  Rows rows;
  rows.array = NumbersOf(argument, name, floats);
  const std::vector<py::ssize_t> shape = ShapeOf(rows.array);
  const auto last = shape.empty() ? 0 : static_cast<std::size_t>(shape.back());
  if (shape.empty() || (last != width && (otherWidth == 0 || last != otherWidth))) {
    throw py::value_error(std::string(name) + ": expected shape " + ExpectedShape(width, otherWidth) +
                          ", got " + ShapeText(shape));
  }
  rows.isFloat = rows.array.itemsize() == sizeof(float);
  py::ssize_t stride = 0;
  if (!UsableInPlace(rows.array, stride)) {
    rows.array = py::array_t<double, py::array::c_style | py::array::forcecast>::ensure(rows.array);
    rows.isFloat = false;
    stride = static_cast<py::ssize_t>(last * sizeof(double));
  }
  rows.lead.assign(shape.begin(), shape.end() - 1);
  rows.count = std::accumulate(
      rows.lead.begin(), rows.lead.end(), std::size_t{1},
      [](std::size_t product, py::ssize_t n) { return product * static_cast<std::size_t>(n); });
  rows.width = last;
  rows.stride = static_cast<std::size_t>(stride / rows.array.itemsize());
  return rows;
}

py::array_t<double> ResultArray(const std::vector<py::ssize_t>& lead, const std::vector<py::ssize_t>& tail,
                                const py::object& out) {
  std::vector<py::ssize_t> shape = lead;
  shape.insert(shape.end(), tail.begin(), tail.end());
  if (out.is_none()) return py::array_t<double>(shape);
  if (!py::isinstance<py::array_t<double, py::array::c_style>>(out)) {
    throw py::value_error("out: expected a C-contiguous float64 array of shape " + ShapeText(shape));
  }
  auto result = py::reinterpret_borrow<py::array_t<double>>(out);
  if (ShapeOf(result) != shape || !result.writeable()) {
    throw py::value_error("out: expected a writable array of shape " + ShapeText(shape) + ", got " +
                          ShapeText(ShapeOf(result)));
  }
  return result;
}

bool Overlap(const py::array& a, const py::array& b) {
  const auto range = [](const py::array& array) {
    const auto* begin = static_cast<const char*>(array.data());
    const char* end = begin + array.itemsize();
    for (py::ssize_t axis = 0; axis < array.ndim(); ++axis) {
      if (array.shape(axis) == 0) return std::pair(begin, begin);
      end += (array.shape(axis) - 1) * std::max<py::ssize_t>(array.strides(axis), 0);
      begin += (array.shape(axis) - 1) * std::min<py::ssize_t>(array.strides(axis), 0);
    }
    return std::pair(begin, end);
  };
  const auto [beginA, endA] = range(a);
  const auto [beginB, endB] = range(b);
  return beginA < endB && beginB < endA;
}

const std::vector<py::ssize_t>& CommonLead(const Rows& a, const char* nameA, const Rows& b,
                                           const char* nameB) {
  if (a.lead == b.lead || b.lead.empty()) return a.lead;
  if (a.lead.empty()) return b.lead;
  throw py::value_error(std::string(nameA) + " and " + nameB + ": leading axes " + ShapeText(a.lead) +
                        " and " + ShapeText(b.lead) + " differ; equal ones are expected, or a single row");
}

}  // namespace vrx::python
