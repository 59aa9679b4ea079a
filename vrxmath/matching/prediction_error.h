// How far a predicted colour may be from the one that a recipe then gives.

#ifndef VRXMATH_MATCHING_PREDICTION_ERROR_H_
#define VRXMATH_MATCHING_PREDICTION_ERROR_H_

#include <cstdint>

#include <vrxmath/colorant/colorant_system.h>
#include <vrxmath/colorant/component_calibration.h>
#include <vrxmath/colorant/optical_transforms.h>
#include <vrxmath/colorimetry/color_records.h>
#include <vrxmath/colorimetry/illuminants.h>
#include <vrxmath/export.h>
#include <vrxmath/formula/formula.h>
#include <vrxmath/foundation/typed_arrays.h>

namespace vrx {

/// How far predictions of formulas like one are off, CIEDE2000, as far as the calibration of its components tells.
struct CPredictionError {
  double half = kUnset;  ///< that half of them do not exceed; unset where no component was foreseen
  /// That nine of ten of them do not exceed; unset where a component with a share is unknown or was never foreseen by the
  /// others' drawdowns.
  double nineOfTen = kUnset;
  CDWordArray1 outside;  ///< components whose share lies outside of their calibrated range
};

/// How far the prediction of a formula may be off.
/// In:      a formula of the system; lines of one component count together. What is known of the components; clear resins
///          and substrates need not be known.
/// Formula: the largest of the components' errors, left out one at a time, each larger by a half for every factor of two
///          by which its share lies outside of its calibrated range. Of fewer than ten drawdowns nothing can be said
///          about nine of ten: there it is at least the median of the components' own.
[[nodiscard]] VRX_API CPredictionError PredictionError(const CDbFormula& formula,
                                                       const CColorantSystemData& system,
                                                       const CComponentCalibrationArray& calibrated);

/// The curves between which one is expected that was predicted, percent.
struct CExpectedBand {
  CReflData lower;
  CReflData upper;
};

/// Lower and upper curve around a predicted one: K/S larger and smaller by one factor at all wavelengths, as that of
/// colorants which are stronger or weaker than was thought, until the difference from the prediction is `error`.
/// In:  a predicted curve, percent; `error` in CIEDE2000 under the illuminant. The surface is that of the system.
/// Out: both unset when the curve or the error is; where no factor up to 64 makes so much of a difference, the curve of 64.
[[nodiscard]] VRX_API CExpectedBand ExpectedBand(const CReflData& predicted, double error,
                                                 const CColorantSystemData& system, SaundersonMode mode,
                                                 vrxIlluminant illuminant, int32_t observer);

}  // namespace vrx

#endif  // VRXMATH_MATCHING_PREDICTION_ERROR_H_
