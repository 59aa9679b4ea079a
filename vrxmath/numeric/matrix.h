// CMatrix: the dense matrix of doubles and the linear algebra of the library.
//
// It serves the small systems of colour work: device primaries (3 x 3), quadratic forms of tolerance
// ellipsoids (3 x 3), least-squares fits of a few parameters to many points. A matrix is its array of rows,
// so everything that a container can do (copy, compare, index) works on it:
//
//   CMatrix system(2, 3);             //  x + 2 y = 5
//   system[0][0] = 1.0;  ...          // 3x +   y = 5
//   CDoubleArray1 x;
//   x.SetSize(2);
//   if (system.GaussSolve(x) == 0) ...  // singular
//
// Shapes are the caller's business: outputs have their size before the call. The column count is that of row
// 0; all rows are assumed to have it. A vector or matrix that is too small is an index error, reported as the
// container reports it (foundation/checked_array.h); the calculation carries on with 0.0 for what is missing.
//
// Solvers return 1 for success and 0 for a singular system. They compare pivots with "<", so a NaN pivot is
// no singularity: it runs through into the result. The order of every sum is part of the result.

#ifndef VRXMATH_NUMERIC_MATRIX_H_
#define VRXMATH_NUMERIC_MATRIX_H_

#include <cstdint>

#include <vrxmath/export.h>
#include <vrxmath/foundation/typed_arrays.h>

namespace vrx {

/// Fills `values` with the basis functions of a linear fit at data point `point`; it comes with one element
/// per parameter. `context` is the caller's own.
using FitBasis = void (*)(void* context, uint32_t point, CDoubleArray1& values);

/// Dense matrix of doubles, rows first, both indices from 0.
class VRX_API CMatrix : public CArrayVarex<CDoubleArray1> {
 public:
  CMatrix() = default;
  /// As SetSize.
  CMatrix(uint32_t rows, uint32_t columns) { SetSize(rows, columns); }
  CMatrix(const CMatrix&) = default;
  /// Copies the rows; between matrices of one shape without an allocation.
  CMatrix& operator=(const CMatrix& other);
  ~CMatrix() override;

  /// Makes the matrix `rows` x `columns`. Cells that stay keep their value, new ones are 0.0. Throws
  /// CInvalidArgException for a size beyond 31 bits, CMemoryException when memory runs out.
  void SetSize(uint32_t rows, uint32_t columns);
  uint32_t GetRowCount() const { return static_cast<uint32_t>(GetSize()); }
  /// The size of row 0; 0 without rows.
  uint32_t GetColumnCount() const;

  /// Sets every element to 0.0.
  void Zero();
  /// Zero, then 1.0 at [i][i] for every row i.
  void SetIdentity();

  CDoubleArray1& GetRow(uint32_t i) { return ElementAt(i); }
  const CDoubleArray1& GetRow(uint32_t i) const { return GetAt(i); }
  /// Row i becomes a copy of `values` when they are as many as columns; otherwise they overwrite its first
  /// elements.
  void SetRow(uint32_t i, const CDoubleArray1& values);
  /// Column j becomes the first row-count values.
  void SetColumn(uint32_t j, const CDoubleArray1& values);
  void SetColumn(uint32_t j, const double* values);
  void SwapRows(uint32_t i, uint32_t j);

  /// y = A x. `y` has row-count elements or more. Sums run in column order from 0.0. `y` may be `x`.
  void MultiplyVector(const CDoubleArray1& x, CDoubleArray1& y) const;
  /// This = A B. The receiver has its shape, the rows of A and the columns of B. Sums run from 0.0 over the
  /// rows of B. The receiver may be A or B.
  void Multiply(const CMatrix& a, const CMatrix& b);
  /// Transposes the top-left n x n block in place. A block beyond the matrix is an index error; what there is
  /// of it is transposed.
  void Transpose(uint32_t n);
  /// The uneven transposition that old calibrations were made with: for i in 0..n-2 and j in 1..n-1, j not i,
  /// [i][j] and [j][i] change places, so pairs inside rows and columns 1..n-2 do so twice and stay. Only what
  /// touches row 0 or row n-1 ends transposed; Transpose is the correct one. Returns n.
  uint32_t TransposeAlt(uint32_t n);

  /// Solves the augmented n x (n+1) system that the receiver is by Gaussian elimination with partial
  /// pivoting; of equal pivots the upper row's is taken. The solution goes to `x` (n elements), the receiver
  /// is left reduced. 0 when a pivot is below 1e-17: `x` is then untouched and the receiver partly reduced.
  [[nodiscard]] uint32_t GaussSolve(CDoubleArray1& x);
  /// Replaces the receiver (n x n) by its inverse and `b` (n x m) by the solutions X of A X = B: Gauss-Jordan
  /// elimination with full pivoting; of equal pivots the last in row-major order is taken. 0 when a pivot is
  /// below 1e-17; both matrices are then partly reduced.
  [[nodiscard]] uint32_t GaussJordan(CMatrix& b);
  /// GaussJordan with one right-hand side: `b` becomes the solution, the receiver its inverse.
  [[nodiscard]] uint32_t InvertSolve(CDoubleArray1& b);

  /// Singular value decomposition A = U diag(w) V^T. The receiver A (m x n) becomes U; `w` has n elements,
  /// `v` is n x n. U and V have orthonormal columns (where m < n, U has n - m zero columns beside), w is
  /// non-negative and not sorted.
  /// Method: Householder reduction to bidiagonal form, then implicitly shifted QR sweeps (Golub and Reinsch,
  ///   Numer. Math. 14, 1970, 403-420).
  /// Limits: a value of the bidiagonal form counts as negligible below 2.22e-16, whatever the size of the
  ///   matrix. So w is exact to about 1e-16 of the norm or to 2.22e-16, whichever is larger: a matrix with
  ///   all elements below that comes back undecomposed but for the reduction. A value for which this limit is
  ///   below the rounding noise is given up to a limit that grows from the noise on; see docs/design/numeric.md, "The end of the QR iteration".
  /// Edges: with a NaN or an infinity in A, all of U, w and V are NaN.
  void SvdDecompose(CDoubleArray1& w, CMatrix& v);
  /// x = V diag(1/w) U^T b with the receiver as U: the solution of A x = b, or its least-squares solution of
  /// least norm. A w[j] of 0.0 contributes nothing. `x` may be `b`.
  void SvdBackSubstitute(const CDoubleArray1& w, const CMatrix& v, const CDoubleArray1& b,
                         CDoubleArray1& x) const;
  /// Covariance V diag(1/w^2) V^T of the fitted parameters, with the receiver as V (n x n). A w[i] of 0.0
  /// contributes nothing. `covariance` (n x n) may be the receiver.
  void SvdCovariance(const CDoubleArray1& w, CMatrix& covariance) const;
  /// Least-squares fit of y[i] = sum over j of a[j] f[j](i), point i with standard deviation sig[i]. The
  /// receiver, sized points x parameters, is the work space and becomes U of the design matrix. In order: the
  /// basis is called for every point, the design matrix decomposed into `w` and `v`, every w below 1e-5 of
  /// the largest set to 0.0, and the parameters `a` computed. Scale the basis functions to similar size and
  /// keep them apart (centred regressors, orthogonal polynomials): directions that the 1e-5 floor cuts off
  /// are fitted as 0.
  void SvdFit(const CDoubleArray1& y, const CDoubleArray1& sig, CMatrix& v, CDoubleArray1& w,
              CDoubleArray1& a, FitBasis basis, void* context);
};

/// Euclidean distance of two points over their first three elements, as of two colours in L*a*b*. 1e-5 when
/// either vector is empty.
[[nodiscard]] VRX_API double Distance3(const CDoubleArray1& p, const CDoubleArray1& q);

}  // namespace vrx

#endif  // VRXMATH_NUMERIC_MATRIX_H_
