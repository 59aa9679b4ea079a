#include <cstddef>
#include <gtest/gtest.h>
#include <random>
#include <vector>

#include <vrxmath/numeric/nonnegative_least_squares.h>

namespace vrx {
namespace {

// The conditions of Karush, Kuhn and Tucker tell the solution: no x is negative, the residual falls along no column, and
// along a column that is used it is level.
void ExpectConditions(const std::vector<double>& A, const std::vector<double>& b, std::vector<double> x) {
  ASSERT_EQ(NonNegativeLeastSquares(A, b, x), 1u);
  std::vector<double> residual = b;
  for (std::size_t i = 0; i < A.size(); ++i) residual[i / x.size()] -= A[i] * x[i % x.size()];
  std::vector<double> slopes(x.size());
  for (std::size_t i = 0; i < A.size(); ++i) slopes[i % x.size()] += A[i] * residual[i / x.size()];
  for (std::size_t j = 0; j < x.size(); ++j) {
    EXPECT_GE(x[j], 0.0) << j;
    EXPECT_LE(slopes[j], 1e-12) << j;
    EXPECT_NEAR(slopes[j] * x[j], 0.0, 1e-12) << j;
  }
}

TEST(NonNegativeLeastSquares, KeepsSignsAndConditions) {
  std::mt19937 random(23);
  const auto numbers = [&](std::size_t count) {
    std::vector<double> values(count);
    for (double& value : values) value = static_cast<double>(random()) / 2147483648.0 - 1.0;
    return values;
  };
  for (const double guess : {0.0, 1.0}) {
    // The problem of Lawson and Hanson's chapter 23 kind: columns of which plain least squares makes one negative.
    ExpectConditions({1, 0.9, 0, 1, 1.1, 0, 0, 0, 2, 1, 1, 1}, {1, 2, -3, 1}, std::vector<double>(3, guess));
    for (int k = 0; k < 50; ++k) ExpectConditions(numbers(96), numbers(12), std::vector<double>(8, guess));
  }
  double x[2] = {0.0, 0.0};
  EXPECT_EQ(NonNegativeLeastSquares(numbers(12), numbers(4), x), 0u) << "sizes";
}

}  // namespace
}  // namespace vrx
