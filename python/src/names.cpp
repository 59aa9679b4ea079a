#include "python/src/names.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <string_view>
#include <utility>

#include <vrxio/measurement/names.h>
#include <vrxio/text/input_error.h>
#include <vrxmath/colorimetry/user_illuminants.h>

#include "python/src/arrays.h"

namespace vrx::python {
namespace {

struct Registered {
  Illuminant illuminant;
  std::vector<double> power;
  std::int32_t first, step;
  bool linear;
};
// Guarded by the interpreter's lock, as everything that registers is.
std::map<std::string, Registered>& RegisteredLamps() {
  static std::map<std::string, Registered> lamps;
  return lamps;
}

std::vector<double> VectorOf(const py::object& argument, const char* name) {
  const auto values = py::array_t<double, py::array::c_style | py::array::forcecast>::ensure(argument);
  if (!values || values.ndim() != 1) {
    PyErr_Clear();
    throw py::value_error(std::string(name) + ": a sequence of numbers is expected");
  }
  return {values.data(), values.data() + values.size()};
}

// The even step of whole wavelengths.
std::int32_t StepOf(const std::vector<double>& wavelengths) {
  if (wavelengths.size() < 2) throw py::value_error("wavelengths: at least two are needed");
  const double step = wavelengths[1] - wavelengths[0];
  for (std::size_t i = 0; i < wavelengths.size(); ++i) {
    if (wavelengths[i] != wavelengths[0] + step * static_cast<double>(i) ||
        std::floor(wavelengths[i]) != wavelengths[i]) {
      throw py::value_error("wavelengths: whole numbers of nm at an even distance are expected");
    }
  }
  return static_cast<std::int32_t>(step);
}

vrxUserIllum FreeNumber() {
  const CUserIllumArray taken = RegisteredUserIlluminants();
  for (std::int32_t number = kFirstUserIlluminant; number < kFirstUserIlluminant + kUserIlluminants;
       ++number) {
    const auto candidate = static_cast<vrxUserIllum>(number);
    if (std::find(taken.begin(), taken.end(), candidate) == taken.end()) return candidate;
  }
  throw py::value_error("there is no room for more than " + std::to_string(kUserIlluminants) +
                        " illuminants");
}

}  // namespace

Illuminant RegisterIlluminant(const std::string& name, const py::object& wavelengths, const py::object& power,
                              bool linear) {
  const std::vector<double> nm = VectorOf(wavelengths, "wavelengths"), values = VectorOf(power, "power");
  if (nm.size() != values.size()) throw py::value_error("power: as many values as wavelengths are expected");
  const std::int32_t step = StepOf(nm), first = static_cast<std::int32_t>(nm[0]);
  const auto known = RegisteredLamps().find(name);
  if (known != RegisteredLamps().end()) {
    const Registered& lamp = known->second;
    if (lamp.power == values && lamp.first == first && lamp.step == step && lamp.linear == linear)
      return lamp.illuminant;
    throw py::value_error("name: \"" + name + "\" stands for another spectral power already");
  }
  const vrxUserIllum number = FreeNumber();
  const IlluminantError error =
      RegisterUserIlluminant(number, CString::FromUtf8(name), values, first, step,
                             linear ? SpectralInterpolation::kLinear : SpectralInterpolation::kLagrange);
  if (error != IlluminantError::kNone) throw py::value_error(IlluminantErrorText(error).ToUtf8());
  const Illuminant illuminant{name, vrx::IlluminantOf(number)};
  RegisteredLamps().emplace(name, Registered{illuminant, values, first, step, linear});
  return illuminant;
}

vrxIlluminant IlluminantOf(const py::handle& argument) {
  if (py::isinstance<Illuminant>(argument)) return argument.cast<const Illuminant&>().number;
  if (!py::isinstance<py::str>(argument) && !py::isinstance<py::int_>(argument)) {
    throw py::type_error("illuminant: a code such as \"D65\", a number or an Illuminant is expected");
  }
  const auto text = py::str(argument).cast<std::string>();
  if (text == "D65") return vrxIllumD65;  // what most calls ask for
  try {
    return io::ParseIlluminant(text);
  } catch (const io::InputError&) {
    throw py::value_error("illuminant: \"" + text + "\" is unknown; vrxmath.illuminants() lists them");
  }
}

std::vector<vrxIlluminant> IlluminantsOf(const py::handle& argument, bool& single) {
  single = py::isinstance<py::str>(argument) || !py::isinstance<py::sequence>(argument);
  if (single) return {IlluminantOf(argument)};
  std::vector<vrxIlluminant> list;
  for (const py::handle item : argument) list.push_back(IlluminantOf(item));
  if (list.empty()) throw py::value_error("illuminant: at least one is needed");
  return list;
}

std::int32_t ObserverOf(int degrees) {
  if (degrees == 2) return kObserver2;
  if (degrees == 10) return kObserver10;
  throw py::value_error("observer: 2 or 10 (degrees) is expected, not " + std::to_string(degrees));
}

std::vector<std::string> ParameterNames(std::int32_t system) {
  std::vector<std::string> names;
  for (const std::string_view name : FindDifferenceSystem(system)->parameterNames) {
    if (!name.empty()) names.emplace_back(name);
  }
  return names;
}

CDifferenceSettings SettingsOf(const std::string& system, const py::kwargs& parameters) {
  CDifferenceSettings settings;
  try {
    settings = DefaultSettings(io::ParseSystem(system));
  } catch (const io::InputError&) {
    throw py::value_error("system: \"" + system + "\" is unknown; vrxmath.systems() lists them");
  }
  settings.ownFormula = true;
  const std::vector<std::string> names = ParameterNames(settings.system);
  for (const auto& [key, value] : parameters) {
    const auto name = key.cast<std::string>();
    const auto found = std::find(names.begin(), names.end(), name);
    if (found == names.end()) {
      std::string expected;
      for (const std::string& one : names) expected += (expected.empty() ? "" : ", ") + one;
      throw py::type_error("\"" + system + "\" has no parameter " + name +
                           (names.empty() ? "; it has none" : "; it has " + expected));
    }
    const auto number = value.cast<double>();
    if (!(number > 0.0)) throw py::value_error(name + ": a number above 0 is expected");
    settings.parameters[static_cast<std::size_t>(found - names.begin())] = number;
  }
  return settings;
}

}  // namespace vrx::python
