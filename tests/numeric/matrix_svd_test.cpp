#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <random>
#include <span>
#include <vector>

#include <vrxmath/numeric/matrix.h>

#include "nist_strd.h"

namespace vrx {
namespace {

CMatrix Filled(uint32_t rows, uint32_t columns, auto element) {
  CMatrix matrix(rows, columns);
  for (int32_t i = 0; i < matrix.GetSize(); ++i) {
    for (int32_t j = 0; j < matrix[i].GetSize(); ++j) matrix[i][j] = element(i, j);
  }
  return matrix;
}

struct Svd {
  explicit Svd(const CMatrix& a) : u(a), v(a.GetColumnCount(), a.GetColumnCount()) {
    w.SetSize(static_cast<int32_t>(a.GetColumnCount()));
    u.SvdDecompose(w, v);
  }
  std::vector<double> Sorted() const {
    std::vector<double> values(w.begin(), w.end());
    std::sort(values.begin(), values.end(), std::greater<>());
    return values;
  }
  CMatrix u, v;
  CDoubleArray1 w;
};

/// Largest element of |M^T M - 1|, over the columns that `used` says.
double DefectOfOrthonormality(const CMatrix& m, auto used) {
  double worst = 0.0;
  for (int32_t p = 0; p < static_cast<int32_t>(m.GetColumnCount()); ++p) {
    for (int32_t q = 0; q <= p; ++q) {
      if (!used(p) || !used(q)) continue;
      double sum = p == q ? -1.0 : 0.0;
      for (const CDoubleArray1& row : m) sum += row[p] * row[q];
      worst = std::max(worst, std::fabs(sum));
    }
  }
  return worst;
}

/// A = U diag(w) V^T to 1e-12 of the largest element, w >= 0, orthonormal columns.
void ExpectDecomposition(const CMatrix& a, const char* what) {
  const Svd svd(a);
  double largest = 0.0, worst = 0.0;
  for (int32_t i = 0; i < a.GetSize(); ++i) {
    for (int32_t j = 0; j < a[i].GetSize(); ++j) {
      double sum = 0.0;
      for (int32_t k = 0; k < svd.w.GetSize(); ++k) sum += svd.u[i][k] * svd.w[k] * svd.v[j][k];
      worst = std::max(worst, std::fabs(sum - a[i][j]));
      largest = std::max(largest, std::fabs(a[i][j]));
    }
  }
  EXPECT_LE(worst, 1e-12 * largest + 3e-16) << what << ' ' << a.GetSize() << 'x' << a.GetColumnCount();
  const bool wide = a.GetRowCount() < a.GetColumnCount();
  EXPECT_LT(DefectOfOrthonormality(svd.v, [](int32_t) { return true; }), 1e-13) << what;
  EXPECT_LT(DefectOfOrthonormality(svd.u, [&](int32_t k) { return !wide || svd.w[k] > 1e-9 * largest; }),
            1e-12)
      << what;
  for (const double w : svd.w) EXPECT_GE(w, 0.0) << what;
}

TEST(Svd, ProductAndOrthonormality) {
  std::mt19937_64 generator(6);
  std::uniform_real_distribution<double> uniform(-1.0, 1.0);
  struct Row {
    const char* what;
    double (*element)(int32_t i, int32_t j, double random);
  };
  const Row rows[] = {
      {"random", [](int32_t, int32_t, double r) { return r; }},
      {"graded", [](int32_t i, int32_t j, double r) { return std::ldexp(r, -3 * (i + j)); }},
      {"small integers, often singular", [](int32_t, int32_t, double r) { return std::round(2.0 * r); }},
      {"rank one", [](int32_t, int32_t, double) { return 1.0; }},
      {"triangle of -1 (nearly singular)",
       [](int32_t i, int32_t j, double) { return i == j  ? 1.0
                                                 : i < j ? -1.0
                                                         : 0.0; }},
      {"zero diagonal", [](int32_t i, int32_t j, double) { return std::abs(i - j) == 1 ? 1.0 : 0.0; }},
      {"permutation", [](int32_t i, int32_t j, double) { return (i + 2) % 5 == j % 5 ? 1.0 : 0.0; }},
      {"zero", [](int32_t, int32_t, double) { return 0.0; }},
      // Squares beyond the range, and rounding noise far above the absolute limit of the iteration.
      {"1e10", [](int32_t, int32_t, double r) { return 1e10 * r; }},
      {"rank one, 1e130", [](int32_t, int32_t, double) { return 1e130; }},
      {"rank two, 1e140", [](int32_t i, int32_t j, double) { return 1e140 * (i % 3 + j % 2); }},
      {"1e200", [](int32_t, int32_t, double r) { return 1e200 * r; }},
      {"1e306", [](int32_t, int32_t, double r) { return 1e306 * r; }},
  };
  const uint32_t shapes[][2] = {{1, 1}, {2, 2}, {3, 3},  {4, 1},  {1, 4},   {3, 5},
                                {8, 3}, {9, 9}, {12, 7}, {7, 12}, {40, 20}, {33, 33}};
  for (const Row& row : rows) {
    for (const auto& [m, n] : shapes) {
      ExpectDecomposition(
          Filled(m, n, [&](int32_t i, int32_t j) { return row.element(i, j, uniform(generator)); }),
          row.what);
    }
  }
}

TEST(Svd, HilbertMatrices) {
  // Extreme eigenvalues as published and reproduced with 60 digits.
  struct Row {
    uint32_t n;
    double largest, smallest;
  };
  const Row rows[] = {{1, 1.0, 1.0},
                      {2, 1.26759187924400, 0.0657414540893351},
                      {3, 1.40831892712365, 0.00268734035577400},
                      {5, 1.56705069109823, 3.28792877217186e-06},
                      {8, 1.69593899692194, 1.11153896635244e-10},
                      {10, 1.75191967026518, 1.09315381937967e-13}};
  for (const Row& row : rows) {
    const CMatrix hilbert = Filled(row.n, row.n, [](int32_t i, int32_t j) { return 1.0 / (i + j + 1); });
    ExpectDecomposition(hilbert, "Hilbert");
    const std::vector<double> w = Svd(hilbert).Sorted();
    EXPECT_NEAR(w.front(), row.largest, 1e-14) << row.n;
    EXPECT_NEAR(w.back(), row.smallest, 1e-15) << row.n;
  }
}

TEST(Svd, NegligibleIsAnAbsoluteNotion) {
  // The singular values of (1 1; 0 1) are the golden ratio and its reciprocal. Scaled below the limit, the
  // element above the diagonal is negligible at once and the bidiagonal form itself comes back.
  const double golden = (1.0 + std::sqrt(5.0)) / 2.0;
  for (const double scale : {1.0, 1e-10, 1e-20}) {
    const bool iterated = scale > 1e-16;
    const std::vector<double> w =
        Svd(Filled(2, 2, [&](int32_t i, int32_t j) { return i > j ? 0.0 : scale; })).Sorted();
    EXPECT_NEAR(w[0] / scale, iterated ? golden : 1.0, iterated ? 2.3e-16 / scale : 1e-15) << scale;
    EXPECT_NEAR(w[1] / scale, iterated ? 1.0 / golden : 1.0, iterated ? 2.3e-16 / scale : 1e-15) << scale;
  }
}

TEST(Svd, WhatIsNotFiniteEndsInNaN) {
  for (const double bad : {NAN, INFINITY, -INFINITY}) {
    for (int32_t at = 0; at < 12; ++at) {
      const Svd svd(Filled(4, 3, [&](int32_t i, int32_t j) { return 3 * i + j == at ? bad : i - 0.5 * j; }));
      for (const double w : svd.w) EXPECT_TRUE(std::isnan(w)) << bad << ' ' << at;
      EXPECT_TRUE(std::isnan(svd.u[0][0]) && std::isnan(svd.v[2][1]));
    }
  }
}

// A linear fit through SvdFit, the basis as a table of points x parameters.
struct Fit {
  Fit(const CMatrix& basisTable, const std::vector<double>& ordinates)
      : v(basisTable.GetColumnCount(), basisTable.GetColumnCount()) {
    CDoubleArray1 y, sig;
    for (const double value : ordinates) y.Add(value), sig.Add(1.0);
    w.SetSize(v.GetSize());
    a.SetSize(v.GetSize());
    CMatrix design(basisTable.GetRowCount(), basisTable.GetColumnCount());
    design.SvdFit(
        y, sig, v, w, a,
        [](void* table, uint32_t point, CDoubleArray1& values) {
          values = static_cast<CMatrix*>(table)->GetRow(point);
        },
        const_cast<CMatrix*>(&basisTable));
    double squares = 0.0;
    for (int32_t i = 0; i < basisTable.GetSize(); ++i) {
      double fitted = 0.0;
      for (int32_t j = 0; j < a.GetSize(); ++j) fitted += a[j] * basisTable[i][j];
      squares += (y[i] - fitted) * (y[i] - fitted);
    }
    residualDeviation = std::sqrt(squares / (basisTable.GetSize() - a.GetSize()));
  }
  CMatrix v;
  CDoubleArray1 w, a;
  double residualDeviation = 0.0;
};

TEST(SvdFit, FloorOfTheSingularValues) {
  // 1e-5 of the largest stays, what lies below is cut off and its direction fitted as 0.
  const double diagonal[] = {10.0, 1e-5, 1e-4};
  const Fit fit(Filled(3, 3, [&](int32_t i, int32_t j) { return i == j ? diagonal[i] : 0.0; }),
                {20.0, 1.0, 3e-4});
  EXPECT_DOUBLE_EQ(fit.a[0], 2.0);
  EXPECT_EQ(fit.a[1], 0.0);
  EXPECT_EQ(fit.w[1], 0.0);
  EXPECT_DOUBLE_EQ(fit.a[2], 3.0);
}

/// Coefficients in powers of x of a polynomial given by Chebyshev coefficients in t = (x - middle) / half.
std::vector<long double> PowersFromChebyshev(const CDoubleArray1& a, double middle, double half) {
  using Polynomial = std::vector<long double>;
  const auto n = static_cast<std::size_t>(a.GetSize());
  const long double slope = 1.0L / half, shift = -static_cast<long double>(middle) / half;
  const auto timesT = [&](const Polynomial& p) {
    Polynomial q(n, 0.0L);
    for (std::size_t k = 0; k < n; ++k) {
      q[k] += shift * p[k];
      if (k + 1 < n) q[k + 1] += slope * p[k];
    }
    return q;
  };
  Polynomial previous(n, 0.0L), current(n, 0.0L), sum(n, 0.0L);
  current[0] = 1.0L;
  for (std::size_t degree = 0; degree < n; ++degree) {
    for (std::size_t k = 0; k < n; ++k) sum[k] += a[static_cast<int32_t>(degree)] * current[k];
    Polynomial next = timesT(current);
    for (std::size_t k = 0; k < n && degree > 0; ++k) next[k] = 2.0L * next[k] - previous[k];
    previous = current;
    current = next;
  }
  return sum;
}

// The powers of x of these sets are so nearly dependent that the floor would cut them off. In Chebyshev
// polynomials over the range of the data they are far apart, and the certified coefficients come out after
// conversion.
void ExpectPolynomial(const char* name, std::span<const double> x, const std::vector<double>& y,
                      const std::vector<double>& certified, double residualDeviation, double tolerance) {
  const auto [low, high] = std::minmax_element(x.begin(), x.end());
  const double middle = (*low + *high) / 2.0, half = (*high - *low) / 2.0;
  CMatrix basis(static_cast<uint32_t>(x.size()), static_cast<uint32_t>(certified.size()));
  for (int32_t i = 0; i < basis.GetSize(); ++i) {
    const double t = (x[static_cast<std::size_t>(i)] - middle) / half;
    basis[i][0] = 1.0;
    basis[i][1] = t;
    for (int32_t k = 2; k < basis[i].GetSize(); ++k)
      basis[i][k] = 2.0 * t * basis[i][k - 1] - basis[i][k - 2];
  }
  const Fit fit(basis, y);
  const std::vector<long double> powers = PowersFromChebyshev(fit.a, middle, half);
  for (std::size_t k = 0; k < certified.size(); ++k) {
    EXPECT_NEAR(static_cast<double>(powers[k]) / certified[k], 1.0, tolerance) << name << " B" << k;
  }
  const double largest = std::fabs(*std::max_element(y.begin(), y.end()));
  EXPECT_NEAR(fit.residualDeviation, residualDeviation, 1e-9 * residualDeviation + 1e-14 * largest) << name;
}

TEST(SvdFit, NistPolynomials) {
  const auto list = [](std::span<const double> values) {
    return std::vector<double>(values.begin(), values.end());
  };
  ExpectPolynomial("Norris", nist::kNorrisX, list(nist::kNorrisY), {-0.262323073774029, 1.00211681802045},
                   0.884796396144373, 1e-12);
  ExpectPolynomial("Pontius", nist::kPontiusX, list(nist::kPontiusY),
                   {0.673565789473684e-3, 0.732059160401003e-6, -0.316081871345029e-14}, 0.205177424076185e-3,
                   1e-10);
  ExpectPolynomial("Filip", nist::kFilipX, list(nist::kFilipY),
                   {-1467.48961422980, -2772.17959193342, -2316.37108160893, -1127.97394098372,
                    -354.478233703349, -75.1242017393757, -10.8753180355343, -1.06221498588947,
                    -0.670191154593408e-1, -0.246781078275479e-2, -0.402962525080404e-4},
                   0.334801051324544e-2, 1e-7);
  const double noiseOfSet[] = {0.0, 0.0, 1.0, 100.0, 10000.0};
  const double residuals[] = {0.0, 0.0, 2360.14502379268, 236014.502379268, 23601450.2379268};
  for (int set = 0; set < 5; ++set) {
    const double unit = set == 1 ? 0.1 : 1.0;
    std::vector<double> x, y, certified;
    for (int k = 0; k < 6; ++k) certified.push_back(std::pow(unit, k));
    for (int i = 0; i <= 20; ++i) {
      x.push_back(i);
      double power = 1.0, sum = 0.0;
      for (int k = 0; k < 6; ++k, power *= i * unit) sum += power;
      y.push_back(sum + noiseOfSet[set] * nist::kWamplerNoise[i]);
    }
    const std::string name = "Wampler" + std::to_string(set + 1);
    ExpectPolynomial(name.c_str(), x, y, certified, residuals[set], set == 4 ? 1e-6 : 1e-8);
  }
}

TEST(SvdFit, NistLongley) {
  // As they stand the regressors differ by a factor of 1e5 and share a trend: the floor cuts two directions
  // off. Centred and scaled they fit to 11 digits; a shift of the regressors only moves the constant.
  const double certified[] = {-3482258.63459582, 15.0618722713733,  -0.358191792925910e-1,
                              -2.02022980381683, -1.03322686717359, -0.511041056535807e-1,
                              1829.15146461355};
  const double deviations[] = {890420.383607373,  84.9149257747669,  0.334910077722432e-1, 0.488399681651699,
                               0.214274163161675, 0.226073200069370, 455.478499142212};
  double mean[6] = {}, size[6] = {};
  std::vector<double> y;
  for (const auto& row : nist::kLongley) {
    y.push_back(row[6]);
    for (int k = 0; k < 6; ++k) mean[k] += row[k] / 16.0;
  }
  for (const auto& row : nist::kLongley) {
    for (int k = 0; k < 6; ++k) size[k] = std::max(size[k], std::fabs(row[k] - mean[k]));
  }
  const auto raw = [](int32_t i, int32_t j) { return j == 0 ? 1.0 : nist::kLongley[i][j - 1]; };
  const auto centred = [&](int32_t i, int32_t j) {
    return j == 0 ? 1.0 : (nist::kLongley[i][j - 1] - mean[j - 1]) / size[j - 1];
  };
  const Fit rawFit(Filled(16, 7, raw), y);
  EXPECT_EQ(std::count(rawFit.w.begin(), rawFit.w.end(), 0.0), 2);

  const Fit fit(Filled(16, 7, centred), y);
  EXPECT_NEAR(fit.residualDeviation, 304.854073561965, 1e-9);
  double constant = fit.a[0];
  CMatrix covariance(7, 7);
  fit.v.SvdCovariance(fit.w, covariance);
  for (int32_t k = 1; k < 7; ++k) {
    const double coefficient = fit.a[k] / size[k - 1];
    const double deviation = fit.residualDeviation * std::sqrt(covariance[k][k]) / size[k - 1];
    EXPECT_NEAR(coefficient / certified[k], 1.0, 1e-11) << k;
    EXPECT_NEAR(deviation / deviations[k], 1.0, 1e-11) << k;
    constant -= coefficient * mean[k - 1];
  }
  EXPECT_NEAR(constant / certified[0], 1.0, 1e-11);
}

}  // namespace
}  // namespace vrx
