#include <vrxmath/numeric/kernels.h>

#include <algorithm>
#include <cstddef>

// Where the platform can choose at load time, each kernel is compiled for two vector widths: some processors
// divide twice as fast in the wider one. What a kernel calls must be compiled into both.
#if defined(__GNUC__) && defined(__x86_64__) && defined(__gnu_linux__)
#define VRX_TWO_VECTOR_WIDTHS __attribute__((target_clones("avx", "default")))
#else
#define VRX_TWO_VECTOR_WIDTHS
#endif
#if defined(__GNUC__)
#define VRX_ALWAYS_INLINE inline __attribute__((always_inline))
#else
#define VRX_ALWAYS_INLINE inline
#endif

namespace vrx::numeric_internal {
namespace {

VRX_ALWAYS_INLINE double DotOf(const double* a, const double* b, int32_t count) {
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

VRX_ALWAYS_INLINE void AddMultipleOf(double factor, const double* __restrict x, double* __restrict y,
                                     int32_t count) {
  for (int32_t k = 0; k < count; k += kPiece) {
    for (int32_t lane = k; lane < k + kPiece; ++lane) y[lane] += factor * x[lane];
  }
}

VRX_ALWAYS_INLINE void SubtractQuotients(const double* __restrict pivotRow, double* __restrict row,
                                         int32_t count) {
  const double pivot = pivotRow[0], factor = row[0];
  for (int32_t k = 0; k < count; k += kPiece) {
    for (int32_t lane = k; lane < k + kPiece; ++lane) row[lane] -= pivotRow[lane] * factor / pivot;
  }
}

// A few columns of RotateChain: a row stays in registers between its two rotations.
template <std::size_t kColumns>
VRX_ALWAYS_INLINE void RotateColumns(const PlaneRotation* rotations, double* row, int32_t stride,
                                     int32_t rows) {
  double x[kColumns];
  std::copy_n(row, kColumns, x);
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
  std::copy_n(x, kColumns, row);
}

}  // namespace

VRX_TWO_VECTOR_WIDTHS
double DotLong(const double* a, const double* b, int32_t count) {
  return DotOf(a, b, count);
}

VRX_TWO_VECTOR_WIDTHS
void AddMultipleLong(double factor, const double* x, double* y, int32_t count) {
  AddMultipleOf(factor, x, y, count);
}

VRX_TWO_VECTOR_WIDTHS
void EliminateByDivision(const double* pivotRow, const RowBlock& block, int32_t count) {
  double* row = block.first;
  for (int32_t i = 0; i < block.rows; ++i, row += block.stride) SubtractQuotients(pivotRow, row, count);
}

VRX_TWO_VECTOR_WIDTHS
void EliminateColumn(const double* pivotRow, int32_t column, const RowBlock& block, int32_t count) {
  double* row = block.first;
  for (int32_t i = 0; i < block.rows; ++i, row += block.stride) {
    const double d = row[column];
    AddMultipleOf(-d, pivotRow, row, count);
    row[column] = 0.0 - d * pivotRow[column];
  }
}

VRX_TWO_VECTOR_WIDTHS
void ReflectLong(const double* u, double h, const RowBlock& block, int32_t count) {
  double* row = block.first;
  for (int32_t i = 0; i < block.rows; ++i, row += block.stride) {
    AddMultipleOf(DotOf(u, row, count) / h, u, row, count);
  }
}

VRX_TWO_VECTOR_WIDTHS
void RotateChain(const PlaneRotation* rotations, const RowBlock& block, int32_t count) {
  int32_t column = 0;
  for (; column + kPiece < count; column += 2 * kPiece) {
    RotateColumns<2 * kPiece>(rotations, block.first + column, block.stride, block.rows);
  }
  if (column < count) RotateColumns<kPiece>(rotations, block.first + column, block.stride, block.rows);
}

}  // namespace vrx::numeric_internal
