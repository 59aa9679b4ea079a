// Optical transforms, strength, prediction, and linear equations.

#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>
#include <vector>

#include <vrxmath/batch/colorant_batch.h>
#include <vrxmath/colorant/component_names.h>
#include <vrxmath/colorant/film.h>
#include <vrxmath/colorant/strength.h>
#include <vrxmath/formula/prediction.h>
#include <vrxmath/numeric/matrix.h>
#include <vrxmath/platform/archive.h>
#include <vrxmath/platform/exceptions.h>

#include "c_api/handles.h"

namespace vrx::c_api {
namespace {

constexpr int32_t kMostEquations = 4096;

template <class NUMBERS>
bool AreFinite(const NUMBERS& numbers) {
  return std::all_of(numbers.begin(), numbers.end(), [](double number) { return std::isfinite(number); });
}

using SaundersonBatch = bool (*)(std::span<const double>, double, double, SaundersonMode, std::span<double>,
                                 const BatchRun&);

vrx_status Saunderson(SaundersonBatch transform, const double* in, int32_t count, double k1, double k2,
                      int32_t surface, double* out) noexcept {
  return Call([&](Arrays& arrays) {
    const auto place = arrays.Place(out, count, 1, "the result");
    const auto source = arrays.Numbers(in, count, 1, "the reflectances");
    NeedConstant(k1, "k1");
    NeedConstant(k2, "k2");
    transform(source, k1, k2, ModeOf(surface), place, Run());
  });
}

void NeedSettings(const vrx_strength_settings* settings) {
  NeedPlace(settings, "settings");
  NeedRange(settings->form, VRX_STRENGTH_APPARENT, VRX_STRENGTH_TRISTIMULUS, "form");
  NeedRange(settings->last, 0, kWavelengths - 1, "last");
  NeedRange(settings->first, 0, settings->last, "first");
  (void)ModeOf(settings->surface);
  NeedConstant(settings->k1, "k1");
  NeedConstant(settings->k2, "k2");
  if (settings->form >= VRX_STRENGTH_LUMINOUS) (void)Pair(settings->illuminant, settings->observer);
}

double CurveStrength(const vrx_strength_settings& s, const CReflData& standard, const CReflData& batch) {
  const SaundersonMode mode = ModeOf(s.surface);
  if (s.form != VRX_STRENGTH_CHROMATIC)
    return StrengthPercent(standard, batch, s.form == VRX_STRENGTH_ABSORBANCE, s.first, s.last, s.k1, s.k2,
                           mode);
  const int32_t index = MaximumAbsorption(standard, s.first, s.last, s.k1, s.k2, mode);
  return ChromaticStrength(standard, batch, index, s.k1, s.k2, mode);
}

double ColorStrength(const vrx_strength_settings& s, const CTrisValues& standard, const CTrisValues& batch) {
  const SaundersonMode mode = ModeOf(s.surface);
  if (s.form == VRX_STRENGTH_LUMINOUS) return LuminousStrength(standard, batch, mode);
  const auto function = s.form == VRX_STRENGTH_PSEUDO ? PseudoTristimulusStrength : TristimulusStrength;
  return function(standard, batch, s.k1, s.k2, mode);
}

double Strength(const vrx_strength_settings& s, const CReflData& standard, const CReflData& batch) {
  if (IsUnset(standard) || IsUnset(batch)) return kUnset;
  if (s.form < VRX_STRENGTH_LUMINOUS) return CurveStrength(s, standard, batch);
  CTrisValues a, b;
  const Pair pair(s.illuminant, s.observer);
  standard.Tristimulus(pair.illuminant, pair.observer, a);
  batch.Tristimulus(pair.illuminant, pair.observer, b);
  return ColorStrength(s, a, b);
}

// 40 coefficients of absorption or scattering.
CReflData CoefficientsOf(const double* coefficients, const char* name) {
  CReflData curve = CurveOf(coefficients, name);
  for (const double coefficient : curve) NeedWithin(coefficient, 0.0, kLargestReading, name);
  return curve;
}

CColorantLevel LevelOf(double concentration, const double* absorption, const double* scattering) {
  NeedWithin(concentration, 0.0, 1.0, "concentration");
  const CReflData K = CoefficientsOf(absorption, "absorption"), S = CoefficientsOf(scattering, "scattering");
  CColorantLevel level(1);
  level.concentration = concentration;
  std::copy(K.begin(), K.end(), level.values[0].absorption.begin());
  std::copy(S.begin(), S.end(), level.values[0].scattering.begin());
  return level;
}

// The component of that number in a list, made when it is not there.
template <class LIST>
CComponent& ComponentOf(LIST& list, uint32_t id, int32_t kind) {
  for (auto& component : list) {
    if (component.GetId() == id) return component;
  }
  std::remove_cvref_t<decltype(list[0])> component;
  component.SetId(id);
  component.SetKind(kind);
  list.Add(component);
  return list[list.GetSize() - 1];
}

template <class LIST>
bool HasComponent(const LIST& list, uint32_t id) {
  return std::any_of(list.begin(), list.end(),
                     [&](const auto& component) { return component.GetId() == id; });
}

void AddLevel(CColorantSystemData& system, uint32_t id, int32_t kind, const CColorantLevel& level) {
  const bool isResin = kind == VRX_RESIN;
  if (isResin ? HasComponent(system.colorants, id) : HasComponent(system.resins, id))
    throw Refusal{VRX_REFUSED, "component " + std::to_string(id) + " is of another kind"};
  CComponent& component =
      isResin ? ComponentOf(system.resins, id, kind) : ComponentOf(system.colorants, id, kind);
  const CColorantLevelArray& levels = component.GetLevels();
  if (!levels.IsEmpty() && !(levels[levels.GetSize() - 1].concentration < level.concentration))
    throw Refusal{VRX_REFUSED, "the concentrations of component " + std::to_string(id) + " do not ascend"};
  component.AppendLevel(level);
}

void GivePrediction(const CReflData& predicted, double* curve) {
  if (IsUnset(predicted) || !AreFinite(predicted))
    throw Refusal{VRX_REFUSED,
                  "the formula has a component that the system lacks, a negative amount, or no scattering"};
  std::copy(predicted.begin(), predicted.end(), curve);
}

}  // namespace
}  // namespace vrx::c_api

namespace api = vrx::c_api;
using api::Arrays;
using api::Call;
using api::NeedPlace;
using api::NeedRange;
using api::Numbers;
using api::Place;
using api::Refusal;

vrx_status VRX_CALL vrx_kubelka_munk(const double* reflectances, int32_t count, double* ks) {
  return Call([&](Arrays& arrays) {
    const auto place = arrays.Place(ks, count, 1, "ks");
    vrx::KubelkaMunkKsBatch(arrays.Numbers(reflectances, count, 1, "reflectances"), place, api::Run());
  });
}

vrx_status VRX_CALL vrx_absorbance(const double* reflectances, int32_t count, double* densities) {
  return Call([&](Arrays& arrays) {
    const auto place = arrays.Place(densities, count, 1, "densities");
    vrx::AbsorbanceBatch(arrays.Numbers(reflectances, count, 1, "reflectances"), place, api::Run());
  });
}

vrx_status VRX_CALL vrx_to_internal(const double* measured, int32_t count, double k1, double k2,
                                    int32_t surface, double* internal) {
  return api::Saunderson(vrx::SaundersonToInternalBatch, measured, count, k1, k2, surface, internal);
}
vrx_status VRX_CALL vrx_to_measured(const double* internal, int32_t count, double k1, double k2,
                                    int32_t surface, double* measured) {
  return api::Saunderson(vrx::SaundersonToMeasuredBatch, internal, count, k1, k2, surface, measured);
}

vrx_status VRX_CALL vrx_strength(const vrx_strength_settings* settings, const double standard[40],
                                 const double* batches, int32_t count, double* percents) {
  return Call([&](Arrays& arrays) {
    api::NeedSettings(settings);
    const vrx_strength_settings form = *settings;
    const vrx::CReflData reference = api::CurveOf(standard, "standard");
    const auto out = arrays.Place(percents, count, 1, "percents");
    const auto samples = arrays.Numbers(batches, count, vrx::kWavelengths, "batches");
    vrx::CReflData batch;
    for (std::size_t row = 0; row < out.size(); ++row) {
      std::copy_n(samples.data() + row * vrx::kWavelengths, vrx::kWavelengths, batch.begin());
      out[row] = api::Strength(form, reference, batch);
    }
  });
}

vrx_status VRX_CALL vrx_colorants_open(int32_t model, double k1, double k2, vrx_handle* colorants) {
  return Call([&] {
    NeedRange(model, vrx::kModelCoatings, vrx::kModelContinuousDye, "model");
    api::NeedConstant(k1, "k1");
    api::NeedConstant(k2, "k2");
    NeedPlace(colorants, "colorants");
    auto system = std::make_shared<vrx::io::ColorSystem>();
    system->data.opticalModel = model;
    system->data.k1 = k1;
    system->data.k2 = k2;
    *colorants = api::OpenHandle(std::move(system));
  });
}

vrx_status VRX_CALL vrx_colorants_read(const uint8_t* bytes, int32_t count, vrx_handle* colorants) {
  return Call([&] {
    const std::size_t size = api::NeedCount(count, 1, "count");
    if (size > 0) NeedPlace(bytes, "bytes");
    NeedPlace(colorants, "colorants");
    vrx::MemoryStore store(std::as_bytes(std::span(bytes, size)));
    vrx::CArchive archive(store, vrx::CArchive::kLoad);
    auto system = std::make_shared<vrx::io::ColorSystem>();
    try {
      system->data.Serialize(archive);
    } catch (const vrx::CArchiveException& error) {
      throw Refusal{VRX_REFUSED, error.what()};
    }
    *colorants = api::OpenHandle(std::move(system));
  });
}

vrx_status VRX_CALL vrx_colorants_level(vrx_handle colorants, int32_t id, int32_t kind, double concentration,
                                        const double absorption[40], const double scattering[40]) {
  return Call([&] {
    const auto system = api::Find<vrx::io::ColorSystem>(colorants);
    if (id < 0) throw Refusal{VRX_OUT_OF_RANGE, "id is negative"};
    if (kind != VRX_COLORANT && kind != VRX_RESIN && kind != VRX_CALIBRATION_WHITE)
      throw Refusal{VRX_OUT_OF_RANGE, "kind is none of the kinds that have levels"};
    api::AddLevel(system->data, static_cast<uint32_t>(id), kind,
                  api::LevelOf(concentration, absorption, scattering));
  });
}

vrx_status VRX_CALL vrx_predict(vrx_handle colorants, const int32_t* ids, const double* amounts,
                                int32_t count, double curve[40]) {
  return Call([&] {
    const auto system = api::Find<vrx::io::ColorSystem>(colorants);
    const vrx::CDbFormula formula = api::FormulaOf(ids, amounts, count);
    NeedPlace(curve, "curve");
    api::GivePrediction(vrx::PredictReflectance(formula, system->data, api::SurfaceOf(*system, {})), curve);
  });
}

vrx_status VRX_CALL vrx_predict_film(vrx_handle colorants, const int32_t* ids, const double* amounts,
                                     int32_t count, int32_t surface, const double* backing, double thickness,
                                     double curve[40]) {
  return Call([&] {
    const auto system = api::Find<vrx::io::ColorSystem>(colorants);
    const vrx::CDbFormula formula = api::FormulaOf(ids, amounts, count);
    const vrx::SaundersonMode mode = api::SurfaceOf(*system, surface);
    NeedPlace(curve, "curve");
    if (backing == nullptr)
      return api::GivePrediction(vrx::PredictReflectance(formula, system->data, mode), curve);
    const vrx::CReflData below = api::CurveOf(backing, "backing");
    api::NeedWithin(thickness, 0.0, api::kLargestReading, "thickness");
    api::GivePrediction(vrx::PredictFilm(formula, system->data, below, thickness, mode), curve);
  });
}

vrx_status VRX_CALL vrx_film_constants(const double over_black[40], const double over_white[40],
                                       const double black[40], const double white[40], double k1, double k2,
                                       int32_t surface, double* absorption, double* scattering,
                                       double ratio[40]) {
  return Call([&](Arrays& arrays) {
    const vrx::CReflData onBlack = api::CurveOf(over_black, "over_black");
    const vrx::CReflData onWhite = api::CurveOf(over_white, "over_white");
    const vrx::CReflData below[] = {api::CurveOf(black, "black"), api::CurveOf(white, "white")};
    api::NeedConstant(k1, "k1");
    api::NeedConstant(k2, "k2");
    const vrx::SaundersonMode mode = api::ModeOf(surface);
    const auto kx = arrays.PlaceIfWanted(absorption, 1, vrx::kWavelengths, "absorption");
    const auto sx = arrays.PlaceIfWanted(scattering, 1, vrx::kWavelengths, "scattering");
    const auto ks = arrays.Place(ratio, 1, vrx::kWavelengths, "ratio");
    const vrx::CFilmConstants film = vrx::FilmConstants(onBlack, onWhite, below[0], below[1], k1, k2, mode);
    std::copy_n(film.absorption.begin(), kx.size(), kx.begin());
    std::copy_n(film.scattering.begin(), sx.size(), sx.begin());
    std::copy(film.ratio.begin(), film.ratio.end(), ks.begin());
  });
}

vrx_status VRX_CALL vrx_solve(const double* a, const double* b, int32_t n, double* x) {
  return Call([&] {
    NeedRange(n, 0, api::kMostEquations, "n");
    const auto size = static_cast<std::size_t>(n);
    constexpr double kAny = std::numeric_limits<double>::max();
    const auto rows = Numbers(a, n, size, "a", kAny);
    const auto right = Numbers(b, n, 1, "b", kAny);
    const auto out = Place(x, n, 1, "x");
    if (n == 0) return;
    vrx::CMatrix matrix(static_cast<uint32_t>(n), static_cast<uint32_t>(n) + 1);
    for (std::size_t i = 0; i < size; ++i) {
      vrx::CDoubleArray1& row = matrix.GetRow(static_cast<uint32_t>(i));
      std::copy_n(rows.data() + i * size, size, row.begin());
      row[n] = right[i];
    }
    vrx::CDoubleArray1 solution;
    solution.SetSize(n);
    if (matrix.GaussSolve(solution) == 0 || !api::AreFinite(solution))
      throw Refusal{VRX_REFUSED, "the matrix is singular"};
    std::copy(solution.begin(), solution.end(), out.begin());
  });
}
