// The verdict of a judgement, and the grading of a total difference against a limit with a warning band.
//
// They stand with the tolerances, which give verdicts of their own; what judges a whole pair (judging/) rests on them.

#ifndef VRXMATH_TOLERANCE_VERDICT_H_
#define VRXMATH_TOLERANCE_VERDICT_H_

#include <cstdint>

namespace vrx {

/// The answer of a judgement. The numbers are persistent, and a larger one is better.
enum Verdict : int32_t { kFail = 0, kWarning = 1, kPass = 2 };

/// Grades a total difference: fail above the limit, warning above limit x factor, else pass. Both limits
/// are inclusive; a NaN on either side passes.
[[nodiscard]] inline Verdict GradeTotal(double value, double limit, double warningFactor) {
  if (value > limit) return kFail;
  return value > limit * warningFactor ? kWarning : kPass;
}

}  // namespace vrx

#endif  // VRXMATH_TOLERANCE_VERDICT_H_
