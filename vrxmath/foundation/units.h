// The units in which amounts of a formula are shown. The library does not convert between them.

#ifndef VRXMATH_FOUNDATION_UNITS_H_
#define VRXMATH_FOUNDATION_UNITS_H_

#include <cstdint>

#include <vrxmath/export.h>
#include <vrxmath/platform/wide_string.h>

namespace vrx {

inline constexpr int32_t kWeightUnits = 6;
inline constexpr int32_t kVolumeUnits = 25;

/// The display name of a weight unit, 0 to 5, such as "Kilograms"; empty for any other number.
[[nodiscard]] VRX_API CString WeightUnitName(int32_t unit);

/// The display name of a volume unit, 0 to 24, such as "Liters"; empty for any other number. Number 4 is
/// "Ounces" like weight unit 1.
[[nodiscard]] VRX_API CString VolumeUnitName(int32_t unit);

}  // namespace vrx

#endif  // VRXMATH_FOUNDATION_UNITS_H_
