#include <vrxmath/colorimetry/weighting.h>

#include <cmath>
#include <cstddef>
#include <cstring>
#include <numeric>

#include <vrxmath/foundation/numbers.h>
#include <vrxmath/numeric/elementary.h>
#include <vrxmath/numeric/lagrange.h>
#include <vrxmath/platform/resources.h>

namespace vrx {
namespace {

constexpr int32_t kComponents = 3;

// Matching function `component` (0 to 2) of the observer at 360 + `i` nm. The resource holds, per nanometre
// from 360 nm, the wavelength and the three functions of either observer.
double MatchingFunction(std::span<const std::byte> observers, int32_t observer, int32_t component,
                        int32_t i) {
  constexpr int32_t kColumns = 7;
  const int32_t element = i * kColumns + 1 + (observer == 1 ? kComponents : 0) + component;
  double value;
  std::memcpy(&value, observers.data() + static_cast<std::size_t>(element) * sizeof(double), sizeof value);
  return value;
}

Xyz FunctionsAt(std::span<const std::byte> observers, int32_t observer, int32_t i) {
  return {MatchingFunction(observers, observer, 0, i), MatchingFunction(observers, observer, 1, i),
          MatchingFunction(observers, observer, 2, i)};
}

double RoundedTo3(double value) {
  return RoundToWhole(value * 1000.0) / 1000.0;
}

}  // namespace

SpectralPower ResampleSpectrum(std::span<const double> values, int32_t firstWavelength, int32_t step,
                               SpectralInterpolation interpolation) {
  SpectralPower power{};
  const int32_t last = firstWavelength + step * (static_cast<int32_t>(values.size()) - 1);
  for (int32_t i = 0; i < kPowerSamples; ++i) {
    const int32_t wavelength = kFirstWavelength + i;
    if (wavelength < firstWavelength || wavelength > last) continue;
    const double t = static_cast<double>(wavelength - firstWavelength) / step;
    power[static_cast<std::size_t>(i)] = interpolation == SpectralInterpolation::kLinear
                                             ? InterpolateLinear(values, t)
                                             : InterpolateLagrange(values, t);
  }
  return power;
}

SpectralPower PlanckianSpectrum(double kelvin, double c2) {
  const auto radiance = [&](double wavelength) {
    const double fifth = wavelength * wavelength * wavelength * wavelength * wavelength;
    return 1.0 / (fifth * (Exp(c2 / (wavelength * kelvin)) - 1.0));
  };
  const double reference = radiance(560.0);
  SpectralPower power{};
  for (int32_t i = 0; i < kPowerSamples; ++i) {
    power[static_cast<std::size_t>(i)] = 100.0 * radiance(kFirstWavelength + i) / reference;
  }
  return power;
}

WeightingTable ComputeWeightingTable(const SpectralPower& power, int32_t observer) {
  const auto observers = FindBinaryResource("CMF", "OBSERVERS");
  WeightingTable table{};
  for (int32_t i = 0; i < kPowerSamples; ++i) {
    const LagrangeStencil stencil = StencilAt(static_cast<double>(i) / kWavelengthStep, kWavelengths);
    for (int32_t component = 0; component < kComponents; ++component) {
      const double product =
          power[static_cast<std::size_t>(i)] * MatchingFunction(observers, observer, component, i);
      for (int32_t k = 0; k < stencil.count; ++k) {
        const int32_t node = component * kWavelengths + stencil.first + k;
        table[static_cast<std::size_t>(node)] += stencil.coefficients[static_cast<std::size_t>(k)] * product;
      }
    }
  }
  const auto blockSum = [&](std::size_t component) {
    const auto* block = table.data() + component * kWavelengths;
    return std::accumulate(block, block + kWavelengths, 0.0);
  };
  const double scale = 100.0 / blockSum(1);
  for (std::size_t component = 0; component < kComponents; ++component) {
    table[kTableWhite + component] = RoundedTo3(blockSum(component) * scale);
  }
  for (std::size_t i = 0; i < kTableWhite; ++i) table[i] = RoundedTo3(table[i] * scale);
  return table;
}

Xyz MatchingFunctionsAt(int32_t observer, int32_t wavelength) {
  return FunctionsAt(FindBinaryResource("CMF", "OBSERVERS"), observer, wavelength - kFirstWavelength);
}

Xyz SpectrumToXyz(const SpectralPower& power, int32_t observer) {
  const auto observers = FindBinaryResource("CMF", "OBSERVERS");
  Xyz sum{0.0, 0.0, 0.0};
  for (int32_t i = 0; i < kPowerSamples; ++i) {
    const Xyz functions = FunctionsAt(observers, observer, i);
    const double watts = power[static_cast<std::size_t>(i)];
    sum.X += watts * functions.X;
    sum.Y += watts * functions.Y;
    sum.Z += watts * functions.Z;
  }
  return sum;
}

}  // namespace vrx
