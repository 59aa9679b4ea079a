// Illuminants, observers and difference systems as Python names them.

#ifndef PYTHON_SRC_NAMES_H_
#define PYTHON_SRC_NAMES_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <pybind11/pybind11.h>
#include <string>
#include <vector>

#include <vrxmath/colorant/optical_transforms.h>
#include <vrxmath/colorimetry/difference_systems.h>
#include <vrxmath/colorimetry/illuminants.h>

namespace vrx::python {

namespace py = pybind11;

/// What a lamp is: relative spectral power every `step` nm from `first` on, and how it is brought to 1 nm.
struct Spectrum {
  std::vector<double> power;
  std::int32_t first = 0, step = 0;
  bool linear = false;
  bool operator==(const Spectrum&) const = default;
};

/// The number under which the library knows a spectrum.
struct LampNumber {
  vrxIlluminant number;
};

/// A lamp of the user's own, told from others by its name and its spectrum. All lamps of one spectrum share a number, which
/// is kept for them as long as one of them is there.
struct Illuminant {
  std::string name;
  Spectrum spectrum;
  std::shared_ptr<const LampNumber> number;
  bool operator==(const Illuminant& other) const { return name == other.name && spectrum == other.spectrum; }
};

/// The even grid of whole wavelengths with its power. Throws ValueError for another grid.
Spectrum SpectrumOf(const py::object& wavelengths, const py::object& power, bool linear);
/// A lamp of that name, which no built-in illuminant has. Throws ValueError with the library's reason, and where 256 other
/// lamps are in use.
Illuminant MakeIlluminant(const std::string& name, Spectrum spectrum);

/// An illuminant by its code ("D65", "TL84"), its number or an Illuminant. Throws ValueError for an unknown one.
vrxIlluminant IlluminantOf(const py::handle& argument);
/// One illuminant or a sequence of them; `single` tells which was given.
std::vector<vrxIlluminant> IlluminantsOf(const py::handle& argument, bool& single);
/// Its name as results show it. Throws as IlluminantOf does.
std::string IlluminantNameOf(const py::handle& argument);
/// The same list for results that are told by the names of their illuminants: throws ValueError for a name that is there twice.
std::vector<vrxIlluminant> DistinctIlluminantsOf(const py::handle& argument);
/// Observer 0 or 1 of 2 or 10 degrees. Throws ValueError for another number.
std::int32_t ObserverOf(int degrees);

/// How the surface enters curves, by a text of io::SpecularName. Throws ValueError for another.
SaundersonMode SpecularNamed(const std::string& text);

/// Geometry codes of rows, below 0 where nobody said any, which None says of all. Throws ValueError for another count.
std::vector<std::int32_t> GeometryCodesOf(const py::object& codes, std::size_t count);

/// A system by its short name ("cmc") with its usual parameters, of which those named by `parameters` ("l", "c", "kL",
/// ...) are replaced; DIN99 is computed by its own formula. Throws ValueError for an unknown system and TypeError for a
/// parameter that the system does not have.
CDifferenceSettings SettingsOf(const std::string& system, const py::kwargs& parameters);
/// The names of a system's parameters, in their order.
std::vector<std::string> ParameterNames(std::int32_t system);

}  // namespace vrx::python

#endif  // PYTHON_SRC_NAMES_H_
