#include "python/src/names.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <string_view>
#include <utility>

#include <vrxio/measurement/names.h>
#include <vrxio/systems/color_system_file.h>
#include <vrxio/text/input_error.h>
#include <vrxmath/colorimetry/user_illuminants.h>

#include "python/src/arrays.h"

namespace vrx::python {
namespace {

// The numbers that the library has for lamps, and what each stands for. Guarded by the interpreter's lock, as everything
// that registers is.
struct Place {
  Spectrum spectrum;
  std::weak_ptr<const LampNumber> users;
};
std::vector<Place>& Places() {
  static std::vector<Place> places;
  return places;
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

// The place of a spectrum: its own of before, a new one, or one that nobody uses any more.
std::size_t PlaceOf(const Spectrum& spectrum) {
  std::vector<Place>& places = Places();
  const auto own = std::ranges::find(places, spectrum, &Place::spectrum);
  if (own != places.end()) return static_cast<std::size_t>(own - places.begin());
  if (places.size() < kUserIlluminants) return places.size();
  const auto unused = std::ranges::find_if(places, [](const Place& place) { return place.users.expired(); });
  if (unused == places.end())
    throw py::value_error(std::to_string(kUserIlluminants) + " other illuminants are in use");
  return static_cast<std::size_t>(unused - places.begin());
}

bool IsBuiltIn(const std::string& name) {
  vrxIlluminant owner;
  return FindIlluminant(CString::FromUtf8(name.substr(0, name.find('|'))), owner) &&
         owner < kBuiltInIlluminants;
}

}  // namespace

Spectrum SpectrumOf(const py::object& wavelengths, const py::object& power, bool linear) {
  const std::vector<double> nm = VectorOf(wavelengths, "wavelengths");
  Spectrum spectrum{VectorOf(power, "power"), 0, StepOf(nm), linear};
  if (nm.size() != spectrum.power.size())
    throw py::value_error("power: as many values as wavelengths are expected");
  spectrum.first = static_cast<std::int32_t>(nm[0]);
  return spectrum;
}

Illuminant MakeIlluminant(const std::string& name, Spectrum spectrum) {
  if (name.empty() || name.front() == '|' || IsBuiltIn(name))
    throw py::value_error("name: \"" + name + "\" is empty or that of a built-in illuminant");
  const std::size_t place = PlaceOf(spectrum);
  std::vector<Place>& places = Places();
  std::shared_ptr<const LampNumber> users =
      place < places.size() && places[place].spectrum == spectrum ? places[place].users.lock() : nullptr;
  if (users == nullptr) {
    // The library's own name for it is one that nobody else can have.
    const auto number = static_cast<vrxUserIllum>(kFirstUserIlluminant + static_cast<std::int32_t>(place));
    const IlluminantError error = RegisterUserIlluminant(
        number, CString::FromUtf8("#" + std::to_string(number)), spectrum.power, spectrum.first,
        spectrum.step, spectrum.linear ? SpectralInterpolation::kLinear : SpectralInterpolation::kLagrange);
    if (error != IlluminantError::kNone) throw py::value_error(IlluminantErrorText(error).ToUtf8());
    users = std::make_shared<const LampNumber>(LampNumber{vrx::IlluminantOf(number)});
    if (place == places.size()) places.emplace_back();
    places[place] = {spectrum, users};
  }
  return {name, std::move(spectrum), std::move(users)};
}

vrxIlluminant IlluminantOf(const py::handle& argument) {
  if (py::isinstance<Illuminant>(argument)) return argument.cast<const Illuminant&>().number->number;
  if (!py::isinstance<py::str>(argument) && PyIndex_Check(argument.ptr()) == 0) {
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

std::string IlluminantNameOf(const py::handle& argument) {
  if (!py::isinstance<Illuminant>(argument)) return IlluminantCode(IlluminantOf(argument)).ToUtf8();
  const std::string& name = argument.cast<const Illuminant&>().name;
  return name.substr(0, name.find('|'));
}

std::vector<vrxIlluminant> DistinctIlluminantsOf(const py::handle& argument) {
  bool single = false;
  std::vector<vrxIlluminant> list = IlluminantsOf(argument, single);
  std::set<std::string> names;
  for (std::size_t i = 0; !single && i < list.size(); ++i) {
    const std::string name = IlluminantNameOf(argument[py::int_(i)]);
    if (!names.insert(name).second) throw py::value_error("illuminants: " + name + " is named twice");
  }
  return list;
}

std::int32_t ObserverOf(int degrees) {
  if (degrees == 2) return kObserver2;
  if (degrees == 10) return kObserver10;
  throw py::value_error("observer: 2 or 10 (degrees) is expected, not " + std::to_string(degrees));
}

SaundersonMode SpecularNamed(const std::string& text) {
  for (const auto mode : {SaundersonMode::kIncluded, SaundersonMode::kExcluded, SaundersonMode::kNone}) {
    if (text == io::SpecularName(mode)) return mode;
  }
  throw py::value_error("specular: \"included\", \"excluded\" or \"none\" is expected");
}

std::vector<std::int32_t> GeometryCodesOf(const py::object& codes, std::size_t count) {
  if (codes.is_none()) return std::vector<std::int32_t>(count, -1);
  std::vector<std::int32_t> each;
  for (const py::handle code : codes) each.push_back(code.cast<std::int32_t>());
  if (each.size() != count) throw py::value_error("geometries: one for each row is expected");
  return each;
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
