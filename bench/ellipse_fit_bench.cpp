// Fitting tolerance ellipsoids to a thousand differences, the size of a year of judgements on one shade. The
// fit has to hold every difference, in no more volume than the ellipsoid that they were drawn from, before it
// is timed. There is no peer: the time a difference is set beside that of a tenth of the differences.

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <vector>

#include <vrxmath/tolerance/ellipse_fit.h>

#include "bench/harness.h"

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

vrx::bench::Work Smallest(const std::vector<LabDifference>& differences) {
  CEllipseData ellipse;
  Require(FitSmallestEllipse(differences, EllipseCentre::kFree, ellipse) == 1, "no ellipsoid found");
  vrx::CDeltaValues delta;
  for (const LabDifference& d : differences) {
    delta[0] = d.dL, delta[1] = d.da, delta[2] = d.db;
    Require(ellipse.Value(delta) <= 1.0, "a difference lies outside");
  }
  Require(Volume(ellipse) <= kAxes[0] * kAxes[1] * kAxes[2] * 1.001, "the ellipsoid is too large");
  return [&differences] {
    CEllipseData fitted;
    Require(FitSmallestEllipse(differences, EllipseCentre::kFree, fitted) == 1, "no ellipsoid found");
    vrx::bench::Keep(&fitted);
  };
}

vrx::bench::Work Surface(const std::vector<LabDifference>& differences) {
  CEllipseData ellipse;
  Require(FitEllipseSurface(differences, EllipseCentre::kFree, ellipse) == 1 &&
              std::fabs(Volume(ellipse) / (kAxes[0] * kAxes[1] * kAxes[2]) - 1.0) < 1e-9,
          "the surface is not the one that the differences were drawn from");
  return [&differences] {
    CEllipseData fitted;
    Require(FitEllipseSurface(differences, EllipseCentre::kFree, fitted) == 1, "no ellipsoid found");
    vrx::bench::Keep(&fitted);
  };
}

}  // namespace

int main(int argc, char** argv) {
  vrx::bench::Table table(argc, argv, "ns a difference");
  const auto filled = Differences(1000, false), few = Differences(100, false);
  const auto shell = Differences(1000, true), fewOfShell = Differences(100, true);
  const auto compare = [&table](const char* work, const vrx::bench::Work& many,
                                const vrx::bench::Work& tenth) {
    const auto seconds = vrx::bench::SecondsOf({many, tenth}, 9);
    table.Report({work, "100 differences", seconds[0] * 1e6, seconds[1] * 1e7, "", true});
  };
  compare("smallest ellipsoid, 1000 differences", Smallest(filled), Smallest(few));
  compare("smallest ellipsoid of a shell", Smallest(shell), Smallest(fewOfShell));
  compare("surface of a shell", Surface(shell), Surface(fewOfShell));
  return 0;
}
