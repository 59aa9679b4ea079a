// K and S of colorants from weighed drawdowns.

#include <algorithm>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <vrxio/measurement/names.h>
#include <vrxio/systems/color_system_file.h>
#include <vrxio/systems/taken_surface.h>
#include <vrxmath/colorant/component_names.h>
#include <vrxmath/formula/prediction.h>
#include <vrxmath/foundation/numbers.h>
#include <vrxmath/matching/calibration.h>
#include <vrxmath/matching/calibration_faults.h>
#include <vrxmath/matching/dye_ladder.h>
#include <vrxmath/matching/exchanged_drawdowns.h>

#include "python/src/arrays.h"
#include "python/src/color_system.h"
#include "python/src/curves.h"
#include "python/src/module.h"
#include "python/src/names.h"
#include "python/src/unlocked.h"
#include "python/src/views.h"

namespace vrx::python {
namespace {

int32_t ModelNamed(const std::string& text) {
  static constexpr std::pair<const char*, int32_t> kModels[] = {
      {"coatings", kModelCoatings},      {"plastics", kModelPlastics},
      {"trade-sales", kModelTradeSales}, {"transparents", kModelTransparents},
      {"textiles", kModelTextiles},      {"continuous-dye", kModelContinuousDye}};
  for (const auto& [name, model] : kModels) {
    if (text == name) return model;
  }
  throw py::value_error(
      "model: one of \"coatings\", \"plastics\", \"trade-sales\", \"transparents\", \"textiles\", "
      "\"continuous-dye\" is expected");
}

// Drawdowns with their shares. Readings of a film are four rows: over black, over white, the black card, the white one.
CDrawdownArray DrawdownsOf(const Rows& curves, const Rows& shares, const py::object& weights,
                           const py::object& ids) {
  const bool areFilms = curves.lead.size() == 2;
  if (curves.lead.empty() || curves.lead.size() > 2 || (areFilms && curves.lead[1] != 4)) {
    throw py::value_error("curves: (n, 40) or, for films, (n, 4, 40) is expected");
  }
  const auto count = static_cast<std::size_t>(curves.lead[0]);
  if (shares.lead.size() != 1 || shares.count != count)
    throw py::value_error("shares: a row for each drawdown is expected");
  const auto names = ids.is_none() ? std::vector<std::string>() : ids.cast<std::vector<std::string>>();
  const auto numbers = weights.is_none() ? std::vector<double>() : weights.cast<std::vector<double>>();
  const bool areNamed = names.empty() || names.size() == count;
  const bool areWeighed = numbers.empty() || numbers.size() == count;
  if (!areNamed || !areWeighed) throw py::value_error("ids, weights: one for each drawdown is expected");
  CDrawdownArray drawdowns;
  for (std::size_t i = 0; i < count; ++i) {
    CDrawdown drawdown;
    for (std::size_t k = 0; k < shares.width; ++k)
      drawdown.shares.Add(shares.Doubles()[i * shares.stride + k]);
    drawdown.isFilm = areFilms;
    const auto reading = [&](std::size_t k) {
      return CurveAt(curves.Doubles() + (4 * i + k) * curves.stride);
    };
    if (areFilms) {
      drawdown.overBlack = reading(0), drawdown.overWhite = reading(1);
      drawdown.black = reading(2), drawdown.white = reading(3);
    } else {
      drawdown.opaque = CurveAt(curves.Doubles() + i * curves.stride);
    }
    drawdown.id = CString::FromUtf8(names.empty() ? std::to_string(i) : names[i]);
    if (!numbers.empty()) drawdown.weight = numbers[i];
    drawdowns.Add(drawdown);
  }
  return drawdowns;
}

int32_t PlaceIn(const std::vector<std::string>& names, const std::string& name, const char* argument) {
  const auto found = std::ranges::find(names, name);
  if (found == names.end())
    throw py::value_error(std::string(argument) + ": there is no component \"" + name + "\"");
  return static_cast<int32_t>(found - names.begin());
}

CCalibrationSettings CalibrationSettingsOf(const std::vector<std::string>& names, const py::dict& given) {
  CCalibrationSettings settings;
  settings.white = PlaceIn(names, given["white"].cast<std::string>(), "white");
  for (const py::handle resin : given["resins"])
    settings.resins.Add(PlaceIn(names, resin.cast<std::string>(), "resins"));
  settings.k1 = given["k1"].cast<double>();
  settings.k2 = given["k2"].cast<double>();
  if (!(settings.k1 >= 0.0 && settings.k1 < 1.0))
    throw py::value_error("k1: a number from 0 to below 1 is expected");
  if (!(settings.k2 >= 0.0 && settings.k2 < 1.0))
    throw py::value_error("k2: a number from 0 to below 1 is expected");
  settings.mode = SpecularNamed(given["specular"].cast<std::string>());
  bool single = false;
  settings.illuminant = IlluminantsOf(given["illuminant"], single).front();
  settings.observer = ObserverOf(given["observer"].cast<int>());
  settings.leaveOneOut = given["leave_one_out"].cast<bool>();
  return settings;
}

// A column of the fits, NaN where it is unset.
template <class FIELD>
py::array_t<double> ColumnOf(const CDrawdownFitArray& fits, FIELD field) {
  py::array_t<double> column(static_cast<py::ssize_t>(fits.GetSize()));
  for (int32_t i = 0; i < fits.GetSize(); ++i) {
    const double value = fits[i].*field;
    column.mutable_data()[i] = IsUnset(value) ? std::numeric_limits<double>::quiet_NaN() : value;
  }
  return column;
}

py::tuple Calibrate(const std::vector<std::string>& components, const py::object& shares,
                    const py::object& curves, const py::dict& given) {
  const Rows rows = CurvesOf(curves, "curves");
  const Rows parts = RowsOf(shares, "shares", components.size());
  const CDrawdownArray drawdowns = DrawdownsOf(rows, parts, given["weights"], given["ids"]);
  const CCalibrationSettings settings = CalibrationSettingsOf(components, given);
  CStringArray1 names;
  for (const std::string& name : components) names.Add(CString::FromUtf8(name).CStr());
  io::ColorSystem system;
  system.data.opticalModel = ModelNamed(given["model"].cast<std::string>());
  const bool isOnSubstrate = MixingLawOf(system.data.opticalModel) == MixingLaw::kOneConstant;
  CDrawdownFitArray fits;
  CDyeBuildUpArray buildUps;
  CalibrationOutcome outcome;
  std::optional<ExchangedDrawdowns> exchanged;
  WithoutLock([&](const auto&) {
    outcome = isOnSubstrate ? CalibrateDyes(names, drawdowns, settings, system.data, fits, buildUps)
                            : CalibrateColorants(names, drawdowns, settings, system.data, fits);
    if (!isOnSubstrate && outcome.fault == CalibrationFault::kNone)
      exchanged = FindExchangedDrawdowns(names, drawdowns, settings);
  });
  const auto setting = [](std::string_view name, std::string_view value) {
    return std::string(name) + (value.empty() ? "" : "=\"" + std::string(value) + "\"");
  };
  if (outcome.fault != CalibrationFault::kNone) {
    throw py::value_error(
        CalibrationFaultText(outcome, {names, drawdowns, settings, isOnSubstrate, setting}));
  }
  constexpr int kCaller = 1;
  if (exchanged && PyErr_WarnEx(PyExc_UserWarning, exchanged->Text(drawdowns).c_str(), kCaller) != 0)
    throw py::error_already_set();
  system.data.name = CString::FromUtf8(given["name"].cast<std::string>());
  system.specular = settings.mode;
  io::CommonGeometry geometry;
  for (const auto& text : given["geometries"].cast<std::vector<std::string>>())
    geometry.Add({}, io::ParseGeometry(text));
  system.geometry = geometry.Get();
  system.calibratedOn = std::to_string(drawdowns.GetSize()) + " drawdowns";
  system.calibrated = CalibratedComponents(system.data, drawdowns, fits);
  py::dict fit;
  fit["differences"] = ColumnOf(fits, &CDrawdownFit::deltaE);
  fit["leave_one_out"] = ColumnOf(fits, &CDrawdownFit::leaveOneOut);
  fit["leave_one_out_linear"] = ColumnOf(fits, &CDrawdownFit::leaveOneOutLinear);
  fit["contrast"] = ColumnOf(fits, &CDrawdownFit::measuredContrast);
  fit["contrast_predicted"] = ColumnOf(fits, &CDrawdownFit::predictedContrast);
  fit["thickness"] = ColumnOf(fits, &CDrawdownFit::thickness);
  fit["refined"] = outcome.isRefined;
  py::dict saturates;
  for (const CDyeBuildUp& buildUp : buildUps) {
    if (IsUnset(buildUp.saturatesFrom)) continue;
    saturates[py::str(components[buildUp.componentId - 1])] = 100.0 * buildUp.saturatesFrom;
  }
  fit["saturates"] = saturates;
  return py::make_tuple(System(std::move(system)), fit);
}

}  // namespace

void DefineCalibration(py::module_& module) {
  module.def("calibrate", &Calibrate, py::arg("components"), py::arg("shares"), py::arg("curves"),
             py::arg("settings"));
}

}  // namespace vrx::python
