#include <vrxmath/numeric/lagrange.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace vrx {

LagrangeStencil StencilAt(double t, int32_t nodes) {
  t = std::clamp(t, 0.0, static_cast<double>(nodes - 1));
  const int32_t below = static_cast<int32_t>(t);
  LagrangeStencil stencil;
  if (t == below) {
    stencil.first = below;
    stencil.count = 1;
    stencil.coefficients[0] = 1.0;
    return stencil;
  }
  const bool atEnd = below == 0 || below == nodes - 2;
  stencil.count = atEnd ? 3 : 4;
  stencil.first = std::clamp(below - 1, 0, nodes - stencil.count);
  const double s = t - stencil.first;
  for (int32_t k = 0; k < stencil.count; ++k) {
    double product = 1.0;
    for (int32_t j = 0; j < stencil.count; ++j) {
      if (j != k) product *= (s - j) / (k - j);
    }
    stencil.coefficients[static_cast<std::size_t>(k)] = product;
  }
  return stencil;
}

double InterpolateLagrange(std::span<const double> y, double t) {
  const LagrangeStencil stencil = StencilAt(t, static_cast<int32_t>(y.size()));
  const auto first = static_cast<std::size_t>(stencil.first), count = static_cast<std::size_t>(stencil.count);
  double sum = 0.0;
  for (std::size_t k = 0; k < count; ++k) sum += stencil.coefficients[k] * y[first + k];
  return sum;
}

double InterpolateLinear(std::span<const double> y, double t) {
  t = std::clamp(t, 0.0, static_cast<double>(y.size() - 1));
  const std::size_t below = std::min(static_cast<std::size_t>(t), y.size() - 2);
  const double fraction = t - static_cast<double>(below);
  return y[below] + fraction * (y[below + 1] - y[below]);
}

}  // namespace vrx
