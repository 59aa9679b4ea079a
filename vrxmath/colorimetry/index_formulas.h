// Whiteness, tint and yellowness as formulas over values. What an illuminant and observer contribute is found once
// (ColorIndex::directTerms and recalculatedTerms in indices.h); IndexValue then serves a colour and a pack of them.

#ifndef VRXMATH_COLORIMETRY_INDEX_FORMULAS_H_
#define VRXMATH_COLORIMETRY_INDEX_FORMULAS_H_

#include <vrxmath/colorimetry/space_formulas.h>
#include <vrxmath/colorimetry/values.h>
#include <vrxmath/numeric/lanes.h>

namespace vrx {

/// The equations behind the indices.
enum class IndexFormula {
  kE313Whiteness,   ///< 3.388 Z - 3 Y
  kTaubeWhiteness,  ///< 3.3834 Z - 3 Y
  kBergerAt2,       ///< Y + 3.4 Z - 3.895 X
  kBergerAt10,      ///< Y + 3.448 Z - 3.904 X
  kCieWhiteness,    ///< Y + 800 (xn - x) + 1700 (yn - y)
  kCieTint,         ///< k (xn - x) - 650 (yn - y)
  kStensby,         ///< L - 3b + 3a in Hunter Lab
  kHunter,          ///< L - 3b in Hunter Lab
  kE313Yellowness,  ///< 100 (1 - 0.847 Z / Y)
  kYellowness,      ///< 100 (Cx X - Cz Z) / Y
  kC2Index,         ///< 253.1 - 620.88511 Z / (1.275 X + Y + 0.635025 Z)
};

/// An equation with what an illuminant and observer contribute to it.
struct IndexTerms {
  IndexFormula formula = IndexFormula::kE313Whiteness;
  double scaleX = 1.0, scaleZ = 1.0;  ///< from the white of the pair to the reference of a recalculated form
  double Cx = 0.0, Cz = 0.0;          ///< coefficients of a yellowness
  Xy white = {0.0, 0.0};              ///< chromaticity of the white for the CIE equations
  double k = 1000.0;                  ///< the observer's factor of the CIE tint
  Viewing viewing = {};               ///< for Hunter Lab
};

/// The CIE equations, unset for a sample without chromaticity.
template <class T>
VRX_LANE_INLINE T CieIndex(const IndexTerms& terms, const XyzOf<T>& xyz) {
  const T sum = xyz.X + xyz.Y + xyz.Z;
  const T x = terms.white.x - xyz.X / sum, y = terms.white.y - xyz.Y / sum;
  const T index =
      terms.formula == IndexFormula::kCieTint ? terms.k * x - 650.0 * y : xyz.Y + 800.0 * x + 1700.0 * y;
  return Select(NearlyEqual(sum, T(0.0)), T(kUnset), index);
}

/// The equations that are sums and quotients of X, Y and Z.
template <class T>
VRX_LANE_INLINE T TristimulusIndex(const IndexTerms& terms, T X, T Y, T Z) {
  switch (terms.formula) {
    case IndexFormula::kE313Whiteness:
      return 3.388 * Z - 3.0 * Y;
    case IndexFormula::kTaubeWhiteness:
      return 3.3834 * Z - 3.0 * Y;
    case IndexFormula::kBergerAt2:
      return Y + 3.4 * Z - 3.895 * X;
    case IndexFormula::kBergerAt10:
      return Y + 3.448 * Z - 3.904 * X;
    case IndexFormula::kE313Yellowness:
      return 100.0 * (1.0 - 0.847 * Z / Y);
    case IndexFormula::kYellowness:
      return 100.0 * (terms.Cx * X - terms.Cz * Z) / Y;
    default:
      return 253.1 - 620.88511 * Z / (1.275 * X + Y + 0.635025 * Z);
  }
}

/// The index of a sample that was measured.
template <class T>
VRX_LANE_INLINE T MeasuredIndexValue(const IndexTerms& terms, const XyzOf<T>& xyz) {
  switch (terms.formula) {
    case IndexFormula::kCieWhiteness:
    case IndexFormula::kCieTint:
      return CieIndex(terms, xyz);
    case IndexFormula::kStensby: {
      const LabOf<T> lab = XyzToHunter(xyz, terms.viewing);
      return lab.L - 3.0 * lab.b + 3.0 * lab.a;
    }
    case IndexFormula::kHunter: {
      const LabOf<T> lab = XyzToHunter(xyz, terms.viewing);
      return lab.L - 3.0 * lab.b;
    }
    default:
      return TristimulusIndex(terms, xyz.X * terms.scaleX, xyz.Y, xyz.Z * terms.scaleZ);
  }
}

/// Whether a sample has an index where the index is defined: it was measured and, for the CIE equations, has a chromaticity.
/// What comes out tells nothing, since an index may be as small as the unset value.
inline bool HasIndex(const IndexTerms& terms, const Xyz& xyz) {
  const bool readsChromaticity =
      terms.formula == IndexFormula::kCieWhiteness || terms.formula == IndexFormula::kCieTint;
  return !IsUnset(xyz) && !(readsChromaticity && NearlyEqual(xyz.X + xyz.Y + xyz.Z, 0.0));
}

/// The index of a sample; unset for unset tristimulus values.
template <class T>
VRX_LANE_INLINE T IndexValue(const IndexTerms& terms, const XyzOf<T>& xyz) {
  return Select(IsUnset(xyz), T(kUnset), MeasuredIndexValue(terms, xyz));
}

}  // namespace vrx

#endif  // VRXMATH_COLORIMETRY_INDEX_FORMULAS_H_
