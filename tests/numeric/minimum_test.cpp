#include <cmath>
#include <gtest/gtest.h>
#include <vector>

#include <vrxmath/numeric/gradient.h>
#include <vrxmath/numeric/griesser.h>
#include <vrxmath/numeric/line_minimum.h>

namespace vrx {
namespace {

double Square(double x) {
  return x * x;
}

struct LineRow {
  const char* name;
  double (*f)(double);
  double (*df)(double);
  double a, b;  // where bracketing starts
  double x;     // the minimum
  double accuracy;
};

const LineRow kLineRows[] = {
    {"parabola", [](double x) { return Square(x - 2.0); }, [](double x) { return 2.0 * (x - 2.0); }, 0.0, 1.0,
     2.0, 1e-7},
    {"parabola, downhill to the left", [](double x) { return Square(x - 2.0); },
     [](double x) { return 2.0 * (x - 2.0); }, 9.0, 9.5, 2.0, 1e-7},
    {"far away", [](double x) { return Square(x - 1e6); }, [](double x) { return 2.0 * (x - 1e6); }, 0.0,
     1e-3, 1e6, 0.1},
    {"quartic, flat", [](double x) { return Square(Square(x + 1.0)); },
     [](double x) { return 4.0 * Square(x + 1.0) * (x + 1.0); }, 3.0, 2.0, -1.0, 1e-3},
    {"kink", [](double x) { return std::fabs(x - 0.3); }, [](double x) { return x < 0.3 ? -1.0 : 1.0; }, -1.0,
     0.0, 0.3, 1e-7},
    {"x^4 - 3x^3 + 2", [](double x) { return Square(Square(x)) - 3.0 * x * x * x + 2.0; },
     [](double x) { return 4.0 * x * x * x - 9.0 * x * x; }, 1.0, 1.5, 2.25, 1e-7},
    {"x - sqrt x, NaN on the left", [](double x) { return x - std::sqrt(x); },
     [](double x) { return 1.0 - 0.5 / std::sqrt(x); }, 5.0, 4.0, 0.25, 1e-7},
};

TEST(LineMinimum, KnownMinima) {
  for (const LineRow& row : kLineRows) {
    const Bracket bracket = BracketMinimum(row.f, row.a, row.b);
    ASSERT_TRUE(bracket.found) << row.name;
    EXPECT_LT((bracket.b - bracket.a) * (bracket.b - bracket.c), 0.0) << row.name;
    EXPECT_LE(bracket.fb, std::min(bracket.fa, bracket.fc)) << row.name;
    const LineMinimum results[] = {GoldenSection(row.f, bracket), BrentMinimum(row.f, bracket),
                                   BrentMinimum(row.f, row.df, bracket)};
    for (const LineMinimum& minimum : results) {
      const auto method = &minimum - results;
      EXPECT_TRUE(minimum.converged) << row.name << ' ' << method;
      EXPECT_NEAR(minimum.x, row.x, row.accuracy) << row.name << ' ' << method;
      EXPECT_EQ(minimum.value, row.f(minimum.x)) << row.name << ' ' << method;
      EXPECT_LT(minimum.iterations, 100) << row.name << ' ' << method;
    }
    EXPECT_LE(results[1].iterations, results[0].iterations + 2) << row.name;
  }
}

TEST(LineMinimum, EndsWithoutOne) {
  EXPECT_FALSE(BracketMinimum([](double x) { return -x; }, 0.0, 1.0).found);
  EXPECT_FALSE(BracketMinimum([](double) { return NAN; }, 0.0, 1.0).found);
  const Bracket none = BracketMinimum([](double x) { return x; }, 0.0, 1.0, 3);
  EXPECT_FALSE(none.found);
  EXPECT_EQ(none.iterations, 3);
  EXPECT_FALSE(BrentMinimum([](double x) { return x; }, none).converged);
  // Everything flat is a minimum anywhere; out of iterations is not converged.
  const auto flat = [](double) { return 1.0; };
  EXPECT_TRUE(BrentMinimum(flat, BracketMinimum(flat, 0.0, 1.0)).converged);
  const auto parabola = [](double x) { return x * x; };
  const LineMinimum stopped = GoldenSection(parabola, BracketMinimum(parabola, -3.0, -2.5), {1e-8, 1e-12, 5});
  EXPECT_FALSE(stopped.converged);
  EXPECT_EQ(stopped.iterations, 5);
}

using Point = std::span<const double>;

double Rosenbrock(Point p) {
  return Square(1.0 - p[0]) + 100.0 * Square(p[1] - p[0] * p[0]);
}
double Himmelblau(Point p) {
  return Square(p[0] * p[0] + p[1] - 11.0) + Square(p[0] + p[1] * p[1] - 7.0);
}
double Beale(Point p) {
  const double x = p[0], y = p[1];
  return Square(1.5 - x + x * y) + Square(2.25 - x + x * y * y) + Square(2.625 - x + x * y * y * y);
}
/// A bowl with reproducible noise of 1e-6, as a measurement would have.
double NoisyBowl(Point p) {
  const double bowl = Square(p[0] - 1.0) + 3.0 * Square(p[1] + 2.0);
  const double noise = std::fmod(std::fabs(1e7 * (p[0] + 0.37 * p[1])), 1.0) - 0.5;
  return bowl + 1e-6 * noise;
}
/// Undefined (NaN) outside the unit disc, least at (0.6, 0.6).
double Disc(Point p) {
  return std::sqrt(1.0 - p[0] * p[0] - p[1] * p[1]) * 0.0 + Square(p[0] - 0.6) + Square(p[1] - 0.6);
}
/// A minimum in every cell of the integer grid, the least at the origin.
double EggBox(Point p) {
  const auto wave = [](double x) { return Square(x - std::round(x)); };
  return 40.0 * (wave(p[0]) + wave(p[1])) + Square(p[0]) + Square(p[1]);
}

// A plain with one well, which a single cell of a grid of 9 by 9 sees: the first of its row, in the seventh row.
double Well(Point p) {
  return std::min(1.0, 100.0 * (Square(p[0] + 0.9) + Square(p[1] - 0.4)));
}

struct Row {
  const char* name;
  double (*f)(Point);
  std::vector<double> start, lower, upper, minimum;
  double accuracy;
};

TEST(Gradient, KnownMinima) {
  const Row rows[] = {
      {"Rosenbrock", Rosenbrock, {-1.2, 1.0}, {}, {}, {1.0, 1.0}, 1e-4},
      {"Rosenbrock, bound below its minimum", Rosenbrock, {-1.2, 1.0}, {-2, -2}, {0.5, 2}, {0.5, 0.25}, 1e-5},
      {"Himmelblau from (-4, 4)", Himmelblau, {-4.0, 4.0}, {}, {}, {-2.805118, 3.131312}, 1e-5},
      {"Beale", Beale, {1.0, 1.0}, {}, {}, {3.0, 0.5}, 1e-4},
      {"noisy bowl", NoisyBowl, {7.0, 5.0}, {}, {}, {1.0, -2.0}, 1e-2},
      {"disc", Disc, {0.0, -0.9}, {}, {}, {0.6, 0.6}, 1e-5},
      {"start outside the box", Himmelblau, {99.0, 99.0}, {2.0, 0.0}, {5.0, 2.5}, {3.0, 2.0}, 1e-5},
      {"corner", Himmelblau, {0.0, 0.0}, {-1.0, -1.0}, {1.0, 1.0}, {1.0, 1.0}, 1e-9},
  };
  for (const Row& row : rows) {
    CGradient search;
    search.SetBounds(row.lower, row.upper);
    const SearchResult result = search.Minimize(row.f, row.start);
    EXPECT_TRUE(result.converged) << row.name;
    EXPECT_LT(result.iterations, 300) << row.name;
    EXPECT_EQ(result.value, row.f(result.point)) << row.name;
    for (std::size_t k = 0; k < row.minimum.size(); ++k) {
      EXPECT_NEAR(result.point[k], row.minimum[k], row.accuracy) << row.name << ' ' << k;
    }
  }
}

TEST(Gradient, GivenGradientAndLimits) {
  const auto gradient = [](Point p, std::span<double> g) {
    g[0] = -2.0 * (1.0 - p[0]) - 400.0 * p[0] * (p[1] - p[0] * p[0]);
    g[1] = 200.0 * (p[1] - p[0] * p[0]);
  };
  CGradient search;
  const SearchResult result = search.Minimize(Rosenbrock, gradient, {-1.2, 1.0});
  EXPECT_TRUE(result.converged);
  EXPECT_NEAR(result.point[0], 1.0, 1e-5);
  search.SetIterationLimit(3);
  const SearchResult stopped = search.Minimize(Rosenbrock, gradient, {-1.2, 1.0});
  EXPECT_FALSE(stopped.converged);
  EXPECT_EQ(stopped.iterations, 3);
  EXPECT_LT(stopped.value, Rosenbrock(std::vector<double>{-1.2, 1.0}));
  const SearchResult nothing = search.Minimize([](Point) { return NAN; }, {1.0, 2.0});
  EXPECT_FALSE(nothing.converged);
  EXPECT_TRUE(std::isinf(nothing.value));
}

TEST(Griesser, LeastOfManyMinima) {
  const Row rows[] = {
      {"egg box", EggBox, {}, {-5.3, -4.1}, {4.9, 6.2}, {0.0, 0.0}, 1e-5},
      {"Beale", Beale, {}, {-4.5, -4.5}, {4.5, 4.5}, {3.0, 0.5}, 1e-4},
      {"disc", Disc, {}, {-8.0, -8.0}, {8.0, 8.0}, {0.6, 0.6}, 1e-5},
      {"bounds in the wrong order", Rosenbrock, {}, {2.0, 2.0}, {-2.0, -2.0}, {1.0, 1.0}, 1e-4},
      {"a cell at the edge", Well, {}, {-1.0, -1.0}, {1.0, 1.0}, {-0.9, 0.4}, 1e-5},
      {"side of the box", Rosenbrock, {}, {-2.0, -2.0}, {0.5, 2.0}, {0.5, 0.25}, 1e-5},
  };
  for (const Row& row : rows) {
    const SearchResult result = CGriesser().Minimize(row.f, row.lower, row.upper);
    EXPECT_TRUE(result.converged) << row.name;
    for (std::size_t k = 0; k < row.minimum.size(); ++k) {
      EXPECT_NEAR(result.point[k], row.minimum[k], row.accuracy) << row.name << ' ' << k;
    }
  }
  EXPECT_FALSE(CGriesser().Minimize([](Point) { return NAN; }, {0.0}, {1.0}).converged);
}

TEST(Griesser, ManyAxesStayAffordable) {
  int64_t calls = 0;
  const auto bowl = [&](Point p) {
    ++calls;
    double sum = 0.0;
    for (const double x : p) sum += Square(x - 0.25);
    return sum;
  };
  CGriesser search;
  search.SetPointsPerAxis(1000);
  search.SetLevels(2);
  const SearchResult result =
      search.Minimize(bowl, std::vector<double>(12, -1.0), std::vector<double>(12, 1.0));
  EXPECT_TRUE(result.converged);
  EXPECT_NEAR(result.point[11], 0.25, 1e-5);
  EXPECT_LT(calls, 2100000);
}

}  // namespace
}  // namespace vrx
