// Numpy arrays at the border: rows of a fixed width behind any number of leading axes, read in place where their memory
// allows it.

#ifndef PYTHON_SRC_ARRAYS_H_
#define PYTHON_SRC_ARRAYS_H_

#include <cstddef>
#include <initializer_list>
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
  py::object mask;       ///< of a masked array: bools of the leading axes; otherwise null

  const double* Doubles() const { return static_cast<const double*>(array.data()); }
  const float* Floats() const { return static_cast<const float*>(array.data()); }
};

/// The rows of an argument. Arrays of float64, and of float32 where `floats` allows it, are used in place when their last
/// axis is contiguous and the leading ones are a single run with any positive stride; everything else that numpy can
/// turn into numbers is copied. A row of a masked array of which any number is masked is NaN throughout. Throws ValueError,
/// which names the argument and the shape that was expected, for another last axis than `width`, or than one of `width` and
/// `otherWidth`; TypeError for what are no numbers.
Rows RowsOf(const py::handle& argument, const char* name, std::size_t width, bool floats = false,
            std::size_t otherWidth = 0);

/// Whether an argument is a single number: Python's, numpy's, or an array without axes.
bool IsNumber(const py::handle& argument);

/// An array for results of shape lead + tail: `out` when it is given, else a new one. Throws ValueError when `out` is not a
/// writable C-contiguous float64 array of that shape.
py::array_t<double> ResultArray(const std::vector<py::ssize_t>& lead, const std::vector<py::ssize_t>& tail,
                                const py::object& out);

/// True when two memory ranges share a byte: a result must not be written over an argument that is still read.
bool Overlap(const py::array& a, const py::array& b);

/// The same, checked against the arguments that are read while it is written. Throws ValueError where they share memory.
py::array_t<double> ResultApart(const std::vector<py::ssize_t>& lead, const std::vector<py::ssize_t>& tail,
                                const py::object& out, std::initializer_list<const Rows*> arguments);

/// A result over the leading axes `lead` under the masks of the arguments, whose leading axes broadcast to them: itself where
/// none was a masked array.
py::object WithMasks(const py::object& result, const std::vector<py::ssize_t>& lead,
                     std::initializer_list<const Rows*> arguments);

/// The number of a result of a single row, or numpy's `masked`; the array of another, and where `out` was given.
py::object NumberOrArray(const py::array_t<double>& result, const std::vector<py::ssize_t>& lead,
                         std::initializer_list<const Rows*> arguments, const py::object& out = py::none());

/// Some rows of float64. `count` 1 stands for all.
struct RowBlock {
  const double* data = nullptr;
  std::size_t count = 0, width = 0, stride = 0;

  const double* Row(std::size_t i) const { return data + (count == 1 ? 0 : i) * stride; }
};

/// The rows of two arguments side by side: their leading axes broadcast as numpy's do. The arguments live longer.
class RowPairs {
 public:
  /// Throws ValueError, which names both arguments, when they do not broadcast.
  RowPairs(const Rows& a, const char* nameA, const Rows& b, const char* nameB);

  const std::vector<py::ssize_t>& Lead() const { return lead_; }
  std::size_t Count() const { return count_; }
  /// Rows of the one and the other argument for the pairs from `from` on, in place or gathered in `scratch`.
  RowBlock First(std::size_t from, std::size_t count, std::vector<double>& scratch) const;
  RowBlock Second(std::size_t from, std::size_t count, std::vector<double>& scratch) const;
  /// The row of the one and the other that belongs to a pair.
  std::size_t FirstRow(std::size_t pair) const { return RowOf(first_, pair); }
  std::size_t SecondRow(std::size_t pair) const { return RowOf(second_, pair); }
  /// Whether the rows of the second argument are its pairs, one after the other.
  bool SecondIsWhole() const { return second_.isWhole; }

 private:
  struct Side {
    const Rows* rows;
    bool isWhole;
    std::vector<std::size_t> steps;  // rows a step along each leading axis, 0 along one that is repeated
  };
  Side SideOf(const Rows& rows) const;
  std::size_t RowOf(const Side& side, std::size_t pair) const;
  RowBlock BlockOf(const Side& side, std::size_t from, std::size_t count, std::vector<double>& scratch) const;

  std::vector<py::ssize_t> lead_;
  std::size_t count_ = 1;
  Side first_, second_;
};

/// "(..., 40)" or "(3, 5)": a shape as messages show it.
std::string ShapeText(const std::vector<py::ssize_t>& shape);

}  // namespace vrx::python

#endif  // PYTHON_SRC_ARRAYS_H_
