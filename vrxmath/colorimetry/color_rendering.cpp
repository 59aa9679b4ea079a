#include <vrxmath/colorimetry/color_rendering.h>

#include <cmath>
#include <cstddef>
#include <cstdint>

#include <vrxmath/colorimetry/rendering_samples.h>
#include <vrxmath/colorimetry/space_formulas.h>
#include <vrxmath/numeric/elementary.h>

namespace vrx {
namespace {

// The factors of the adaptation of CIE 13.3: what von Kries's law makes of the chromaticity.
struct RenderingCd {
  double c, d;
};

RenderingCd CdOf(const Uv1960& uv) {
  return {(4.0 - uv.u - 10.0 * uv.v) / uv.v, (1.708 * uv.v + 0.404 - 1.481 * uv.u) / uv.v};
}

// A light, with the colours of the samples in it on the scale on which it has Y = 100 itself.
struct RenderingLight {
  Uv1960 uv;
  std::array<Xyz, kRenderingSamples> samples;
};

double SampleReflectance(std::size_t sample, std::int32_t i) {
  const auto& row = kRenderingReflectances[sample];
  const std::int32_t below = i / kRenderingStep, rest = i % kRenderingStep;
  const double at = row[below];
  const double part = rest == 0 ? 0.0 : (row[below + 1] - at) * rest / kRenderingStep;
  return (at + part) / 1000.0;
}

RenderingLight LightOf(const SpectralPower& power) {
  const Xyz white = SpectrumToXyz(power, kObserver2);
  RenderingLight light{Cie1960(white), {}};
  for (std::size_t s = 0; s < light.samples.size(); ++s) {
    SpectralPower reflected = power;
    for (std::int32_t i = 0; i < kPowerSamples; ++i)
      reflected[static_cast<std::size_t>(i)] *= SampleReflectance(s, i);
    const Xyz xyz = SpectrumToXyz(reflected, kObserver2);
    const double scale = 100.0 / white.Y;
    light.samples[s] = {xyz.X * scale, xyz.Y * scale, xyz.Z * scale};
  }
  return light;
}

// U*, V*, W* of a sample whose chromaticity is `uv`, about the white of the reference.
std::array<double, 3> UvwOf(double Y, const Uv1960& uv, const Uv1960& white) {
  const double W = 25.0 * CubeRoot(Y) - 17.0;
  return {13.0 * W * (uv.u - white.u), 13.0 * W * (uv.v - white.v), W};
}

// A chromaticity in the lamp as it looks to an eye that is adapted to the reference.
Uv1960 AdaptedTo(const Uv1960& uv, const RenderingCd& lamp, const RenderingCd& reference) {
  const RenderingCd own = CdOf(uv);
  const double c = reference.c / lamp.c * own.c, d = reference.d / lamp.d * own.d;
  const double divisor = 16.518 + 1.481 * c - d;
  return {(10.872 + 0.404 * c - 4.0 * d) / divisor, 5.520 / divisor};
}

double RenderingIndex(const Xyz& inLamp, const Xyz& inReference, const Uv1960& lampWhite,
                      const Uv1960& white) {
  const Uv1960 adapted = AdaptedTo(Cie1960(inLamp), CdOf(lampWhite), CdOf(white));
  const auto a = UvwOf(inLamp.Y, adapted, white);
  const auto b = UvwOf(inReference.Y, Cie1960(inReference), white);
  double sum = 0.0;
  for (std::size_t k = 0; k < a.size(); ++k) sum += (a[k] - b[k]) * (a[k] - b[k]);
  return 100.0 - 4.6 * std::sqrt(sum);
}

}  // namespace

ColorRendering FindColorRendering(const SpectralPower& power) {
  constexpr double kFirstDaylight = 5000.0, kLastDaylight = 25000.0, kC2 = 1.4388e7;
  constexpr std::size_t kGeneral = 8;
  ColorRendering result;
  result.R.fill(kUnset);
  const ColorTemperature found = FindColorTemperature(Chromaticity(SpectrumToXyz(power, kObserver2)));
  if (IsUnset(found.kelvin) || found.kelvin > kLastDaylight) return result;
  result.temperature = found;
  const RenderingLight lamp = LightOf(power);
  const RenderingLight reference = LightOf(
      found.kelvin < kFirstDaylight ? PlanckianSpectrum(found.kelvin, kC2) : DaylightSpectrum(found.kelvin));
  const double du = lamp.uv.u - reference.uv.u, dv = lamp.uv.v - reference.uv.v;
  result.referenceDistance = std::sqrt(du * du + dv * dv);
  result.Ra = 0.0;
  for (std::size_t s = 0; s < result.R.size(); ++s) {
    result.R[s] = RenderingIndex(lamp.samples[s], reference.samples[s], lamp.uv, reference.uv);
    if (s < kGeneral) result.Ra += result.R[s] / kGeneral;
  }
  return result;
}

}  // namespace vrx
