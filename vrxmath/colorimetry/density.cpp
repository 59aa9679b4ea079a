#include <vrxmath/colorimetry/density.h>

#include <cmath>
#include <cstddef>

#include <vrxmath/colorimetry/space_formulas.h>
#include <vrxmath/foundation/numbers.h>
#include <vrxmath/foundation/units.h>
#include <vrxmath/numeric/elementary.h>

namespace vrx {
namespace {

using Weights = double[40];

// The antilogarithms of ISO 5-3, 360 to 750 nm, red, green and blue of the statuses A, E, M and T; 100 at the peak.
constexpr Weights kStatus[][3] = {
    {{0,     0,     0,    0,    0,    0,   0,    0,    0,    0,    0,    0,     0,   0,
      0,     0,     0,    0,    0,    0,   0,    0,    0,    0,    0.37, 43.45, 100, 74.3,
      40.18, 19.32, 7.94, 3.56, 1.46, 0.6, 0.24, 0.09, 0.04, 0.01, 0.01, 0},
     {0,     0,    0,    0,    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0.04, 6.64, 60.53, 100, 80.54, 44.06,
      16.63, 4.06, 0.58, 0.04, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,    0,    0,     0,   0,     0},
     {0, 0, 0, 0, 0, 0, 4, 65.92, 100, 81.66, 41.69, 10.96, 0.79, 0.04, 0, 0, 0, 0, 0, 0,
      0, 0, 0, 0, 0, 0, 0, 0,     0,   0,     0,     0,     0,    0,    0, 0, 0, 0, 0, 0}},
    {{0,    0,    0,    0,     0,   0,     0,     0,  0,  0, 0,   0,   0,   0,    0,    0,    0, 0, 0, 0,
      0.01, 0.06, 0.45, 29.99, 100, 84.92, 54.95, 25, 10, 5, 1.5, 0.5, 0.3, 0.15, 0.05, 0.01, 0, 0, 0, 0},
     {0,     0,     0,    0,   0,   0,    0,    0, 0, 0, 0, 0.01, 1, 5, 27.99, 68.08, 92.04, 100, 87.9, 66.07,
      41.98, 21.98, 8.99, 2.5, 0.7, 0.09, 0.01, 0, 0, 0, 0, 0,    0, 0, 0,     0,     0,     0,   0,    0},
     {0,   0.01, 0.27, 2.7, 13, 29.99, 59.98, 82.04, 100, 90.99, 76.03, 46.99, 17.99, 6,
      0.8, 0.05, 0.01, 0,   0,  0,     0,     0,     0,   0,     0,     0,     0,     0,
      0,   0,    0,    0,   0,  0,     0,     0,     0,   0,     0,     0}},
    {{0, 0, 0, 0, 0, 0, 0,    0,     0,   0,     0,     0,     0,   0,   0,    0,    0,    0,    0,    0,
      0, 0, 0, 0, 0, 0, 0.13, 30.13, 100, 79.25, 37.84, 17.86, 7.5, 3.1, 1.26, 0.49, 0.19, 0.07, 0.03, 0.01},
     {0,    0,     0,     0,     0,   0,     0,     0,     0,    0,    0,    0.01, 0.16, 1.43,
      6.37, 18.71, 42.27, 74.47, 100, 98.86, 65.77, 28.71, 8.22, 1.49, 0.17, 0.01, 0,    0,
      0,    0,     0,     0,     0,   0,     0,     0,     0,    0,    0,    0},
     {0, 0, 0, 0, 0, 0.13, 12.91, 42.85, 74.3, 100, 90.16, 55.34, 22.03, 5.53, 0.98, 0.07, 0, 0, 0, 0,
      0, 0, 0, 0, 0, 0,    0,     0,     0,    0,   0,     0,     0,     0,    0,    0,    0, 0, 0, 0}},
    {{0, 0,    0,    0,     0,   0,     0,     0,  0,  0, 0,   0,   0,   0,    0,    0,    0, 0, 0, 0,
      0, 0.06, 0.45, 29.99, 100, 84.92, 54.95, 25, 10, 5, 1.5, 0.5, 0.3, 0.15, 0.05, 0.01, 0, 0, 0, 0},
     {0,     0,     0,    0,   0,   0,    0,    0, 0, 0, 0, 0, 1, 5, 27.99, 68.08, 92.04, 100, 87.9, 66.07,
      41.98, 21.98, 8.99, 2.5, 0.7, 0.09, 0.01, 0, 0, 0, 0, 0, 0, 0, 0,     0,     0,     0,   0,    0},
     {0.03,  0.1,   0.3, 1.5, 6,    16.98, 39.99, 59.98, 82.04, 93.97, 100, 97.05, 84.92, 65.01,
      39.99, 17.99, 5,   0.2, 0.04, 0,     0,     0,     0,     0,     0,   0,     0,     0,
      0,     0,     0,   0,   0,    0,     0,     0,     0,     0,     0,   0}}};
constexpr Weights kVisual = {0,    0,    0,    0,     0.01,  0.02,  0.08,  0.28,  0.65,  1.23,
                             2.22, 3.82, 6.58, 10.99, 18.88, 32.58, 50.35, 66.83, 80.35, 90.57,
                             97.5, 100,  97.5, 90.36, 79.8,  67.14, 53.83, 39.17, 27.1,  17.3,
                             10.3, 5.61, 3.09, 1.54,  0.8,   0.42,  0.22,  0.11,  0.05,  0.05};

double DensityBy(const DensityWeights& weights, std::size_t filter, const CReflData& curve) {
  double light = 0.0;
  for (std::int32_t i = 0; i < kWavelengths; ++i) light += weights.products[filter][i] * curve[i];
  return light > 0.0 ? -Log10(light / weights.whole[filter]) : kUnset;
}

double LightnessOf(double value, double white) {
  Lab lab = XyzToLabOnly(Xyz{value, value, value}, White{white, white, white});
  return lab.L;
}

// The squared way between two colours.
double SquaredWay(const Xyz& from, const Xyz& to, const White& white) {
  const double x = LightnessOf(to.X, white.X) - LightnessOf(from.X, white.X);
  const double y = LightnessOf(to.Y, white.Y) - LightnessOf(from.Y, white.Y);
  const double z = LightnessOf(to.Z, white.Z) - LightnessOf(from.Z, white.Z);
  return x * x + y * y + z * z;
}

}  // namespace

DensityWeights colorimetry_internal::DensityWeightsOf(DensityStatus status) {
  const auto& filters = kStatus[static_cast<std::int32_t>(status)];
  DensityWeights weights{{filters[0], filters[1], filters[2], kVisual}, {}};
  for (std::size_t k = 0; k < 4; ++k) {
    double all = 0.0;
    for (std::int32_t i = 0; i < kWavelengths; ++i) all += weights.products[k][i];
    weights.whole[k] = 100.0 * all;
  }
  return weights;
}

Densities DensitiesOf(const CReflData& curve, DensityStatus status) {
  if (IsUnset(curve[0])) return {};
  const DensityWeights weights = colorimetry_internal::DensityWeightsOf(status);
  return {DensityBy(weights, 0, curve), DensityBy(weights, 1, curve), DensityBy(weights, 2, curve),
          DensityBy(weights, 3, curve)};
}

double ToneValue(double paper, double tint, double solid, double n) {
  if (IsUnset(paper) || IsUnset(tint) || IsUnset(solid) || !(solid > paper) || !(n >= 1.0)) return kUnset;
  const auto covered = [&](double density) { return 1.0 - Power(10.0, (paper - density) / n); };
  return 100.0 * covered(tint) / covered(solid);
}

double SpotColorToneValue(const Xyz& paper, const Xyz& tint, const Xyz& solid, const White& white) {
  if (IsUnset(paper) || IsUnset(tint) || IsUnset(solid)) return kUnset;
  const double whole = SquaredWay(paper, solid, white);
  if (!(whole > 0.0)) return kUnset;
  return 100.0 * std::sqrt(SquaredWay(paper, tint, white) / whole);
}

}  // namespace vrx
