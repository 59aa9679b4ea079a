#include <vrxmath/numeric/matrix_kernels.h>

#include <cstddef>
#include <cstdint>

#include <vrxmath/numeric/lanes.h>

namespace vrx {
namespace numeric_internal {
namespace {

VRX_LANE_INLINE double DotOf(const double* a, const double* b, int32_t count) {
  double even[kPiece] = {}, odd[kPiece] = {};
  int32_t k = 0;
  for (; k + kPiece < count; k += 2 * kPiece) {
    for (int32_t lane = 0; lane < kPiece; ++lane) even[lane] += a[k + lane] * b[k + lane];
    for (int32_t lane = 0; lane < kPiece; ++lane) odd[lane] += a[k + kPiece + lane] * b[k + kPiece + lane];
  }
  if (k < count) {
    for (int32_t lane = 0; lane < kPiece; ++lane) even[lane] += a[k + lane] * b[k + lane];
  }
  for (int32_t lane = 0; lane < kPiece; ++lane) even[lane] += odd[lane];
  return (even[0] + even[1]) + (even[2] + even[3]);
}

VRX_LANE_INLINE void AddMultipleOf(double factor, const double* __restrict x, double* __restrict y,
                                   int32_t count) {
  for (int32_t k = 0; k < count; k += kPiece) {
    for (int32_t lane = k; lane < k + kPiece; ++lane) y[lane] += factor * x[lane];
  }
}

VRX_LANE_INLINE void SubtractQuotients(const double* __restrict pivotRow, double* __restrict row,
                                       int32_t count) {
  const double pivot = pivotRow[0], factor = row[0];
  for (int32_t k = 0; k < count; k += kPiece) {
    for (int32_t lane = k; lane < k + kPiece; ++lane) row[lane] -= pivotRow[lane] * factor / pivot;
  }
}

// A few columns of RotateChain: a row stays in registers between its two rotations.
template <std::size_t kColumns>
VRX_LANE_INLINE void RotateColumns(const PlaneRotation* rotations, double* row, int32_t stride,
                                   int32_t rows) {
  double x[kColumns];
  for (std::size_t lane = 0; lane < kColumns; ++lane) x[lane] = row[lane];
  for (int32_t i = 1; i < rows; ++i) {
    const double c = rotations[i].c, s = rotations[i].s;
    const double* next = row + stride;
    for (std::size_t lane = 0; lane < kColumns; ++lane) {
      const double y = next[lane];
      row[lane] = x[lane] * c + y * s;
      x[lane] = y * c - x[lane] * s;
    }
    row += stride;
  }
  for (std::size_t lane = 0; lane < kColumns; ++lane) row[lane] = x[lane];
}

double DotLong(const double* a, const double* b, int32_t count) {
  return DotOf(a, b, count);
}

void AddMultipleLong(double factor, const double* x, double* y, int32_t count) {
  AddMultipleOf(factor, x, y, count);
}

void EliminateByDivision(const double* pivotRow, const RowBlock& block, int32_t count) {
  double* row = block.first;
  for (int32_t i = 0; i < block.rows; ++i, row += block.stride) SubtractQuotients(pivotRow, row, count);
}

void EliminateColumn(const double* pivotRow, int32_t column, const RowBlock& block, int32_t count) {
  double* row = block.first;
  for (int32_t i = 0; i < block.rows; ++i, row += block.stride) {
    const double d = row[column];
    AddMultipleOf(-d, pivotRow, row, count);
    row[column] = 0.0 - d * pivotRow[column];
  }
}

void ReflectLong(const double* u, double h, const RowBlock& block, int32_t count) {
  double* row = block.first;
  for (int32_t i = 0; i < block.rows; ++i, row += block.stride) {
    AddMultipleOf(DotOf(u, row, count) / h, u, row, count);
  }
}

void RotateChain(const PlaneRotation* rotations, const RowBlock& block, int32_t count) {
  int32_t column = 0;
  for (; column + kPiece < count; column += 2 * kPiece) {
    RotateColumns<2 * kPiece>(rotations, block.first + column, block.stride, block.rows);
  }
  if (column < count) RotateColumns<kPiece>(rotations, block.first + column, block.stride, block.rows);
}

}  // namespace
}  // namespace numeric_internal

template <>
const MatrixKernels& KernelsOf<MatrixKernels, VRX_LANES>() {
  using namespace numeric_internal;
  static constexpr MatrixKernels kKernels = {&DotLong,         &AddMultipleLong, &EliminateByDivision,
                                             &EliminateColumn, &ReflectLong,     &RotateChain};
  return kKernels;
}

}  // namespace vrx
