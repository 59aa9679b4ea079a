#include <gtest/gtest.h>

#include <vrxmath/numeric/nonnegative_least_squares.h>

namespace vrx {
namespace {

// The problem of Lawson and Hanson's chapter 23 kind: columns of which plain least squares makes one negative.
TEST(NonNegativeLeastSquares, KeepsSignsAndConditions) {
  const double A[] = {1, 0.9, 0, 1, 1.1, 0, 0, 0, 2, 1, 1, 1};
  const double b[] = {1, 2, -3, 1};
  for (const double guess : {0.0, 1.0}) {
    double x[3] = {guess, guess, guess};
    ASSERT_EQ(NonNegativeLeastSquares(A, b, x), 1u);
    for (int j = 0; j < 3; ++j) {
      double slope = 0.0;
      for (int i = 0; i < 4; ++i) {
        slope += A[3 * i + j] * (b[i] - A[3 * i] * x[0] - A[3 * i + 1] * x[1] - A[3 * i + 2] * x[2]);
      }
      EXPECT_GE(x[j], 0.0);
      EXPECT_LE(slope, 1e-12);
      EXPECT_NEAR(slope * x[j], 0.0, 1e-12);
    }
  }
  double x[2] = {0.0, 0.0};
  EXPECT_EQ(NonNegativeLeastSquares(A, b, x), 0u) << "sizes";
}

}  // namespace
}  // namespace vrx
