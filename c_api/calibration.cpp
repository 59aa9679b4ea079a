// Calibration of colorants from weighed drawdowns.

#include <algorithm>
#include <string>
#include <utility>

#include <vrxmath/formula/prediction.h>
#include <vrxmath/matching/calibration.h>
#include <vrxmath/matching/dye_ladder.h>

#include "c_api/handles.h"

namespace vrx::c_api {
namespace {

constexpr int32_t kMostComponents = 200, kMostDrawdowns = 10'000;

vrx_calibration_settings UsualCalibration() {
  const CCalibrationSettings usual;
  vrx_calibration_settings settings{};
  settings.size = sizeof settings;
  settings.model = VRX_MODEL_COATINGS;
  settings.surface = VRX_SURFACE_INCLUDED;
  settings.illuminant = usual.illuminant;
  settings.observer = usual.observer;
  settings.leave_one_out = usual.leaveOneOut ? 1 : 0;
  settings.k1 = usual.k1;
  settings.k2 = usual.k2;
  return settings;
}

CCalibrationSettings SettingsOf(const vrx_calibration_settings& s, int32_t white) {
  NeedRange(s.model, kModelCoatings, kModelContinuousDye, "model");
  NeedRange(s.leave_one_out, 0, 1, "leave_one_out");
  NeedConstant(s.k1, "k1");
  NeedConstant(s.k2, "k2");
  CCalibrationSettings settings;
  settings.white = white - 1;
  settings.k1 = s.k1;
  settings.k2 = s.k2;
  settings.mode = ModeOf(s.surface);
  settings.illuminant = Pair(s.illuminant, s.observer).illuminant;
  settings.observer = s.observer;
  settings.leaveOneOut = s.leave_one_out != 0;
  return settings;
}

int32_t IndexOfComponent(const Calibration& calibration, int32_t id) {
  NeedRange(id, 1, calibration.names.GetSize(), "id");
  return id - 1;
}

void SetComponent(Calibration& calibration, int32_t id, int32_t kind, const CString& name) {
  const int32_t index = IndexOfComponent(calibration, id);
  if (kind != VRX_COLORANT && kind != VRX_RESIN)
    throw Refusal{VRX_OUT_OF_RANGE, "kind is neither colorant nor resin"};
  calibration.names[index] = name;
  calibration.isResin[static_cast<std::size_t>(index)] = kind == VRX_RESIN;
}

// A drawdown of these shares, without its curves.
CDrawdown DrawdownOf(const Calibration& calibration, const double* shares, double weight) {
  if (calibration.drawdowns.GetSize() == kMostDrawdowns)
    throw Refusal{VRX_REFUSED, "the calibration has 10000 drawdowns already"};
  CDrawdown drawdown;
  const auto parts = Numbers(shares, 1, calibration.isResin.size(), "shares");
  for (const double share : parts) {
    NeedWithin(share, 0.0, kLargestReading, "a share");
    drawdown.shares.Add(share);
  }
  if (std::ranges::all_of(parts, [](double share) { return share == 0.0; }))
    throw Refusal{VRX_OUT_OF_RANGE, "all shares are 0"};
  NeedWithin(weight, 1e-6, kLargestReading, "weight");
  drawdown.weight = weight;
  return drawdown;
}

std::string NamesOf(const Calibration& calibration, const CIntArray1& components) {
  std::string text;
  for (const int32_t component : components)
    text += (text.empty() ? "" : ", ") + calibration.names[component].ToUtf8();
  return text;
}

std::string DrawdownFault(CalibrationFault fault) {
  switch (fault) {
    case CalibrationFault::kBelowSurface:
      return "is darker than the surface alone: its curve is without the specular component, or uncorrected";
    case CalibrationFault::kFilmSwapped:
      return "is lighter over black than over white";
    case CalibrationFault::kCardsSwapped:
      return "has a black card that is not darker than the white one";
    case CalibrationFault::kShares:
      return "has shares that cannot be used: on a substrate one dye at most, up to as much as the "
             "substrate, "
             "and no film";
    default:
      return "is not measured";
  }
}

void RefuseFault(const Calibration& calibration, const CalibrationOutcome& outcome) {
  const std::string names = NamesOf(calibration, outcome.components);
  switch (outcome.fault) {
    case CalibrationFault::kNone:
      return;
    case CalibrationFault::kNoWhite:
      throw Refusal{VRX_REFUSED, "no drawdown has the white in it, or none is the bare substrate"};
    case CalibrationFault::kNeverUsed:
      throw Refusal{VRX_REFUSED, "no drawdown has this in it: " + names};
    case CalibrationFault::kOneShareOnly:
      throw Refusal{VRX_REFUSED,
                    "one share only in all drawdowns, from which K and S cannot be told apart: " + names};
    default:
      throw Refusal{VRX_REFUSED,
                    "drawdown " + std::to_string(outcome.drawdown) + " " + DrawdownFault(outcome.fault)};
  }
}

CalibrationOutcome Calibrate(const Calibration& calibration, io::ColorSystem& system,
                             CDrawdownFitArray& fits) {
  CCalibrationSettings settings = calibration.settings;
  for (std::size_t i = 0; i < calibration.isResin.size(); ++i)
    if (calibration.isResin[i]) settings.resins.Add(static_cast<int32_t>(i));
  system.data.opticalModel = calibration.model;
  if (MixingLawOf(calibration.model) != MixingLaw::kOneConstant)
    return CalibrateColorants(calibration.names, calibration.drawdowns, settings, system.data, fits);
  CDyeBuildUpArray buildUps;
  return CalibrateDyes(calibration.names, calibration.drawdowns, settings, system.data, fits, buildUps);
}

}  // namespace
}  // namespace vrx::c_api

namespace api = vrx::c_api;
using api::Calibration;
using api::Call;
using api::CurveOf;
using api::Find;
using api::NeedPlace;
using api::NeedRange;

vrx_status VRX_CALL vrx_usual_calibration_settings(vrx_calibration_settings* settings) {
  return Call([&] {
    const vrx_calibration_settings usual = api::UsualCalibration();
    api::GiveSized(&usual, sizeof usual, settings, "settings");
  });
}

vrx_status VRX_CALL vrx_calibration_open(const vrx_calibration_settings* settings, int32_t components,
                                         int32_t white, vrx_handle* calibration) {
  return Call([&] {
    NeedRange(components, 1, api::kMostComponents, "components");
    NeedRange(white, 1, components, "white");
    auto object = std::make_shared<Calibration>();
    const vrx_calibration_settings own = api::Sized(settings, api::UsualCalibration(), "settings");
    object->settings = api::SettingsOf(own, white);
    object->model = own.model;
    object->isResin.resize(static_cast<std::size_t>(components));
    for (int32_t id = 1; id <= components; ++id)
      object->names.Add(vrx::CString::FromUtf8(std::to_string(id)).CStr());
    NeedPlace(calibration, "calibration");
    *calibration = api::OpenHandle(std::move(object));
  });
}

vrx_status VRX_CALL vrx_calibration_component(vrx_handle calibration, int32_t id, int32_t kind,
                                              const char* name) {
  return Call([&] {
    const auto object = Find<Calibration>(calibration);
    api::SetComponent(*object, id, kind, api::Text(name, "name"));
  });
}

vrx_status VRX_CALL vrx_calibration_component16(vrx_handle calibration, int32_t id, int32_t kind,
                                                const vrx_char16* name) {
  return Call([&] {
    const auto object = Find<Calibration>(calibration);
    api::SetComponent(*object, id, kind, api::Text(name, "name"));
  });
}

vrx_status VRX_CALL vrx_calibration_opaque(vrx_handle calibration, const double* shares, double weight,
                                           const double curve[40]) {
  return Call([&] {
    const auto object = Find<Calibration>(calibration);
    vrx::CDrawdown drawdown = api::DrawdownOf(*object, shares, weight);
    drawdown.opaque = CurveOf(curve, "curve");
    object->drawdowns.Add(drawdown);
  });
}

vrx_status VRX_CALL vrx_calibration_film(vrx_handle calibration, const double* shares, double weight,
                                         const double over_black[40], const double over_white[40],
                                         const double black[40], const double white[40]) {
  return Call([&] {
    const auto object = Find<Calibration>(calibration);
    vrx::CDrawdown drawdown = api::DrawdownOf(*object, shares, weight);
    drawdown.isFilm = true;
    drawdown.overBlack = CurveOf(over_black, "over_black");
    drawdown.overWhite = CurveOf(over_white, "over_white");
    drawdown.black = CurveOf(black, "black");
    drawdown.white = CurveOf(white, "white");
    object->drawdowns.Add(drawdown);
  });
}

vrx_status VRX_CALL vrx_calibrate(vrx_handle calibration, vrx_handle* colorants) {
  return Call([&] {
    const auto object = Find<Calibration>(calibration);
    NeedPlace(colorants, "colorants");
    auto system = std::make_shared<vrx::io::ColorSystem>();
    vrx::CDrawdownFitArray fits;
    api::RefuseFault(*object, api::Calibrate(*object, *system, fits));
    system->specular = object->settings.mode;
    system->calibrated = vrx::CalibratedComponents(system->data, object->drawdowns, fits);
    *colorants = api::OpenHandle(std::move(system));
    object->fits = fits;
  });
}

vrx_status VRX_CALL vrx_calibration_fit(vrx_handle calibration, int32_t drawdown, vrx_drawdown_fit* fit) {
  return Call([&] {
    const auto object = Find<Calibration>(calibration);
    NeedRange(drawdown, 0, object->fits.GetSize() - 1, "drawdown");
    const vrx::CDrawdownFit& found = object->fits[drawdown];
    vrx_drawdown_fit own{};
    own.is_film = object->drawdowns[drawdown].isFilm ? 1 : 0;
    own.delta_e = found.deltaE;
    own.leave_one_out = found.leaveOneOut;
    own.leave_one_out_linear = found.leaveOneOutLinear;
    own.thickness = found.thickness;
    own.measured_contrast = found.measuredContrast;
    own.predicted_contrast = found.predictedContrast;
    api::GiveSized(&own, sizeof own, fit, "fit");
  });
}

vrx_status VRX_CALL vrx_colorants_text(vrx_handle colorants, char* text, int32_t capacity, int32_t* length) {
  return Call([&] {
    const auto system = Find<vrx::io::ColorSystem>(colorants);
    api::Give(vrx::CString::FromUtf8(vrx::io::ColorSystemText(*system)), text, capacity, length);
  });
}
