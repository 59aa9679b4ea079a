// How many colours look: adapted to another white, by a colour-appearance model, and as grades of grey scales.
//
// Unset colours stay unset. Errors of every function: CInvalidArgException, before anything is written, for counts that do not
// fit and for an illuminant and observer without a weighting table. Each returns false when the progress callback stopped it.

#ifndef VRXMATH_BATCH_APPEARANCE_BATCH_H_
#define VRXMATH_BATCH_APPEARANCE_BATCH_H_

#include <cstdint>
#include <span>

#include <vrxmath/batch/batch_run.h>
#include <vrxmath/batch/batch_view.h>
#include <vrxmath/colorimetry/adaptation_formulas.h>
#include <vrxmath/colorimetry/appearance_formulas.h>
#include <vrxmath/colorimetry/grade_formulas.h>
#include <vrxmath/colorimetry/illuminants.h>
#include <vrxmath/export.h>

namespace vrx {

/// The corresponding colours under another white: Adapt with AdaptationMatrix. A target may be its source.
VRX_API bool AdaptBatch(AdaptationTransform transform, const White& from, const White& to, double degree,
                        const BatchView<const double, 3>& xyz, const BatchView<double, 3>& adapted,
                        const BatchRun& run = {});

/// The appearance of colours: J, C, h in degrees, Q, M, s of every row (AppearanceFromXyz).
VRX_API bool AppearanceBatch(AppearanceModel model, vrxIlluminant illuminant, std::int32_t observer,
                             const ViewingConditions& conditions, const BatchView<const double, 3>& xyz,
                             const BatchView<double, 6>& appearance, const BatchRun& run = {});

/// The colours of J, C and h in degrees (XyzFromAppearance).
VRX_API bool XyzFromAppearanceBatch(AppearanceModel model, vrxIlluminant illuminant, std::int32_t observer,
                                    const ViewingConditions& conditions,
                                    const BatchView<const double, 3>& appearance,
                                    const BatchView<double, 3>& xyz, const BatchRun& run = {});

/// The grade of n samples by a grey scale (GreyScaleGrade), from L*, a*, b*, C* and h in degrees. `standards`: one for all
/// samples, or one each.
VRX_API bool GradeBatch(GreyScale scale, const BatchView<const double, 5>& standards,
                        const BatchView<const double, 5>& samples, std::span<double> grades,
                        const BatchRun& run = {});

}  // namespace vrx

#endif  // VRXMATH_BATCH_APPEARANCE_BATCH_H_
