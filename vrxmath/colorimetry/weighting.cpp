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

// The components of daylight, 360 to 780 nm every 10 nm: mean, first and second (CIE 15).
constexpr double kDaylight[][3] = {
    {61.5, 38, 5.3},     {68.8, 42.4, 6.1},   {63.4, 38.5, 3},     {65.8, 35, 1.2},     {94.8, 43.4, -1.1},
    {104.8, 46.3, -0.5}, {105.9, 43.9, -0.7}, {96.8, 37.1, -1.2},  {113.9, 36.7, -2.6}, {125.6, 35.9, -2.9},
    {125.5, 32.6, -2.8}, {121.3, 27.9, -2.6}, {121.3, 24.3, -2.6}, {113.5, 20.1, -1.8}, {113.1, 16.2, -1.5},
    {110.8, 13.2, -1.3}, {106.5, 8.6, -1.2},  {108.8, 6.1, -1},    {105.3, 4.2, -0.5},  {104.4, 1.9, -0.3},
    {100, 0, 0},         {96, -1.6, 0.2},     {95.1, -3.5, 0.5},   {89.1, -3.5, 2.1},   {90.5, -5.8, 3.2},
    {90.3, -7.2, 4.1},   {88.4, -8.6, 4.7},   {84, -9.5, 5.1},     {85.1, -10.9, 6.7},  {81.9, -10.7, 7.3},
    {82.6, -12, 8.6},    {84.9, -14, 9.8},    {81.3, -13.6, 10.2}, {71.9, -12, 8.3},    {74.3, -13.3, 9.6},
    {76.4, -12.9, 8.5},  {63.3, -10.6, 7},    {71.7, -11.6, 7.6},  {77, -12.2, 8},      {65.2, -10.2, 6.7},
    {47.7, -7.8, 5.2},   {68.6, -11.2, 7.4},  {65, -10.4, 6.8},
};

double RoundedTo3(double value) {
  return RoundToWhole(value * 1000.0) / 1000.0;
}

// The products of power and matching functions at every nanometre, shared among the nodes of a grid from 360 nm on. `blocks`:
// three sums for each node, block by block, 0 before. What lies above the last node goes to that node.
void ShareProducts(const SpectralPower& power, int32_t observer, int32_t step, int32_t nodes,
                   std::span<double> blocks) {
  const auto observers = FindBinaryResource("CMF", "OBSERVERS");
  for (int32_t i = 0; i < kPowerSamples; ++i) {
    const LagrangeStencil stencil = StencilAt(static_cast<double>(i) / step, nodes);
    for (int32_t component = 0; component < kComponents; ++component) {
      const double product =
          power[static_cast<std::size_t>(i)] * MatchingFunction(observers, observer, component, i);
      for (int32_t k = 0; k < stencil.count; ++k) {
        const int32_t node = component * nodes + stencil.first + k;
        blocks[static_cast<std::size_t>(node)] += stencil.coefficients[static_cast<std::size_t>(k)] * product;
      }
    }
  }
}

double SumOf(std::span<const double> block) {
  return std::accumulate(block.begin(), block.end(), 0.0);
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

SpectralPower DaylightSpectrum(double kelvin) {
  SpectralPower power{};
  if (!(kelvin >= 4000.0 && kelvin <= 25000.0)) return power;
  const double t = 1000.0 / kelvin;
  const double x = kelvin <= 7000.0 ? ((-4.6070 * t + 2.9678) * t + 0.09911) * t + 0.244063
                                    : ((-2.0064 * t + 1.9018) * t + 0.24748) * t + 0.237040;
  const double y = (-3.0 * x + 2.870) * x - 0.275;
  const double divisor = 0.0241 + 0.2562 * x - 0.7341 * y;
  const double first = (-1.3515 - 1.7703 * x + 5.9114 * y) / divisor;
  const double second = (0.0300 - 31.4424 * x + 30.0717 * y) / divisor;
  const auto at = [&](std::size_t node) {
    return kDaylight[node][0] + first * kDaylight[node][1] + second * kDaylight[node][2];
  };
  for (std::size_t i = 0; i < power.size(); ++i) {
    constexpr std::size_t kStep = 10;
    const std::size_t node = i / kStep, rest = i % kStep;
    power[i] = at(node);
    if (rest > 0) power[i] += (at(node + 1) - power[i]) * static_cast<double>(rest) / kStep;
  }
  return power;
}

WeightingTable ComputeWeightingTable(const SpectralPower& power, int32_t observer) {
  WeightingTable table{};
  const auto blocks = std::span(table).first<kTableWhite>();
  ShareProducts(power, observer, kWavelengthStep, kWavelengths, blocks);
  const auto blockSum = [&](std::size_t component) {
    return SumOf(blocks.subspan(component * kWavelengths, kWavelengths));
  };
  const double scale = 100.0 / blockSum(1);
  for (std::size_t component = 0; component < kComponents; ++component) {
    table[kTableWhite + component] = RoundedTo3(blockSum(component) * scale);
  }
  for (double& weight : blocks) weight = RoundedTo3(weight * scale);
  return table;
}

std::vector<double> ComputeFineWeights(const SpectralPower& power, int32_t observer, int32_t interval) {
  const auto nodes = static_cast<std::size_t>(FineSamples(interval));
  std::vector<double> weights(kComponents * nodes);
  ShareProducts(power, observer, interval, FineSamples(interval), weights);
  const double scale = 100.0 / SumOf(std::span(weights).subspan(nodes, nodes));
  for (double& weight : weights) weight *= scale;
  return weights;
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
