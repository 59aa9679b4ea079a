// The words for what a calibration refuses, the same in every interface.

#ifndef VRXMATH_MATCHING_CALIBRATION_FAULTS_H_
#define VRXMATH_MATCHING_CALIBRATION_FAULTS_H_

#include <functional>
#include <string>
#include <string_view>

#include <vrxmath/export.h>
#include <vrxmath/matching/calibration.h>

namespace vrx {

/// What CalibrateColorants or CalibrateDyes (`isOnSubstrate`) was asked, for the words of its fault.
struct CalibrationQuestion {
  const CStringArray1& names;
  const CDrawdownArray& drawdowns;
  const CCalibrationSettings& settings;
  bool isOnSubstrate = false;
  /// A setting such as "without", alone or with a value for it: `--without`, or `--specular excluded`.
  std::function<std::string(std::string_view setting, std::string_view value)> setting;
};

/// The sentence for a fault, in UTF-8; empty for kNone.
[[nodiscard]] VRX_API std::string CalibrationFaultText(const CalibrationOutcome& outcome,
                                                       const CalibrationQuestion& question);

}  // namespace vrx

#endif  // VRXMATH_MATCHING_CALIBRATION_FAULTS_H_
