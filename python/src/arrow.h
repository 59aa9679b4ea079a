// Columns of other programs by the Arrow C data interface, and ours for them (Python's Arrow PyCapsule protocol).

#ifndef PYTHON_SRC_ARROW_H_
#define PYTHON_SRC_ARROW_H_

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <string>
#include <vector>

namespace vrx::python {

namespace py = pybind11;

/// A column as it was handed over.
struct ArrowColumn {
  std::string label;  ///< empty for one that stands alone
  py::object
      numbers;  ///< shape (n,), of lists (n, w), masked where there are nulls; null for a column of another type
  py::object texts;  ///< a list of n str; null for a column of another type
  bool isList = false;
  bool holdsNumbers = false;  ///< of any type
  std::string wavelengths;    ///< what the metadata say under this key
};

/// The columns of a table, or the single column of an array. Numbers of one chunk are views of the sender's memory, which they keep;
/// those of several chunks are put together.
struct ArrowTable {
  std::vector<ArrowColumn> columns;
};

/// Whether an argument hands over columns: it has __arrow_c_array__ or __arrow_c_stream__.
bool IsArrow(const py::handle& argument);

/// Takes the columns of an argument; a stream can be taken once. Throws ValueError, which names the argument, for columns that contradict
/// themselves.
ArrowTable ArrowTableOf(const py::handle& argument, const char* name);

}  // namespace vrx::python

#endif  // PYTHON_SRC_ARROW_H_
