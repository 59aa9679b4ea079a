// The parts of the module, each of which defines its functions.

#ifndef PYTHON_SRC_MODULE_H_
#define PYTHON_SRC_MODULE_H_

#include <pybind11/pybind11.h>

namespace vrx::python {

void DefineNames(pybind11::module_& module);
void DefineArrow(pybind11::module_& module);
void DefineCurves(pybind11::module_& module);
void DefineColor(pybind11::module_& module);
void DefineAppearance(pybind11::module_& module);
void DefineFigures(pybind11::module_& module);
void DefineReporting(pybind11::module_& module);
void DefineShades(pybind11::module_& module);
void DefineSingleFigures(pybind11::module_& module);
void DefineToleranceFit(pybind11::module_& module);
void DefineDifference(pybind11::module_& module);
void DefineJudgement(pybind11::module_& module);
void DefineColorant(pybind11::module_& module);
void DefineCalibration(pybind11::module_& module);
void DefineColorSystem(pybind11::module_& module);
void DefineCorrections(pybind11::module_& module);
void DefineRecipes(pybind11::module_& module);
void DefineReading(pybind11::module_& module);
void DefineWriting(pybind11::module_& module);
void DefineReadings(pybind11::module_& module);

}  // namespace vrx::python

#endif  // PYTHON_SRC_MODULE_H_
