// Whether two drawdowns of a calibration were exchanged: the readings of one under the formula of the other.

#ifndef VRXMATH_MATCHING_EXCHANGED_DRAWDOWNS_H_
#define VRXMATH_MATCHING_EXCHANGED_DRAWDOWNS_H_

#include <cstdint>
#include <optional>
#include <string>

#include <vrxmath/export.h>
#include <vrxmath/matching/calibration.h>

namespace vrx {

/// Two drawdowns that a calibration describes far better with each other's shares, and the sums of their differences (CIEDE2000).
struct ExchangedDrawdowns {
  int32_t first = -1, second = -1;  ///< from 0
  double asTheyAre = 0.0, exchanged = 0.0;

  /// A sentence about them, in UTF-8.
  [[nodiscard]] VRX_API std::string Text(const CDrawdownArray& drawdowns) const;
};

/// Exchanges the shares of each two of the drawdowns that are described worst (up to eight) and calibrates again. None where that
/// does not bring the differences of the two below 0.35 of what they were and the sum over all drawdowns down by 5 units or more, where
/// the drawdowns cannot be calibrated, and for more than 500 of them, which are not looked at. The question is that of
/// CalibrateColorants.
[[nodiscard]] VRX_API std::optional<ExchangedDrawdowns> FindExchangedDrawdowns(
    const CStringArray1& names, const CDrawdownArray& drawdowns, const CCalibrationSettings& settings);

}  // namespace vrx

#endif  // VRXMATH_MATCHING_EXCHANGED_DRAWDOWNS_H_
