// The factors of a parameterised colour difference.

#ifndef VRXMATH_FOUNDATION_CMC_FACTORS_H_
#define VRXMATH_FOUNDATION_CMC_FACTORS_H_

#include <cstddef>
#include <cstdint>

#include <vrxmath/export.h>
#include <vrxmath/foundation/checked_array.h>
#include <vrxmath/foundation/numbers.h>
#include <vrxmath/platform/archive.h>

namespace vrx {

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

  /// Archive form: the four numbers in order (64 bits each). Throws as CArchive does; the record
  /// is then unchanged.
  void Serialize(CArchive& archive);
  static constexpr std::size_t kMinArchiveBytes = 32;
};

/// Factors per illuminant, and those per geometry.
using CCmcFactorArray2 = CArrayVarex<CCmcFactorData>;
using CCmcFactorArray3 = CArrayVarex<CCmcFactorArray2>;

}  // namespace vrx

#endif  // VRXMATH_FOUNDATION_CMC_FACTORS_H_
