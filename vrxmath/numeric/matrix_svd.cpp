#include <vrxmath/numeric/matrix.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include <vrxmath/numeric/matrix_kernels.h>
#include <vrxmath/numeric/scratch.h>

namespace vrx {

using numeric_internal::AddMultiple;
using numeric_internal::Dot;
using numeric_internal::Elements;
using numeric_internal::Grid;
using numeric_internal::Load;
using numeric_internal::PlaneRotation;
using numeric_internal::Reflect;
using numeric_internal::RowBlock;
using numeric_internal::Scratch;
using numeric_internal::Store;
using numeric_internal::StoreElements;
using numeric_internal::Values;

namespace {

/// Values of the bidiagonal form below this are negligible: an absolute limit.
constexpr double kNegligible = kDoubleEpsilon;
/// Sweeps for one singular value that end the patience with the absolute limit: these and as many more for
/// every column. Rank-deficient matrices of norm 1e134 were seen to need 6 per column.
constexpr int32_t kPatientSweeps = 100;
constexpr int32_t kPatientSweepsPerColumn = 20;
/// The shift squares elements and divides by values down to the limit. Where that could overflow, elements
/// beyond 2^450, a matrix is decomposed as the multiple of itself that has elements up to 2^400.
constexpr double kLargestElement = 0x1p450;
constexpr int kScaledExponent = 400;
/// Singular values below this share of the largest count as 0 in a fit.
constexpr double kSingularValueFloor = 1e-5;

/// sqrt(a^2 + b^2) without underflow or overflow on the way.
double Hypotenuse(double a, double b) {
  const double sum = a * a + b * b;
  if (sum > 0x1p-900 && sum < 0x1p900) return std::sqrt(sum);
  const double big = std::max(std::fabs(a), std::fabs(b));
  if (big == 0.0) return 0.0;
  return big * std::sqrt((a / big) * (a / big) + (b / big) * (b / big));
}

using Rotations = Scratch<PlaneRotation, 32>;

/// The rotation that turns (f, h) into (length, 0).
PlaneRotation RotationOf(double f, double h, double& length) {
  length = Hypotenuse(f, h);
  return length == 0.0 ? PlaneRotation{1.0, 0.0} : PlaneRotation{f / length, h / length};
}

/// The Householder reflection I + u u^T / h, h = -|u|^2 / 2, that maps a vector onto (g, 0, ..., 0).
struct Reflection {
  double g, h;

  /// Turns the vector x into u, scaled by the sum of its magnitudes. A vector of zeros is left alone: h = 0.
  static Reflection Of(double* x, int32_t count) {
    double scale = 0.0;
    for (int32_t k = 0; k < count; ++k) scale += std::fabs(x[k]);
    if (scale == 0.0) return {0.0, 0.0};
    for (int32_t k = 0; k < count; ++k) x[k] /= scale;
    const double square = Dot(x, x, count);
    const double g = -std::copysign(std::sqrt(square), x[0]);
    const double h = x[0] * g - square;
    x[0] -= g;
    return {scale * g, h};
  }

  bool IsIdentity() const { return h == 0.0; }
  void Apply(const double* u, const RowBlock& block, int32_t count) const {
    if (h != 0.0) Reflect(u, h, block, count);
  }
};

void Scale(Grid& grid, double factor) {
  for (int32_t i = 0; i < grid.Rows(); ++i) {
    for (int32_t j = 0; j < grid.Columns(); ++j) grid[i][j] *= factor;
  }
}

/// The decomposition under way. Both matrices are held transposed, so that every reflection and rotation
/// works on contiguous memory: row j is column j of A (later U) and of V.
class Decomposition {
 public:
  /// `rows` x `columns`, padded with zero rows to at least square.
  Decomposition(int32_t rows, int32_t columns)
      : m_(std::max(rows, columns)),
        n_(columns),
        ut_(n_, m_),
        vt_(n_, n_),
        diagonal_(static_cast<std::size_t>(n_)),
        above_(static_cast<std::size_t>(n_)),
        leftReflections_(static_cast<std::size_t>(n_)),
        rightReflections_(static_cast<std::size_t>(n_)),
        left_(static_cast<std::size_t>(n_)),
        right_(static_cast<std::size_t>(n_)),
        work_(static_cast<std::size_t>(ut_.Stride())) {
    ut_.Zero();
    vt_.Zero();
  }

  Grid& Ut() { return ut_; }
  Grid& Vt() { return vt_; }
  double SingularValue(int32_t j) const { return diagonal_[j]; }

  void Run() {
    Bidiagonalise();
    AccumulateRight();
    AccumulateLeft();
    norm_ = 0.0;
    for (int32_t i = 0; i < n_; ++i) {
      norm_ = std::max(norm_, std::fabs(diagonal_[i]) + std::fabs(above_[i]));
    }
    for (int32_t k = n_ - 1; k >= 0; --k) Diagonalise(k);
  }

  /// Makes everything NaN, the answer to a matrix with elements that are not finite.
  void Spoil() {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    Scale(ut_, nan);
    Scale(vt_, nan);
    std::fill_n(diagonal_.Data(), n_, nan);
  }

 private:
  // Reflections from the left clear column i below the diagonal, those from the right row i beyond the
  // element above the diagonal. Their vectors stay where they cleared: in ut_[i] from i on, in vt_[i] from i
  // + 1 on.
  void Bidiagonalise() {
    above_[0] = 0.0;
    for (int32_t i = 0; i < n_; ++i) {
      leftReflections_[i] = Reflection::Of(ut_[i] + i, m_ - i);
      diagonal_[i] = leftReflections_[i].g;
      leftReflections_[i].Apply(ut_[i] + i, ut_.Block(i + 1, n_, i), m_ - i);
      if (i + 1 < n_) ReflectRow(i);
    }
  }

  void ReflectRow(int32_t i) {
    double* u = vt_[i];
    for (int32_t j = i + 1; j < n_; ++j) u[j] = ut_[j][i];
    rightReflections_[i] = Reflection::Of(u + i + 1, n_ - i - 1);
    above_[i + 1] = rightReflections_[i].g;
    if (rightReflections_[i].IsIdentity()) return;
    const int32_t first = i + 1, count = m_ - first;
    std::fill_n(work_.Data(), ut_.Stride(), 0.0);
    for (int32_t j = first; j < n_; ++j) AddMultiple(u[j], ut_[j] + first, work_.Data(), count);
    for (int32_t j = first; j < n_; ++j) {
      AddMultiple(u[j] / rightReflections_[i].h, work_.Data(), ut_[j] + first, count);
    }
  }

  void AccumulateRight() {
    for (int32_t i = n_ - 1; i >= 0; --i) {
      const int32_t first = i + 1;
      if (first < n_) rightReflections_[i].Apply(vt_[i] + first, vt_.Block(first, n_, first), n_ - first);
      std::fill_n(vt_[i], n_, 0.0);
      vt_[i][i] = 1.0;
    }
  }

  void AccumulateLeft() {
    for (int32_t i = n_ - 1; i >= 0; --i) {
      double* u = ut_[i];
      leftReflections_[i].Apply(u + i, ut_.Block(i + 1, n_, i), m_ - i);
      const double factor = leftReflections_[i].IsIdentity() ? 0.0 : u[i] / leftReflections_[i].h;
      std::fill_n(u, i, 0.0);
      for (int32_t k = i; k < m_; ++k) u[k] *= factor;
      u[i] += 1.0;
    }
  }

  // QR sweeps until the element above diagonal element k is negligible. Nothing proves that rounding noise
  // falls below an absolute limit, so once patience ends the limit is the noise, eps times the norm, and
  // doubles with every sweep: an end is certain.
  void Diagonalise(int32_t k) {
    const int64_t patience = kPatientSweeps + int64_t{kPatientSweepsPerColumn} * n_;
    limit_ = kNegligible;
    for (int64_t sweep = 0;; ++sweep) {
      if (sweep == patience) limit_ = std::max(limit_, kDoubleEpsilon * norm_);
      if (sweep > patience) limit_ *= 2.0;
      const int32_t l = Split(k);
      if (l == k) break;
      Sweep(l, k);
    }
    if (std::signbit(diagonal_[k])) {
      diagonal_[k] = -diagonal_[k];
      for (int32_t j = 0; j < n_; ++j) vt_[k][j] = -vt_[k][j];
    }
  }

  // A NaN is negligible too: it has arrived in the result, and no sweep would remove it.
  bool IsNegligible(double value) const { return !(std::fabs(value) >= limit_); }

  // The first row of the unreduced block that ends at k; a diagonal element that is negligible above it is
  // taken out of the way.
  int32_t Split(int32_t k) {
    for (int32_t l = k; l > 0; --l) {
      if (IsNegligible(above_[l])) return l;
      if (IsNegligible(diagonal_[l - 1])) {
        Cancel(l, k);
        return l;
      }
    }
    return 0;
  }

  // With diagonal element l - 1 zero, rotations of rows l - 1 and i clear the element above diagonal element
  // l.
  void Cancel(int32_t l, int32_t k) {
    double c = 0.0, s = 1.0;
    for (int32_t i = l; i <= k; ++i) {
      const double f = s * above_[i];
      above_[i] *= c;
      if (IsNegligible(f)) return;
      const PlaneRotation rotation = RotationOf(diagonal_[i], f, diagonal_[i]);
      c = rotation.c;
      s = -rotation.s;
      RotatePair(ut_[l - 1], ut_[i], c, s, m_);
    }
  }

  static void RotatePair(double* p, double* q, double c, double s, int32_t count) {
    for (int32_t k = 0; k < count; ++k) {
      const double x = p[k], y = q[k];
      p[k] = x * c + y * s;
      q[k] = y * c - x * s;
    }
  }

  // The first column of B^T B minus the shift, over diagonal element l: the shift is the eigenvalue of the
  // last 2 x 2 block of B^T B that is nearer to its last element.
  double ShiftedFront(int32_t l, int32_t k) const {
    const double x = diagonal_[l], y = diagonal_[k - 1], z = diagonal_[k];
    const double g = k - 1 > l ? above_[k - 1] : 0.0, h = above_[k];
    const double t = ((y - z) * (y + z) + (g - h) * (g + h)) / (2.0 * h * y);
    const double root = t + std::copysign(Hypotenuse(t, 1.0), t);
    return ((x - z) * (x + z) + h * (y / root - h)) / x;
  }

  // One implicitly shifted QR sweep over the block l..k: rotations from the right and from the left in turn
  // chase the bulge down the diagonals. U and V take them over at the end, all at once.
  void Sweep(int32_t l, int32_t k) {
    double f = ShiftedFront(l, k);
    double h = above_[l + 1], g = h;
    double x = diagonal_[l];
    for (int32_t i = l + 1; i <= k; ++i) {
      const PlaneRotation right = RotationOf(f, h, above_[i - 1]);
      f = x * right.c + g * right.s;
      g = g * right.c - x * right.s;
      const double y = diagonal_[i] * right.c;
      const PlaneRotation left = RotationOf(f, diagonal_[i] * right.s, diagonal_[i - 1]);
      f = left.c * g + left.s * y;
      x = left.c * y - left.s * g;
      right_[i] = right;
      left_[i] = left;
      if (i < k) {
        h = left.s * above_[i + 1];
        g = left.c * above_[i + 1];
      }
    }
    above_[l] = 0.0;
    above_[k] = f;
    diagonal_[k] = x;
    CurrentKernels<MatrixKernels>().rotateChain(right_.Data() + l, vt_.Block(l, k + 1), n_);
    CurrentKernels<MatrixKernels>().rotateChain(left_.Data() + l, ut_.Block(l, k + 1), m_);
  }

  int32_t m_, n_;
  Grid ut_, vt_;
  Values diagonal_, above_;  // above_[i] stands above diagonal_[i]; above_[0] = 0
  Scratch<Reflection, 32> leftReflections_, rightReflections_;
  Rotations left_, right_;
  Values work_;
  double norm_ = 0.0, limit_ = 0.0;
};

/// The power of two that brings a matrix with elements beyond 2^450 down to 2^400, 1 for others; 0 when an
/// element is NaN or infinite.
double ScaleFor(Grid& ut) {
  double biggest = 0.0;
  for (int32_t j = 0; j < ut.Rows(); ++j) {
    for (int32_t i = 0; i < ut.Columns(); ++i) {
      const double magnitude = std::fabs(ut[j][i]);
      if (!(magnitude <= std::numeric_limits<double>::max())) return 0.0;
      biggest = std::max(biggest, magnitude);
    }
  }
  if (biggest < kLargestElement) return 1.0;
  int exponent = 0;
  std::frexp(biggest, &exponent);
  return std::ldexp(1.0, kScaledExponent - exponent);
}

void LoadTransposed(const CMatrix& matrix, Grid& grid) {
  for (int32_t i = 0; i < matrix.GetSize(); ++i) {
    const CDoubleArray1& row = matrix[i];
    for (int32_t j = 0; j < grid.Rows(); ++j) grid[j][i] = row[j];
  }
}

void StoreTransposed(Grid& grid, int32_t rows, CMatrix& matrix) {
  for (int32_t i = 0; i < rows; ++i) {
    CDoubleArray1& row = matrix[i];
    for (int32_t j = 0; j < grid.Rows(); ++j) row[j] = grid[j][i];
  }
}

}  // namespace

void CMatrix::SvdDecompose(CDoubleArray1& w, CMatrix& v) {
  const int32_t m = GetSize(), n = static_cast<int32_t>(GetColumnCount());
  if (n == 0) return;
  Decomposition decomposition(m, n);
  LoadTransposed(*this, decomposition.Ut());
  const double scale = ScaleFor(decomposition.Ut());
  if (scale == 0.0) {
    decomposition.Spoil();
  } else {
    if (scale != 1.0) Scale(decomposition.Ut(), scale);
    decomposition.Run();
  }
  StoreTransposed(decomposition.Ut(), m, *this);
  StoreTransposed(decomposition.Vt(), n, v);
  for (int32_t j = 0; j < n; ++j) w[j] = decomposition.SingularValue(j) / scale;
}

void CMatrix::SvdBackSubstitute(const CDoubleArray1& w, const CMatrix& v, const CDoubleArray1& b,
                                CDoubleArray1& x) const {
  const int32_t m = GetSize(), n = static_cast<int32_t>(GetColumnCount());
  const Elements divisors(w, n), rightHandSide(b, m);
  Values t(static_cast<std::size_t>(n)), solution(static_cast<std::size_t>(n));
  std::fill_n(t.Data(), n, 0.0);
  for (int32_t i = 0; i < m; ++i) {
    const Elements row((*this)[i], n);
    for (int32_t j = 0; j < n; ++j) t[j] += row[j] * rightHandSide[i];
  }
  for (int32_t j = 0; j < n; ++j) t[j] = divisors[j] != 0.0 ? t[j] / divisors[j] : 0.0;
  for (int32_t j = 0; j < n; ++j) {
    const Elements row(v[j], n);
    double sum = 0.0;
    for (int32_t k = 0; k < n; ++k) sum += row[k] * t[k];
    solution[j] = sum;
  }
  StoreElements(solution.Data(), n, x);
}

void CMatrix::SvdCovariance(const CDoubleArray1& w, CMatrix& covariance) const {
  const int32_t n = GetSize();
  const Elements singularValues(w, n);
  Grid v(n, n), result(n, n);
  Load(*this, v);
  Values weights(static_cast<std::size_t>(n));
  for (int32_t i = 0; i < n; ++i) {
    const double wi = singularValues[i];
    weights[i] = wi != 0.0 ? 1.0 / (wi * wi) : 0.0;
  }
  for (int32_t i = 0; i < n; ++i) {
    for (int32_t j = 0; j <= i; ++j) {
      double sum = 0.0;
      for (int32_t k = 0; k < n; ++k) sum += v[i][k] * v[j][k] * weights[k];
      result[i][j] = result[j][i] = sum;
    }
  }
  Store(result, n, covariance);
}

void CMatrix::SvdFit(const CDoubleArray1& y, const CDoubleArray1& sig, CMatrix& v, CDoubleArray1& w,
                     CDoubleArray1& a, FitBasis basis, void* context) {
  const int32_t points = GetSize(), parameters = static_cast<int32_t>(GetColumnCount());
  CDoubleArray1 values, b;
  values.SetSize(parameters);
  b.SetSize(points);
  for (int32_t i = 0; i < points; ++i) {
    basis(context, static_cast<uint32_t>(i), values);
    for (int32_t j = 0; j < parameters; ++j) ElementAt(i)[j] = values[j] / sig[i];
    b[i] = y[i] / sig[i];
  }
  SvdDecompose(w, v);
  double largest = 0.0;
  for (int32_t j = 0; j < parameters; ++j) {
    if (w[j] > largest) largest = w[j];
  }
  for (int32_t j = 0; j < parameters; ++j) {
    if (w[j] < kSingularValueFloor * largest) w[j] = 0.0;
  }
  SvdBackSubstitute(w, v, b, a);
}

}  // namespace vrx
