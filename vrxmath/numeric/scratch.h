// Working memory of the matrix routines: on the stack while it is small, where a 3 x 3 system is solved in
// less time than one allocation takes.

#ifndef VRXMATH_NUMERIC_SCRATCH_H_
#define VRXMATH_NUMERIC_SCRATCH_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>

#include <vrxmath/numeric/matrix.h>
#include <vrxmath/numeric/matrix_kernels.h>
#include <vrxmath/platform/exceptions.h>

namespace vrx::numeric_internal {

/// `count` values of `T`, not initialised; up to `kInline` of them inside the object. Throws
/// CMemoryException.
template <class T, std::size_t kInline>
class Scratch {
 public:
  explicit Scratch(std::size_t count) {
    if (count <= kInline) return;
    heap_.reset(new (std::nothrow) T[count]);
    if (heap_ == nullptr) throw CMemoryException();
    data_ = heap_.get();
  }
  Scratch(const Scratch&) = delete;
  Scratch& operator=(const Scratch&) = delete;

  T* Data() { return data_; }
  T& operator[](int32_t i) { return data_[i]; }
  const T& operator[](int32_t i) const { return data_[i]; }

 private:
  T inline_[kInline];
  std::unique_ptr<T[]> heap_;
  T* data_ = inline_;
};

using Values = Scratch<double, 32>;

/// A rectangle of doubles in one block, row after row, padded for the kernels.
class Grid {
 public:
  Grid(int32_t rows, int32_t columns)
      : rows_(rows), columns_(columns), stride_(PaddedStride(columns)), cells_(CellCount(rows, stride_)) {}

  int32_t Rows() const { return rows_; }
  int32_t Columns() const { return columns_; }
  int32_t Stride() const { return stride_; }
  double* operator[](int32_t row) { return cells_.Data() + static_cast<std::ptrdiff_t>(row) * stride_; }
  /// Sets everything to 0.0, the padding included.
  void Zero() { std::fill_n(cells_.Data(), CellCount(rows_, stride_), 0.0); }
  /// The rows `begin` to `end` - 1 from `column` on.
  RowBlock Block(int32_t begin, int32_t end, int32_t column = 0) {
    return {begin < end ? (*this)[begin] + column : nullptr, stride_, end - begin};
  }

 private:
  static std::size_t CellCount(int32_t rows, int32_t stride) {
    const auto r = static_cast<std::size_t>(rows), s = static_cast<std::size_t>(stride);
    if (s != 0 && r > std::numeric_limits<std::size_t>::max() / sizeof(double) / s) throw CMemoryException();
    return r * s;
  }

  int32_t rows_, columns_, stride_;
  Scratch<double, 256> cells_;
};

/// The first `count` elements of `from`. Missing ones are read through the checked accessor, which reports.
inline void CopyElements(const CDoubleArray1& from, int32_t count, double* to) {
  const int32_t present = std::min(count, from.GetSize());
  std::copy_n(from.GetData(), present, to);
  for (int32_t j = present; j < count; ++j) to[j] = from[j];
}

/// Writes `count` values to the front of `to`, through the checked accessor where it is too short.
inline void StoreElements(const double* from, int32_t count, CDoubleArray1& to) {
  const int32_t present = std::min(count, to.GetSize());
  std::copy_n(from, present, to.GetData());
  for (int32_t j = present; j < count; ++j) to[j] = from[j];
}

/// Fills `grid` from the top-left cells of `matrix`.
inline void Load(const CMatrix& matrix, Grid& grid) {
  for (int32_t i = 0; i < grid.Rows(); ++i) CopyElements(matrix[i], grid.Columns(), grid[i]);
}

/// Writes `columns` columns of `grid` back to `matrix`.
inline void Store(Grid& grid, int32_t columns, CMatrix& matrix) {
  for (int32_t i = 0; i < grid.Rows(); ++i) StoreElements(grid[i], columns, matrix[i]);
}

/// `count` readable elements of a vector: its own memory when it is long enough, a checked copy otherwise.
class Elements {
 public:
  Elements(const CDoubleArray1& vector, int32_t count)
      : copy_(vector.GetSize() < count ? static_cast<std::size_t>(count) : 0) {
    if (vector.GetSize() >= count) {
      data_ = vector.GetData();
    } else {
      CopyElements(vector, count, copy_.Data());
      data_ = copy_.Data();
    }
  }
  double operator[](int32_t i) const { return data_[i]; }
  const double* Data() const { return data_; }

 private:
  Values copy_;
  const double* data_;
};

}  // namespace vrx::numeric_internal

#endif  // VRXMATH_NUMERIC_SCRATCH_H_
