// The extension module `_core`, on which the package vrxmath rests.

#include "python/src/module.h"

#include <pybind11/stl.h>

#include <vrxio/measurement/names.h>
#include <vrxio/text/input_error.h>
#include <vrxmath/platform/exceptions.h>

#include "python/src/names.h"
#include "python/src/unlocked.h"

namespace vrx::python {
namespace {

py::dict SystemsTable() {
  py::dict table;
  for (const DifferenceSystem& system : DifferenceSystems()) {
    py::dict parameters;
    std::size_t i = 0;
    for (const std::string& name : ParameterNames(system.number))
      parameters[py::str(name)] = system.defaults[i++];
    table[py::str(std::string(system.shortName))] = parameters;
  }
  return table;
}

py::dict IlluminantTable() {
  py::dict table;
  for (std::int32_t number = 0; number < kBuiltInIlluminants; ++number) {
    const auto illuminant = static_cast<vrxIlluminant>(number);
    table[py::str(IlluminantCode(illuminant).ToUtf8())] = IlluminantName(illuminant, kObserver10, 7).ToUtf8();
  }
  return table;
}

}  // namespace

void DefineNames(py::module_& module) {
  py::class_<Illuminant>(module, "Illuminant",
                         R"(A lamp by its measured spectral power, taken wherever an illuminant is.

Lamps are compared by name and power; a lamp that is pickled is the same in another process.

Parameters
----------
name : str
    How results call it, ``"SHOP"`` or ``"SHOP|Shop lighting"``; not the code of a built-in illuminant.
wavelengths : array_like, shape (n,)
    Whole nm, 1, 5 or 10 apart, 400 to 700 nm at least.
power : array_like, shape (n,)
    Relative power in any unit.
interpolation : str
    How the power is brought to 1 nm: ``"cubic"``, or ``"linear"`` as CIE D65 is defined.
)")
      .def(py::init([](const std::string& name, const py::object& wavelengths, const py::object& power,
                       const std::string& interpolation) {
             if (interpolation != "cubic" && interpolation != "linear") {
               throw py::value_error("interpolation: \"cubic\" or \"linear\" is expected");
             }
             return MakeIlluminant(name, SpectrumOf(wavelengths, power, interpolation == "linear"));
           }),
           py::arg("name"), py::arg("wavelengths"), py::arg("power"), py::kw_only(),
           py::arg("interpolation") = "cubic")
      .def_property_readonly("name", [](const py::object& lamp) { return IlluminantNameOf(lamp); })
      .def("__eq__",
           [](const Illuminant& lamp, const py::object& other) {
             return py::isinstance<Illuminant>(other) && lamp == other.cast<const Illuminant&>();
           })
      .def("__hash__",
           [](const Illuminant& lamp) {
             return py::hash(py::make_tuple(lamp.name, py::tuple(py::cast(lamp.spectrum.power))));
           })
      .def(py::pickle(
          [](const Illuminant& lamp) {
            const Spectrum& spectrum = lamp.spectrum;
            return py::make_tuple(lamp.name, spectrum.power, spectrum.first, spectrum.step, spectrum.linear);
          },
          [](const py::tuple& state) {
            if (state.size() != 5) throw py::value_error("no state of an Illuminant");
            return MakeIlluminant(state[0].cast<std::string>(),
                                  {state[1].cast<std::vector<double>>(), state[2].cast<std::int32_t>(),
                                   state[3].cast<std::int32_t>(), state[4].cast<bool>()});
          }))
      .def("__repr__", [](const Illuminant& lamp) { return "<Illuminant " + lamp.name + ">"; });
  module.def("illuminant_name", &IlluminantNameOf);
  module.def("reads_angle", [](const std::string& system) {
    return FindDifferenceSystem(SettingsOf(system, {}).system)->readsAngle;
  });
  module.def("geometry_code", [](const std::string& text) { return io::ParseGeometry(text); });
  // Of one geometry all spellings are the same; an unknown one is its own.
  module.def("geometry_name", [](const std::string& text) {
    const std::int32_t code = io::ParseGeometry(text);
    return code < 0 ? text : io::GeometryName(code);
  });
  module.def("illuminants", &IlluminantTable, R"(The built-in illuminants.

Returns
-------
dict of str to str
    Descriptions by code.
)");
  module.def("systems", &SystemsTable, R"(The difference systems.

Returns
-------
dict of str to dict
    By short name: the parameters with their usual values.
)");
}

}  // namespace vrx::python

// What initializes the module, behind a check of the interpreter.
#define PyInit__core InitializeCore
PYBIND11_MODULE(_core, module) {
  using namespace vrx::python;
  StopCallsAtExit();
  module.attr("__version__") = VRX_VERSION;
  module.doc() =
      "Colour science for industrial colour matching and quality control: the compiled part of vrxmath.";
  pybind11::register_exception_translator([](std::exception_ptr failure) {
    try {
      if (failure) std::rethrow_exception(failure);
    } catch (const vrx::io::InputError& error) {
      PyErr_SetString(PyExc_ValueError, error.what());
    } catch (const vrx::CMemoryException&) {
      PyErr_NoMemory();
    } catch (const vrx::CException& error) {
      PyErr_SetString(PyExc_ValueError, error.what());
    }
  });
  DefineNames(module);
  DefineArrow(module);
  DefineCurves(module);
  DefineColor(module);
  DefineAppearance(module);
  DefineFigures(module);
  DefineSingleFigures(module);
  DefineDifference(module);
  DefineJudgement(module);
  DefineColorant(module);
  DefineColorSystem(module);
  DefineRecipes(module);
  DefineCorrections(module);
  DefineCalibration(module);
  DefineReading(module);
  DefineWriting(module);
  DefineReadings(module);
  DefineReporting(module);
  DefineShades(module);
  DefineToleranceFit(module);
}
#undef PyInit__core

// The module keeps what it has registered for the process, and pybind11's own records belong to the main interpreter: in
// another one its initialization would wait for a lock that it holds itself.
extern "C" PYBIND11_EXPORT PyObject* PyInit__core() {
  if (PyInterpreterState_Get() == PyInterpreterState_Main()) return InitializeCore();
  PyErr_SetString(PyExc_ImportError,
                  "vrxmath works in the main interpreter of a process, not in subinterpreters");
  return nullptr;
}
