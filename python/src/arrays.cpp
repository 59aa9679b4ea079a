#include "python/src/arrays.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <string_view>

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

// What a masked array holds, NaN in all rows that are masked in part, and those rows.
py::array WithoutMask(const py::handle& argument, py::object& rowMask) {
  const py::module_ numpy = py::module_::import("numpy");
  const py::object mask = numpy.attr("ma").attr("getmaskarray")(argument);
  const py::object values = numpy.attr("ma").attr("getdata")(argument);
  if (py::cast<py::array>(mask).ndim() == 0) return values;
  rowMask = mask.attr("any")(py::arg("axis") = -1);
  const py::object rows = numpy.attr("expand_dims")(rowMask, -1);
  return numpy.attr("where")(rows, std::nan(""), values);
}

bool IsNdarray(const py::handle& argument) {
  return Py_TYPE(argument.ptr()) == reinterpret_cast<PyTypeObject*>(py::detail::npy_api::get().PyArray_Type_);
}

// The argument as an array of float64, or of float32 where it is one and `floats` allows it.
py::array NumbersOf(const py::handle& argument, const char* name, bool floats) {
  if (floats && py::isinstance<py::array_t<float>>(argument))
    return py::reinterpret_borrow<py::array>(argument);
  if (py::isinstance<py::array_t<double>>(argument)) return py::reinterpret_borrow<py::array>(argument);
  const auto fail = [name](const std::string& what) {
    PyErr_Clear();
    throw py::type_error(std::string(name) + ": numbers are expected, not " + what);
  };
  const py::array given = py::array::ensure(argument);
  if (!given) fail(py::str(py::type::handle_of(argument).attr("__name__")).cast<std::string>());
  if (py::isinstance<py::array_t<double>>(given)) return given;
  const std::string_view kinds = "fiuO";
  const bool isOfNumbers = kinds.find(given.dtype().kind()) != std::string_view::npos;
  py::array numbers;
  if (isOfNumbers) numbers = py::array_t<double, py::array::c_style | py::array::forcecast>::ensure(given);
  if (!isOfNumbers || !numbers) fail("an array of " + py::str(given.dtype()).cast<std::string>());
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
  const bool isMasked =
      py::isinstance<py::array>(argument) && !IsNdarray(argument) && py::hasattr(argument, "mask");
  rows.array = NumbersOf(isMasked ? WithoutMask(argument, rows.mask) : argument, name, floats);
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

bool IsNumber(const py::handle& argument) {
  if (py::isinstance<py::array>(argument)) return py::cast<py::array>(argument).ndim() == 0;
  return PyNumber_Check(argument.ptr()) != 0 && PySequence_Check(argument.ptr()) == 0;
}

py::array_t<double> ResultArray(const std::vector<py::ssize_t>& lead, const std::vector<py::ssize_t>& tail,
                                const py::object& out) {
  std::vector<py::ssize_t> shape = lead;
  shape.insert(shape.end(), tail.begin(), tail.end());
  if (out.is_none()) return py::array_t<double>(shape);
  const bool isPlain =
      IsNdarray(out) || !py::hasattr(out, "mask");  // the values of a masked array alone would be written
  if (!isPlain || !py::isinstance<py::array_t<double, py::array::c_style>>(out)) {
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

py::array_t<double> ResultApart(const std::vector<py::ssize_t>& lead, const std::vector<py::ssize_t>& tail,
                                const py::object& out, std::initializer_list<const Rows*> arguments) {
  py::array_t<double> result = ResultArray(lead, tail, out);
  if (out.is_none()) return result;
  for (const Rows* rows : arguments) {
    if (Overlap(result, rows->array)) throw py::value_error("out: it lies over an argument");
  }
  return result;
}

py::object WithMasks(const py::object& result, const std::vector<py::ssize_t>& lead,
                     std::initializer_list<const Rows*> arguments) {
  const bool isMasked = std::any_of(arguments.begin(), arguments.end(),
                                    [](const Rows* rows) { return static_cast<bool>(rows->mask); });
  if (!isMasked) return result;
  const py::module_ numpy = py::module_::import("numpy");
  py::object mask = py::bool_(false);
  for (const Rows* rows : arguments) {
    if (rows->mask) mask = numpy.attr("logical_or")(mask, rows->mask);
  }
  const py::tuple shape = result.attr("shape");
  py::list axes;
  for (const py::ssize_t axis : lead) axes.append(axis);
  mask = numpy.attr("broadcast_to")(mask, py::tuple(axes));
  while (axes.size() < shape.size()) axes.append(1);
  mask = numpy.attr("broadcast_to")(mask.attr("reshape")(py::tuple(axes)), shape).attr("copy")();
  return numpy.attr("ma").attr("array")(result, py::arg("mask") = mask, py::arg("copy") = false);
}

py::object NumberOrArray(const py::array_t<double>& result, const std::vector<py::ssize_t>& lead,
                         std::initializer_list<const Rows*> arguments, const py::object& out) {
  const py::object masked = WithMasks(result, lead, arguments);
  if (!lead.empty() || !out.is_none()) return masked;
  if (!masked.is(result) && masked.attr("mask").cast<bool>())
    return py::module_::import("numpy").attr("ma").attr("masked");
  return py::float_(*result.data());
}

RowPairs::RowPairs(const Rows& a, const char* nameA, const Rows& b, const char* nameB) {
  const std::size_t axes = std::max(a.lead.size(), b.lead.size());
  const auto extent = [axes](const Rows& rows, std::size_t axis) {
    const std::size_t missing = axes - rows.lead.size();
    return axis < missing ? 1 : rows.lead[axis - missing];
  };
  for (std::size_t axis = 0; axis < axes; ++axis) {
    const py::ssize_t nA = extent(a, axis), nB = extent(b, axis);
    if (nA != nB && nA != 1 && nB != 1) {
      throw py::value_error(std::string(nameA) + " and " + nameB + ": leading axes " + ShapeText(a.lead) +
                            " and " + ShapeText(b.lead) + " do not broadcast");
    }
    lead_.push_back(nA == 1 ? nB : nA);
    count_ *= static_cast<std::size_t>(lead_.back());
  }
  first_ = SideOf(a);
  second_ = SideOf(b);
}

RowPairs::Side RowPairs::SideOf(const Rows& rows) const {
  Side side{&rows, rows.count == count_, std::vector<std::size_t>(lead_.size(), 0)};
  std::size_t step = 1;
  for (std::size_t k = 1; k <= rows.lead.size(); ++k) {
    const py::ssize_t n = rows.lead[rows.lead.size() - k];
    if (n != 1) side.steps[lead_.size() - k] = step;
    step *= static_cast<std::size_t>(n);
  }
  return side;
}

std::size_t RowPairs::RowOf(const Side& side, std::size_t pair) const {
  if (side.isWhole) return pair;
  std::size_t row = 0;
  for (std::size_t axis = lead_.size(); axis-- > 0;) {
    const auto n = static_cast<std::size_t>(lead_[axis]);
    row += pair % n * side.steps[axis];
    pair /= n;
  }
  return row;
}

RowBlock RowPairs::BlockOf(const Side& side, std::size_t from, std::size_t count,
                           std::vector<double>& scratch) const {
  const Rows& rows = *side.rows;
  if (rows.count == 1) return {rows.Doubles(), 1, rows.width, rows.stride};
  if (side.isWhole) return {rows.Doubles() + from * rows.stride, count, rows.width, rows.stride};
  scratch.resize(count * rows.width);
  for (std::size_t i = 0; i < count; ++i) {
    const double* const row = rows.Doubles() + RowOf(side, from + i) * rows.stride;
    std::copy_n(row, rows.width, scratch.data() + i * rows.width);
  }
  return {scratch.data(), count, rows.width, rows.width};
}

RowBlock RowPairs::First(std::size_t from, std::size_t count, std::vector<double>& scratch) const {
  return BlockOf(first_, from, count, scratch);
}

RowBlock RowPairs::Second(std::size_t from, std::size_t count, std::vector<double>& scratch) const {
  return BlockOf(second_, from, count, scratch);
}

}  // namespace vrx::python
