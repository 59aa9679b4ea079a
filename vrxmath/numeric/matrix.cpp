#include <vrxmath/numeric/matrix.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <utility>

#include <vrxmath/numeric/matrix_kernels.h>
#include <vrxmath/numeric/scratch.h>
#include <vrxmath/platform/exceptions.h>

namespace vrx {

using numeric_internal::CopyElements;
using numeric_internal::Elements;
using numeric_internal::Grid;
using numeric_internal::Load;
using numeric_internal::Scratch;
using numeric_internal::Store;
using numeric_internal::StoreElements;
using numeric_internal::Values;

namespace {

/// A pivot below this is a singular system.
constexpr double kSingularPivot = 1e-17;

using Indices = Scratch<int32_t, 32>;

int32_t CheckedSize(uint32_t size) {
  if (size > static_cast<uint32_t>(std::numeric_limits<int32_t>::max())) throw CInvalidArgException();
  return static_cast<int32_t>(size);
}

int32_t Columns(const CMatrix& matrix) {
  return static_cast<int32_t>(matrix.GetColumnCount());
}

/// The size of the top-left square block to transpose: what there is of n x n. A block of one cell needs
/// none.
uint32_t BlockSize(const CMatrix& matrix, uint32_t n) {
  const uint32_t size = std::min({n, matrix.GetRowCount(), matrix.GetColumnCount()});
  if (n > std::max(size, 1U)) foundation_internal::ReportIndexError();
  return size;
}

void SwapGridRows(Grid& grid, int32_t i, int32_t j) {
  if (i != j) std::swap_ranges(grid[i], grid[i] + grid.Columns(), grid[j]);
}

/// The largest magnitude in column i below the diagonal, -1 if there is none. The four of every group are compared side by
/// side, since each comparison waits for the one before it.
double LargestBelow(Grid& a, int32_t i) {
  constexpr int32_t kGroup = 4;
  double largest[kGroup] = {-1.0, -1.0, -1.0, -1.0};
  int32_t k = i + 1;
  for (; k + kGroup <= a.Rows(); k += kGroup) {
    for (int32_t lane = 0; lane < kGroup; ++lane)
      largest[lane] = std::max(largest[lane], std::fabs(a[k + lane][i]));
  }
  for (; k < a.Rows(); ++k) largest[0] = std::max(largest[0], std::fabs(a[k][i]));
  return *std::max_element(largest, largest + kGroup);
}

/// Up to this many unknowns a call of a kernel for every step takes longer than the step.
constexpr int32_t kFewUnknowns = 12;

/// The row at or below the diagonal with the largest magnitude in column i, the upper one of equals.
int32_t PartialPivot(Grid& a, int32_t i) {
  int32_t pivot = i;
  if (a.Rows() <= kFewUnknowns) {
    double largest = std::fabs(a[i][i]);
    for (int32_t k = i + 1; k < a.Rows(); ++k) {
      const double magnitude = std::fabs(a[k][i]);
      if (magnitude > largest) pivot = k, largest = magnitude;
    }
    return pivot;
  }
  const double largest = LargestBelow(a, i);
  if (!(largest > std::fabs(a[i][i]))) return i;
  ++pivot;
  while (std::fabs(a[pivot][i]) != largest) ++pivot;
  return pivot;
}

/// One row of the kernel's eliminateByDivision, with its operations in its order.
void EliminateRow(const double* __restrict pivotRow, double* __restrict row, int32_t count) {
  const double factor = row[0], pivot = pivotRow[0];
  for (int32_t k = 0; k < count; ++k) row[k] -= pivotRow[k] * factor / pivot;
}

bool ReduceToTriangle(Grid& a) {
  const bool few = a.Rows() <= kFewUnknowns;
  for (int32_t i = 0; i < a.Rows(); ++i) {
    SwapGridRows(a, i, PartialPivot(a, i));
    if (std::fabs(a[i][i]) < kSingularPivot) return false;
    const int32_t count = a.Columns() - i;
    if (few) {
      for (int32_t k = i + 1; k < a.Rows(); ++k) EliminateRow(a[i] + i, a[k] + i, count);
    } else {
      CurrentKernels<MatrixKernels>().eliminateByDivision(a[i] + i, a.Block(i + 1, a.Rows(), i), count);
    }
  }
  return true;
}

/// Solves the triangle for the right-hand side in that column.
void BackSubstitute(Grid& a, int32_t rightHandSide, Values& solution) {
  for (int32_t i = a.Rows() - 1; i >= 0; --i) {
    double sum = 0.0;
    for (int32_t j = i + 1; j < a.Rows(); ++j) sum += a[i][j] * solution[j];
    solution[i] = (a[i][rightHandSide] - sum) / a[i][i];
  }
}

constexpr int64_t kInfinityBits = std::bit_cast<int64_t>(std::numeric_limits<double>::infinity());

/// Gauss-Jordan elimination with full pivoting of [A | B], A being the first `n` columns.
class FullPivoting {
 public:
  explicit FullPivoting(Grid& ab)
      : ab_(ab), n_(ab.Rows()), freeCount_(n_), free_(Count()), pivotRows_(Count()), pivotColumns_(Count()) {
    for (int32_t i = 0; i < n_; ++i) free_[i] = i;
  }

  bool Run() {
    for (int32_t step = 0; step < n_; ++step) {
      if (claimedTwice_) return false;
      FindPivot();
      Claim(column_);
      SwapGridRows(ab_, row_, column_);
      pivotRows_[step] = row_;
      pivotColumns_[step] = column_;
      if (std::fabs(ab_[column_][column_]) < kSingularPivot) return false;
      Eliminate(column_);
    }
    RestoreColumns();
    return true;
  }

 private:
  std::size_t Count() const { return static_cast<std::size_t>(n_); }

  // The largest magnitude among the rows and columns that have not been pivots, the last of equals. Where
  // nothing compares (all NaN) the pivot of the step before stays. Magnitudes compare as their bit patterns
  // do, which needs no branch that a processor would have to guess.
  void FindPivot() {
    int64_t big = 0;
    for (int32_t i = 0; i < freeCount_; ++i) {
      const double* row = ab_[free_[i]];
      int32_t best = -1;
      for (int32_t j = 0; j < freeCount_; ++j) {
        const int64_t magnitude = ComparableMagnitude(row[free_[j]]);
        best = magnitude >= big ? free_[j] : best;
        big = std::max(big, magnitude);
      }
      if (best < 0) continue;
      row_ = free_[i];
      column_ = best;
    }
  }

  // Orders as |value| does; -1 for NaN.
  static int64_t ComparableMagnitude(double value) {
    const auto bits = std::bit_cast<int64_t>(std::fabs(value));
    return bits <= kInfinityBits ? bits : -1;
  }

  // A column is claimed again only where NaN left nothing to choose from; the step after it gives up.
  void Claim(int32_t column) {
    int32_t* end = free_.Data() + freeCount_;
    int32_t* place = std::find(free_.Data(), end, column);
    claimedTwice_ = place == end;
    if (claimedTwice_) return;
    std::copy(place + 1, end, place);
    --freeCount_;
  }

  void Eliminate(int32_t c) {
    const int32_t columns = ab_.Columns();
    double* pivotRow = ab_[c];
    const double inverse = 1.0 / pivotRow[c];
    pivotRow[c] = 1.0;
    for (int32_t j = 0; j < columns; ++j) pivotRow[j] *= inverse;
    CurrentKernels<MatrixKernels>().eliminateColumn(pivotRow, c, ab_.Block(0, c), columns);
    CurrentKernels<MatrixKernels>().eliminateColumn(pivotRow, c, ab_.Block(c + 1, n_), columns);
  }

  // Row exchanges of A are column exchanges of its inverse, undone in reverse order.
  void RestoreColumns() {
    for (int32_t k = 0; k < n_; ++k) {
      double* row = ab_[k];
      for (int32_t step = n_ - 1; step >= 0; --step)
        std::swap(row[pivotRows_[step]], row[pivotColumns_[step]]);
    }
  }

  Grid& ab_;
  int32_t n_;
  int32_t freeCount_;
  Indices free_;  // the rows (and columns) that have not been pivots, ascending
  Indices pivotRows_, pivotColumns_;
  int32_t row_ = 0, column_ = 0;
  bool claimedTwice_ = false;
};

}  // namespace

CMatrix& CMatrix::operator=(const CMatrix& other) {
  const auto isAsLong = [](const CDoubleArray1& a, const CDoubleArray1& b) {
    return a.GetSize() == b.GetSize();
  };
  if (this == &other) return *this;
  if (std::equal(begin(), end(), other.begin(), other.end(), isAsLong)) {
    for (int32_t i = 0; i < GetSize(); ++i) std::copy(other[i].begin(), other[i].end(), (*this)[i].begin());
  } else {
    CArrayVarex::operator=(other);
  }
  return *this;
}

CMatrix::~CMatrix() = default;

void CMatrix::SetSize(uint32_t rows, uint32_t columns) {
  const int32_t columnCount = CheckedSize(columns);
  CArrayVarex::SetSize(CheckedSize(rows), -1);
  for (CDoubleArray1& row : *this) row.SetSize(columnCount, -1);
}

uint32_t CMatrix::GetColumnCount() const {
  return IsEmpty() ? 0 : static_cast<uint32_t>(GetData()->GetSize());
}

void CMatrix::Zero() {
  for (CDoubleArray1& row : *this) row.Fill(0.0);
}

void CMatrix::SetIdentity() {
  Zero();
  for (int32_t i = 0; i < GetSize(); ++i) ElementAt(i)[i] = 1.0;
}

void CMatrix::SetRow(uint32_t i, const CDoubleArray1& values) {
  CDoubleArray1& row = GetRow(i);
  if (values.GetSize() == Columns(*this)) {
    row = values;
  } else {
    StoreElements(values.GetData(), values.GetSize(), row);
  }
}

void CMatrix::SetColumn(uint32_t j, const CDoubleArray1& values) {
  SetColumn(j, Elements(values, GetSize()).Data());
}

void CMatrix::SetColumn(uint32_t j, const double* values) {
  for (int32_t i = 0; i < GetSize(); ++i) ElementAt(i)[j] = values[i];
}

void CMatrix::SwapRows(uint32_t i, uint32_t j) {
  if (i == j) return;
  const CDoubleArray1 row = GetRow(i);
  SetAt(i, GetRow(j));
  SetAt(j, row);
}

void CMatrix::MultiplyVector(const CDoubleArray1& x, CDoubleArray1& y) const {
  const int32_t rows = GetSize(), columns = Columns(*this);
  const Elements in(x, columns);
  Values out(static_cast<std::size_t>(rows));
  for (int32_t i = 0; i < rows; ++i) {
    const Elements row((*this)[i], columns);
    double sum = 0.0;
    for (int32_t j = 0; j < columns; ++j) sum += row[j] * in[j];
    out[i] = sum;
  }
  StoreElements(out.Data(), rows, y);
}

void CMatrix::Multiply(const CMatrix& a, const CMatrix& b) {
  const int32_t depth = b.GetSize(), columns = Columns(b);
  Grid factor(depth, columns);
  Load(b, factor);
  CDoubleArray1 product;
  product.SetSize(columns);
  for (int32_t r = 0; r < GetSize(); ++r) {
    const Elements row(a[r], depth);
    product.Fill(0.0);
    for (int32_t k = 0; k < depth; ++k) {
      const double element = row[k];
      for (int32_t c = 0; c < columns; ++c) product.GetData()[c] += element * factor[k][c];
    }
    SetRow(static_cast<uint32_t>(r), product);
  }
}

void CMatrix::Transpose(uint32_t n) {
  const uint32_t size = BlockSize(*this, n);
  for (uint32_t i = 0; i < size; ++i) {
    for (uint32_t j = i + 1; j < size; ++j) std::swap(GetRow(i)[j], GetRow(j)[i]);
  }
}

uint32_t CMatrix::TransposeAlt(uint32_t n) {
  const uint32_t size = BlockSize(*this, n);
  for (uint32_t i = 0; i + 1 < size; ++i) {
    for (uint32_t j = 1; j < size; ++j) {
      if (j != i) std::swap(GetRow(i)[j], GetRow(j)[i]);
    }
  }
  return n;
}

uint32_t CMatrix::GaussSolve(CDoubleArray1& x) {
  const int32_t n = GetSize(), columns = Columns(*this);
  Grid a(n, std::max(n, columns));
  Load(*this, a);
  const bool regular = ReduceToTriangle(a);
  Store(a, columns, *this);
  if (!regular) return 0;
  const int32_t rightHandSide = std::max(columns - 1, 0);
  Values solution(static_cast<std::size_t>(n));
  BackSubstitute(a, rightHandSide, solution);
  for (int32_t i = 0; i < n; ++i) x[i] = solution[i];
  return 1;
}

uint32_t CMatrix::GaussJordan(CMatrix& b) {
  const int32_t n = GetSize(), columns = Columns(*this), width = std::max(n, columns), m = Columns(b);
  Grid ab(n, width + m);
  for (int32_t i = 0; i < n; ++i) {
    CopyElements(GetAt(i), width, ab[i]);
    CopyElements(b.GetAt(i), m, ab[i] + width);
  }
  const bool regular = FullPivoting(ab).Run();
  for (int32_t i = 0; i < n; ++i) {
    StoreElements(ab[i], columns, ElementAt(i));
    StoreElements(ab[i] + width, m, b[i]);
  }
  return regular ? 1 : 0;
}

uint32_t CMatrix::InvertSolve(CDoubleArray1& b) {
  const int32_t n = GetSize(), columns = Columns(*this), width = std::max(n, columns);
  const Elements rightHandSide(b, n);
  Grid ab(n, width + 1);
  for (int32_t i = 0; i < n; ++i) {
    CopyElements(GetAt(i), width, ab[i]);
    ab[i][width] = rightHandSide[i];
  }
  const bool regular = FullPivoting(ab).Run();
  for (int32_t i = 0; i < n; ++i) {
    StoreElements(ab[i], columns, ElementAt(i));
    b[i] = ab[i][width];
  }
  return regular ? 1 : 0;
}

double Distance3(const CDoubleArray1& p, const CDoubleArray1& q) {
  if (p.IsEmpty() || q.IsEmpty()) return kUnset;
  double sum = 0.0;
  for (int32_t i = 0; i < 3; ++i) sum += (p[i] - q[i]) * (p[i] - q[i]);
  return std::sqrt(sum);
}

}  // namespace vrx
