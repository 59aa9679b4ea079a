#include <vrxstore/charts/control_chart.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include <vrxmath/foundation/numbers.h>
#include <vrxmath/numeric/elementary.h>

namespace vrx::store {
namespace {

constexpr double kD2 = 1.128, kD4 = 3.267;  // of ranges of two values

double MeanOf(std::span<const double> values) {
  double sum = 0;
  for (const double value : values) sum += value;
  return sum / static_cast<double>(values.size());
}

// Judges one point after the other by what it knows of those before.
class RuleWatch {
 public:
  RuleWatch(double centre, double sigma) : centre_(centre), sigma_(sigma) {}

  BrokenRules Take(double value) {
    const double z = value - centre_;
    deviations_.push_back(z);
    TakeDirection(value);
    run_ = z * side_ > 0 ? run_ + 1 : static_cast<std::size_t>(z != 0);
    side_ = z;
    BrokenRules broken{};
    const auto set = [&broken](ChartRule rule, bool isBroken) {
      broken[static_cast<std::size_t>(rule)] = isBroken;
    };
    set(ChartRule::kBeyond3Sigma, std::fabs(z) > 3 * sigma_);
    set(ChartRule::kTwoOf3Beyond2, AreBeyond(2, 3, 2 * sigma_));
    set(ChartRule::kFourOf5Beyond1, AreBeyond(4, 5, sigma_));
    set(ChartRule::kEightOnOneSide, run_ >= 8);
    // Six points in a row have five steps between them, fourteen have thirteen.
    set(ChartRule::kSixTrending, steps_ >= 5);
    set(ChartRule::kFourteenAlternate, turns_ >= 13);
    return broken;
  }

 private:
  void TakeDirection(double value) {
    const double step = deviations_.size() == 1 ? 0 : value - last_;
    last_ = value;
    steps_ = step * direction_ > 0 ? steps_ + 1 : static_cast<std::size_t>(step != 0);
    turns_ = step * direction_ < 0 ? turns_ + 1 : static_cast<std::size_t>(step != 0);
    direction_ = step;
  }

  // Whether `least` of the last `window` points, this one among them, lie beyond a distance on its side.
  bool AreBeyond(std::size_t least, std::size_t window, double distance) const {
    const double z = deviations_.back();
    if (!(std::fabs(z) > distance)) return false;
    const std::size_t from = deviations_.size() - std::min(window, deviations_.size());
    return static_cast<std::size_t>(std::count_if(
               deviations_.begin() + static_cast<std::ptrdiff_t>(from), deviations_.end(),
               [&](double other) { return other * z > 0 && std::fabs(other) > distance; })) >= least;
  }

  double centre_, sigma_;
  std::vector<double> deviations_;
  double last_ = 0, direction_ = 0, side_ = 0;
  std::size_t run_ = 0, steps_ = 0, turns_ = 0;
};

// The logarithm of the gamma function of x > 0: Stirling's series (DLMF 5.11.1) once x is large.
double LogGamma(double x) {
  constexpr double kLarge = 20, kHalfLogTwoPi = 0.91893853320467274178;
  double shift = 0;
  for (; x < kLarge; x += 1) shift += Log(x);
  const double r = 1 / x, r2 = r * r;
  const double series = r * (1.0 / 12 - r2 * (1.0 / 360 - r2 * (1.0 / 1260 - r2 * (1.0 / 1680))));
  return (x - 0.5) * Log(x) - x + kHalfLogTwoPi + series - shift;
}

// The continued fraction of the incomplete beta function, by Lentz's method.
double BetaFraction(double x, double a, double b) {
  constexpr double kTiny = 1e-300, kEnough = 1e-16;
  constexpr int kMostSteps = 10'000;
  double c = 1, d = 1 / (1 - (a + b) * x / (a + 1)), h = d;
  for (int m = 1; m < kMostSteps; ++m) {
    const double n = 2 * m;
    for (const double term :
         {m * (b - m) * x / ((a + n - 1) * (a + n)), -(a + m) * (a + b + m) * x / ((a + n) * (a + n + 1))}) {
      d = 1 + term * d;
      c = 1 + term / c;
      d = 1 / (std::fabs(d) < kTiny ? kTiny : d);
      c = std::fabs(c) < kTiny ? kTiny : c;
      h *= c * d;
    }
    if (std::fabs(c * d - 1) < kEnough) break;
  }
  return h;
}

// The share of a beta distribution below x.
double BetaShare(double x, double a, double b) {
  if (x <= 0) return 0;
  if (x >= 1) return 1;
  const double front = Exp(LogGamma(a + b) - LogGamma(a) - LogGamma(b) + a * Log(x) + b * Log(1 - x));
  return x < (a + 1) / (a + b + 2) ? front * BetaFraction(x, a, b) / a
                                   : 1 - front * BetaFraction(1 - x, b, a) / b;
}

double Dot(const Triple& a, const Triple& b) {
  return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}
Triple Cross(const Triple& a, const Triple& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

void TakeMoments(std::span<const Triple> values, HotellingChart& chart) {
  const auto n = static_cast<double>(values.size());
  for (const Triple& value : values) {
    for (std::size_t i = 0; i < 3; ++i) chart.mean[i] += value[i] / n;
  }
  for (const Triple& value : values) {
    for (std::size_t i = 0; i < 3; ++i) {
      for (std::size_t j = 0; j < 3; ++j)
        chart.covariance[i][j] += (value[i] - chart.mean[i]) * (value[j] - chart.mean[j]) / (n - 1);
    }
  }
}

}  // namespace

std::string_view NameOf(ChartRule rule) {
  static constexpr std::array<std::string_view, kChartRules> kNames{
      "beyond-3-sigma", "2-of-3-beyond-2-sigma", "4-of-5-beyond-1-sigma", "8-on-one-side",
      "6-trending",     "14-alternating"};
  return kNames[static_cast<std::size_t>(rule)];
}

std::vector<BrokenRules> RulesBroken(std::span<const double> values, double centre, double sigma) {
  std::vector<BrokenRules> broken;
  RuleWatch watch(centre, sigma);
  for (const double value : values) broken.push_back(watch.Take(value));
  return broken;
}

IndividualsChart MakeIndividualsChart(std::span<const double> values) {
  IndividualsChart chart;
  chart.ranges.resize(values.size());
  chart.broken.resize(values.size());
  if (values.size() < 2) return chart;
  for (std::size_t i = 1; i < values.size(); ++i) chart.ranges[i] = std::fabs(values[i] - values[i - 1]);
  chart.centre = MeanOf(values);
  chart.meanRange = MeanOf(std::span(chart.ranges).subspan(1));
  chart.sigma = chart.meanRange / kD2;
  chart.lower = chart.centre - 3 * chart.sigma;
  chart.upper = chart.centre + 3 * chart.sigma;
  chart.rangeUpper = kD4 * chart.meanRange;
  chart.broken = RulesBroken(values, chart.centre, chart.sigma);
  return chart;
}

Capability CapabilityOf(std::span<const double> values, double lower, double upper) {
  if (values.size() < 2) return {kUnset, kUnset, kUnset, kUnset};
  Capability result;
  result.mean = MeanOf(values);
  double squares = 0;
  for (const double value : values) squares += (value - result.mean) * (value - result.mean);
  result.deviation = std::sqrt(squares / static_cast<double>(values.size() - 1));
  result.cp = (upper - lower) / (6 * result.deviation);
  result.cpk = std::min(upper - result.mean, result.mean - lower) / (3 * result.deviation);
  return result;
}

double BetaQuantile(double p, double a, double b) {
  double low = 0, high = 1;
  for (double middle = 0.5; middle > low && middle < high; middle = low + (high - low) / 2)
    (BetaShare(middle, a, b) < p ? low : high) = middle;
  return high;
}

HotellingChart MakeHotellingChart(std::span<const Triple> values, double alarms) {
  HotellingChart chart;
  constexpr std::size_t kLeast = 5;
  if (values.size() < kLeast) return chart;
  TakeMoments(values, chart);
  const auto& s = chart.covariance;
  // The inverse of a symmetric matrix: the cross products of its rows over its determinant.
  const std::array<Triple, 3> adjoint{Cross(s[1], s[2]), Cross(s[2], s[0]), Cross(s[0], s[1])};
  const double determinant = Dot(s[0], adjoint[0]);
  const double size = s[0][0] * s[1][1] * s[2][2];
  constexpr double kFlat = 1e-12;
  if (!(determinant > kFlat * size)) return chart;
  chart.isKnown = true;
  for (const Triple& value : values) {
    const Triple z{value[0] - chart.mean[0], value[1] - chart.mean[1], value[2] - chart.mean[2]};
    chart.t2.push_back(Dot(z, {Dot(adjoint[0], z), Dot(adjoint[1], z), Dot(adjoint[2], z)}) / determinant);
  }
  const auto n = static_cast<double>(values.size());
  chart.limit = (n - 1) * (n - 1) / n * BetaQuantile(1 - alarms, 1.5, (n - 4) / 2);
  return chart;
}

}  // namespace vrx::store
