// A colour system as Python holds it: with its components in the order of its file.

#ifndef PYTHON_SRC_COLOR_SYSTEM_H_
#define PYTHON_SRC_COLOR_SYSTEM_H_

#include <cstddef>
#include <cstdint>
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <string>
#include <vector>

#include <vrxio/systems/color_system_file.h>
#include <vrxmath/colorant/optical_transforms.h>

namespace vrx::python {

namespace py = pybind11;

struct System {
  explicit System(io::ColorSystem given);

  /// The place of a component in `ids`, which must have it: throws std::out_of_range otherwise.
  std::size_t PlaceOfId(uint32_t id) const;
  /// The place of a component that is named by its number, or by what the tool takes: its name, or "id:7". Throws ValueError for
  /// what is none, or several.
  std::size_t PlaceOf(const py::handle& component) const;
  /// What results call the component of a place, and what finds it again: its name, or "id:7" where others have that name, too.
  const std::string& Label(std::size_t place) const;

  /// The formula of a row of amounts in the order of `ids`: an amount of 0 is a component that is not there.
  CDbFormula FormulaOf(const double* amounts) const;
  /// The row of amounts of a formula.
  py::array_t<double> AmountsOf(const CDbFormula& formula) const;
  /// The amounts of a formula that are not 0, by the names of their components, in the order of `ids`.
  py::dict NamedAmountsOf(const CDbFormula& formula) const;

  /// How the surface enters curves beside the system: as its file says; where it does not, as given, and included where None is.
  /// Throws ValueError where the two differ.
  SaundersonMode SpecularOf(const py::object& given) const;

  io::ColorSystem file;
  std::vector<uint32_t> ids;
  std::vector<std::string> names;

 private:
  mutable std::vector<std::string> labels;  // those that were asked for, under the interpreter's lock
};

}  // namespace vrx::python

#endif  // PYTHON_SRC_COLOR_SYSTEM_H_
