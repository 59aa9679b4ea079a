// Ellipse tolerances: a difference is accepted inside an ellipsoid about the standard, which follows the
// shape of visual tolerances better than a box. One axis runs along lightness, two lie in the a*-b* plane at
// an angle.
//
//   CEllipseData ellipse = EllipseForStandard(standard.lab, DefaultSettings(vrxSystemCmc));
//   const Verdict verdict = ellipse.Judge(delta, 0.75);
//
// Formula: in the plane of a standard with chroma C*, chroma runs along its hue and hue difference across it.
// The ellipsoid takes both as straight lines; dC* and dH* bend with the hue circle. The two judgements of a
// difference that lies dH* across differ by about dH*^2 / 2 C* in chroma, nothing for tolerances small beside
// C*.

#ifndef VRXMATH_TOLERANCE_ELLIPSE_TOLERANCE_H_
#define VRXMATH_TOLERANCE_ELLIPSE_TOLERANCE_H_

#include <cstdint>
#include <vector>

#include <vrxmath/colorimetry/color_records.h>
#include <vrxmath/colorimetry/difference_systems.h>
#include <vrxmath/export.h>
#include <vrxmath/numeric/matrix.h>
#include <vrxmath/platform/archive.h>
#include <vrxmath/tolerance/box_tolerance.h>

namespace vrx {

/// The planes in which an ellipsoid is drawn, horizontal axis first.
enum class EllipsePlane { kAB, kAL, kBL };

/// A point of a drawing: differences along the horizontal and the vertical axis of its plane.
struct PlanePoint {
  double x = 0.0;
  double y = 0.0;
};

/// The nine numbers of one ellipsoid; the indices are persistent. When new: centre 0, semi-axes 1.5, angle 0,
/// limit of the total 1.5, commercial factor 1.
class VRX_API CEllipseData : public CDoubleArray1 {
 public:
  enum Index : int32_t {
    kCentreL = 0,           ///< centre of the ellipsoid as a difference from the standard: dL*
    kCentreA = 1,           ///< da*
    kCentreB = 2,           ///< db*
    kLightnessAxis = 3,     ///< semi-axis along dL*
    kMajorAxis = 4,         ///< semi-axis in the a*-b* plane at the angle
    kMinorAxis = 5,         ///< semi-axis across it
    kAngle = 6,             ///< of the major axis from +a* towards +b*, degrees
    kTotalLimit = 7,        ///< limit of the total difference
    kCommercialFactor = 8,  ///< what the semi-axes of a system were multiplied by
  };
  static constexpr int32_t kValues = 9;

  CEllipseData();

  /// The factor by which the ellipsoid has to grow about its centre to reach the components of a difference:
  /// 0 at the centre, 1 on the surface. The root of the quadratic form. Along an axis of length 0 every
  /// difference but 0 is infinitely far; NaN gives NaN.
  [[nodiscard]] double Value(const Difference& difference) const;
  [[nodiscard]] double Value(const CDeltaValues& delta) const { return Value(delta.Values()); }

  /// Fail outside the ellipsoid, warning outside the ellipsoid scaled by `warningFactor` about its centre,
  /// else pass; both surfaces belong to the inside. NaN fails.
  [[nodiscard]] Verdict Judge(const Difference& difference, double warningFactor) const;
  [[nodiscard]] Verdict Judge(const CDeltaValues& delta, double warningFactor) const {
    return Judge(delta.Values(), warningFactor);
  }
  /// Grades the total difference against element kTotalLimit (GradeTotal).
  [[nodiscard]] Verdict JudgeTotal(double value, double warningFactor) const {
    return GradeTotal(value, (*this)[kTotalLimit], warningFactor);
  }

  /// The symmetric 3 x 3 matrix M of the form d^T M d over d = (dL*, da*, db*) from the centre, 1 on the
  /// surface. An axis of length 0 makes elements infinite or NaN.
  [[nodiscard]] CMatrix Form() const;
  /// Replaces `inverse` by the inverse of the form, whose diagonal holds the squares of the half-widths of
  /// the enclosing box. 1, or 0 when the form is singular.
  [[nodiscard]] uint32_t InverseForm(CMatrix& inverse) const;

  /// The section through the centre in a plane, as a closed line of `points` + 1 points (at least 3 + 1), the
  /// first and the last the same, counter-clockwise from the major axis (a*-b*) or from the horizontal axis.
  [[nodiscard]] std::vector<PlanePoint> Section(EllipsePlane plane, int32_t points = 72) const;

  /// Takes the factor of a system's settings (commercial factor of CMC, total difference of CIE94 and
  /// CIE2000): semi-axes are multiplied by new over old factor, the total's limit becomes the factor. Nothing
  /// for other systems, and for a factor that is not positive.
  void ApplySettings(const CDifferenceSettings& settings);

  /// Archive form: the nine doubles, without a count. Throws as CArchive does; a short
  /// archive leaves the record as it was.
  void SerializeValues(CArchive& archive);
};

/// True for the systems whose tolerances are ellipsoids: CMC, CIE94 and CIE2000.
[[nodiscard]] VRX_API bool IsEllipseSystem(int32_t system);

/// The ellipsoid of a system about a standard in L*a*b*: semi-axes l SL, c SC, SH (or kL SL, kC SC, kH SH)
/// times the factor (cf of CMC, the total difference of the others); the angle is the standard's hue. Total
/// limit and commercial factor are the factor. The weights of CIE2000 are those of the standard against
/// itself; its rotation term is left out. A new ellipsoid for other systems and for an unset standard.
[[nodiscard]] VRX_API CEllipseData EllipseForStandard(const CLabValues& standard,
                                                      const CDifferenceSettings& settings);

/// The ellipsoids of the illuminants of a judgement; three when new.
class CEllipseIllum2 : public CArrayVarex<CEllipseData> {
 public:
  CEllipseIllum2() { SetSize(3); }
};
/// One entry per measuring angle; ResizeByNearestAngle makes it follow a change of geometries.
using CEllipseAngle3 = CArrayVarex<CEllipseIllum2>;
/// One entry per standard.
class CEllipseStd4 : public CArrayVarex<CEllipseAngle3> {
 public:
  /// Gives every standard `count` angles; a table without standards gets one first.
  void SetAngleCount(int32_t count) {
    if (IsEmpty()) SetSize(1);
    for (CEllipseAngle3& standard : *this) standard.SetSize(count);
  }
};

}  // namespace vrx

#endif  // VRXMATH_TOLERANCE_ELLIPSE_TOLERANCE_H_
