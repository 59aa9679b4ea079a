// Least squares with unknowns that cannot be negative, as amounts, absorptions and scatterings are.

#ifndef VRXMATH_NUMERIC_NONNEGATIVE_LEAST_SQUARES_H_
#define VRXMATH_NUMERIC_NONNEGATIVE_LEAST_SQUARES_H_

#include <cstdint>
#include <span>

#include <vrxmath/export.h>

namespace vrx {

/// The x >= 0 that makes |A x - b| least.
/// In:     A by rows, as many rows as `b` has values and as many columns as `x`; x holds a first guess, of which only
///         counts which values are positive: those of a similar problem save time, zeros are always right.
/// Out:    x; 1, or 0 when A is empty or of another size, or the search did not end (x is then the best so far).
/// Method: active sets (C. L. Lawson and R. J. Hanson, Solving Least Squares Problems, 1974, chapter 23), each set
///         by Householder reflections on columns scaled to unit length. A column that depends on those in use
///         stays 0.
VRX_API uint32_t NonNegativeLeastSquares(std::span<const double> A, std::span<const double> b,
                                         std::span<double> x);

}  // namespace vrx

#endif  // VRXMATH_NUMERIC_NONNEGATIVE_LEAST_SQUARES_H_
