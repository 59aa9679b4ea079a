// The vocabulary in which a formula is written once for a number and for a pack of lanes.
//
// A formula is a template over its number type T. For T = double a comparison gives a bool and every function below
// is an ordinary one; for a pack of lanes (pack.h) a comparison gives a mask and the same function works on
// all lanes at once. Both do the same operations in the same order, so both give the same bits.
//
//   template <class T>
//   VRX_LANE_INLINE T LightnessResponse(T t) {
//     return Select(t > 0.008856, CubeRoot(t), 7.787 * t + 0.13793103448275862);
//   }
//
// Masks combine with & | ! . Select evaluates both sides; Branch evaluates only the sides that some lane takes, and is for
// sides that cost an elementary function.

#ifndef VRXMATH_NUMERIC_LANES_H_
#define VRXMATH_NUMERIC_LANES_H_

#include <cmath>

#include <vrxmath/foundation/numbers.h>
#include <vrxmath/numeric/elementary.h>

// Always inlined: objects compiled for one instruction set must not leave a shared copy of a formula that the linker could
// hand to a processor without it.
#if defined(__GNUC__)
#define VRX_LANE_INLINE __attribute__((always_inline)) inline
#else
#define VRX_LANE_INLINE inline
#endif
// A lambda that becomes part of the code that calls it.
#if defined(__GNUC__)
#define VRX_LANE_LAMBDA __attribute__((always_inline))
#else
#define VRX_LANE_LAMBDA
#endif

namespace vrx {

/// The value of `a` where the mask is true, of `b` elsewhere.
VRX_LANE_INLINE double Select(bool mask, double a, double b) {
  return mask ? a : b;
}

/// `a()` where the mask is true, `b()` elsewhere; a side that no lane takes is not evaluated.
template <class A, class B>
VRX_LANE_INLINE double Branch(bool mask, const A& a, const B& b) {
  return mask ? a() : b();
}

/// True when some lane, or every lane, is true.
VRX_LANE_INLINE bool Any(bool mask) {
  return mask;
}
VRX_LANE_INLINE bool All(bool mask) {
  return mask;
}

VRX_LANE_INLINE double Sqrt(double x) {
  return std::sqrt(x);
}
/// CubeRoot of numbers that are known to be neither zero, subnormal, infinite nor NaN.
VRX_LANE_INLINE double CubeRootOfNormal(double x) {
  return CubeRoot(x);
}
/// |x|; only the sign bit changes.
VRX_LANE_INLINE double Abs(double x) {
  return std::fabs(x);
}

/// The larger and the smaller of two, `a` when they are equal or not ordered.
template <class T>
VRX_LANE_INLINE T Max(T a, T b) {
  return Select(a < b, b, a);
}
template <class T>
VRX_LANE_INLINE T Min(T a, T b) {
  return Select(b < a, b, a);
}

template <class T>
VRX_LANE_INLINE T Square(T x) {
  return x * x;
}

}  // namespace vrx

#endif  // VRXMATH_NUMERIC_LANES_H_
