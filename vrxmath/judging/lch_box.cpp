#include <vrxmath/judging/lch_box.h>

#include <cmath>

#include <vrxmath/colorimetry/hue.h>
#include <vrxmath/numeric/elementary.h>

namespace vrx {
namespace {

// The angle in radians whose chord on a circle of radius `chroma` has the length of a hue limit, with the
// limit's sign; half a circle where no chord is that long.
double ChordAngle(double limit, double chroma) {
  const double length = std::fabs(limit);
  if (length == 0.0) return 0.0;
  const double angle = length >= 2.0 * chroma ? kPi : 2.0 * Asin(length / (2.0 * chroma));
  return limit < 0.0 ? -angle : angle;
}

double WithinFullCircle(double angle) {
  if (angle < 0.0) return angle + kTwoPi;
  return angle > kTwoPi ? angle - kTwoPi : angle;
}

bool AdmitsHue(const Interval& hueLimits, const LchPair& pair) {
  const double h = pair.standardHue, C = pair.standardChroma, hue = pair.trialHue;
  const double down = ChordAngle(hueLimits.lower, C), up = ChordAngle(hueLimits.upper, C);
  if (up - down >= kTwoPi - kDoubleEpsilon) return true;  // the full circle
  // Equal ends stand for the full circle in a sector; here they leave no room beside the standard's hue.
  if (NearlyEqual(down, up)) return NearlyEqual(hue, h);
  return down < up && HueInSector(hue, WithinFullCircle(h + down), WithinFullCircle(h + up));
}

}  // namespace

bool AcceptsLch(const LchLimits& limits, const LchPair& pair) {
  return limits.dL.Contains(pair.dL) && limits.dC.Contains(pair.dC) && AdmitsHue(limits.dH, pair);
}

double HueChord(const LchPair& pair) {
  double turn = pair.trialHue - pair.standardHue;
  if (turn > kPi) turn -= kTwoPi;
  if (turn < -kPi) turn += kTwoPi;
  return 2.0 * pair.standardChroma * Sin(turn / 2.0);
}

}  // namespace vrx
