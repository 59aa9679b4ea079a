// How far a predicted colour may be from the one that a recipe then gives.

#ifndef VRXMATH_MATCHING_ERROR_BOUND_H_
#define VRXMATH_MATCHING_ERROR_BOUND_H_

#include <vrxmath/colorant/colorant_system.h>
#include <vrxmath/colorant/component_calibration.h>
#include <vrxmath/export.h>
#include <vrxmath/formula/formula.h>
#include <vrxmath/foundation/typed_arrays.h>

namespace vrx {

/// CIEDE2000 that nine of ten predictions of such formulas do not exceed, as far as the calibration of the components
/// tells. In: a formula of the system whose lines have unlike components; what is known of these. Clear resins and
/// substrates need not be known.
/// Out:     unset when a component with a share is unknown or was never foreseen by the others' drawdowns. `outside`,
///          when given, takes the components whose share lies outside of the calibrated range.
/// Formula: the largest of the components' errors, left out one at a time (nine of ten; of fewer than ten drawdowns at
///          least the median of the components), each larger by a half for every factor of two by which its share lies
///          outside of its calibrated range.
[[nodiscard]] VRX_API double ErrorBound(const CDbFormula& formula, const CColorantSystemData& system,
                                        const CComponentCalibrationArray& calibrated,
                                        CDWordArray1* outside = nullptr);

}  // namespace vrx

#endif  // VRXMATH_MATCHING_ERROR_BOUND_H_
