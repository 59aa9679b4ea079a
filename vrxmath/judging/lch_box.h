// The box of the L*C*h system: limits of lightness and chroma, and a sector of hue about the standard's.

#ifndef VRXMATH_JUDGING_LCH_BOX_H_
#define VRXMATH_JUDGING_LCH_BOX_H_

#include <vrxmath/tolerance/box_tolerance.h>
#include <vrxmath/tolerance/interval.h>
#include <vrxmath/tolerance/verdict.h>

namespace vrx {

/// The limits of dL*, dC* and dH*.
struct LchLimits {
  Interval dL, dC, dH;
};

/// A trial and its standard as the box sees them. Hues are in radians.
struct LchPair {
  double dL, dC;
  double standardChroma, standardHue, trialHue;
};

/// True where the limits hold a trial. The hue limits become the angles whose chords they are on the circle of the
/// standard's chroma, and the trial's hue has to lie in that sector of the standard's hue. Limits whose angles are equal,
/// as those of one sign beyond the diameter are, admit the standard's hue alone.
[[nodiscard]] bool AcceptsLch(const LchLimits& limits, const LchPair& pair);

/// How far the trial's hue lies from the standard's on the circle of the standard's chroma: the chord, with the sign of
/// the turn.
[[nodiscard]] double HueChord(const LchPair& pair);

}  // namespace vrx

#endif  // VRXMATH_JUDGING_LCH_BOX_H_
