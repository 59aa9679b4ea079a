// What searches for recipes and for corrections of batches have in common: their settings as Python gives them, the search, and
// what it finds as the fields of Python's classes.

#ifndef PYTHON_SRC_RECIPE_SEARCH_H_
#define PYTHON_SRC_RECIPE_SEARCH_H_

#include <cstddef>
#include <functional>
#include <initializer_list>
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <string>
#include <utility>

#include <vrxmath/matching/recipe.h>

#include "python/src/arrays.h"
#include "python/src/color_system.h"

namespace vrx::python {

/// The value of a setting that is one of several words. Throws ValueError, which names them, for another.
template <class VALUE>
VALUE OneOf(const py::dict& settings, const char* name,
            std::initializer_list<std::pair<const char*, VALUE>> values) {
  const auto text = settings[name].cast<std::string>();
  std::string expected;
  for (const auto& [known, value] : values) {
    if (text == known) return value;
    expected += (expected.empty() ? "\"" : "\", \"") + std::string(known);
  }
  throw py::value_error(std::string(name) + ": one of " + expected + "\" is expected");
}

/// The number of a setting. Throws ValueError for one out of its range.
double NumberOf(const py::dict& settings, const char* name, double least, double most);

/// The settings that all searches have; `given` has every setting by its name in Python.
CRecipeSettings RecipeSettingsOf(const System& system, const py::dict& given);

/// Throws ValueError for what there is no recipe for, in the words of the arguments.
void RefuseFault(const System& system, const CRecipeSettings& settings, const RecipeOutcome& outcome,
                 const char* cheapest = "");

/// Warns of what is free because nobody gave a cost of it.
void TellFree(const System& system, const CRecipeSettings& settings, const py::dict& given);

/// A search without the interpreter's lock, which Ctrl+C ends. Throws as RefuseFault does.
void Search(const System& system, CRecipeSettings& settings, const std::function<RecipeOutcome()>& search);

/// A row of a curve, or of L*, a*, b*.
CRecipeTarget RecipeTargetOf(const Rows& rows, std::size_t i);

/// A number as Python has it: NaN where it is unset.
double NanOf(double value);
py::array_t<double> ArrayOf(const CDoubleArray1& values);
py::array_t<double> ArrayOf(const CReflData& curve);

/// The fields of a Recipe.
py::dict FieldsOf(const System& system, const CRecipe& recipe);

}  // namespace vrx::python

#endif  // PYTHON_SRC_RECIPE_SEARCH_H_
