// Illuminants, observers and difference systems as Python names them.

#ifndef PYTHON_SRC_NAMES_H_
#define PYTHON_SRC_NAMES_H_

#include <cstdint>
#include <pybind11/pybind11.h>
#include <string>
#include <vector>

#include <vrxmath/colorimetry/difference_systems.h>
#include <vrxmath/colorimetry/illuminants.h>

namespace vrx::python {

namespace py = pybind11;

/// A lamp by its measured spectral power, registered with the library under a number of its own.
struct Illuminant {
  std::string name;
  vrxIlluminant number;
};

/// Registers a lamp: relative power at even wavelengths, 1, 5 or 10 nm apart. One of the same name and power is found
/// again; another power under a known name is refused. Throws ValueError with the library's reason.
Illuminant RegisterIlluminant(const std::string& name, const py::object& wavelengths, const py::object& power,
                              bool linear);

/// An illuminant by its code ("D65", "TL84"), its number or an Illuminant. Throws ValueError for an unknown one.
vrxIlluminant IlluminantOf(const py::handle& argument);
/// One illuminant or a sequence of them; `single` tells which was given.
std::vector<vrxIlluminant> IlluminantsOf(const py::handle& argument, bool& single);
/// Observer 0 or 1 of 2 or 10 degrees. Throws ValueError for another number.
std::int32_t ObserverOf(int degrees);

/// A system by its short name ("cmc") with its usual parameters, of which those named by `parameters` ("l", "c", "kL",
/// ...) are replaced; DIN99 is computed by its own formula. Throws ValueError for an unknown system and TypeError for a
/// parameter that the system does not have.
CDifferenceSettings SettingsOf(const std::string& system, const py::kwargs& parameters);
/// The names of a system's parameters, in their order.
std::vector<std::string> ParameterNames(std::int32_t system);

}  // namespace vrx::python

#endif  // PYTHON_SRC_NAMES_H_
