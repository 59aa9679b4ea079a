#include <vrxmath/numeric/nonnegative_least_squares.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

namespace vrx {
namespace {

constexpr double kDependent = 1e-12;  // what is left of a column of unit length that depends on others

class Solver {
 public:
  Solver(std::span<const double> A, std::span<const double> b, std::size_t columns)
      : rows_(b.size()), columns_(columns), A_(A.begin(), A.end()), b_(b.begin(), b.end()), scale_(columns) {
    for (std::size_t j = 0; j < columns_; ++j) {
      double sum = 0.0;
      for (std::size_t i = 0; i < rows_; ++i) sum += At(i, j) * At(i, j);
      scale_[j] = sum > 0.0 ? 1.0 / std::sqrt(sum) : 0.0;
      for (std::size_t i = 0; i < rows_; ++i) At(i, j) *= scale_[j];
    }
  }

  uint32_t Solve(std::span<double> x) {
    x_.assign(columns_, 0.0);
    isUsed_.assign(columns_, false);
    isBarred_.assign(columns_, false);
    for (std::size_t j = 0; j < columns_; ++j) isUsed_[j] = x[j] > 0.0 && scale_[j] > 0.0;
    bool ended = MakeFeasible();
    const std::size_t mostSteps = 10 * columns_ + 10;
    for (std::size_t step = 0; ended && step < mostSteps; ++step) {
      const std::size_t enters = SteepestColumn();
      if (enters == columns_) break;
      isUsed_[enters] = true;
      ended = MakeFeasible() && step + 1 < mostSteps;
      if (!isUsed_[enters]) isBarred_[enters] = true;  // it went in and out: rounding alone
    }
    for (std::size_t j = 0; j < columns_; ++j) x[j] = x_[j] * scale_[j];
    return ended ? 1 : 0;
  }

 private:
  double& At(std::size_t i, std::size_t j) { return A_[i * columns_ + j]; }

  // The unused column along which the residual falls most; the number of columns when there is none.
  std::size_t SteepestColumn() {
    std::vector<double> residual = b_;
    double norm = 0.0;
    for (std::size_t i = 0; i < rows_; ++i) {
      for (std::size_t j = 0; j < columns_; ++j) residual[i] -= At(i, j) * x_[j];
      norm += b_[i] * b_[i];
    }
    constexpr double kFlat = 1e-13;
    double steepest = kFlat * std::sqrt(norm);
    std::size_t column = columns_;
    for (std::size_t j = 0; j < columns_; ++j) {
      if (isUsed_[j] || isBarred_[j] || scale_[j] == 0.0) continue;
      double slope = 0.0;
      for (std::size_t i = 0; i < rows_; ++i) slope += At(i, j) * residual[i];
      if (slope > steepest) {
        steepest = slope;
        column = j;
      }
    }
    return column;
  }

  // Goes towards the least squares of the columns in use, dropping one at a time that would become negative.
  bool MakeFeasible() {
    for (std::size_t tries = 0; tries <= columns_; ++tries) {
      const std::vector<double> z = SolveUsed();
      double step = 1.0;
      std::size_t blocks = columns_;
      for (std::size_t j = 0; j < columns_; ++j) {
        if (!isUsed_[j] || z[j] > 0.0) continue;
        const double share = x_[j] > 0.0 ? x_[j] / (x_[j] - z[j]) : 0.0;
        if (share < step || blocks == columns_) {
          step = std::min(step, share);
          blocks = j;
        }
      }
      for (std::size_t j = 0; j < columns_; ++j) {
        if (isUsed_[j]) x_[j] += step * (z[j] - x_[j]);
      }
      if (blocks == columns_) return true;
      isUsed_[blocks] = false;
      x_[blocks] = 0.0;
    }
    return false;
  }

  // Least squares over the columns in use; a dependent column gets 0.
  std::vector<double> SolveUsed() {
    used_.clear();
    for (std::size_t j = 0; j < columns_; ++j) {
      if (isUsed_[j]) used_.push_back(j);
    }
    const std::size_t n = used_.size();
    Q_.resize(n * rows_);  // by columns
    for (std::size_t k = 0; k < n; ++k) {
      for (std::size_t i = 0; i < rows_; ++i) Q_[k * rows_ + i] = At(i, used_[k]);
    }
    std::vector<double> y = b_;
    std::vector<double> diagonal(n, 0.0);
    std::vector<std::size_t> pivotRow(n, rows_);
    std::size_t rank = 0;
    for (std::size_t k = 0; k < n && rank < rows_; ++k) {
      if (!Reflect(k, n, rank, y, diagonal)) continue;
      pivotRow[k] = rank++;
    }
    std::vector<double> z(columns_, 0.0);
    for (std::size_t k = n; k-- > 0;) {
      if (pivotRow[k] == rows_) continue;
      double sum = y[pivotRow[k]];
      for (std::size_t later = k + 1; later < n; ++later) {
        sum -= Q_[later * rows_ + pivotRow[k]] * z[used_[later]];
      }
      z[used_[k]] = sum / diagonal[k];
    }
    return z;
  }

  // Reflects column k below row `rank` onto that row, and the later columns and y with it.
  bool Reflect(std::size_t k, std::size_t n, std::size_t rank, std::vector<double>& y,
               std::vector<double>& diagonal) {
    double* v = &Q_[k * rows_];
    double sum = 0.0;
    for (std::size_t i = rank; i < rows_; ++i) sum += v[i] * v[i];
    const double length = std::sqrt(sum);
    if (length < kDependent) return false;
    diagonal[k] = v[rank] > 0.0 ? -length : length;
    const double v0 = v[rank] - diagonal[k];
    const double factor = 1.0 / (diagonal[k] * v0);  // -2 / |v|^2
    v[rank] = v0;
    const auto reflect = [&](double* column) {
      double dot = 0.0;
      for (std::size_t i = rank; i < rows_; ++i) dot += v[i] * column[i];
      for (std::size_t i = rank; i < rows_; ++i) column[i] += dot * factor * v[i];
    };
    for (std::size_t later = k + 1; later < n; ++later) reflect(&Q_[later * rows_]);
    reflect(y.data());
    return true;
  }

  std::size_t rows_, columns_;
  std::vector<double> A_, b_, scale_;
  std::vector<double> x_, Q_;
  std::vector<bool> isUsed_, isBarred_;
  std::vector<std::size_t> used_;
};

}  // namespace

uint32_t NonNegativeLeastSquares(std::span<const double> A, std::span<const double> b, std::span<double> x) {
  if (A.empty() || A.size() != b.size() * x.size()) return 0;
  return Solver(A, b, x.size()).Solve(x);
}

}  // namespace vrx
