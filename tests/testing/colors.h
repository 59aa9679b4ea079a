// Colour records from their numbers.

#ifndef TESTS_TESTING_COLORS_H_
#define TESTS_TESTING_COLORS_H_

#include <vrxmath/colorimetry/color_spaces.h>

namespace vrx::test {

inline CLabValues MakeLab(double L, double a, double b) {
  return CLabValues(L, a, b);
}

inline CDeltaValues MakeDelta(double d0, double d1, double d2) {
  CDeltaValues delta;
  delta[0] = d0, delta[1] = d1, delta[2] = d2;
  return delta;
}

}  // namespace vrx::test

#endif  // TESTS_TESTING_COLORS_H_
