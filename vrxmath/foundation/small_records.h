// Small records of a number or two: a value with its place, the weight of a geometry, the factors of a
// parameterised colour difference.

#ifndef VRXMATH_FOUNDATION_SMALL_RECORDS_H_
#define VRXMATH_FOUNDATION_SMALL_RECORDS_H_

#include <cstdint>

#include <vrxmath/export.h>
#include <vrxmath/foundation/checked_array.h>
#include <vrxmath/foundation/numbers.h>
#include <vrxmath/platform/archive.h>

namespace vrx {

/// A value with the place that it came from, so that a list can be sorted and still point back.
struct VRX_API CSortDouble {
  double value = kUnset;
  int32_t index = -1;  ///< place in the unsorted list; -1 means none

  bool operator==(const CSortDouble& other) const {
    return NearlyEqual(value, other.value) && index == other.index;
  }

  /// Archive form: value (64 bits), index (32 bits). Throws as CArchive does.
  void Serialize(CArchive& archive);
  static constexpr std::size_t kMinArchiveBytes = 12;
};

using CSortDoubleArray = CArrayVarex<CSortDouble>;

/// Sorts by value, ascending; equal values keep their order, and NaN comes last.
VRX_API void SortByValue(CSortDoubleArray& values);

/// How much one measuring geometry counts in a sum over geometries.
struct VRX_API CAngleWeight {
  uint8_t code = 0;     ///< geometry (foundation/angles.h)
  double weight = 1.0;  ///< 1 counts in full

  bool operator==(const CAngleWeight& other) const {
    return code == other.code && NearlyEqual(weight, other.weight);
  }

  /// Archive form: code (8 bits), weight (64 bits). Throws as CArchive does.
  void Serialize(CArchive& archive);
  static constexpr std::size_t kMinArchiveBytes = 9;
};

using CAngleWeightArray = CArrayVarex<CAngleWeight>;

/// The four factors of a parameterised colour difference. New, they are those of CMC (2:1), the ratio in
/// which textiles and paints are judged for acceptability (ISO 105-J03).
struct VRX_API CCmcFactorData {
  double lightness = 2.0;  ///< l of CMC, kL of CIE94 and CIE2000, gL of DIN6175, kCH of DIN99
  double chroma = 1.0;     ///< c, kC, gC, kE
  double hue = 1.0;        ///< kH, gH; for CMC the commercial factor cf, which is only displayed
  double limit = 1.0;      ///< the difference shown beside the factors

  bool operator==(const CCmcFactorData& other) const {
    return NearlyEqual(lightness, other.lightness) && NearlyEqual(chroma, other.chroma) &&
           NearlyEqual(hue, other.hue) && NearlyEqual(limit, other.limit);
  }

  /// Archive form: the four numbers in order (64 bits each). Throws as CArchive does.
  void Serialize(CArchive& archive);
  static constexpr std::size_t kMinArchiveBytes = 32;
};

/// Factors per illuminant, and those per geometry.
using CCmcFactorArray2 = CArrayVarex<CCmcFactorData>;
using CCmcFactorArray3 = CArrayVarex<CCmcFactorArray2>;

}  // namespace vrx

#endif  // VRXMATH_FOUNDATION_SMALL_RECORDS_H_
