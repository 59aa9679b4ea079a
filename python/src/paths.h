// Paths of files as Python has them.

#ifndef PYTHON_SRC_PATHS_H_
#define PYTHON_SRC_PATHS_H_

#include <cerrno>
#include <filesystem>
#include <string>

#include <pybind11/pybind11.h>
#include <pybind11/stl/filesystem.h>

namespace vrx::python {

/// A file that is there, as the readers take it. Throws FileNotFoundError.
inline std::string ExistingFile(const std::filesystem::path& path) {
  std::error_code error;
  if (!std::filesystem::exists(path, error)) {
    errno = ENOENT;
    PyErr_SetFromErrnoWithFilename(PyExc_OSError, path.string().c_str());
    throw pybind11::error_already_set();
  }
  return path == "-" ? "./-" : path.string();
}

}  // namespace vrx::python

#endif  // PYTHON_SRC_PATHS_H_
