// Shade sorting: blocks about a standard, and groups without one.

#include <algorithm>
#include <cmath>
#include <string>
#include <tuple>
#include <vector>

#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <vrxmath/batch/sample_colors.h>
#include <vrxmath/foundation/angles.h>
#include <vrxmath/judging/shade_groups.h>
#include <vrxmath/tolerance/box_tolerance.h>

#include "python/src/arrays.h"
#include "python/src/curves.h"
#include "python/src/module.h"
#include "python/src/names.h"
#include "python/src/unlocked.h"
#include "python/src/views.h"

namespace vrx::python {
namespace {

// Under which colours are sorted, and what three numbers are.
struct SortingConditions {
  CDifferenceSettings settings;
  vrxIlluminant illuminant;
  std::int32_t observer;
  bool areXyz;

  SortingConditions(const std::string& system, const py::kwargs& parameters, const py::object& lamp,
                    int degrees, const std::string& space)
      : settings(SettingsOf(system, parameters)),
        illuminant(IlluminantOf(lamp)),
        observer(ObserverOf(degrees)),
        areXyz(space == "xyz") {
    if (space != "lab" && space != "xyz") throw py::value_error("space: \"lab\" or \"xyz\" is expected");
  }

  // The colours of curves, or of X, Y, Z or L*, a*, b*, with the coordinates of the system.
  ColorTable ColorsIn(const py::object& argument, const char* name) const {
    const Rows rows = CurvesOf(argument, name, true, 3);
    if (rows.lead.size() > 1) throw py::value_error(std::string(name) + ": expected shape (n, 40) or (n, 3)");
    if (rows.count == 0) return {std::vector<ColorTable::Under>(1)};
    if (rows.width == kSamples)
      return ColorsOf(SamplesOf(rows, 0, rows.count), settings.system, {&illuminant, 1}, observer);
    const Rows doubles = RowsOf(argument, name, 3);
    const BatchView<const double, 3> view = ViewOf<3>(doubles, 0, doubles.count);
    const Samples samples = areXyz ? Samples(XyzSamples{{&view, 1}}) : Samples(LabSamples{{&view, 1}});
    return ColorsOf(samples, settings.system, {&illuminant, 1}, observer);
  }
};

CBlockSizeData BlocksOf(const py::object& sizes) {
  CBlockSizeData blocks;
  if (IsNumber(sizes)) {
    blocks.Fill(sizes.cast<double>());
  } else {
    const Rows rows = RowsOf(sizes, "blocks", 3);
    std::copy_n(rows.Doubles(), 3, blocks.begin());
  }
  if (std::ranges::any_of(blocks, [](double size) { return !(size > 0); }))
    throw py::value_error("blocks: sizes above 0 are expected");
  return blocks;
}

py::list Sort(const py::object& standard, const py::object& samples, const py::object& blocks,
              const py::object& illuminant, int observer, const std::string& system, const std::string& space,
              const py::kwargs& parameters) {
  const SortingConditions conditions(system, parameters, illuminant, observer, space);
  const CBlockSizeData sizes = BlocksOf(blocks);
  const ColorTable center = conditions.ColorsIn(standard, "standard");
  const ColorTable trials = conditions.ColorsIn(samples, "samples");
  if (center.size() != 1) throw py::value_error("standard: one is expected");
  const Color middle = center.At(0, 0);
  if (!(middle.xyz.Y >= 0.0)) throw py::value_error("standard: it is no measurement");
  py::list texts;
  for (std::size_t i = 0; i < trials.size(); ++i) {
    const Color trial = trials.At(0, i);
    const bool isMeasured = std::isfinite(trial.xyz.Y) && !IsUnset(trial.xyz);
    texts.append(isMeasured ? BlockText(static_cast<std::int32_t>(
                                  BlockCode(sizes, middle, trial, conditions.settings)))
                            : std::string());
  }
  return texts;
}

// By L*, a*, b*: the groups do not depend on the order of rows.
std::vector<std::size_t> OrderByColor(const ColorTable& colors) {
  std::vector<std::size_t> order(colors.size());
  for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
  std::ranges::stable_sort(order, [&](std::size_t a, std::size_t b) {
    const Lab x = colors.At(0, a).lab, y = colors.At(0, b).lab;
    return std::tie(x.L, x.a, x.b) < std::tie(y.L, y.a, y.b);
  });
  return order;
}

py::tuple SortGroups(const py::object& samples, double limit, const py::object& illuminant, int observer,
                     const std::string& system, const std::string& space, double angle,
                     const py::object& geometries, const py::kwargs& parameters) {
  constexpr std::size_t kMost = 5000;
  const SortingConditions conditions(system, parameters, illuminant, observer, space);
  if (!(limit > 0)) throw py::value_error("limit: a difference above 0 is expected");
  const ColorTable colors = conditions.ColorsIn(samples, "samples");
  if (colors.size() > kMost) throw py::value_error("samples: up to 5000 are put into groups");
  for (std::size_t i = 0; i < colors.size(); ++i) {
    if (!std::isfinite(colors.At(0, i).xyz.Y) || IsUnset(colors.At(0, i).xyz))
      throw py::value_error("samples: row " + std::to_string(i) + " is no measurement");
  }
  const std::vector<std::int32_t> codes = GeometryCodesOf(geometries, colors.size());
  const auto between = [&](std::size_t a, std::size_t b) {
    if (codes[a] != codes[b]) return HUGE_VAL;
    const double own = AspecularAngle(codes[a], angle);
    return DifferenceEitherWay(conditions.settings, colors.At(0, a), colors.At(0, b), own);
  };
  std::vector<std::vector<std::size_t>> groups;
  WithoutLock([&](const auto&) { groups = ShadeGroups(OrderByColor(colors), limit, between); });
  py::array_t<std::int64_t> numbers(static_cast<py::ssize_t>(colors.size()));
  py::array_t<double> farthest(static_cast<py::ssize_t>(colors.size()));
  for (std::size_t g = 0; g < groups.size(); ++g) {
    for (const std::size_t trial : groups[g]) {
      double& most = farthest.mutable_data()[trial] = 0.0;
      numbers.mutable_data()[trial] = static_cast<std::int64_t>(g + 1);
      for (const std::size_t other : groups[g])
        if (other != trial) most = std::max(most, between(trial, other));
    }
  }
  return py::make_tuple(numbers, farthest);
}

}  // namespace

void DefineShades(py::module_& module) {
  module.def("sort", &Sort, py::arg("standard"), py::arg("samples"), py::arg("blocks") = 1.0,
             py::arg("illuminant") = "D65", py::arg("observer") = 10, py::arg("system") = "lab",
             py::kw_only(), py::arg("space") = "lab",
             R"(Shade sorting: the block of each sample about a standard, such as ``"555"``.

A digit stands for each of the first three components of the difference: 5 is the block around the standard, 1 to 9 are nine blocks
side by side, and 0 and A are everything beyond them. A sample on an edge belongs to the block above it.

Parameters
----------
standard : array_like, shape (40,) or (3,)
    A curve, or a colour.
samples : array_like, shape (n, 40) or (n, 3)
blocks : float or array_like, shape (3,)
    The size of a block in each component, or in all of them.
illuminant, observer
    Under which it is sorted.
system : str
    The difference system, whose parameters may follow.
space : {"lab", "xyz"}
    What three numbers are.

Returns
-------
list of str
    Empty for a sample that is no measurement.

Examples
--------
>>> vrx.sort([50, 0, 0], [[50.2, 0.1, 0], [52, 0, -0.8], [90, 0, 0]])
['555', '754', 'A55']
)");
  module.def("sort_groups", &SortGroups, py::arg("samples"), py::arg("limit"), py::arg("illuminant"),
             py::arg("observer"), py::arg("system"), py::kw_only(), py::arg("space"), py::arg("angle"),
             py::arg("geometries"));
}

}  // namespace vrx::python
