// Chromatic adaptation as formulas over values: the colour that looks under one white as a given colour does under another.
// What two whites contribute is a matrix, found once; it then serves a colour and a pack of them.
//
//   const Matrix3 toA = AdaptationMatrix(AdaptationTransform::kCat16, d65, a);
//   const Xyz corresponding = Adapt(xyz, toA);

#ifndef VRXMATH_COLORIMETRY_ADAPTATION_FORMULAS_H_
#define VRXMATH_COLORIMETRY_ADAPTATION_FORMULAS_H_

#include <cstdint>

#include <vrxmath/colorimetry/values.h>
#include <vrxmath/numeric/lanes.h>

namespace vrx {

/// A 3 x 3 matrix, row by row.
struct Matrix3 {
  double at[3][3];
};

/// The cone-like responses of which a chromatic adaptation scales each by itself.
enum class AdaptationTransform : int32_t {
  kCat02,     ///< of CIECAM02 (CIE 159:2004)
  kCat16,     ///< of CAM16 (Li et al., Color Res. Appl. 42, 2017, 703-718)
  kBradford,  ///< linear Bradford, as in ICC profiles (ISO 15076-1, annex E)
};

/// The matrix from tristimulus values to the responses of a transform.
constexpr Matrix3 ResponseMatrix(AdaptationTransform transform) {
  switch (transform) {
    case AdaptationTransform::kCat02:
      return {{{0.7328, 0.4296, -0.1624}, {-0.7036, 1.6975, 0.0061}, {0.0030, 0.0136, 0.9834}}};
    case AdaptationTransform::kCat16:
      return {{{0.401288, 0.650173, -0.051461},
               {-0.250268, 1.204414, 0.045854},
               {-0.002079, 0.048952, 0.953127}}};
    default:
      return {{{0.8951, 0.2664, -0.1614}, {-0.7502, 1.7135, 0.0367}, {0.0389, -0.0685, 1.0296}}};
  }
}

/// The product of two matrices.
constexpr Matrix3 Product(const Matrix3& a, const Matrix3& b) {
  Matrix3 product{};
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      product.at[i][j] = a.at[i][0] * b.at[0][j] + a.at[i][1] * b.at[1][j] + a.at[i][2] * b.at[2][j];
    }
  }
  return product;
}

/// The inverse by cofactors; a singular matrix gives infinities or NaN.
constexpr Matrix3 Inverse(const Matrix3& m) {
  Matrix3 inverse{};
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      const int r = (j + 1) % 3, s = (j + 2) % 3, c = (i + 1) % 3, d = (i + 2) % 3;
      inverse.at[i][j] = m.at[r][c] * m.at[s][d] - m.at[r][d] * m.at[s][c];
    }
  }
  const double determinant =
      m.at[0][0] * inverse.at[0][0] + m.at[0][1] * inverse.at[1][0] + m.at[0][2] * inverse.at[2][0];
  for (auto& row : inverse.at) {
    for (double& element : row) element /= determinant;
  }
  return inverse;
}

/// A matrix times a colour.
template <class T>
VRX_LANE_INLINE XyzOf<T> Times(const Matrix3& m, T x, T y, T z) {
  return {m.at[0][0] * x + m.at[0][1] * y + m.at[0][2] * z, m.at[1][0] * x + m.at[1][1] * y + m.at[1][2] * z,
          m.at[2][0] * x + m.at[2][1] * y + m.at[2][2] * z};
}

/// The matrix that takes colours seen under `from` to the corresponding ones under `to`. `degree`: of adaptation, 1 for a
/// complete one, 0 for none.
/// Formula: each response is multiplied by degree (response of `to` / response of `from`) + 1 - degree (von Kries, in the
///          form of CIE 159 and CIE 160).
constexpr Matrix3 AdaptationMatrix(AdaptationTransform transform, const White& from, const White& to,
                                   double degree = 1.0) {
  const Matrix3 response = ResponseMatrix(transform);
  Matrix3 scaled = response;
  for (int i = 0; i < 3; ++i) {
    const double source =
        response.at[i][0] * from.X + response.at[i][1] * from.Y + response.at[i][2] * from.Z;
    const double target = response.at[i][0] * to.X + response.at[i][1] * to.Y + response.at[i][2] * to.Z;
    const double gain = degree * (target / source) + (1.0 - degree);
    for (double& element : scaled.at[i]) element *= gain;
  }
  return Product(Inverse(response), scaled);
}

/// The corresponding colour; unset tristimulus values stay unset.
template <class T>
VRX_LANE_INLINE XyzOf<T> Adapt(const XyzOf<T>& xyz, const Matrix3& matrix) {
  const auto unset = IsUnset(xyz);
  const XyzOf<T> adapted = Times(matrix, xyz.X, xyz.Y, xyz.Z);
  return {Select(unset, xyz.X, adapted.X), Select(unset, xyz.Y, adapted.Y), Select(unset, xyz.Z, adapted.Z)};
}

}  // namespace vrx

#endif  // VRXMATH_COLORIMETRY_ADAPTATION_FORMULAS_H_
