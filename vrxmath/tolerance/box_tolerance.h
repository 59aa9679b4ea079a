// Box tolerances: a difference is accepted when each of its three components lies inside an asymmetric
// interval, and its total is graded against a limit with a warning band.

#ifndef VRXMATH_TOLERANCE_BOX_TOLERANCE_H_
#define VRXMATH_TOLERANCE_BOX_TOLERANCE_H_

#include <cmath>
#include <cstdint>
#include <string>

#include <vrxmath/colorimetry/color_records.h>
#include <vrxmath/colorimetry/difference_systems.h>
#include <vrxmath/export.h>
#include <vrxmath/foundation/value_range.h>
#include <vrxmath/platform/archive.h>
#include <vrxmath/tolerance/interval.h>
#include <vrxmath/tolerance/verdict.h>

namespace vrx {

/// The values that a tolerance dimension (0 to 2, and 3 for the total) may take under a difference system:
/// tenths within 999.9 for the components of XYZ/Yxy, hundredths within 80 for those of every other system,
/// 0.05 to 80 for the total. An unknown system shows the index message and has the latter.
[[nodiscard]] VRX_API CValueRange ToleranceRange(const CDifferenceSettings& settings, int32_t dimension);

/// The limits of one box: plus and minus of dimension 0, of 1, of 2 (minus limits as positive magnitudes),
/// then the limit of the total difference. All 1.5 when new, a tolerance that is usual where the unit is a dE
/// (DifferenceSystem::inDeltaE). Dimensions are the first three elements of the difference record.
class VRX_API CBoxTolData : public CDoubleArray1 {
 public:
  enum Index : int32_t {
    kPlus0 = 0,   ///< plus limit of dimension 0
    kMinus0 = 1,  ///< its minus limit, a positive magnitude
    kPlus1 = 2,
    kMinus1 = 3,
    kPlus2 = 4,
    kMinus2 = 5,
    kTotal = 6,  ///< limit of the total difference
  };
  static constexpr int32_t kValues = 7;
  static constexpr int32_t kDimensions = 3;

  CBoxTolData() {
    SetSize(kValues);
    Fill(1.5);
  }

  /// Sets the limits of dimension 0, 1 or 2; for any other dimension the total's limit becomes `plus`.
  void SetTolerance(int32_t dimension, double plus, double minus);
  /// The interval that dimension 0, 1 or 2 must lie in.
  [[nodiscard]] Interval Limits(int32_t dimension) const;
  /// The bounds of dimension 0: `upper` its plus limit, `lower` its minus limit negated.
  void GetDimension0(double& upper, double& lower) const;

  /// All seven values, in index order.
  void GetAll(double (&values)[kValues]) const;
  void SetAll(const double (&values)[kValues]);

  /// Moves every value into its range (ToleranceRange).
  void ClampToRanges(const CDifferenceSettings& settings);

  /// Value `i` as a whole number, value x scale of its range, half away from zero; and back from one.
  [[nodiscard]] int32_t GetInteger(int32_t i, const CDifferenceSettings& settings) const;
  void SetFromInteger(int32_t i, int16_t whole, const CDifferenceSettings& settings);

  /// Moves the box by a difference without changing its width.
  void OffsetBy(double d0, double d1, double d2);

  /// Grades the total difference against its limit, as GradeTotal but for a NaN on either side: the record answers kPass, on
  /// which its hosts rely. What judges samples, one or many (judging/, batch/), fails it.
  [[nodiscard]] Verdict JudgeTotal(double value, double warningFactor) const {
    const double limit = (*this)[kTotal];
    return std::isnan(value) || std::isnan(limit) ? kPass : GradeTotal(value, limit, warningFactor);
  }

  /// True when the three components of a difference lie in the box scaled by `factor` about the centre of each
  /// axis. All edges are inclusive; NaN lies outside.
  [[nodiscard]] bool Accepts(const Difference& difference, double factor) const;
  [[nodiscard]] bool Accepts(const CDeltaValues& delta, double factor) const {
    return Accepts(delta.Values(), factor);
  }

  /// True when `d0` and `d1`, the differences of dimensions 0 and 1, lie in the box scaled by `factor`, and
  /// `hue` in the sector from `start` to `end` (HueInSector).
  [[nodiscard]] bool AcceptsInSector(double d0, double d1, double factor, double start, double end,
                                     double hue) const;

  /// The largest of the six component limits, with those of dimension 0 taken ten times when
  /// `lightnessTenfold` is set.
  [[nodiscard]] double LargestLimit(bool lightnessTenfold) const;

  /// Archive form: the seven doubles, without a count. Throws as CArchive does; a short
  /// archive leaves the record as it was.
  void SerializeValues(CArchive& archive);
};

/// True when `hue` lies in the sector that runs counter-clockwise from `start` to `end`, all in radians in
/// [0, 2 pi], ends inclusive. Equal ends (by near-equality) mean the full circle.
[[nodiscard]] VRX_API bool HueInSector(double hue, double start, double end);

/// The boxes of the illuminants of a judgement; three when new.
class CBoxTolIllum2 : public CArrayVarex<CBoxTolData> {
 public:
  CBoxTolIllum2() { SetSize(3); }
};
/// One entry per measuring angle.
using CBoxTolAngle3 = CArrayVarex<CBoxTolIllum2>;
/// One entry per standard.
class CBoxTolStd4 : public CArrayVarex<CBoxTolAngle3> {
 public:
  /// Gives every standard `count` angles; a table without standards gets one first.
  void SetAngleCount(int32_t count) {
    if (IsEmpty()) SetSize(1);
    for (CBoxTolAngle3& standard : *this) standard.SetSize(count);
  }
};

/// Block sizes of the three difference dimensions; 1.0 each when new.
class VRX_API CBlockSizeData : public CDoubleArray1 {
 public:
  static constexpr int32_t kValues = 3;

  CBlockSizeData() {
    SetSize(kValues);
    Fill(1.0);
  }
  /// Archive form: the three doubles, without a count. Throws as CArchive does; a short
  /// archive leaves the record as it was.
  void SerializeValues(CArchive& archive);
};

/// The block sizes of a second grid of the host's: a type of its own, so that the two are not taken for each
/// other, and the same numbers.
class CGGBlockSizeData : public CBlockSizeData {};

/// The block code of a sample against a standard: a grid of nine blocks per dimension, centred on the
/// standard, in which each dimension's cell is 0 below, 1 to 9 inside and 10 above; the code is cell0 x 256
/// + cell1 x 16 + cell2. A difference on an edge belongs to the cell above it. In: both colours with the
/// coordinates of the system; `settings` choose the difference (dE*ab by default). Out: the code, 0 to
/// 0xAAA; unset when the standard is.
[[nodiscard]] VRX_API double BlockCode(const CBlockSizeData& blocks, const CColorValues& standard,
                                       const CColorValues& sample, vrxIlluminant illuminant, int32_t observer,
                                       const CDifferenceSettings& settings = {});
/// The same over values; unset when the standard's tristimulus values are.
[[nodiscard]] VRX_API double BlockCode(const CBlockSizeData& blocks, const Color& standard,
                                       const Color& sample, const CDifferenceSettings& settings);
/// A code as people write it: a digit for each dimension, 0 to 9 and A, as "555" for the block of the standard.
[[nodiscard]] VRX_API std::string BlockText(int32_t code);

}  // namespace vrx

#endif  // VRXMATH_TOLERANCE_BOX_TOLERANCE_H_
