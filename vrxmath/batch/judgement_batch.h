// Verdicts and shade words of many differences, as boxes, ellipsoids and DescribeShade give them for one.
//
// Errors of every function: CInvalidArgException, before anything is written, for counts that do not fit. Each returns
// false when the progress callback stopped it.

#ifndef VRXMATH_BATCH_JUDGEMENT_BATCH_H_
#define VRXMATH_BATCH_JUDGEMENT_BATCH_H_

#include <cstdint>
#include <span>

#include <vrxmath/batch/batch_run.h>
#include <vrxmath/batch/batch_view.h>
#include <vrxmath/export.h>
#include <vrxmath/tolerance/box_tolerance.h>
#include <vrxmath/tolerance/ellipse_tolerance.h>

namespace vrx {

/// The first three elements of each difference against a box: fail outside it, warning outside the box scaled by
/// `warningFactor` about its centre, else pass. NaN fails; so does an unset difference (all three are).
VRX_API bool BoxVerdictBatch(const CBoxTolData& box, double warningFactor,
                             const BatchView<const double, 3>& differences, std::span<Verdict> verdicts,
                             const BatchRun& run = {});

/// The same against an ellipsoid (CEllipseData::Judge), for differences in L*a*b*.
VRX_API bool EllipseVerdictBatch(const CEllipseData& ellipse, double warningFactor,
                                 const BatchView<const double, 3>& differences, std::span<Verdict> verdicts,
                                 const BatchRun& run = {});

/// Total differences against a limit (GradeTotal). An unset total fails.
VRX_API bool TotalVerdictBatch(double limit, double warningFactor, std::span<const double> totals,
                               std::span<Verdict> verdicts, const BatchRun& run = {});

/// The three shade words of each trial, as numbers of ShadeWord.
/// In: L*, a*, b* of the trials and their dL*, da*, db*. An unset difference has no words: three times kShadeNone.
VRX_API bool ShadeBatch(const BatchView<const double, 3>& trials,
                        const BatchView<const double, 3>& differences,
                        const BatchView<std::int32_t, 3>& words, const BatchRun& run = {});

}  // namespace vrx

#endif  // VRXMATH_BATCH_JUDGEMENT_BATCH_H_
