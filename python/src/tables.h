// Measurements of Python as the library's table of them.

#ifndef PYTHON_SRC_TABLES_H_
#define PYTHON_SRC_TABLES_H_

#include <pybind11/pybind11.h>
#include <string>

#include <vrxio/files/measurement_table.h>

namespace vrx::python {

/// The table of a dictionary with the members of `Measurements`: ids, names, geometries, curves, lab, xyz, illuminant, observer.
/// Throws ValueError for a column of another length, and for a number that is none.
io::MeasurementTable TableOf(const pybind11::dict& columns);

/// A form of files by its word, "csv"; empty for kByContent. Throws ValueError.
io::ReadOptions::Form FormNamed(const std::string& form);
/// The form, and the scale by "percent" or "fraction", of a file to be read. Throws ValueError.
io::ReadOptions ReadOptionsOf(const std::string& form, const std::string& scale);

}  // namespace vrx::python

#endif  // PYTHON_SRC_TABLES_H_
