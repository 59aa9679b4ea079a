// CGradient: the minimum of a smooth function of several variables, from a starting point downhill.
//
//   const auto valley = [](std::span<const double> p) {
//     return (1.0 - p[0]) * (1.0 - p[0]) + 100.0 * (p[1] - p[0] * p[0]) * (p[1] - p[0] * p[0]);
//   };
//   CGradient search;
//   search.SetBounds({-2.0, -2.0}, {2.0, 2.0});  // optional
//   const SearchResult result = search.Minimize(valley, {-1.2, 1.0});
//   if (result.converged) ...                    // result.point is (1, 1)
//
// A NaN counts as larger than every number. The result is the best point met, converged or not.

#ifndef VRXMATH_NUMERIC_GRADIENT_H_
#define VRXMATH_NUMERIC_GRADIENT_H_

#include <cstdint>
#include <span>
#include <vector>

#include <vrxmath/export.h>
#include <vrxmath/numeric/function_view.h>

namespace vrx {

/// The value at a point.
using PointFunction = FunctionView<double(std::span<const double> point)>;
/// Fills `gradient`, one derivative per coordinate of `point`.
using GradientFunction = FunctionView<void(std::span<const double> point, std::span<double> gradient)>;

/// The best point that a search of several variables met.
struct SearchResult {
  std::vector<double> point;
  double value = 0.0;  ///< infinity when nothing but NaN was met
  int32_t iterations = 0;
  bool converged = false;
};

/// Conjugate-gradient descent (Polak and Ribiere, restarted where it loses its way), each line search by
/// bracketing and Brent's method. Converged when a step along the negative gradient itself gains less than
/// the tolerance.
class VRX_API CGradient {
 public:
  /// Keeps every coordinate within lower[k] <= x <= upper[k]; coordinates without an entry are free. Steps
  /// bend along the sides of the box.
  void SetBounds(std::vector<double> lower, std::vector<double> upper);
  /// The gain, relative to the value, at which the search ends; 1e-12 when new.
  void SetTolerance(double tolerance) { tolerance_ = tolerance; }
  /// Line searches allowed; 500 when new.
  void SetIterationLimit(int32_t limit) { limit_ = limit; }

  /// With central differences for the gradient: steps of 6e-6 of a coordinate (of 1 when it is smaller), cut
  /// at the bounds; one-sided where one of the values is not finite.
  [[nodiscard]] SearchResult Minimize(PointFunction f, std::vector<double> start) const;
  [[nodiscard]] SearchResult Minimize(PointFunction f, GradientFunction gradient,
                                      std::vector<double> start) const;

 private:
  class Descent;

  std::vector<double> lower_, upper_;
  double tolerance_ = 1e-12;
  int32_t limit_ = 500;
};

}  // namespace vrx

#endif  // VRXMATH_NUMERIC_GRADIENT_H_
