#include <gtest/gtest.h>
#include <utility>
#include <vector>

#include <vrxmath/numeric/lagrange.h>

namespace vrx {
namespace {

TEST(Lagrange, ReproducesPolynomialsUpToTheDegreeOfTheStencil) {
  const auto cubic = [](double x) { return 2.0 - x + 0.5 * x * x - 0.25 * x * x * x; };
  const auto quadratic = [](double x) { return 1.0 + 3.0 * x - 0.75 * x * x; };
  std::vector<double> cubicSamples, quadraticSamples;
  for (int i = 0; i < 8; ++i) {
    cubicSamples.push_back(cubic(i));
    quadraticSamples.push_back(quadratic(i));
  }
  for (double t = 0.0; t <= 7.0; t += 0.125) {
    EXPECT_NEAR(InterpolateLagrange(quadraticSamples, t), quadratic(t), 1e-12) << t;
    if (t >= 1.0 && t <= 6.0) {
      EXPECT_NEAR(InterpolateLagrange(cubicSamples, t), cubic(t), 1e-12) << t;
    }
  }
}

TEST(Lagrange, PublishedMidpointCoefficients) {
  // Halfway between the middle nodes of a cubic, and in the first interval of a quadratic (ASTM E2022).
  struct Row {
    double t;
    int first;
    std::vector<double> coefficients;
  };
  const Row rows[] = {{1.5, 0, {-0.0625, 0.5625, 0.5625, -0.0625}},
                      {0.5, 0, {0.375, 0.75, -0.125}},
                      {4.5, 3, {-0.125, 0.75, 0.375}},
                      {2.0, 2, {1.0}}};
  for (const Row& row : rows) {
    const LagrangeStencil stencil = StencilAt(row.t, 6);
    EXPECT_EQ(stencil.first, row.first) << row.t;
    ASSERT_EQ(static_cast<std::size_t>(stencil.count), row.coefficients.size()) << row.t;
    for (std::size_t k = 0; k < row.coefficients.size(); ++k) {
      EXPECT_DOUBLE_EQ(stencil.coefficients[k], row.coefficients[k]) << row.t << ' ' << k;
    }
  }
}

TEST(Lagrange, StraightLinesEndAtTheLastNode) {
  const double y[] = {1.0, 2.0, 4.0};
  const std::pair<double, double> rows[] = {{-1.0, 1.0}, {0.5, 1.5}, {1.5, 3.0}, {2.0, 4.0}, {9.0, 4.0}};
  for (const auto& [t, value] : rows) EXPECT_EQ(InterpolateLinear(y, t), value) << t;
}

}  // namespace
}  // namespace vrx
