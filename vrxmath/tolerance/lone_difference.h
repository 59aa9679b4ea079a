// Whether one accepted difference alone makes a fitted tolerance large.

#ifndef VRXMATH_TOLERANCE_LONE_DIFFERENCE_H_
#define VRXMATH_TOLERANCE_LONE_DIFFERENCE_H_

#include <cstddef>
#include <optional>
#include <span>
#include <string>

#include <vrxmath/export.h>
#include <vrxmath/tolerance/ellipse_fit.h>

namespace vrx {

/// An accepted difference without which the smallest ellipsoid would be far smaller.
struct LoneDifference {
  std::size_t index = 0;  ///< from 0
  LabDifference difference;
  double growth = 1.0;  ///< the volume with it as a multiple of that without it

  /// A sentence about it.
  [[nodiscard]] VRX_API std::string Text() const;
};

/// The accepted difference that makes the smallest ellipsoid more than four times as large, of several the one that makes it
/// largest. None by the method kSurface, and among fewer than twelve, of which every one may do so by chance (of twelve one set in a
/// hundred).
[[nodiscard]] VRX_API std::optional<LoneDifference> FindLoneDifference(
    std::span<const LabDifference> accepted, const ToleranceFitSettings& settings);

}  // namespace vrx

#endif  // VRXMATH_TOLERANCE_LONE_DIFFERENCE_H_
