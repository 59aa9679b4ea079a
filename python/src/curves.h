// Curves of Python arguments: arrays on the library's grid, and tables that say their wavelengths.

#ifndef PYTHON_SRC_CURVES_H_
#define PYTHON_SRC_CURVES_H_

#include <cstddef>
#include <pybind11/pybind11.h>

#include "python/src/arrays.h"

namespace vrx::python {

/// The curves of an argument as rows of 40 samples, 360, 370 ... 750 nm, or rows of `otherWidth` numbers that are no curves.
/// What has labels, a DataFrame of pandas or a Series, is taken by them: columns whose labels are wavelengths (360, "400 nm",
/// "R400"), in whatever order, brought to the grid as curves of files are; other columns are names and no samples. Labels
/// that only count (0, 1, 2 ...) say nothing. Everything else as by RowsOf. Throws ValueError, which names the argument;
/// warns where a part of 400 to 700 nm was not measured.
Rows CurvesOf(const py::handle& argument, const char* name, bool floats = false, std::size_t otherWidth = 0);

}  // namespace vrx::python

#endif  // PYTHON_SRC_CURVES_H_
