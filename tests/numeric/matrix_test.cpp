#include <algorithm>
#include <bit>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <vector>

#include <vrxmath/numeric/instruction_set.h>
#include <vrxmath/numeric/matrix.h>
#include <vrxmath/platform/exceptions.h>

#include "tests/testing/messages.h"

namespace vrx {
namespace {

using Table = std::vector<std::vector<double>>;

CDoubleArray1 Vector(const std::vector<double>& values) {
  CDoubleArray1 vector;
  for (const double value : values) vector.Add(value);
  return vector;
}

CMatrix Matrix(const Table& rows) {
  CMatrix matrix(static_cast<uint32_t>(rows.size()), static_cast<uint32_t>(rows[0].size()));
  for (std::size_t i = 0; i < rows.size(); ++i) matrix.SetRow(static_cast<uint32_t>(i), Vector(rows[i]));
  return matrix;
}

CMatrix Random(uint32_t rows, uint32_t columns, uint32_t seed) {
  std::mt19937_64 generator(seed);
  std::uniform_real_distribution<double> uniform(-1.0, 1.0);
  CMatrix matrix(rows, columns);
  for (CDoubleArray1& row : matrix) {
    for (double& value : row) value = uniform(generator);
  }
  return matrix;
}

/// Bit for bit, but one NaN is as good as another.
bool SameBits(const CMatrix& a, const CMatrix& b) {
  const auto same = [](double p, double q) {
    return std::isnan(p) ? std::isnan(q) : std::bit_cast<uint64_t>(p) == std::bit_cast<uint64_t>(q);
  };
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [&](const CDoubleArray1& p, const CDoubleArray1& q) {
                      return std::equal(p.begin(), p.end(), q.begin(), q.end(), same);
                    });
}

TEST(Matrix, ShapeAndCells) {
  CMatrix m(2, 3);
  m.SetRow(0, Vector({1, 2, 3}));
  m.SetRow(1, Vector({4, 5}));
  m.SetColumn(2, Vector({7, 8}));
  m.SetSize(3, 2);
  EXPECT_EQ(m, Matrix({{1, 2}, {4, 5}, {0, 0}}));
  const double column[] = {-1, -2, -3};
  m.SetColumn(0, column);
  m.SwapRows(0, 2);
  EXPECT_EQ(m, Matrix({{-3, 0}, {-2, 5}, {-1, 2}}));
  CMatrix identity = Random(2, 2, 1);
  identity.SetIdentity();
  EXPECT_EQ(identity, Matrix({{1, 0}, {0, 1}}));
  EXPECT_THROW(m.SetSize(1, 0x80000000u), CInvalidArgException);
}

TEST(Matrix, ProductsMayOverwriteTheirFactors) {
  const CMatrix a = Matrix({{1, 2}, {3, 4}}), b = Matrix({{0, 1}, {1, 1}});
  const CMatrix ab = Matrix({{2, 3}, {4, 7}});
  CMatrix left = a, right = b, both = a;
  left.Multiply(left, b);
  right.Multiply(a, right);
  both.Multiply(both, both);
  EXPECT_EQ(left, ab);
  EXPECT_EQ(right, ab);
  EXPECT_EQ(both, Matrix({{7, 10}, {15, 22}}));
  CDoubleArray1 x = Vector({1, -1});
  a.MultiplyVector(x, x);
  EXPECT_EQ(x, Vector({-1, -1}));
}

TEST(Matrix, TransposeAndTheUnevenOne) {
  for (uint32_t n = 0; n <= 6; ++n) {
    const CMatrix original = Random(6, 6, 6);
    CMatrix even = original, uneven = original;
    even.Transpose(n);
    EXPECT_EQ(uneven.TransposeAlt(n), n);
    for (int32_t i = 0; i < 6; ++i) {
      for (int32_t j = 0; j < 6; ++j) {
        const int32_t last = static_cast<int32_t>(n) - 1, p = std::min(i, j), q = std::max(i, j);
        const bool inBlock = q <= last, onRim = p == 0 || q == last;
        EXPECT_EQ(even[i][j], inBlock ? original[j][i] : original[i][j]) << n;
        EXPECT_EQ(uneven[i][j], inBlock && onRim ? original[j][i] : original[i][j]) << n << ' ' << i << j;
      }
    }
  }
}

TEST(Matrix, GaussSolveChoosesPivots) {
  CMatrix tie = Matrix({{2, 1, 5}, {-2, 3, 3}});
  CDoubleArray1 x = Vector({0, 0});
  EXPECT_EQ(tie.GaussSolve(x), 1u);
  EXPECT_EQ(x, Vector({0.875 * 2 - 0.25, 2}));
  EXPECT_EQ(tie[0], Vector({2, 1, 5}));  // of equal pivots the upper row stays

  struct Row {
    double pivot;
    uint32_t result;
  };
  for (const Row& row : {Row{1e-18, 0u}, Row{9.9e-18, 0u}, Row{1e-17, 1u}, Row{-1e-17, 1u}, Row{NAN, 1u}}) {
    CMatrix m = Matrix({{row.pivot, row.pivot}});
    CDoubleArray1 solution = Vector({7});
    EXPECT_EQ(m.GaussSolve(solution), row.result) << row.pivot;
    EXPECT_TRUE(row.result == 1 || solution[0] == 7.0) << row.pivot;
    EXPECT_EQ(std::isnan(row.pivot), std::isnan(solution[0])) << row.pivot;
  }
}

// The elimination in the order in which its operations are stated, slow and plain.
uint32_t PlainGaussSolve(Table& a, std::vector<double>& x) {
  const std::size_t n = a.size(), last = a[0].size() - 1;
  for (std::size_t i = 0; i < n; ++i) {
    std::size_t p = i;
    for (std::size_t k = i + 1; k < n; ++k) {
      if (std::fabs(a[k][i]) > std::fabs(a[p][i])) p = k;
    }
    std::swap(a[i], a[p]);
    if (std::fabs(a[i][i]) < 1e-17) return 0;
    for (std::size_t k = i + 1; k < n; ++k) {
      for (std::size_t j = last + 1; j-- > i;) a[k][j] = a[k][j] - a[i][j] * a[k][i] / a[i][i];
    }
  }
  for (std::size_t i = n; i-- > 0;) {
    double s = 0.0;
    for (std::size_t j = i + 1; j < n; ++j) s += a[i][j] * x[j];
    x[i] = (a[i][last] - s) / a[i][i];
  }
  return 1;
}

uint32_t PlainGaussJordan(Table& a, Table& b) {
  const std::size_t n = a.size();
  std::vector<std::size_t> used(n, 0), rows(n), columns(n);
  std::size_t r = 0, c = 0;
  for (std::size_t s = 0; s < n; ++s) {
    double big = 0.0;
    for (std::size_t i = 0; i < n; ++i) {
      if (used[i] == 1) continue;
      for (std::size_t j = 0; j < n; ++j) {
        if (used[j] == 0 && std::fabs(a[i][j]) >= big) {
          big = std::fabs(a[i][j]);
          r = i;
          c = j;
        } else if (used[j] > 1) {
          return 0;
        }
      }
    }
    ++used[c];
    std::swap(a[r], a[c]);
    std::swap(b[r], b[c]);
    rows[s] = r;
    columns[s] = c;
    if (std::fabs(a[c][c]) < 1e-17) return 0;
    const double inverse = 1.0 / a[c][c];
    a[c][c] = 1.0;
    for (double& value : a[c]) value *= inverse;
    for (double& value : b[c]) value *= inverse;
    for (std::size_t l = 0; l < n; ++l) {
      if (l == c) continue;
      const double d = a[l][c];
      a[l][c] = 0.0;
      for (std::size_t j = 0; j < n; ++j) a[l][j] -= d * a[c][j];
      for (std::size_t j = 0; j < b[l].size(); ++j) b[l][j] -= d * b[c][j];
    }
  }
  for (std::size_t s = n; s-- > 0;) {
    for (std::size_t k = 0; rows[s] != columns[s] && k < n; ++k) std::swap(a[k][rows[s]], a[k][columns[s]]);
  }
  return 1;
}

Table Rows(const CMatrix& matrix) {
  Table table;
  for (const CDoubleArray1& row : matrix) table.emplace_back(row.begin(), row.end());
  return table;
}

// What must not change a bit of the solvers. Mantissas next to 2 are the hardest quotients to round; magnitudes and zeros
// lead past the ranges of faster loops.
enum Trouble { kNone, kZeroRow, kNaN, kNaNRows, kHardMantissas, kFarMagnitudes, kNegativeZeros, kTroubles };

void Make(int trouble, CMatrix& m) {
  const auto n = static_cast<int32_t>(m.GetRowCount()), middle = n / 2;
  if (trouble == kZeroRow) m[middle].Fill(0.0);
  if (trouble == kNaN) m[middle][middle] = NAN;
  if (trouble == kNaNRows) m[0].Fill(NAN), m[middle][0] = INFINITY;
  for (int32_t i = 0; i < n; ++i) {
    for (double& x : m[i]) {
      if (trouble == kHardMantissas)
        x = std::copysign(2.0 - std::ldexp(std::floor(64.0 * std::fabs(x)), -52), x);
      if (trouble == kFarMagnitudes) x = std::ldexp(x, (i % 3 - 1) * 195 + 10);
      if (trouble == kNegativeZeros && std::fabs(x) < 0.5) x = -0.0;
    }
  }
}

void ExpectStatedOperations(uint32_t n, int trouble) {
  CMatrix a = Random(n, n + 1, n), square = Random(n, n, n + 100), b = Random(n, 3, n + 200);
  Make(trouble, a);
  Make(trouble, square);
  Table plainA = Rows(a), plainSquare = Rows(square), plainB = Rows(b);
  std::vector<double> plainX(n, 3.0);
  CDoubleArray1 x = Vector(plainX);
  EXPECT_EQ(a.GaussSolve(x), PlainGaussSolve(plainA, plainX));
  EXPECT_EQ(square.GaussJordan(b), PlainGaussJordan(plainSquare, plainB));
  EXPECT_TRUE(SameBits(a, Matrix(plainA)));
  EXPECT_TRUE(SameBits(square, Matrix(plainSquare)));
  EXPECT_TRUE(SameBits(b, Matrix(plainB)));
  CMatrix xs(1, n), plainXs = Matrix({plainX});
  xs.SetRow(0, x);
  EXPECT_TRUE(SameBits(xs, plainXs));
}

// Quotients x / d so close to halfway between two doubles that a sum of two doubles for 1 / d rounds to the wrong one.
TEST(Matrix, GaussSolveRoundsTheHardestQuotients) {
  const double pairs[][2] = {{0x1.83cf21f615d0bp+1, 0x1.6b2a1c8704ebdp+0},
                             {0x1.d44f3e924e2a7p+1, 0x1.8feb2739065bep+0},
                             {0x1.fcb2af47e7efbp+1, 0x1.e5c99588cf06bp+0}};
  for (const auto& [d, x] : pairs) {
    CMatrix m = Matrix({{d, x, x, x, x, x, x, x, x}, {1, 0, 0, 0, 0, 0, 0, 0, 0}});
    CDoubleArray1 solution = Vector({0, 0});
    EXPECT_EQ(m.GaussSolve(solution), 1u);
    for (int32_t j = 1; j < 9; ++j) EXPECT_EQ(m[1][j], -(x / d)) << d << ' ' << j;
  }
}

TEST(Matrix, SolversKeepTheStatedOperationsBitForBit) {
  const InstructionSet before = CurrentInstructionSet();
  for (const InstructionSet set : kInstructionSets) {
    if (!UseInstructionSet(set)) continue;
    for (uint32_t n = 1; n <= 33; n += n < 8 ? 1 : 5) {
      for (int trouble = 0; trouble < kTroubles; ++trouble) {
        SCOPED_TRACE(testing::Message() << InstructionSetName(set) << ' ' << n << ' ' << trouble);
        ExpectStatedOperations(n, trouble);
      }
    }
  }
  UseInstructionSet(before);
}

CMatrix Hilbert(int32_t n) {
  CMatrix h(static_cast<uint32_t>(n), static_cast<uint32_t>(n));
  for (int32_t i = 0; i < n; ++i) {
    for (int32_t j = 0; j < n; ++j) h[i][j] = 1.0 / (i + j + 1);
  }
  return h;
}

double Binomial(int32_t n, int32_t k) {
  double product = 1.0;
  for (int32_t i = 1; i <= k; ++i) product = product * (n - k + i) / i;
  return product;
}

TEST(Matrix, InverseOfHilbertMatrices) {
  // The elements of the inverse are known integers; rounding costs about e^(3.5 n) of them.
  for (int32_t n = 1; n <= 10; ++n) {
    CMatrix h = Hilbert(n);
    CDoubleArray1 b = h[0], firstUnit;
    firstUnit.SetSize(n);
    firstUnit[0] = 1.0;
    ASSERT_EQ(h.InvertSolve(b), 1u);
    const double loss = 1e-16 * std::exp(3.5 * n);
    for (int32_t i = 1; i <= n; ++i) {
      EXPECT_NEAR(b[i - 1], firstUnit[i - 1], loss) << n;
      for (int32_t j = 1; j <= n; ++j) {
        const double centre = Binomial(i + j - 2, i - 1);
        const double exact = ((i + j) % 2 ? -1.0 : 1.0) * (i + j - 1) * Binomial(n + i - 1, n - j) *
                             Binomial(n + j - 1, n - i) * centre * centre;
        EXPECT_NEAR(h[i - 1][j - 1] / exact, 1.0, loss) << n << ' ' << i << ' ' << j;
      }
    }
  }
}

TEST(Matrix, IndexErrorsAreReportedAndSurvived) {
  const CDoubleArray1 one = Vector({1.0});
  CDoubleArray1 none, three = Vector({1, 2, 3});
  struct Row {
    const char* what;
    void (*call)(CMatrix&, CDoubleArray1&);
  };
  const Row rows[] = {
      {"augmented system without a right-hand side",
       [](CMatrix& m, CDoubleArray1& x) { (void)m.GaussSolve(x); }},
      {"right-hand side too short", [](CMatrix& m, CDoubleArray1& x) { (void)m.InvertSolve(x); }},
      {"product of a short vector", [](CMatrix& m, CDoubleArray1& x) { m.MultiplyVector(x, x); }},
      {"singular values and V without room",
       [](CMatrix& m, CDoubleArray1& x) {
         CMatrix v;
         m.SvdDecompose(x, v);
       }},
      {"block beyond the matrix", [](CMatrix& m, CDoubleArray1&) { m.Transpose(0xFFFFFFFFu); }},
      {"uneven block beyond the matrix", [](CMatrix& m, CDoubleArray1&) { m.TransposeAlt(4); }},
      {"row beyond the matrix", [](CMatrix& m, CDoubleArray1& x) { m.SetRow(3, x); }},
      {"column beyond the matrix", [](CMatrix& m, CDoubleArray1& x) { m.SetColumn(3, x); }},
      {"identity of a tall matrix",
       [](CMatrix& m, CDoubleArray1&) {
         m.SetSize(4, 2);
         m.SetIdentity();
       }},
      {"factors without a shape", [](CMatrix& m, CDoubleArray1&) { m.Multiply(CMatrix(), Random(3, 3, 1)); }},
  };
  for (const Row& row : rows) {
    test::MessageRecorder messages;
    CMatrix m = Random(3, 3, 9);
    CDoubleArray1 x = one;
    row.call(m, x);
    EXPECT_FALSE(messages.Take().empty()) << row.what;
  }
  test::MessageRecorder messages;
  CMatrix empty;
  empty.Transpose(1);
  empty.SetIdentity();
  EXPECT_EQ(empty.GaussSolve(none), 1u);
  EXPECT_EQ(empty.InvertSolve(none), 1u);
  empty.SvdDecompose(none, empty);
  EXPECT_TRUE(messages.Take().empty());
}

TEST(Matrix, Distance3) {
  EXPECT_EQ(Distance3(Vector({1, 2, 3, 9}), Vector({3, 5, 9})), 7.0);
  EXPECT_EQ(Distance3(CDoubleArray1(), Vector({1, 2, 3})), 1e-5);
  EXPECT_EQ(Distance3(Vector({1, 2, 3}), CDoubleArray1()), 1e-5);
}

}  // namespace
}  // namespace vrx
