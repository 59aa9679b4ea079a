// The inner loops of the matrix routines, over rows of doubles in whole pieces of four: a count is rounded
// up, so what stands behind a row is read and written too. Rows are padded for it (PaddedStride); sums need
// the padding to be zero. Every operation rounds on its own and lanes never mix before the end of a sum, so
// the bits do not depend on how wide the processor's vectors are.
//
// Up to four values need no call; their values are read one by one, as they were written shortly before.

#ifndef VRXMATH_NUMERIC_MATRIX_KERNELS_H_
#define VRXMATH_NUMERIC_MATRIX_KERNELS_H_

#include <cstdint>

#include <vrxmath/numeric/lane_kernels.h>

namespace vrx::numeric_internal {

inline constexpr int32_t kPiece = 4;

/// The distance of rows that leaves room for a piece from any of `columns` values on.
inline int32_t PaddedStride(int32_t columns) {
  return (columns + 2 * (kPiece - 1)) / kPiece * kPiece;
}

/// Rows of a matrix, or the tails of rows.
struct RowBlock {
  double* first;
  int32_t stride, rows;
};

/// A plane rotation (c, s) of two rows: p' = c p + s q, q' = c q - s p.
struct PlaneRotation {
  double c, s;
};

}  // namespace vrx::numeric_internal

namespace vrx {

/// The loops for more than one piece, one of each per instruction set (lane_kernels.h).
struct MatrixKernels {
  using RowBlock = numeric_internal::RowBlock;
  double (*dot)(const double* a, const double* b, int32_t count);
  void (*addMultiple)(double factor, const double* x, double* y, int32_t count);
  /// In every row: row[k] -= pivotRow[k] * row[0] / pivotRow[0], in this order of operations, with row[0] and
  /// pivotRow[0] as they were.
  void (*eliminateByDivision)(const double* pivotRow, const RowBlock& block, int32_t count);
  /// In every row, with d = row[column] replaced by 0: row[k] -= d * pivotRow[k].
  void (*eliminateColumn)(const double* pivotRow, int32_t column, const RowBlock& block, int32_t count);
  /// Reflect.
  void (*reflect)(const double* u, double h, const RowBlock& block, int32_t count);
  /// Applies rotations[i] to the rows i - 1 and i of the block, for i from 1 on.
  void (*rotateChain)(const numeric_internal::PlaneRotation* rotations, const RowBlock& block, int32_t count);
};

}  // namespace vrx

namespace vrx::numeric_internal {

/// Sum of a[k] b[k]: in order for a single piece, as eight partial sums added in pairs for more.
inline double Dot(const double* a, const double* b, int32_t count) {
  if (count > kPiece) return CurrentKernels<MatrixKernels>().dot(a, b, count);
  double sum = 0.0;
  for (int32_t k = 0; k < count; ++k) sum += a[k] * b[k];
  return sum;
}

/// y[k] += factor * x[k]. The two do not overlap.
inline void AddMultiple(double factor, const double* x, double* y, int32_t count) {
  if (count > kPiece) return CurrentKernels<MatrixKernels>().addMultiple(factor, x, y, count);
  for (int32_t k = 0; k < count; ++k) y[k] += factor * x[k];
}

/// Adds (u . row) / h times u to every row: the reflection I + u u^T / h.
inline void Reflect(const double* u, double h, const RowBlock& block, int32_t count) {
  if (count > kPiece) return CurrentKernels<MatrixKernels>().reflect(u, h, block, count);
  double* row = block.first;
  for (int32_t i = 0; i < block.rows; ++i, row += block.stride) {
    AddMultiple(Dot(u, row, count) / h, u, row, count);
  }
}

}  // namespace vrx::numeric_internal

#endif  // VRXMATH_NUMERIC_MATRIX_KERNELS_H_
