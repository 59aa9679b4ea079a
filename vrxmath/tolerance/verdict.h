// The verdict of a judgement, and the grading of a total difference against a limit with a warning band.
//
// They stand with the tolerances, which give verdicts of their own; what judges a whole pair (judging/) rests on them.

#ifndef VRXMATH_TOLERANCE_VERDICT_H_
#define VRXMATH_TOLERANCE_VERDICT_H_

#include <cstdint>

#include <vrxmath/numeric/lanes.h>

namespace vrx {

/// The answer of a judgement. The numbers are persistent, and a larger one is better.
enum Verdict : int32_t { kFail = 0, kWarning = 1, kPass = 2 };

/// Where a difference stands in a tolerance: true or false, or a mask of lanes.
template <class MASK>
struct GradeOf {
  MASK inside;      ///< not beyond the tolerance: else fail
  MASK wellInside;  ///< not beyond the part of it that the warning factor leaves: else warning
};

[[nodiscard]] inline Verdict ToVerdict(GradeOf<bool> grade) {
  if (!grade.inside) return kFail;
  return grade.wellInside ? kPass : kWarning;
}

/// The grade of total differences, for a number or a pack of them (numeric/lanes.h), as GradeTotal.
template <class T>
VRX_LANE_INLINE auto TotalGrade(T value, double limit, double warningFactor) {
  return GradeOf<decltype(value <= limit)>{value <= limit, !(value > limit * warningFactor)};
}

/// Grades a total difference: fail above the limit, warning above limit x factor, else pass. Both limits
/// are inclusive; a NaN on either side fails.
[[nodiscard]] inline Verdict GradeTotal(double value, double limit, double warningFactor) {
  return ToVerdict(TotalGrade(value, limit, warningFactor));
}

}  // namespace vrx

#endif  // VRXMATH_TOLERANCE_VERDICT_H_
