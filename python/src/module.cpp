// The extension module `_core`, on which the package vrxmath rests.

#include "python/src/module.h"

#include <pybind11/stl.h>

#include <vrxio/text/input_error.h>
#include <vrxmath/judging/shade.h>
#include <vrxmath/platform/exceptions.h>

#include "python/src/names.h"

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

std::vector<std::string> ShadeTexts() {
  std::vector<std::string> texts;
  for (std::int32_t word = kShadeNone; word <= kBluer; ++word) {
    texts.push_back(CString(ShadeWordText(static_cast<ShadeWord>(word))).ToUtf8());
  }
  return texts;
}

}  // namespace

void DefineNames(py::module_& module) {
  py::class_<Illuminant>(module, "Illuminant",
                         R"(A lamp by its measured spectral power, taken wherever an illuminant is.

Parameters
----------
name : str
    How it is called from then on, ``"SHOP"`` or ``"SHOP|Shop lighting"``.
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
             return RegisterIlluminant(name, wavelengths, power, interpolation == "linear");
           }),
           py::arg("name"), py::arg("wavelengths"), py::arg("power"), py::kw_only(),
           py::arg("interpolation") = "cubic")
      .def_property_readonly("name",
                             [](const Illuminant& lamp) { return lamp.name.substr(0, lamp.name.find('|')); })
      .def("__repr__", [](const Illuminant& lamp) { return "<Illuminant " + lamp.name + ">"; });
  module.def("illuminant_name",
             [](const py::object& illuminant) { return IlluminantCode(IlluminantOf(illuminant)).ToUtf8(); });
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
  module.def("shade_texts", &ShadeTexts);
}

}  // namespace vrx::python

PYBIND11_MODULE(_core, module) {
  using namespace vrx::python;
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
  DefineColor(module);
  DefineAppearance(module);
  DefineDifference(module);
  DefineJudgement(module);
  DefineColorant(module);
  DefineFormulation(module);
  DefineReading(module);
}
