// Elementary functions with the same bits on every machine. The C library's own differ between vendors,
// versions and, where it picks fused-multiply variants at run time, between processors; a colour difference
// must not. These use only + - * / and sqrt of IEEE 754 double precision, comparisons and integer arithmetic
// on the bits, so every conforming compiler gives one answer.
//
// They hold no state, allocate nothing, raise nothing and may run on any number of threads. They assume the
// default rounding direction (to nearest) and subnormals that are not flushed; errno is never set and the
// floating-point exception flags carry no meaning.
//
// Each function states its largest error in units in the last place (ULP) of the exact result, 0.5 being the
// best possible: the bound that follows from the error terms, and the worst seen among several million random
// arguments, compared with 113-bit references.
//
// A NaN argument gives the quiet NaN of std::numeric_limits, whatever its payload, unless noted.

#ifndef VRXMATH_NUMERIC_ELEMENTARY_H_
#define VRXMATH_NUMERIC_ELEMENTARY_H_

#include <vrxmath/export.h>

namespace vrx {

/// Cube root, the lightness response of CIE L*a*b* and L*u*v*.
/// Range: every double, subnormals included. Odd: CubeRoot(-x) == -CubeRoot(x).
/// Error: 0.5003 ULP proven, 0.5001 seen; exact where the root is a double.
/// Edges: +-0 and +-infinity return themselves.
[[nodiscard]] VRX_API double CubeRoot(double x) noexcept;

/// e raised to x.
/// Range: every double; subnormal results are rounded once.
/// Error: 0.52 ULP proven, 0.512 seen.
/// Edges: +infinity above 709.782712893384, +0 below -745.1332191019412 and at -infinity; Exp(+-0) = 1.
[[nodiscard]] VRX_API double Exp(double x) noexcept;

/// Natural logarithm.
/// Range: x >= 0, subnormals included.
/// Error: 0.501 ULP proven, 0.5001 seen.
/// Edges: +-0 gives -infinity, x < 0 NaN, +infinity itself; Log(1) = +0.
[[nodiscard]] VRX_API double Log(double x) noexcept;

/// Decimal logarithm, as in optical density -log10 T.
/// Range: x >= 0, subnormals included.
/// Error: 0.501 ULP proven, 0.5001 seen; exact for powers of ten.
/// Edges: as Log.
[[nodiscard]] VRX_API double Log10(double x) noexcept;

/// x raised to y, as display gammas and weighting functions need it.
/// Range: every pair; x < 0 only with an integer y, whose oddness gives the sign.
/// Error: 0.57 ULP proven, 0.526 seen, subnormal results included; exact where the power is a double.
/// Edges: those of C's pow. y = +-0 or x = 1 gives 1 even if the other is NaN; -1 to the +-infinity is 1.
///   x < 0 with a fractional y gives NaN. Base 0, infinite arguments, overflow and underflow give 0 or
///   infinity, negative if x is negative or -0 and y an odd integer.
[[nodiscard]] VRX_API double Power(double x, double y) noexcept;

/// Sine of x radians.
/// Range: every double, however large: the argument is reduced with as many digits of pi as it needs.
/// Error: 0.54 ULP proven, 0.529 seen.
/// Edges: +-0 returns itself; +-infinity gives NaN.
[[nodiscard]] VRX_API double Sin(double x) noexcept;

/// Cosine of x radians.
/// Range: every double, as Sin.
/// Error: 0.54 ULP proven, 0.527 seen.
/// Edges: Cos(+-0) = 1; +-infinity gives NaN.
[[nodiscard]] VRX_API double Cos(double x) noexcept;

/// Arc tangent in radians, in [-pi/2, pi/2].
/// Range: every double.
/// Error: 0.52 ULP proven, 0.508 seen.
/// Edges: +-0 returns itself; +-infinity gives +-pi/2 rounded to nearest.
[[nodiscard]] VRX_API double Atan(double x) noexcept;

/// Angle of the point (x, y) from the positive x axis, in radians, in [-pi, pi]. Hue is Atan2(b*, a*).
/// Range: every pair; subnormal results are rounded once.
/// Error: 0.52 ULP proven, 0.510 seen.
/// Edges: those of C's atan2. y = +-0 gives +-0 for x > 0 and +0 (a grey has hue 0), +-pi for x < 0 and -0.
///   Other y with x = +-0 gives +-pi/2. Infinities stand for the directions they reach, two of them for the
///   diagonals +-pi/4 and +-3pi/4.
[[nodiscard]] VRX_API double Atan2(double y, double x) noexcept;

/// Arc sine in radians, in [-pi/2, pi/2].
/// Range: -1 <= x <= 1.
/// Error: 0.52 ULP proven, 0.511 seen.
/// Edges: +-0 returns itself; NaN outside the range.
[[nodiscard]] VRX_API double Asin(double x) noexcept;

/// Arc cosine in radians, in [0, pi].
/// Range: -1 <= x <= 1.
/// Error: 0.52 ULP proven, 0.510 seen.
/// Edges: Acos(1) = +0; NaN outside the range.
[[nodiscard]] VRX_API double Acos(double x) noexcept;

}  // namespace vrx

#endif  // VRXMATH_NUMERIC_ELEMENTARY_H_
