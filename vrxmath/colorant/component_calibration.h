// How far a component of a colour system is known: the shares at which it was measured, and how well these measurements
// foresee each other.

#ifndef VRXMATH_COLORANT_COMPONENT_CALIBRATION_H_
#define VRXMATH_COLORANT_COMPONENT_CALIBRATION_H_

#include <cstdint>

#include <vrxmath/colorant/component_names.h>
#include <vrxmath/colorant/components.h>
#include <vrxmath/foundation/numbers.h>
#include <vrxmath/foundation/typed_arrays.h>

namespace vrx {

/// What the drawdowns of a calibration know of one of its components.
struct CComponentCalibration {
  uint32_t componentId = kNewComponentId;
  double leastShare =
      kUnset;  ///< of the drawdowns that have it, as a fraction: 0 to 1, of dyes of the substrate
  double mostShare = kUnset;
  int32_t drawdowns = 0;  ///< that have it
  /// CIEDE2000 that half, and nine of ten, of these drawdowns do not exceed when each is predicted by a calibration without
  /// it; unset where that is not known.
  double leaveOneOut = kUnset;
  double leaveOneOut90 = kUnset;
};
using CComponentCalibrationArray = CArrayVarex<CComponentCalibration>;

}  // namespace vrx

#endif  // VRXMATH_COLORANT_COMPONENT_CALIBRATION_H_
