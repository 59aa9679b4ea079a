// Curves of Python arguments: arrays on the library's grid, arrays with wavelengths beside them, and what says its own.

#ifndef PYTHON_SRC_CURVES_H_
#define PYTHON_SRC_CURVES_H_

#include <cstddef>
#include <pybind11/pybind11.h>
#include <string>

#include "python/src/arrays.h"

namespace vrx::python {

/// Rows of curves on the library's grid.
struct Curves : Rows {
  std::string
      note;  ///< what was done to bring them there, in the tool's words; empty for curves that were there already
};

/// The curves of an argument as rows of 40 samples, 360, 370 ... 750 nm, or rows of `otherWidth` numbers that are no curves.
/// `wavelengths`, unless it is None, are those of the last axis, in nm, in any order: the values are brought to the grid as
/// curves of files are (io::WavelengthGrid), under the same rules (io::FaultOfWavelengths). What has labels, a DataFrame of
/// pandas or a Series, is taken by them: columns whose labels are wavelengths (360, "400 nm", "R400"), in whatever order;
/// labels that only count (0, 1, 2 ...) say nothing, and numbers under a label that is no wavelength are refused unless
/// `wavelengths` says the others. A CurveArray gives its own wavelengths. Columns of Arrow are taken as they lie: one of lists, of the
/// wavelengths in its metadata if there are any, or those whose labels are wavelengths. Everything else as by RowsOf. Throws ValueError, which names the
/// argument; warns where a part of 400 to 700 nm was not measured.
Curves CurvesAt(const py::handle& argument, const char* name, const py::handle& wavelengths,
                bool floats = false, std::size_t otherWidth = 0);

/// The curves of an argument for sums at `interval` nm: at 10 as CurvesAt gives them, at 5 and 1 as rows of 85 and 421 samples of
/// float64, one behind the other, from 360 to 780 nm. Rows of that many numbers without wavelengths are taken as they are. Throws
/// ValueError for another interval, and for wavelengths that are coarser (io::FaultOfInterval).
Curves CurvesForSums(const py::handle& argument, const char* name, const py::handle& wavelengths,
                     int interval);

/// The same as CurvesAt without wavelengths beside them.
Rows CurvesOf(const py::handle& argument, const char* name, bool floats = false, std::size_t otherWidth = 0);

/// Whether an argument that may hold colours instead holds curves. Columns of Arrow do.
bool AreCurves(const py::handle& argument, const py::handle& wavelengths);

}  // namespace vrx::python

#endif  // PYTHON_SRC_CURVES_H_
