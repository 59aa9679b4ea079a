// Single figures of colours and lamps, whiteness of an instrument, corrections of readings.

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include <vrxmath/batch/figure_batch.h>
#include <vrxmath/colorimetry/color_rendering.h>
#include <vrxmath/colorimetry/ganz_griesser.h>
#include <vrxmath/colorimetry/indices.h>
#include <vrxmath/colorimetry/instrument_profile.h>
#include <vrxmath/colorimetry/space_formulas.h>
#include <vrxmath/colorimetry/user_illuminants.h>
#include <vrxmath/platform/exceptions.h>

#include "c_api/checks.h"

namespace vrx::c_api {
namespace {

constexpr std::size_t kFactors = kInstrumentTerms * static_cast<std::size_t>(kWavelengths);

Xyz RowOf(std::span<const double> rows, std::size_t i) {
  return {rows[3 * i], rows[3 * i + 1], rows[3 * i + 2]};
}

// Two figures of every row of X, Y, Z.
template <class FIGURES>
void FillTwoFigures(std::span<const double> xyz, std::span<double> out, const FIGURES& figures) {
  for (std::size_t i = 0; i < out.size() / 2; ++i) {
    const std::array<double, 2> two = figures(RowOf(xyz, i));
    std::ranges::copy(two, out.begin() + static_cast<std::ptrdiff_t>(2 * i));
  }
}

// Factors of exchanged tiles would make every reading that they correct wrong.
void RefuseMisplaced(const std::vector<MisplacedTile>& misplaced) {
  if (misplaced.empty()) return;
  const MisplacedTile& first = misplaced.front();
  throw Refusal{VRX_REFUSED, "other: " + MisplacedTile::Describe(first, std::to_string(first.tile),
                                                                 std::to_string(first.looksLike))};
}

std::vector<CReflData> CurvesFrom(std::span<const double> samples) {
  std::vector<CReflData> curves(samples.size() / 40);
  for (std::size_t i = 0; i < curves.size(); ++i)
    std::copy_n(samples.begin() + static_cast<std::ptrdiff_t>(40 * i), 40, curves[i].begin());
  return curves;
}

GanzGriesser ParametersFrom(std::span<const double> numbers) {
  return {numbers[0], numbers[1], numbers[2], numbers[3], numbers[4], numbers[5]};
}

}  // namespace
}  // namespace vrx::c_api

namespace api = vrx::c_api;
using api::Arrays;
using api::Call;
using api::NeedRange;
using api::Refusal;

vrx_status VRX_CALL vrx_dominant_wavelengths(int32_t illuminant, int32_t observer, const double* xyz,
                                             int32_t count, double* figures) {
  return Call([&](Arrays& arrays) {
    const api::Pair pair(illuminant, observer);
    const auto out = arrays.Place(figures, count, 2, "figures");
    const auto in = arrays.Numbers(xyz, count, 3, "xyz");
    vrx::White n;
    if (!vrx::FindWhite(pair.illuminant, pair.observer, n)) throw vrx::CInvalidArgException();
    const vrx::Xy white = vrx::Chromaticity(vrx::Xyz{n.X, n.Y, n.Z});
    api::FillTwoFigures(in, out, [&](const vrx::Xyz& row) {
      const auto found = vrx::FindDominantWavelength(vrx::Chromaticity(row), white, pair.observer);
      return std::array{found.wavelength, found.purity};
    });
  });
}

vrx_status VRX_CALL vrx_color_temperatures(const double* xyz, int32_t count, double* figures) {
  return Call([&](Arrays& arrays) {
    const auto out = arrays.Place(figures, count, 2, "figures");
    const auto in = arrays.Numbers(xyz, count, 3, "xyz");
    api::FillTwoFigures(in, out, [](const vrx::Xyz& row) {
      const vrx::ColorTemperature found = vrx::FindColorTemperature(vrx::Chromaticity(row));
      return std::array{found.kelvin, found.Duv};
    });
  });
}

vrx_status VRX_CALL vrx_color_rendering(const double* power, int32_t count, int32_t first, int32_t step,
                                        double figures[18]) {
  return Call([&](Arrays& arrays) {
    const auto out = arrays.Place(figures, 1, 18, "figures");
    const auto in = arrays.Numbers(power, count, 1, "power", 1e9);
    const vrx::IlluminantError error = vrx::CheckSpectrum(in, first, step);
    if (error != vrx::IlluminantError::kNone)
      throw Refusal{VRX_OUT_OF_RANGE, "power: " + vrx::IlluminantErrorText(error).ToUtf8()};
    const vrx::ColorRendering found = vrx::FindColorRendering(
        vrx::ResampleSpectrum(in, first, step, vrx::SpectralInterpolation::kLagrange));
    out[0] = found.temperature.kelvin, out[1] = found.temperature.Duv;
    out[2] = found.referenceDistance, out[3] = found.Ra;
    std::ranges::copy(found.R, out.begin() + 4);
  });
}

vrx_status VRX_CALL vrx_inconstancies(const vrx_system* system, int32_t reference, int32_t test,
                                      int32_t observer, const double* curves, int32_t count, double* values) {
  return Call([&](Arrays& arrays) {
    const vrx::CDifferenceSettings settings = api::Settings(system);
    const api::Pair first(reference, observer), second(test, observer);
    if (first.illuminant == second.illuminant)
      throw Refusal{VRX_OUT_OF_RANGE, "test: it is the reference, under which no colour changes"};
    const auto out = arrays.Place(values, count, 1, "values");
    const auto in = arrays.Numbers(curves, count, 40, "curves");
    vrx::InconstancyBatch(first.illuminant, second.illuminant, observer, {in}, settings, out,
                          vrx::AdaptationTransform::kCat16, api::Run());
  });
}

vrx_status VRX_CALL vrx_cie_white(int32_t illuminant, int32_t observer, const double* xyz, int32_t count,
                                  int32_t* within) {
  return Call([&](Arrays& arrays) {
    const api::Pair pair(illuminant, observer);
    const auto out = arrays.Place(within, count, 1, "within");
    const auto in = arrays.Numbers(xyz, count, 3, "xyz");
    for (std::size_t i = 0; i < out.size(); ++i) {
      const vrx::CTrisValues row(in[3 * i], in[3 * i + 1], in[3 * i + 2]);
      out[i] = !IsUnset(row) && vrx::IsWithinCieLimits(pair.illuminant, pair.observer, row) ? 1 : 0;
    }
  });
}

vrx_status VRX_CALL vrx_ganz_griesser(const double parameters[6], const double* xyz, int32_t count,
                                      double* figures) {
  return Call([&](Arrays& arrays) {
    const auto out = arrays.Place(figures, count, 2, "figures");
    const auto in = arrays.Numbers(xyz, count, 3, "xyz");
    const vrx::GanzGriesser own = parameters == nullptr
                                      ? vrx::GanzGriesser{}
                                      : api::ParametersFrom(arrays.Numbers(parameters, 1, 6, "parameters"));
    api::FillTwoFigures(in, out, [&](const vrx::Xyz& row) {
      return std::array{own.Whiteness(row), own.Tint(row)};
    });
  });
}

vrx_status VRX_CALL vrx_fit_ganz_griesser(const double* xyz, const double* whiteness, const double* tint,
                                          int32_t count, double parameters[6]) {
  return Call([&](Arrays& arrays) {
    const auto out = arrays.Place(parameters, 1, 6, "parameters");
    const auto in = arrays.Numbers(xyz, count, 3, "xyz");
    const auto whites = arrays.Numbers(whiteness, count, 1, "whiteness");
    const auto tints = tint == nullptr ? std::span<const double>() : arrays.Numbers(tint, count, 1, "tint");
    std::vector<vrx::WhitenessStandard> standards(whites.size());
    for (std::size_t i = 0; i < standards.size(); ++i)
      standards[i] = {api::RowOf(in, i), whites[i], tints.empty() ? vrx::kUnset : tints[i]};
    const vrx::GanzGriesserFit fit = vrx::FitGanzGriesser(standards);
    if (!fit.hasWhiteness)
      throw Refusal{VRX_REFUSED, "xyz: three standards or more, of different saturations, are needed"};
    if (!tints.empty() && !fit.hasTint)
      throw Refusal{VRX_REFUSED, "tint: fewer than three standards have one; null leaves it out"};
    if (const std::string why = fit.Contradiction(); !why.empty()) throw Refusal{VRX_REFUSED, "xyz: " + why};
    const vrx::GanzGriesser& p = fit.parameters;
    std::ranges::copy(std::array{p.P, p.Q, p.C, p.m, p.n, p.k}, out.begin());
  });
}

vrx_status VRX_CALL vrx_fit_correction(const double* reference, const double* other, int32_t count,
                                       int32_t terms, double factors[200]) {
  return Call([&](Arrays& arrays) {
    NeedRange(terms, VRX_TERM_ZERO, 31, "terms");
    const auto out = arrays.Place(factors, 1, api::kFactors, "factors");
    const std::vector<vrx::CReflData> a = api::CurvesFrom(arrays.Numbers(reference, count, 40, "reference"));
    const std::vector<vrx::CReflData> b = api::CurvesFrom(arrays.Numbers(other, count, 40, "other"));
    const auto kinds = static_cast<std::uint32_t>(terms);
    const auto profile = vrx::InstrumentProfile::Fit(a, b, kinds);
    if (!profile || a.size() < vrx::InstrumentProfile::FewestTiles(kinds))
      throw Refusal{VRX_REFUSED, "reference: too few tiles, or a curve that is unset"};
    api::RefuseMisplaced(vrx::InstrumentProfile::FindMisplaced(a, b, kinds));
    for (std::size_t i = 0; i < out.size(); ++i)
      out[i] = profile->FactorsAt(i / vrx::kInstrumentTerms)[i % vrx::kInstrumentTerms];
  });
}

vrx_status VRX_CALL vrx_correct_readings(const double factors[200], const double* curves, int32_t count,
                                         double* corrected) {
  return Call([&](Arrays& arrays) {
    const auto out = arrays.Place(corrected, count, 40, "corrected");
    const auto in = arrays.Numbers(curves, count, 40, "curves");
    const auto given = arrays.Numbers(factors, 1, api::kFactors, "factors");
    std::vector<vrx::InstrumentProfile::Factors> own(static_cast<std::size_t>(vrx::kWavelengths));
    for (std::size_t i = 0; i < given.size(); ++i)
      own[i / vrx::kInstrumentTerms][i % vrx::kInstrumentTerms] = given[i];
    const auto profile = vrx::InstrumentProfile::FromFactors(own);
    const std::vector<vrx::CReflData> readings = api::CurvesFrom(in);
    for (std::size_t i = 0; i < readings.size(); ++i)
      std::ranges::copy(profile->Corrected(readings[i]), out.begin() + static_cast<std::ptrdiff_t>(40 * i));
  });
}
