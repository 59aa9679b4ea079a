#include <vrxmath/numeric/line_minimum.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace vrx {
namespace {

/// The golden ratio, and the smaller share of an interval that its section leaves.
constexpr double kGoldenRatio = 1.618033988749895;
constexpr double kSmallerShare = 0.3819660112501051;

double Evaluate(const LineFunction& f, double x) {
  const double value = f(x);
  return std::isnan(value) ? std::numeric_limits<double>::infinity() : value;
}

struct Point {
  double x, f;
};

/// The interval that still holds the minimum and the points of the search within it.
struct Search {
  Search(const Bracket& bracket)
      : lower(std::min(bracket.a, bracket.c)),
        upper(std::max(bracket.a, bracket.c)),
        best{bracket.b, bracket.fb} {
    second = bracket.fa <= bracket.fc ? Point{bracket.a, bracket.fa} : Point{bracket.c, bracket.fc};
    third = second;
  }

  /// The shortest step that makes sense.
  double Resolution(const LineTolerance& tolerance) const {
    return tolerance.relative * std::fabs(best.x) + tolerance.absolute;
  }
  bool IsNarrow(double resolution) const {
    return upper - best.x <= 2.0 * resolution && best.x - lower <= 2.0 * resolution;
  }

  /// Takes a new point in: it becomes an end of the interval or the best point, whose place the interval
  /// follows.
  void Take(Point point) {
    if (point.f <= best.f) {
      (point.x < best.x ? upper : lower) = best.x;
      third = second;
      second = best;
      best = point;
      return;
    }
    (point.x < best.x ? lower : upper) = point.x;
    if (point.f <= second.f || second.x == best.x) {
      third = second;
      second = point;
    } else if (point.f <= third.f || third.x == best.x || third.x == second.x) {
      third = point;
    }
  }

  /// best.x moved by `step`, but by no less than the resolution.
  double Target(double step, double resolution) const {
    return best.x + (std::fabs(step) >= resolution ? step : std::copysign(resolution, step));
  }

  double lower, upper;
  Point best, second, third;
};

LineMinimum Result(const Search& search, int32_t iterations, bool converged) {
  return {search.best.x, search.best.f, iterations, converged};
}

/// The step from the best point to the vertex of the parabola through all three; NaN when they do not have
/// one.
double ParabolicStep(const Search& search) {
  const double x = search.best.x;
  const double dw = search.second.x - x, dv = search.third.x - x;
  const double fw = search.second.f - search.best.f, fv = search.third.f - search.best.f;
  return 0.5 * (dw * dw * fv - dv * dv * fw) / (dw * fv - dv * fw);
}

/// True for a step that stays inside the interval, `margin` clear of its ends, and is less than half the one
/// before last.
bool IsConvergent(const Search& search, double step, double stepBeforeLast, double margin) {
  const double u = search.best.x + step;
  return std::fabs(step) < 0.5 * std::fabs(stepBeforeLast) && u - search.lower > margin &&
         search.upper - u > margin;
}

struct Slope {
  double x, df;
};

/// The minimum lies downhill of the best point.
void CutBySlope(Search& search, Slope best) {
  if (best.df < 0.0) search.lower = best.x;
  if (best.df > 0.0) search.upper = best.x;
}

/// The step from (x, dfx) to the zero of the line through it and another slope; NaN when it leads uphill.
double SecantStep(Slope at, Slope other) {
  const double step = at.df * (at.x - other.x) / (other.df - at.df);
  return step * at.df < 0.0 ? step : std::numeric_limits<double>::quiet_NaN();
}

}  // namespace

Bracket BracketMinimum(LineFunction f, double a, double b, int32_t maxIterations) {
  Bracket bracket{a, b, b, Evaluate(f, a), Evaluate(f, b), 0.0, 0, false};
  if (bracket.fb > bracket.fa) {
    std::swap(bracket.a, bracket.b);
    std::swap(bracket.fa, bracket.fb);
  }
  for (; bracket.iterations < maxIterations; ++bracket.iterations) {
    bracket.c = bracket.b + kGoldenRatio * (bracket.b - bracket.a);
    if (!std::isfinite(bracket.c)) return bracket;
    bracket.fc = Evaluate(f, bracket.c);
    bracket.found = bracket.fc >= bracket.fb && bracket.fb < std::numeric_limits<double>::infinity();
    if (bracket.found) return bracket;
    bracket.a = bracket.b;
    bracket.fa = bracket.fb;
    bracket.b = bracket.c;
    bracket.fb = bracket.fc;
  }
  return bracket;
}

LineMinimum GoldenSection(LineFunction f, const Bracket& bracket, const LineTolerance& tolerance) {
  Search search(bracket);
  for (int32_t i = 0; i < tolerance.maxIterations && bracket.found; ++i) {
    if (search.IsNarrow(search.Resolution(tolerance))) return Result(search, i, true);
    const double above = search.upper - search.best.x, below = search.best.x - search.lower;
    const double u = search.best.x + kSmallerShare * (above > below ? above : -below);
    search.Take({u, Evaluate(f, u)});
  }
  return Result(search, tolerance.maxIterations, false);
}

LineMinimum BrentMinimum(LineFunction f, const Bracket& bracket, const LineTolerance& tolerance) {
  Search search(bracket);
  double step = 0.0, stepBeforeLast = 0.0;
  for (int32_t i = 0; i < tolerance.maxIterations && bracket.found; ++i) {
    const double resolution = search.Resolution(tolerance);
    if (search.IsNarrow(resolution)) return Result(search, i, true);
    const double parabolic = ParabolicStep(search);
    if (IsConvergent(search, parabolic, stepBeforeLast, resolution)) {
      stepBeforeLast = step;
      step = parabolic;
    } else {
      const double above = search.upper - search.best.x, below = search.best.x - search.lower;
      stepBeforeLast = above > below ? above : -below;
      step = kSmallerShare * stepBeforeLast;
    }
    const double u = search.Target(step, resolution);
    search.Take({u, Evaluate(f, u)});
  }
  return Result(search, tolerance.maxIterations, false);
}

LineMinimum BrentMinimum(LineFunction f, LineFunction derivative, const Bracket& bracket,
                         const LineTolerance& tolerance) {
  Search search(bracket);
  Slope best{search.best.x, derivative(search.best.x)};
  Slope second{search.second.x, derivative(search.second.x)};
  double step = 0.0, stepBeforeLast = 0.0;
  for (int32_t i = 0; i < tolerance.maxIterations && bracket.found; ++i) {
    const double resolution = search.Resolution(tolerance);
    CutBySlope(search, best);
    if (search.IsNarrow(resolution) || best.df == 0.0) return Result(search, i, true);
    const double secant = SecantStep(best, second);
    if (IsConvergent(search, secant, stepBeforeLast, 0.0)) {
      stepBeforeLast = step;
      step = secant;
    } else {
      const double above = search.upper - search.best.x, below = search.best.x - search.lower;
      stepBeforeLast = above > below ? above : -below;
      step = 0.5 * stepBeforeLast;
    }
    const Slope tried{search.Target(step, resolution), derivative(search.Target(step, resolution))};
    const double previous = search.best.x;
    search.Take({tried.x, Evaluate(f, tried.x)});
    second = search.best.x == previous ? tried : best;
    if (search.best.x != previous) best = tried;
  }
  return Result(search, tolerance.maxIterations, false);
}

}  // namespace vrx
