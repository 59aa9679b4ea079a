// Lagrange interpolation on an even grid, as CIE 15 and ASTM E2022 use it for spectra.

#ifndef VRXMATH_NUMERIC_LAGRANGE_H_
#define VRXMATH_NUMERIC_LAGRANGE_H_

#include <array>
#include <cstdint>
#include <span>

#include <vrxmath/export.h>

namespace vrx {

/// The nodes and coefficients that give the value at one place between the nodes of an even grid:
/// value = sum of coefficients[k] * y[first + k] over k < count.
struct LagrangeStencil {
  int32_t first = 0;
  int32_t count = 0;                     ///< 1 at a node, 3 in the first and the last interval, 4 elsewhere
  std::array<double, 4> coefficients{};  ///< they add up to 1
};

/// The stencil at `t` steps from the first of `nodes` nodes: the cubic through the two nodes on each side,
/// the quadratic through the three nearest nodes in the first and the last interval, the node alone at a
/// node. Range: nodes >= 3, 0 <= t <= nodes - 1; `t` outside is moved to the nearer end.
[[nodiscard]] VRX_API LagrangeStencil StencilAt(double t, int32_t nodes);

/// The value of the samples `y` (at least 3, on an even grid) at `t` steps from the first one, by StencilAt.
[[nodiscard]] VRX_API double InterpolateLagrange(std::span<const double> y, double t);

/// The same by the straight line between the two nearest samples (at least 2).
[[nodiscard]] VRX_API double InterpolateLinear(std::span<const double> y, double t);

}  // namespace vrx

#endif  // VRXMATH_NUMERIC_LAGRANGE_H_
