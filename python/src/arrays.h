// Numpy arrays at the border: rows of a fixed width behind any number of leading axes, read in place where their memory
// allows it.

#ifndef PYTHON_SRC_ARRAYS_H_
#define PYTHON_SRC_ARRAYS_H_

#include <cstddef>
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <string>
#include <vector>

namespace vrx::python {

namespace py = pybind11;

/// Rows of `width` numbers. `array` keeps the memory alive. Row i begins at data + i * stride, in elements.
struct Rows {
  py::array array;
  std::vector<py::ssize_t> lead;  ///< the leading axes of the argument, empty for a single row
  std::size_t count = 0;          ///< rows: the product of the leading axes
  std::size_t width = 0;
  std::size_t stride = 0;
  bool isFloat = false;  ///< float32, otherwise float64

  const double* Doubles() const { return static_cast<const double*>(array.data()); }
  const float* Floats() const { return static_cast<const float*>(array.data()); }
};

/// The rows of an argument. Arrays of float64, and of float32 where `floats` allows it, are used in place when their last
/// axis is contiguous and the leading ones are a single run with any positive stride; everything else that numpy can
/// turn into numbers is copied. Throws ValueError, which names the argument and the shape that was expected, for another
/// last axis than `width`, or than one of `width` and `otherWidth`.
Rows RowsOf(const py::handle& argument, const char* name, std::size_t width, bool floats = false,
            std::size_t otherWidth = 0);

/// An array for results of shape lead + tail: `out` when it is given, else a new one. Throws ValueError when `out` is not a
/// writable C-contiguous float64 array of that shape.
py::array_t<double> ResultArray(const std::vector<py::ssize_t>& lead, const std::vector<py::ssize_t>& tail,
                                const py::object& out);

/// True when two memory ranges share a byte: a result must not be written over an argument that is still read.
bool Overlap(const py::array& a, const py::array& b);

/// The leading axes that two arguments have in common: equal ones, or those of the other when one is a single row. Throws
/// ValueError, which names both arguments.
const std::vector<py::ssize_t>& CommonLead(const Rows& a, const char* nameA, const Rows& b,
                                           const char* nameB);

/// "(..., 40)" or "(3, 5)": a shape as messages show it.
std::string ShapeText(const std::vector<py::ssize_t>& shape);

}  // namespace vrx::python

#endif  // PYTHON_SRC_ARRAYS_H_
