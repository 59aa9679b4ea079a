// Control charts against the worked examples of the NIST/SEMATECH e-Handbook of Statistical Methods and tables of the F
// distribution.

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <numeric>
#include <vector>

#include <vrxstore/charts/control_chart.h>

namespace vrx::store {
namespace {

// Handbook 6.3.2.2: flow rates of ten batches.
TEST(ControlChart, IndividualsOfTheHandbook) {
  const std::vector<double> flow{49.6, 47.6, 49.9, 51.3, 47.8, 51.2, 52.6, 52.4, 53.6, 52.1};
  const IndividualsChart chart = MakeIndividualsChart(flow);
  EXPECT_NEAR(chart.centre, 50.81, 1e-12);
  EXPECT_NEAR(chart.meanRange, 1.8778, 5e-5);
  EXPECT_NEAR(chart.upper, 55.8041, 1e-4);
  EXPECT_NEAR(chart.lower, 45.8159, 1e-4);
  for (const BrokenRules& broken : chart.broken) EXPECT_EQ(broken, BrokenRules{});
  EXPECT_EQ(MakeIndividualsChart({&flow[0], 1}).broken.size(), 1U);
}

// Handbook 6.1.6: mean 16, s = 2, limits 8 and 20; and one limit alone.
TEST(ControlChart, CapabilityOfTheHandbook) {
  const std::vector<double> values{14, 16, 18};
  const Capability both = CapabilityOf(values, 8, 20);
  EXPECT_DOUBLE_EQ(both.cp, 1.0);
  EXPECT_NEAR(both.cpk, 0.6667, 5e-5);
  EXPECT_NEAR(CapabilityOf(values, -std::numeric_limits<double>::infinity(), 20).cpk, 0.6667, 5e-5);
}

// The last point of each row completes a rule about centre 0 and sigma 1; with the values of `not` in its place it does not.
TEST(ControlChart, WesternElectricRules) {
  const struct {
    ChartRule rule;
    std::vector<double> values;
    double instead;
  } kRows[] = {
      {ChartRule::kBeyond3Sigma, {0.5, -3.01}, -3.0},
      {ChartRule::kTwoOf3Beyond2, {2.1, 0.1, 2.2}, -2.2},
      {ChartRule::kTwoOf3Beyond2, {-2.1, -2.2}, -2.0},
      {ChartRule::kFourOf5Beyond1, {1.1, 1.2, 0.2, 1.3, 1.4}, 1.0},
      {ChartRule::kFourOf5Beyond1, {-1.1, -1.2, -1.3, -1.4}, 1.4},
      {ChartRule::kEightOnOneSide, {.1, .2, .1, .2, .1, .2, .1, .2}, 0},
      {ChartRule::kSixTrending, {-.3, -.2, -.1, .1, .2, .3}, 0.2},
      {ChartRule::kSixTrending, {.3, .2, .1, -.1, -.2, -.3}, -0.1},
      {ChartRule::kFourteenAlternate, {1, 2, 1, 2, 1, 2, 1, 2, 1, 2, 1, 2, 1, 2}, 0.5},
  };
  for (auto [rule, values, instead] : kRows) {
    const auto at = static_cast<std::size_t>(rule);
    std::vector<BrokenRules> broken = RulesBroken(values, 0, 1);
    EXPECT_TRUE(broken.back()[at]) << NameOf(rule);
    for (std::size_t i = 0; i + 1 < values.size(); ++i) EXPECT_FALSE(broken[i][at]) << NameOf(rule) << i;
    values.back() = instead;
    EXPECT_FALSE(RulesBroken(values, 0, 1).back()[at]) << NameOf(rule);
  }
}

// Handbook 6.5.4.1: lengths, widths and heights of five parts. The values of T2 about their own mean sum up to 3 (n - 1).
TEST(ControlChart, HotellingOfTheHandbook) {
  const std::vector<Triple> parts{
      {4.0, 2.0, 0.60}, {4.2, 2.1, 0.59}, {3.9, 2.0, 0.58}, {4.3, 2.1, 0.62}, {4.1, 2.2, 0.63}};
  const Triple kMean{4.10, 2.08, 0.604};
  const std::array<Triple, 3> kCovariance{
      {{0.025, 0.0075, 0.00175}, {0.0075, 0.0070, 0.00135}, {0.00175, 0.00135, 0.00043}}};
  const HotellingChart chart = MakeHotellingChart(parts);
  ASSERT_TRUE(chart.isKnown);
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_NEAR(chart.mean[i], kMean[i], 1e-12);
    for (std::size_t j = 0; j < 3; ++j) EXPECT_NEAR(chart.covariance[i][j], kCovariance[i][j], 1e-12);
  }
  EXPECT_NEAR(std::accumulate(chart.t2.begin(), chart.t2.end(), 0.0), 12.0, 1e-9);
  const std::vector<Triple> plane{{1, 2, 3}, {2, 4, 6}, {3, 6, 9}, {4, 8, 12}, {5, 10, 15.0}, {6, 12, 18}};
  EXPECT_FALSE(MakeHotellingChart(plane).isKnown);
}

// The beta distribution by way of F: x = v1 F / (v2 + v1 F) with a = v1 / 2, b = v2 / 2. F from the handbook's tables, 1.3.6.7.3.
TEST(ControlChart, BetaQuantilesByTheTablesOfF) {
  const struct {
    double p, v1, v2, f;
  } kRows[] = {{0.95, 3, 10, 3.708},  {0.95, 1, 1, 161.448}, {0.99, 3, 30, 4.510},
               {0.90, 3, 100, 2.139}, {0.95, 10, 10, 2.978}, {0.99, 3, 1, 5403.352}};
  for (const auto& row : kRows) {
    const double x = row.v1 * row.f / (row.v2 + row.v1 * row.f);
    EXPECT_NEAR(BetaQuantile(row.p, row.v1 / 2, row.v2 / 2), x, 2e-4 * x) << row.f;
  }
}

}  // namespace
}  // namespace vrx::store
