// The shade words as formulas, one source for a difference and for a pack of them (numeric/lanes.h): a word is its number.

#ifndef VRXMATH_JUDGING_SHADE_FORMULAS_H_
#define VRXMATH_JUDGING_SHADE_FORMULAS_H_

#include <vrxmath/judging/shade.h>
#include <vrxmath/numeric/lanes.h>

namespace vrx {

/// Differences below it have no word.
inline constexpr double kShadeThreshold = 0.1;

/// The word on lightness.
template <class T>
VRX_LANE_INLINE T LightnessWord(T dL) {
  return Select(Abs(dL) >= kShadeThreshold, Select(dL > 0.0, T(kLighter), T(kDarker)), T(kShadeNone));
}

/// What a step up and a step down a colour axis are called on one side of the neutral point.
struct AxisWords {
  ShadeWord up, down;
};

/// The word on a colour axis, by the side on which the trial stands.
template <class T>
VRX_LANE_INLINE T AxisWord(T coordinate, T difference, AxisWords positive, AxisWords negative) {
  const auto up = difference >= 0.0;
  const T word = Select(coordinate >= 0.0, Select(up, T(positive.up), T(positive.down)),
                        Select(up, T(negative.up), T(negative.down)));
  return Select(Abs(difference) > kShadeThreshold, word, T(kShadeNone));
}
template <class T>
VRX_LANE_INLINE T RedGreenWord(T a, T da) {
  return AxisWord(a, da, {kRedder, kLessRed}, {kLessGreen, kGreener});
}
template <class T>
VRX_LANE_INLINE T YellowBlueWord(T b, T db) {
  return AxisWord(b, db, {kYellower, kLessYellow}, {kLessBlue, kBluer});
}

}  // namespace vrx

#endif  // VRXMATH_JUDGING_SHADE_FORMULAS_H_
