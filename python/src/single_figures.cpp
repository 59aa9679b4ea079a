// Single figures of colours and lamps, whiteness of an instrument, corrections of readings.

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <string>
#include <vector>

#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <vrxio/csv/correction_file.h>
#include <vrxmath/batch/figure_batch.h>
#include <vrxmath/colorimetry/color_rendering.h>
#include <vrxmath/colorimetry/ganz_griesser.h>
#include <vrxmath/colorimetry/indices.h>
#include <vrxmath/colorimetry/instrument_profile.h>
#include <vrxmath/colorimetry/space_formulas.h>
#include <vrxmath/colorimetry/user_illuminants.h>
#include <vrxmath/colorimetry/weight_tables.h>

#include "python/src/arrays.h"
#include "python/src/blocks.h"
#include "python/src/curves.h"
#include "python/src/module.h"
#include "python/src/names.h"
#include "python/src/views.h"

namespace vrx::python {
namespace {

using Factors = InstrumentProfile::Factors;

double NanIfUnset(double value) {
  return IsUnset(value) ? std::nan("") : value;
}

Xyz XyzAt(const Rows& rows, std::size_t i) {
  const double* const row = rows.Doubles() + i * rows.stride;
  return {row[0], row[1], row[2]};
}

using TwoNumbers = std::optional<std::array<double, 2>>;

// Two figures of every row of X, Y, Z, which `figures` gives where there are any: their values alone would not tell.
template <class FIGURES>
py::object TwoFigures(const py::object& xyz, int threads, const FIGURES& figures) {
  const Rows rows = RowsOf(xyz, "xyz", 3);
  py::array_t<double> result = ResultArray(rows.lead, {2}, py::none());
  double* const target = result.mutable_data();
  InBlocks(rows.count, threads, [&](std::size_t from, std::size_t count) {
    for (std::size_t i = from; i < from + count; ++i) {
      const TwoNumbers two = figures(XyzAt(rows, i));
      for (std::size_t k = 0; k < 2; ++k) target[2 * i + k] = two ? (*two)[k] : std::nan("");
    }
  });
  return WithMasks(result, rows.lead, {&rows});
}

py::object DominantOfColors(const py::object& xyz, const py::object& illuminant, int degrees, int threads) {
  White n;
  const std::int32_t observer = ObserverOf(degrees);
  if (!FindWhite(IlluminantOf(illuminant), observer, n))
    throw py::value_error("illuminant: it has no weights");
  const Xy white = Chromaticity(Xyz{n.X, n.Y, n.Z});
  return TwoFigures(xyz, threads, [&](const Xyz& row) -> TwoNumbers {
    const DominantWavelengthResult found = FindDominantWavelength(Chromaticity(row), white, observer);
    if (IsUnset(found.wavelength)) return {};
    return {{found.wavelength, found.purity}};
  });
}

py::object TemperatureOfLights(const py::object& xyz, int threads) {
  return TwoFigures(xyz, threads, [](const Xyz& row) -> TwoNumbers {
    const ColorTemperature found = FindColorTemperature(Chromaticity(row));
    if (IsUnset(found.kelvin)) return {};
    return {{found.kelvin, found.Duv}};
  });
}

py::dict RenderingOf(const py::object& wavelengths, const py::object& power, bool linear) {
  const Spectrum spectrum = SpectrumOf(wavelengths, power, linear);
  const IlluminantError error = CheckSpectrum(spectrum.power, spectrum.first, spectrum.step);
  if (error != IlluminantError::kNone) throw py::value_error("power: " + IlluminantErrorText(error).ToUtf8());
  const ColorRendering found = FindColorRendering(
      ResampleSpectrum(spectrum.power, spectrum.first, spectrum.step,
                       linear ? SpectralInterpolation::kLinear : SpectralInterpolation::kLagrange));
  py::array_t<double> indices(static_cast<py::ssize_t>(found.R.size()));
  std::ranges::transform(found.R, indices.mutable_data(), NanIfUnset);
  py::dict result;
  result["cct"] = NanIfUnset(found.temperature.kelvin);
  result["duv"] = NanIfUnset(found.temperature.Duv);
  result["reference_distance"] = NanIfUnset(found.referenceDistance);
  result["Ra"] = NanIfUnset(found.Ra);
  result["R"] = indices;
  return result;
}

// From a light to itself everything is constant, and every pair matches.
void RequireTwoLights(vrxIlluminant reference, vrxIlluminant test) {
  if (reference == test) throw py::value_error("test: another illuminant than the reference is expected");
}

py::object InconstancyOf(const py::object& curves, const py::object& reference, const py::object& test,
                         int degrees, const std::string& system, const py::object& wavelengths,
                         const py::object& out, int threads, const py::kwargs& parameters) {
  const CDifferenceSettings settings = SettingsOf(system, parameters);
  const vrxIlluminant first = IlluminantOf(reference), second = IlluminantOf(test);
  RequireTwoLights(first, second);
  const std::int32_t observer = ObserverOf(degrees);
  const Rows rows = CurvesAt(curves, "curves", wavelengths);
  py::array_t<double> result = ResultApart(rows.lead, {}, out, {&rows});
  double* const target = result.mutable_data();
  InBlocks(rows.count, threads, [&](std::size_t from, std::size_t count) {
    const CurveBatch batch = {
        std::span(rows.Doubles() + from * rows.stride, (count - 1) * rows.stride + kSamples), rows.stride};
    InconstancyBatch(first, second, observer, batch, settings, std::span(target + from, count));
    for (std::size_t i = from; i < from + count; ++i) {
      if (IsUnsetRow<1>(rows.Doubles() + i * rows.stride)) FillNaN(target + i, 1);
    }
  });
  return NumberOrArray(result, rows.lead, {&rows}, out);
}

CReflData CurveOfRow(const Rows& rows, std::size_t i) {
  CReflData curve;
  std::copy_n(rows.Doubles() + i * rows.stride, kSamples, curve.begin());
  return curve;
}

py::object MetamerismOf(const py::object& standard, const py::object& samples, const py::object& reference,
                        const py::object& test, int degrees, const std::string& system, double angle,
                        const py::object& wavelengths, int threads, const py::kwargs& parameters) {
  const CDifferenceSettings settings = SettingsOf(system, parameters);
  const vrxIlluminant first = IlluminantOf(reference), second = IlluminantOf(test);
  RequireTwoLights(first, second);
  const std::int32_t observer = ObserverOf(degrees);
  const Rows standards = CurvesAt(standard, "standard", wavelengths);
  const Rows trials = CurvesAt(samples, "samples", wavelengths);
  const RowPairs pairs(standards, "standard", trials, "samples");
  py::array_t<double> result = ResultArray(pairs.Lead(), {}, py::none());
  double* const target = result.mutable_data();
  InBlocks(pairs.Count(), threads, [&](std::size_t from, std::size_t count) {
    for (std::size_t i = from; i < from + count; ++i) {
      const CReflData one = CurveOfRow(standards, pairs.FirstRow(i)),
                      other = CurveOfRow(trials, pairs.SecondRow(i));
      target[i] = NanIfUnset(MetamerismIndex(first, second, observer, one, other, settings, angle));
    }
  });
  return NumberOrArray(result, pairs.Lead(), {&standards, &trials});
}

py::object ContrastRatioOf(const py::object& overBlack, const py::object& overWhite) {
  const Rows black = RowsOf(overBlack, "over_black", 3), white = RowsOf(overWhite, "over_white", 3);
  const RowPairs pairs(black, "over_black", white, "over_white");
  py::array_t<double> result = ResultArray(pairs.Lead(), {}, py::none());
  const auto colorAt = [](const Rows& rows, std::size_t i) {
    const Xyz xyz = XyzAt(rows, i);
    return CTrisValues{xyz.X, xyz.Y, xyz.Z};
  };
  for (std::size_t i = 0; i < pairs.Count(); ++i) {
    const CTrisValues overBlackAt = colorAt(black, pairs.FirstRow(i)),
                      overWhiteAt = colorAt(white, pairs.SecondRow(i));
    result.mutable_data()[i] = NanIfUnset(ContrastRatio(overBlackAt, overWhiteAt));
  }
  return NumberOrArray(result, pairs.Lead(), {&black, &white});
}

py::object WhitesAmong(const py::object& xyz, const py::object& illuminant, int degrees) {
  const vrxIlluminant number = IlluminantOf(illuminant);
  const std::int32_t observer = ObserverOf(degrees);
  const Rows rows = RowsOf(xyz, "xyz", 3);
  py::array_t<bool> result(rows.lead);
  for (std::size_t i = 0; i < rows.count; ++i) {
    const Xyz row = XyzAt(rows, i);
    result.mutable_data()[i] = !IsUnset(row) && IsWithinCieLimits(number, observer, {row.X, row.Y, row.Z});
  }
  if (rows.lead.empty() && !rows.mask) return py::bool_(*result.data());
  return WithMasks(result, rows.lead, {&rows});
}

py::object GanzGriesserOf(const py::object& xyz, const py::object& parameters, int threads) {
  GanzGriesser own;
  if (!parameters.is_none()) {
    const Rows rows = RowsOf(parameters, "parameters", 6);
    const double* const p = rows.Doubles();
    if (!rows.lead.empty()) throw py::value_error("parameters: six numbers are expected: P, Q, C, m, n, k");
    own = {p[0], p[1], p[2], p[3], p[4], p[5]};
  }
  return TwoFigures(xyz, threads, [&](const Xyz& row) -> TwoNumbers {
    const double whiteness = own.Whiteness(row), tint = own.Tint(row);
    if (whiteness == kUnset && tint == kUnset) return {};
    return {{whiteness, tint}};
  });
}

void WarnOfWhiteness(const GanzGriesserFit& fit) {
  constexpr int kCaller = 1;
  std::string text = fit.Doubt();
  for (const std::size_t i : fit.Outlying()) {
    if (!text.empty()) text += "; ";
    text.append("standard ")
        .append(std::to_string(i))
        .append(" is farther from its certificate than an eye can tell");
  }
  if (!text.empty() && PyErr_WarnEx(PyExc_UserWarning, text.c_str(), kCaller) != 0)
    throw py::error_already_set();
}

py::array_t<double> FittedGanzGriesser(const py::object& xyz, const std::vector<double>& whiteness,
                                       const std::vector<double>& tint) {
  const Rows rows = RowsOf(xyz, "xyz", 3);
  if (whiteness.size() != rows.count) throw py::value_error("whiteness: as many as colours are expected");
  if (!tint.empty() && tint.size() != rows.count)
    throw py::value_error("tint: as many as colours are expected, or none");
  std::vector<WhitenessStandard> standards(rows.count);
  for (std::size_t i = 0; i < rows.count; ++i)
    standards[i] = {XyzAt(rows, i), whiteness[i], tint.empty() ? kUnset : tint[i]};
  const GanzGriesserFit fit = FitGanzGriesser(standards);
  if (!fit.hasWhiteness)
    throw py::value_error("xyz: three standards or more, of different saturations, are expected");
  if (!tint.empty() && !fit.hasTint)
    throw py::value_error("tint: fewer than three standards have one; leave it out");
  if (const std::string why = fit.Contradiction(); !why.empty()) throw py::value_error("xyz: " + why);
  WarnOfWhiteness(fit);
  const GanzGriesser& p = fit.parameters;
  py::array_t<double> result(6);
  std::ranges::copy(std::array{p.P, p.Q, p.C, p.m, p.n, p.k}, result.mutable_data());
  return result;
}

std::vector<CReflData> CurveList(const py::object& curves, const char* name, const py::object& wavelengths) {
  const Rows rows = CurvesAt(curves, name, wavelengths);
  std::vector<CReflData> list;
  for (std::size_t i = 0; i < rows.count; ++i) list.push_back(CurveOfRow(rows, i));
  return list;
}

py::array_t<double> FittedCorrection(const py::object& reference, const py::object& other,
                                     const std::vector<std::string>& terms, const py::object& wavelengths) {
  std::uint32_t bits = 0;
  for (const std::string& term : terms) {
    const auto found = std::ranges::find(io::kCorrectionTerms, term);
    if (found == io::kCorrectionTerms.end())
      throw py::value_error("terms: \"" + term +
                            "\" is none of zero, scale, nonlinear, wavelength, bandwidth");
    bits |= 1U << static_cast<std::uint32_t>(found - io::kCorrectionTerms.begin());
  }
  const std::vector<CReflData> ofReference = CurveList(reference, "reference", wavelengths);
  const std::vector<CReflData> ofOther = CurveList(other, "other", wavelengths);
  const auto profile = InstrumentProfile::Fit(ofReference, ofOther, bits);
  if (!profile || ofReference.size() < InstrumentProfile::FewestTiles(bits))
    throw py::value_error(
        "reference: the same tiles by both are expected, two more than terms, all measured");
  const std::vector<MisplacedTile> misplaced = InstrumentProfile::FindMisplaced(ofReference, ofOther, bits);
  if (!misplaced.empty())
    throw py::value_error("other: " + MisplacedTile::Describe(misplaced.front(),
                                                              std::to_string(misplaced.front().tile),
                                                              std::to_string(misplaced.front().looksLike)));
  py::array_t<double> result({kSamples, kInstrumentTerms});
  for (std::size_t i = 0; i < kSamples; ++i)
    std::ranges::copy(profile->FactorsAt(i), result.mutable_data() + i * kInstrumentTerms);
  return result;
}

py::object CorrectedCurves(const py::object& curves, const py::object& factors, const py::object& wavelengths,
                           const py::object& out) {
  const Rows given = RowsOf(factors, "factors", kInstrumentTerms);
  std::vector<Factors> own(given.count);
  for (std::size_t i = 0; i < given.count; ++i)
    std::copy_n(given.Doubles() + i * given.stride, kInstrumentTerms, own[i].begin());
  const auto profile = InstrumentProfile::FromFactors(own);
  if (!profile) throw py::value_error("factors: finite numbers of shape (40, 5) are expected");
  const Rows rows = CurvesAt(curves, "curves", wavelengths);
  py::array_t<double> result = ResultApart(rows.lead, {kSamples}, out, {&rows});
  for (std::size_t i = 0; i < rows.count; ++i)
    std::ranges::copy(profile->Corrected(CurveOfRow(rows, i)), result.mutable_data() + i * kSamples);
  return WithMasks(result, rows.lead, {&rows});
}

}  // namespace

void DefineSingleFigures(py::module_& module) {
  module.def(
      "dominant_wavelength", &DominantOfColors, py::arg("xyz"), py::arg("illuminant") = "D65",
      py::arg("observer") = 10, py::kw_only(), py::arg("threads") = 1,
      R"(Dominant wavelength in nm, negative for the complementary one of a purple, and excitation purity (CIE 15).

NaN for a colour with the chromaticity of the white, and for black.

Parameters
----------
xyz : array_like, shape (..., 3)
illuminant, observer
    The conditions under which the values were computed.

Returns
-------
numpy.ndarray, shape (..., 2)

Examples
--------
>>> vrx.dominant_wavelength([40.0, 30.0, 10.0], "D65", 2).round(3).tolist()
[594.635, 0.559]
)");
  module.def("color_temperature", &TemperatureOfLights, py::arg("xyz"), py::kw_only(), py::arg("threads") = 1,
             R"(Correlated colour temperature in K and Duv of lights (CIE 15).

NaN farther than 0.05 from the Planckian locus in CIE 1960 u, v.

Parameters
----------
xyz : array_like, shape (..., 3)
    By the 2 degree observer, in any unit.

Returns
-------
numpy.ndarray, shape (..., 2)

Examples
--------
>>> vrx.color_temperature(vrx.white_point("D65", 2)).round(3).tolist()
[6503.667, 0.003]
)");
  module.def("color_rendering", &RenderingOf, py::arg("wavelengths"), py::arg("power"), py::kw_only(),
             py::arg("linear") = false,
             R"(Colour rendering indices of a lamp (CIE 13.3).

Parameters
----------
wavelengths, power : array_like, shape (n,)
    Relative power every 1, 5 or 10 nm, over 400 to 700 nm at least.
linear : bool
    Interpolate to 1 nm by straight lines and not by cubics.

Returns
-------
dict
    ``"cct"``, ``"duv"``, ``"reference_distance"`` (in CIE 1960 u, v; the indices are defined up to 0.0054), ``"Ra"``, and
    ``"R"``, an array of R1 to R14. All NaN for a lamp without a colour temperature.

Examples
--------
>>> round(vrx.color_rendering(range(380, 790, 10), [1.0] * 41)["Ra"], 1)
95.3
)");
  module.def(
      "inconstancy", &InconstancyOf, py::arg("curves"), py::arg("reference") = "D65", py::arg("test") = "A",
      py::arg("observer") = 10, py::arg("system") = "cie2000", py::kw_only(),
      py::arg("wavelengths") = py::none(), py::arg("out") = py::none(), py::arg("threads") = 1,
      R"(How far the colour of a curve drifts from one illuminant to another, adapted completely by CAT16.

Parameters
----------
curves : array_like, shape (..., 40)
system : str
    The difference system, whose parameters may follow.
wavelengths, out, threads
    As for :func:`tristimulus`.

Returns
-------
float, or numpy.ndarray, shape (...)

Examples
--------
>>> vrx.inconstancy([50.0] * 40) < 0.02
True
)");
  module.def(
      "metamerism", &MetamerismOf, py::arg("standard"), py::arg("samples"), py::arg("reference") = "D65",
      py::arg("test") = "A", py::arg("observer") = 10, py::arg("system") = "lab", py::kw_only(),
      py::arg("angle") = 45.0, py::arg("wavelengths") = py::none(), py::arg("threads") = 1,
      R"(Special index of metamerism, change of illuminant (CIE 15): how far curves that match under one illuminant differ under another.

A difference that there is under the reference is corrected first, by the ratios of X, Y and Z.

Parameters
----------
standard, samples : array_like, shape (..., 40)
    Pairs of curves, whose leading axes broadcast.
reference, test : str, int or Illuminant
system : str
    The difference system, whose parameters may follow.
angle : float
    The aspecular measuring angle in degrees, for the systems whose weights depend on it.
wavelengths, threads
    As for :func:`tristimulus`.

Returns
-------
float, or numpy.ndarray, shape (...)

Examples
--------
>>> vrx.metamerism([42.0] * 40, [40.0] * 40) < 1e-9
True
)");
  module.def(
      "contrast_ratio", &ContrastRatioOf, py::arg("over_black"), py::arg("over_white"),
      R"(Contrast ratio of a coating: Y over black by Y over white, 1 for one that hides completely (ISO 6504-3).

Parameters
----------
over_black, over_white : array_like, shape (3,) or (..., 3)
    X, Y, Z of the coating over either.

Returns
-------
float, or numpy.ndarray, shape (...)

Examples
--------
>>> vrx.contrast_ratio([70.0, 74.4, 80.0], [76.0, 80.0, 86.0])
0.93
)");
  module.def(
      "is_cie_white", &WhitesAmong, py::arg("xyz"), py::arg("illuminant") = "D65", py::arg("observer") = 10,
      R"(Whether colours lie where CIE whiteness and tint mean something: 40 < W < 5 Y - 280 and -3 < T < 3.

Returns
-------
bool, or numpy.ndarray of bool, shape (...)

Examples
--------
>>> vrx.is_cie_white(vrx.white_point())
True
)");
  module.def("ganz_griesser", &GanzGriesserOf, py::arg("xyz"), py::arg("parameters") = py::none(),
             py::kw_only(), py::arg("threads") = 1,
             R"(Ganz-Griesser whiteness and tint under D65 and 10 degrees.

Parameters
----------
xyz : array_like, shape (..., 3)
parameters : array_like, shape (6,), optional
    P, Q, C, m, n, k of the instrument, as :func:`fit_ganz_griesser` gives them; the nominal ones if not given.

Returns
-------
numpy.ndarray, shape (..., 2)

Examples
--------
>>> vrx.ganz_griesser(vrx.white_point("D65", 10)).round(1).tolist()
[99.8, 1.7]
)");
  module.def(
      "fit_ganz_griesser", &FittedGanzGriesser, py::arg("xyz"), py::arg("whiteness"),
      py::arg("tint") = std::vector<double>(),
      R"(The parameters of Ganz-Griesser whiteness and tint of an instrument, from standards with certificates.

Three standards or more, of different saturations. Without ``tint`` m, n and k are the nominal ones. Certificates by which
whiteness falls with saturation, or tint runs backwards, are refused; a warning names standards that are farther from
theirs than an eye can tell (5 units of whiteness, 0.5 of tint), and a scale that looks like another whiteness, as CIE's.

Returns
-------
numpy.ndarray, shape (6,)
)");
  module.def(
      "fit_correction", &FittedCorrection, py::arg("reference"), py::arg("other"),
      py::arg("terms") = std::vector<std::string>{"zero", "scale", "wavelength"}, py::kw_only(),
      py::arg("wavelengths") = py::none(),
      R"(What makes readings of one instrument those of a reference, from tiles that both measured (Berns and Petersen 1988).

Parameters
----------
reference, other : array_like, shape (n, 40)
    The same tiles in the same order; two more than terms at least. A reading that looks like another tile's is refused.
terms : sequence of str
    ``"zero"``, ``"scale"``, ``"nonlinear"``, ``"wavelength"``, ``"bandwidth"``.
wavelengths
    As for :func:`tristimulus`.

Returns
-------
numpy.ndarray, shape (40, 5)
    Factors for :func:`corrected`.
)");
  module.def("corrected", &CorrectedCurves, py::arg("curves"), py::arg("factors"), py::kw_only(),
             py::arg("wavelengths") = py::none(), py::arg("out") = py::none(),
             R"(Curves of an instrument as the reference of a correction would have them.

Parameters
----------
curves : array_like, shape (..., 40)
factors : array_like, shape (40, 5)
wavelengths, out
    As for :func:`tristimulus`.

Returns
-------
numpy.ndarray, shape (..., 40)

Examples
--------
>>> reference = np.array([[level] * 40 for level in (5.0, 40.0, 80.0)])
>>> factors = vrx.fit_correction(reference, 0.98 * reference, ["scale"])
>>> vrx.corrected(0.98 * reference, factors)[:, 0].round(9).tolist()
[5.0, 40.0, 80.0]
)");
}

}  // namespace vrx::python
