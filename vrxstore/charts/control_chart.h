// Statistical process control of single measurements in their order: charts of individuals and of moving ranges with the
// Western Electric rules, capability, and Hotelling's T2 for several values that belong together.
//
// Formulas: NIST/SEMATECH e-Handbook of Statistical Methods, 6.1.6 (capability), 6.3.2 (control charts and the Western
// Electric rules), 6.3.2.2 (individuals and moving ranges), 6.5.4.3 (Hotelling's T2).

#ifndef VRXSTORE_CHARTS_CONTROL_CHART_H_
#define VRXSTORE_CHARTS_CONTROL_CHART_H_

#include <array>
#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

namespace vrx::store {

/// What a point of a chart may say about the process. A point has each of them that it completes.
enum class ChartRule {
  kBeyond3Sigma,      ///< the point lies beyond three sigma
  kTwoOf3Beyond2,     ///< two of the last three lie beyond two sigma on one side
  kFourOf5Beyond1,    ///< four of the last five lie beyond one sigma on one side
  kEightOnOneSide,    ///< eight in a row lie on one side of the centre
  kSixTrending,       ///< six in a row rise, or fall
  kFourteenAlternate  ///< fourteen in a row go up and down in turn
};
inline constexpr std::size_t kChartRules = 6;

/// The name of a rule, as results have it: "beyond-3-sigma".
std::string_view NameOf(ChartRule rule);

/// The rules that the point at an index breaks, one flag each.
using BrokenRules = std::array<bool, kChartRules>;

/// The rules that values in their order break about a centre and a sigma that are known, such as those of an earlier period.
/// Edges: a value on a limit is not beyond it; one on the centre is on no side and ends a run.
std::vector<BrokenRules> RulesBroken(std::span<const double> values, double centre, double sigma);

/// A chart of single values.
struct IndividualsChart {
  double centre = 0;           ///< mean of the values
  double meanRange = 0;        ///< mean of the moving ranges of two
  double sigma = 0;            ///< estimated from it: divided by d2 = 1.128
  double lower = 0, upper = 0; /**< three sigma about the centre */
  double rangeUpper = 0;  ///< limit of the moving ranges: D4 = 3.267 times their mean; the lower one is 0
  std::vector<double> ranges;  ///< of each value and the one before; the first has none and is 0
  std::vector<BrokenRules> broken;
};

/// The chart of values in their order.
/// In: finite numbers, at least two; fewer give a chart without limits (all zero).
IndividualsChart MakeIndividualsChart(std::span<const double> values);

/// How far apart the tolerance is, measured by the spread of the process.
struct Capability {
  double mean = 0, deviation = 0;  ///< of the sample, with the divisor n - 1
  double cp = 0;                   ///< (upper - lower) / 6 s; infinite with one limit
  double cpk = 0;                  ///< the smaller of (upper - mean) / 3 s and (mean - lower) / 3 s
};

/// Capability against limits, of which one may be infinite. For fewer than two values everything is the unset value (kUnset).
Capability CapabilityOf(std::span<const double> values, double lower, double upper);

using Triple = std::array<double, 3>;

/// Hotelling's T2 of single triples against their own mean and covariance.
struct HotellingChart {
  Triple mean{};
  std::array<Triple, 3> covariance{};  ///< with the divisor n - 1
  /// The limit at a false-alarm rate: of points that the mean and covariance come from, ((n - 1)^2 / n) times the quantile of the
  /// beta distribution with 3 / 2 and (n - 4) / 2.
  double limit = 0;
  std::vector<double> t2;
  bool isKnown = false;  ///< false for fewer than five triples, and for those that lie in one plane
};

inline constexpr double kThreeSigmaAlarms = 0.0027;  ///< of a normal value beyond three sigma
HotellingChart MakeHotellingChart(std::span<const Triple> values, double alarms = kThreeSigmaAlarms);

/// The number below which a share `p` of a beta distribution with a and b (multiples of 1/2) lies. Found by bisection to the last
/// digits of the regularised incomplete beta function (continued fraction of DLMF 8.17.22).
double BetaQuantile(double p, double a, double b);

}  // namespace vrx::store

#endif  // VRXSTORE_CHARTS_CONTROL_CHART_H_
