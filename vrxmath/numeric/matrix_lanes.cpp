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

// Quotients by one divisor. A correctly rounded quotient has only one value, so that these are the bits of the division,
// found at the price of multiplications: the divider of a processor takes several times as long.
//
// With the reciprocal as a sum of two doubles x * (inverse + rest) is one of the two doubles next to the quotient. What it
// leaves of x is a double, so that the fused operation has it exactly; multiplied by the rounded reciprocal and added it
// rounds as the quotient does (Markstein, "Computation of elementary functions on the IBM RISC System/6000", 1990). This
// holds where nothing leaves the range of normal numbers; a zero might come out with the other sign.
class SameDivisor {
 public:
  // The magnitudes for which it holds, as exponent fields: of the divisor, and of both factors of the dividends.
  static constexpr int64_t kSmallest = 1023 - 200, kLargest = 1023 + 200;

#if defined(__FMA__) || defined(__aarch64__)
  static constexpr bool kPays = true;
  VRX_LANE_INLINE explicit SameDivisor(double divisor)
      : divisor_(divisor),
        inverse_(1.0 / divisor),
        rest_(__builtin_fma(-inverse_, divisor, 1.0) * inverse_) {}
  VRX_LANE_INLINE double Quotient(double x) const {
    const double near = __builtin_fma(x, inverse_, x * rest_);
    return __builtin_fma(__builtin_fma(-near, divisor_, x), inverse_, near);
  }

 private:
  double divisor_, inverse_, rest_;
#else
  static constexpr bool kPays = false;
  VRX_LANE_INLINE explicit SameDivisor(double divisor) : divisor_(divisor) {}
  VRX_LANE_INLINE double Quotient(double x) const {
    return x / divisor_;
  }

 private:
  double divisor_;
#endif
};

// Whether every value is of the magnitude that SameDivisor covers.
VRX_LANE_INLINE bool AreModerate(const double* values, int32_t count) {
  int64_t outside = 0;  // negative once a value is
  for (int32_t k = 0; k < count; ++k) {
    const int64_t exponent = static_cast<int64_t>(__builtin_bit_cast(uint64_t, values[k]) >> 52 & 0x7ff);
    outside |= (exponent - SameDivisor::kSmallest) | (SameDivisor::kLargest - exponent);
  }
  return outside >= 0;
}

template <class DIVIDE>
VRX_LANE_INLINE void SubtractQuotients(const double* __restrict pivotRow, double* __restrict row,
                                       int32_t count, const DIVIDE& divide) {
  const double factor = row[0];
  for (int32_t k = 0; k < count; k += kPiece) {
    for (int32_t lane = k; lane < k + kPiece; ++lane) row[lane] -= divide(pivotRow[lane] * factor);
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
  const double pivot = pivotRow[0];
  const SameDivisor divisor(pivot);
  const bool moderate = SameDivisor::kPays && AreModerate(pivotRow, count);
  double* row = block.first;
  for (int32_t i = 0; i < block.rows; ++i, row += block.stride) {
    if (moderate && AreModerate(row, 1)) {
      SubtractQuotients(pivotRow, row, count, [&](double x) VRX_LANE_LAMBDA { return divisor.Quotient(x); });
    } else {
      SubtractQuotients(pivotRow, row, count, [&](double x) VRX_LANE_LAMBDA { return x / pivot; });
    }
  }
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
