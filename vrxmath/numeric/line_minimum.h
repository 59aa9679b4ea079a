// Minima of functions of one variable: a bracket by golden-ratio steps, then golden section or Brent's
// method.
//
//   const auto f = [](double x) { return (x - 2.0) * (x - 2.0); };
//   const LineMinimum minimum = BrentMinimum(f, BracketMinimum(f, 0.0, 1.0));
//   if (minimum.converged) ...  // minimum.x is 2
//
// A NaN counts as larger than every number, so a function may be undefined outside its domain. Nothing here
// throws or allocates.

#ifndef VRXMATH_NUMERIC_LINE_MINIMUM_H_
#define VRXMATH_NUMERIC_LINE_MINIMUM_H_

#include <cstdint>

#include <vrxmath/export.h>
#include <vrxmath/numeric/function_view.h>

namespace vrx {

using LineFunction = FunctionView<double(double)>;

/// Three abscissas, `b` between `a` and `c`, with f(b) no larger than f(a) and f(c): a minimum lies between
/// the outer two.
struct Bracket {
  double a = 0.0, b = 0.0, c = 0.0;
  double fa = 0.0, fb = 0.0, fc = 0.0;
  int32_t iterations = 0;  ///< steps downhill
  bool found = false;      ///< false when the limit of steps or of the doubles was reached first
};

/// When a line search is done: the bracket reaches no further from the best point than twice `relative` x |x|
/// + `absolute`. Around a smooth minimum values differ by rounding alone within about 1e-8 |x|; asking for
/// less costs time and gains nothing.
struct LineTolerance {
  double relative = 1e-8;
  double absolute = 1e-12;
  int32_t maxIterations = 200;
};

/// The best abscissa that a line search met.
struct LineMinimum {
  double x = 0.0;
  double value = 0.0;  ///< f(x), the least value seen; infinity when nothing but NaN was
  int32_t iterations = 0;
  bool converged = false;
};

/// Walks downhill from `a` and `b` (any two different abscissas, in any order), every step the golden ratio
/// times as long as the last, until the function rises.
[[nodiscard]] VRX_API Bracket BracketMinimum(LineFunction f, double a, double b, int32_t maxIterations = 200);

/// Golden section: shrinks the bracket by 0.618 per evaluation, whatever the function does. Not converged
/// without a bracket that was found.
[[nodiscard]] VRX_API LineMinimum GoldenSection(LineFunction f, const Bracket& bracket,
                                                const LineTolerance& tolerance = {});

/// Brent's method: steps to the vertex of the parabola through the three best points, golden section where
/// that does not converge (R. P. Brent, Algorithms for Minimization without Derivatives, 1973, chapter 5).
[[nodiscard]] VRX_API LineMinimum BrentMinimum(LineFunction f, const Bracket& bracket,
                                               const LineTolerance& tolerance = {});

/// Brent's method with the derivative of f: its sign says which part of the bracket holds the minimum, a
/// secant through two derivatives where it is zero; bisection where that does not converge.
[[nodiscard]] VRX_API LineMinimum BrentMinimum(LineFunction f, LineFunction derivative,
                                               const Bracket& bracket, const LineTolerance& tolerance = {});

}  // namespace vrx

#endif  // VRXMATH_NUMERIC_LINE_MINIMUM_H_
