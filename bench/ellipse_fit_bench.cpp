// Fitting tolerance ellipsoids to a thousand differences, the size of a year of judgements on one shade. The
// fit has to hold every difference, in no more volume than the ellipsoid that they were drawn from, before it
// is timed.

#include <benchmark/benchmark.h>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <vector>

#include <vrxmath/tolerance/ellipse_fit.h>

namespace {

using vrx::CEllipseData;
using vrx::EllipseCentre;
using vrx::LabDifference;

constexpr double kAxes[] = {0.9, 1.4, 0.6};

/// Differences inside (or on) an ellipsoid along the axes.
std::vector<LabDifference> Differences(int count, bool onSurface) {
  std::mt19937_64 generator(5);
  std::normal_distribution<double> normal;
  std::uniform_real_distribution<double> uniform(0.0, 1.0);
  std::vector<LabDifference> differences;
  for (int i = 0; i < count; ++i) {
    const double x = normal(generator), y = normal(generator), z = normal(generator);
    const double size = (onSurface ? 1.0 : std::cbrt(uniform(generator))) / std::sqrt(x * x + y * y + z * z);
    differences.push_back({kAxes[0] * x * size, kAxes[1] * y * size, kAxes[2] * z * size});
  }
  return differences;
}

void Require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "ellipse_fit_bench: %s\n", what);
  std::exit(1);
}

double Volume(const CEllipseData& ellipse) {
  return ellipse[3] * ellipse[4] * ellipse[5];
}

void FitSmallest(benchmark::State& state, bool onSurface) {
  const std::vector<LabDifference> differences = Differences(static_cast<int>(state.range(0)), onSurface);
  CEllipseData ellipse;
  Require(FitSmallestEllipse(differences, EllipseCentre::kFree, ellipse) == 1, "no ellipsoid found");
  vrx::CDeltaValues delta;
  for (const LabDifference& d : differences) {
    delta[0] = d.dL, delta[1] = d.da, delta[2] = d.db;
    Require(ellipse.Value(delta) <= 1.0, "a difference lies outside");
  }
  Require(Volume(ellipse) <= kAxes[0] * kAxes[1] * kAxes[2] * 1.001, "the ellipsoid is too large");
  for (auto _ : state) {
    benchmark::DoNotOptimize(FitSmallestEllipse(differences, EllipseCentre::kFree, ellipse));
  }
}
BENCHMARK_CAPTURE(FitSmallest, filled, false)->Arg(100)->Arg(1000)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(FitSmallest, shell, true)->Arg(100)->Arg(1000)->Unit(benchmark::kMillisecond);

void FitSurface(benchmark::State& state) {
  const std::vector<LabDifference> differences = Differences(static_cast<int>(state.range(0)), true);
  CEllipseData ellipse;
  Require(FitEllipseSurface(differences, EllipseCentre::kFree, ellipse) == 1 &&
              std::fabs(Volume(ellipse) / (kAxes[0] * kAxes[1] * kAxes[2]) - 1.0) < 1e-9,
          "the surface is not the one that the differences were drawn from");
  for (auto _ : state) {
    benchmark::DoNotOptimize(FitEllipseSurface(differences, EllipseCentre::kFree, ellipse));
  }
}
BENCHMARK(FitSurface)->Arg(100)->Arg(1000)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
