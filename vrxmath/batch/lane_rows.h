// How a kernel walks over rows in packs. For the lane sources alone (numeric/lane_kernels.h).
//
// A kernel works on columns. What lies in rows, and the rest that does not fill a pack, passes through a few columns on the
// stack, a chunk at a time, so that one loop per kernel is enough.

#ifndef VRXMATH_BATCH_LANE_ROWS_H_
#define VRXMATH_BATCH_LANE_ROWS_H_

#include <cstddef>
#include <limits>

#include <vrxmath/batch/batch_table.h>
#include <vrxmath/numeric/lanes.h>
#if defined(__GNUC__)
#include <vrxmath/numeric/pack.h>
#endif

// A lambda that becomes part of the loop that calls it.
#if defined(__GNUC__)
#define VRX_LANE_LAMBDA __attribute__((always_inline))
#else
#define VRX_LANE_LAMBDA
#endif

namespace vrx {
namespace {

#if VRX_LANES > 1
struct Unit;
using Lanes = Pack<VRX_LANES, Unit>;
#else
using Lanes = double;
#endif

inline constexpr std::size_t kLaneCount = VRX_LANES;

// Rows that pass through the stack at a time. With 14 columns it stays within the first-level cache.
inline constexpr std::size_t kChunkRows = 128;

// A NaN is the quiet one of numeric_limits, since processors differ in the sign of theirs.
VRX_LANE_INLINE Lanes CanonicalNaN(Lanes x) {
  return Select(x == x, x, Lanes(std::numeric_limits<double>::quiet_NaN()));
}

// f(in, out) for packs of whole columns; `count` is a multiple of the lanes.
template <std::size_t kIn, std::size_t kOut, class F>
VRX_LANE_INLINE void OverColumns(const double* const* in, double* const* out, std::size_t count, const F& f) {
  for (std::size_t i = 0; i < count; i += kLaneCount) {
    Lanes x[kIn], y[kOut];
    for (std::size_t k = 0; k < kIn; ++k) x[k] = Load<Lanes>(in[k] + i);
    f(x, y);
    for (std::size_t k = 0; k < kOut; ++k) Store(CanonicalNaN(y[k]), out[k] + i);
  }
}

// Rows to columns and back. The columns are kChunkRows apart; up to `padded` they are filled with a harmless number.
template <std::size_t kWidth>
void RowsToColumns(const Column<const double>* table, std::size_t from, std::size_t count, std::size_t padded,
                   double* columns) {
  for (std::size_t k = 0; k < kWidth; ++k) {
    const std::ptrdiff_t stride = table[k].stride;
    const double* source = table[k].first + static_cast<std::ptrdiff_t>(from) * stride;
    double* column = columns + k * kChunkRows;
    for (std::size_t i = 0; i < count; ++i) column[i] = source[static_cast<std::ptrdiff_t>(i) * stride];
    for (std::size_t i = count; i < padded; ++i) column[i] = 1.0;
  }
}
template <std::size_t kWidth>
void ColumnsToRows(const double* columns, const Column<double>* table, std::size_t from, std::size_t count) {
  for (std::size_t k = 0; k < kWidth; ++k) {
    const std::ptrdiff_t stride = table[k].stride;
    double* target = table[k].first + static_cast<std::ptrdiff_t>(from) * stride;
    const double* column = columns + k * kChunkRows;
    for (std::size_t i = 0; i < count; ++i) target[static_cast<std::ptrdiff_t>(i) * stride] = column[i];
  }
}

// f(in, out) for `count` rows of kIn numbers to rows of kOut.
template <std::size_t kIn, std::size_t kOut, class F>
[[gnu::noinline]] void OverRows(const Column<const double>* in, const Column<double>* out, std::size_t count,
                                const F& f) {
  double input[kIn * kChunkRows];
  double output[kOut * kChunkRows];
  bool direct = true;
  for (std::size_t k = 0; k < kIn; ++k) direct = direct && in[k].stride == 1;
  for (std::size_t k = 0; k < kOut; ++k) direct = direct && out[k].stride == 1;
  for (std::size_t i = 0, rows; i < count; i += rows) {
    const double* inputColumns[kIn];
    double* outputColumns[kOut];
    rows = direct ? (count - i) / kLaneCount * kLaneCount : 0;
    const bool viaStack = rows == 0;
    std::size_t padded = rows;
    if (viaStack) {
      rows = count - i < kChunkRows ? count - i : kChunkRows;
      padded = (rows + kLaneCount - 1) / kLaneCount * kLaneCount;
      RowsToColumns<kIn>(in, i, rows, padded, input);
    }
    for (std::size_t k = 0; k < kIn; ++k)
      inputColumns[k] = viaStack ? input + k * kChunkRows : in[k].first + i;
    for (std::size_t k = 0; k < kOut; ++k)
      outputColumns[k] = viaStack ? output + k * kChunkRows : out[k].first + i;
    OverColumns<kIn, kOut>(inputColumns, outputColumns, padded, f);
    if (viaStack) ColumnsToRows<kOut>(output, out, i, rows);
  }
}

}  // namespace
}  // namespace vrx

#endif  // VRXMATH_BATCH_LANE_ROWS_H_
