// Setting a tolerance from experience: the ellipsoid that belongs to the differences that people accepted.

#ifndef VRXMATH_TOLERANCE_ELLIPSE_FIT_H_
#define VRXMATH_TOLERANCE_ELLIPSE_FIT_H_

#include <cstddef>
#include <cstdint>
#include <span>

#include <vrxmath/export.h>
#include <vrxmath/tolerance/ellipse_tolerance.h>

namespace vrx {

/// A difference from the standard in L*a*b*.
struct LabDifference {
  double dL = 0.0;
  double da = 0.0;
  double db = 0.0;
};

/// Where the centre of a fitted ellipsoid lies: where it fits best, or at the standard.
enum class EllipseCentre { kFree, kAtStandard };

/// The smallest ellipsoid that holds all differences: what was accepted stays accepted. For a set of accepted
/// differences without outliers.
/// Out: centre, semi-axes and angle of `ellipse`, the longer of the a*-b* semi-axes as the major one, its
///   angle in [0, 180); total limit and factor stay. 1, or 0 with `ellipse` unchanged when the differences do
///   not span space (fewer than four, or flat) or are not finite.
/// Method: weights on the differences, multiplied by their distances until none lies further out than the
///   ellipsoid's surface by more than 1e-4 (the dual of the smallest-volume problem; D. M. Titterington,
///   Biometrika 62, 1975, 313-320), then grown to hold every difference. The volume is within 0.02 % of the
///   smallest.
[[nodiscard]] VRX_API uint32_t FitSmallestEllipse(std::span<const LabDifference> accepted,
                                                  EllipseCentre centre, CEllipseData& ellipse);

/// The ellipsoid whose surface comes nearest to the differences, by least squares of the quadratic form. For
/// differences at the limit of acceptance, on either side of it.
/// Out: as FitSmallestEllipse; 0 also when the quadric that fits best is no ellipsoid.
[[nodiscard]] VRX_API uint32_t FitEllipseSurface(std::span<const LabDifference> limits, EllipseCentre centre,
                                                 CEllipseData& ellipse);

/// How a tolerance is fitted: by FitSmallestEllipse or FitEllipseSurface, and how much wider than what was accepted it is.
struct ToleranceFitSettings {
  enum Method { kSmallest, kSurface };
  Method method = kSmallest;
  EllipseCentre centre = EllipseCentre::kFree;
  double margin = 1.0;  ///< the semi-axes and the limit of the total are multiplied by it; above 0

  /// As many differences as the fit has unknowns, and four where fewer would do: three say nothing of a fourth.
  [[nodiscard]] std::size_t NeededDifferences() const {
    return method == kSurface && centre == EllipseCentre::kFree ? 7 : 4;
  }
};

/// Why there is no ellipsoid: fewer differences than needed; all of one lightness, or on one line of the a*-b* plane; the quadric
/// that fits best is none.
enum class ToleranceFitError { kNone, kTooFew, kFlat, kNoSurface };

/// The ellipsoid of accepted differences as a tolerance: its total limit is the largest total that was accepted, times the margin,
/// which is its factor. `ellipse` is unchanged where there is none.
[[nodiscard]] VRX_API ToleranceFitError FitTolerance(std::span<const LabDifference> accepted,
                                                     double largestTotal,
                                                     const ToleranceFitSettings& settings,
                                                     CEllipseData& ellipse);

}  // namespace vrx

#endif  // VRXMATH_TOLERANCE_ELLIPSE_FIT_H_
