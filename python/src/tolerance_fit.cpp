// Tolerances from experience: ellipsoids of accepted differences, and limits from verdicts.

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <vrxmath/tolerance/ellipse_fit.h>
#include <vrxmath/tolerance/limit_fit.h>
#include <vrxmath/tolerance/lone_difference.h>

#include "python/src/arrays.h"
#include "python/src/module.h"
#include "python/src/names.h"

namespace vrx::python {
namespace {

ToleranceFitSettings FitSettingsOf(const std::string& method, const std::string& centre, double margin) {
  if (method != "smallest" && method != "surface")
    throw py::value_error("method: \"smallest\" or \"surface\" is expected");
  if (centre != "free" && centre != "standard")
    throw py::value_error("centre: \"free\" or \"standard\" is expected");
  if (!(margin > 0 && margin <= 100))
    throw py::value_error("margin: a factor above 0 and up to 100 is expected");
  return {method == "surface" ? ToleranceFitSettings::kSurface : ToleranceFitSettings::kSmallest,
          centre == "standard" ? EllipseCentre::kAtStandard : EllipseCentre::kFree, margin};
}

std::vector<LabDifference> DifferencesOf(const Rows& rows) {
  std::vector<LabDifference> differences;
  for (std::size_t i = 0; i < rows.count; ++i) {
    const double* const row = rows.Doubles() + i * rows.stride;
    if (!std::all_of(row, row + 3, [](double value) { return std::isfinite(value); }))
      throw py::value_error("differences: row " + std::to_string(i) + " is none");
    differences.push_back({row[0], row[1], row[2]});
  }
  return differences;
}

// The largest of the totals, or without them of dE*ab.
double LargestTotal(const py::object& totals, const std::vector<LabDifference>& differences) {
  double largest = 0;
  if (totals.is_none()) {
    for (const LabDifference& d : differences)
      largest = std::max(largest, std::sqrt(d.dL * d.dL + d.da * d.da + d.db * d.db));
    return largest;
  }
  const auto given = totals.cast<std::vector<double>>();
  if (given.size() != differences.size())
    throw py::value_error("totals: as many as differences are expected");
  for (const double total : given) {
    if (!(total >= 0)) throw py::value_error("totals: numbers of 0 or more are expected");
    largest = std::max(largest, total);
  }
  return largest;
}

py::array_t<double> FitEllipsoid(const py::object& differences, const py::object& totals,
                                 const std::string& method, const std::string& centre, double margin) {
  const ToleranceFitSettings settings = FitSettingsOf(method, centre, margin);
  const std::vector<LabDifference> accepted = DifferencesOf(RowsOf(differences, "differences", 3));
  CEllipseData ellipse;
  switch (FitTolerance(accepted, LargestTotal(totals, accepted), settings, ellipse)) {
    case ToleranceFitError::kTooFew:
      throw py::value_error("differences: " + std::to_string(settings.NeededDifferences()) +
                            " are needed at least, there are " + std::to_string(accepted.size()));
    case ToleranceFitError::kFlat:
      throw py::value_error(
          "differences: they are flat: of the same lightness, or on one line in the a*-b* plane");
    case ToleranceFitError::kNoSurface:
      throw py::value_error("differences: no ellipsoid has its surface near them; use method=\"smallest\"");
    case ToleranceFitError::kNone:
      break;
  }
  constexpr int kCaller = 1;
  const auto lone = FindLoneDifference(accepted, settings);
  if (lone && PyErr_WarnEx(PyExc_UserWarning, ("differences: " + lone->Text()).c_str(), kCaller) != 0)
    throw py::error_already_set();
  return py::array_t<double>(static_cast<py::ssize_t>(CEllipseData::kValues), ellipse.GetData());
}

// The short name of a system and its parameters by their names.
py::tuple NamedChoice(const CDifferenceSettings& settings) {
  py::dict parameters;
  std::size_t i = 0;
  for (const std::string& name : ParameterNames(settings.system))
    parameters[py::str(name)] = settings.parameters[i++];
  return py::make_tuple(std::string(FindDifferenceSystem(settings.system)->shortName), parameters);
}

py::list LimitChoices() {
  py::list choices;
  for (const CDifferenceSettings& choice : UsualLimitChoices()) choices.append(NamedChoice(choice));
  return choices;
}

py::list RankLimits(const py::list& choices, const std::vector<std::vector<double>>& totals,
                    const std::vector<bool>& accepted) {
  std::vector<CDifferenceSettings> settings;
  for (const py::handle choice : choices) {
    const auto named = choice.cast<py::tuple>();
    settings.push_back(SettingsOf(named[0].cast<std::string>(), py::kwargs(named[1].cast<py::dict>())));
  }
  const std::vector<std::uint8_t> verdicts(accepted.begin(), accepted.end());
  py::list ranked;
  for (const SystemLimitFit& one : FitLimits(settings, totals, verdicts)) {
    const auto number = [](double value) { return IsUnset(value) ? std::nan("") : value; };
    py::list fit(NamedChoice(one.difference));
    for (const py::object& value :
         {py::object(py::int_(one.illuminant)), py::object(py::float_(number(one.fit.limit))),
          py::object(py::int_(one.fit.wronglyAccepted)), py::object(py::int_(one.fit.wronglyRejected)),
          py::object(py::float_(number(one.stress)))})
      fit.append(value);
    ranked.append(fit);
  }
  return ranked;
}

}  // namespace

void DefineToleranceFit(py::module_& module) {
  module.def("fit_ellipsoid", &FitEllipsoid, py::arg("differences"), py::arg("totals") = py::none(),
             py::kw_only(), py::arg("method") = "smallest", py::arg("centre") = "free",
             py::arg("margin") = 1.0,
             R"(The ellipsoid of differences that people accepted, as ``ellipsoid`` of :func:`judge` takes it.

Parameters
----------
differences : array_like, shape (n, 3)
    dL*, da*, db* from the standard.
totals : array_like, shape (n,), optional
    The total differences, of which the largest becomes the limit of the total; dE*ab if not given.
method : {"smallest", "surface"}
    The smallest ellipsoid that contains every difference, or the one whose surface is nearest to differences at the limit of acceptance.
centre : {"free", "standard"}
    Wherever it fits best, or at the standard.
margin : float
    The semi-axes and the limit of the total are multiplied by it.

Returns
-------
numpy.ndarray, shape (9,)
    Centre dL*, da*, db*; semi-axes along lightness, at the angle and across it; the angle in degrees; the limit of the total; the
    margin.

Examples
--------
>>> corners = [[l, a, b] for l in (-1, 1) for a in (-1, 1) for b in (-1, 1)]
>>> vrx.fit_ellipsoid(corners)[3:6].round(2).tolist()
[1.73, 1.73, 1.73]
)");
  module.def("limit_choices", &LimitChoices);
  module.def("rank_limits", &RankLimits, py::arg("choices"), py::arg("totals"), py::arg("accepted"));
}

}  // namespace vrx::python
