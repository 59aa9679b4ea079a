// The best limit against trying every one; STRESS against its published formula.

#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <random>
#include <vector>

#include <vrxmath/platform/exceptions.h>
#include <vrxmath/tolerance/limit_fit.h>

namespace vrx {
namespace {

using Verdicts = std::vector<std::uint8_t>;

std::size_t WrongAt(double limit, const std::vector<double>& totals, const Verdicts& accepted) {
  std::size_t wrong = 0;
  for (std::size_t i = 0; i < totals.size(); ++i)
    wrong += (totals[i] <= limit) != (accepted[i] != 0) ? 1U : 0U;
  return wrong;
}

TEST(FitLimit, KnownSets) {
  const struct {
    std::vector<double> totals;
    Verdicts accepted;
    double limit;
    std::size_t wronglyAccepted, wronglyRejected;
  } kRows[] = {
      {{0.2, 0.6, 1.0, 1.4}, {1, 1, 0, 0}, 0.8, 0, 0},
      {{1.4, 0.2, 1.0, 0.6}, {0, 1, 0, 1}, 0.8, 0, 0},   // in any order
      {{0.2, 0.6, 1.0, 1.4}, {1, 0, 1, 0}, 0.4, 0, 1},   // as good as 1.2, and stricter
      {{0.5, 0.5, 0.5, 2.0}, {1, 1, 0, 0}, 1.25, 1, 0},  // one total, two opinions
      {{0.3, 0.7}, {1, 1}, 0.7, 0, 0},
      {{0.3, 0.7}, {0, 0}, 0.15, 0, 0},
      {{0.0, 1.0}, {0, 1}, 1.0, 1, 0},  // 0 is within every limit
      {{1.0, 1.0 + 2.3e-16}, {1, 0}, 1.0, 0, 0},
  };
  for (const auto& row : kRows) {
    const LimitFit fit = FitLimit(row.totals, row.accepted);
    EXPECT_DOUBLE_EQ(fit.limit, row.limit);
    EXPECT_EQ(fit.wronglyAccepted, row.wronglyAccepted) << row.limit;
    EXPECT_EQ(fit.wronglyRejected, row.wronglyRejected) << row.limit;
    EXPECT_EQ(WrongAt(fit.limit, row.totals, row.accepted), fit.Wrong()) << row.limit;
  }
  EXPECT_TRUE(IsUnset(FitLimit({}, {}).limit));
  const double bad[] = {1.0, std::nan(""), -1.0};
  const std::uint8_t yes[] = {1};
  EXPECT_THROW((void)FitLimit({bad, 2}, yes), CInvalidArgException);
  EXPECT_THROW((void)FitLimit({bad + 1, 1}, yes), CInvalidArgException);
  EXPECT_THROW((void)FitLimit({bad + 2, 1}, yes), CInvalidArgException);
}

TEST(FitLimit, NoLimitIsBetter) {
  std::mt19937 random(29);
  for (int run = 0; run < 200; ++run) {
    std::vector<double> totals(1 + random() % 30);
    Verdicts accepted(totals.size());
    for (std::size_t i = 0; i < totals.size(); ++i) {
      totals[i] = static_cast<double>(1 + random() % 12) / 4;
      accepted[i] = totals[i] + static_cast<double>(random() % 5) / 2 < 2.5 ? 1 : 0;
    }
    const LimitFit fit = FitLimit(totals, accepted);
    EXPECT_EQ(WrongAt(fit.limit, totals, accepted), fit.Wrong());
    for (double limit = 0.0; limit < 4.0; limit += 0.125)
      EXPECT_GE(WrongAt(limit, totals, accepted), fit.Wrong());
  }
}

// The best first: by wrong decisions, then by STRESS; what has no total for some trial goes last.
TEST(FitLimits, OrdersWhatCanJudge) {
  const CDifferenceSettings choices[] = {DefaultSettings(vrxSystemLab), DefaultSettings(vrxSystemCmc),
                                         DefaultSettings(vrxSystemCie2000)};
  const std::vector<std::vector<double>> totals{
      {1.0, 2.0, 1.5, 3.0}, {0.2, 0.1, 2.0, 2.0}, {0.5, kUnset, 1.0, std::nan("")},  // unset, and none
      {0.1, 0.1, 2.0, 2.0}, {1.0, 1.0, 1.0, 1.0}, {0.5, 1.0, 1.2, 1.4}};
  const Verdicts accepted{1, 1, 0, 0};
  const std::vector<SystemLimitFit> fits = FitLimits(choices, totals, accepted);
  ASSERT_EQ(fits.size(), 6U);
  for (std::size_t i = 0; i < fits.size(); ++i) {
    const bool hasLimit = i + 1 < fits.size();
    EXPECT_EQ(IsUnset(fits[i].fit.limit), !hasLimit) << i;
    if (i == 0 || !hasLimit) continue;
    EXPECT_GE(std::pair(fits[i].fit.Wrong(), fits[i].stress),
              std::pair(fits[i - 1].fit.Wrong(), fits[i - 1].stress));
  }
  EXPECT_EQ(fits[0].difference.system, vrxSystemCmc);  // 0.1, 0.1, 2, 2: apart, and nearer to proportional
  EXPECT_EQ(fits[0].illuminant, 1U);
  EXPECT_EQ(fits.back().difference.system, vrxSystemCmc);
  EXPECT_EQ(fits.back().illuminant, 0U);
  EXPECT_THROW((void)FitLimits({choices, 2}, {totals.data(), 3}, accepted), CInvalidArgException);
  EXPECT_THROW((void)FitLimits({}, totals, accepted), CInvalidArgException);
  // Those with a factor of lightness three times, the others once.
  std::size_t cmc = 0, hunter = 0;
  for (const CDifferenceSettings& choice : UsualLimitChoices()) {
    cmc += choice.system == vrxSystemCmc ? 1 : 0;
    hunter += choice.system == vrxSystemHunter ? 1 : 0;
  }
  EXPECT_EQ(cmc * 10 + hunter, 31U);
}

// The formula as published: F = sum dE^2 / sum dE dV, 100 sqrt(sum (dE - F dV)^2 / sum F^2 dV^2).
TEST(Stress, OfThePublishedFormula) {
  const std::vector<double> computed{1.2, 0.4, 2.7, 0.9, 3.1}, visual{1.0, 0.7, 2.2, 1.4, 2.9};
  double squares = 0, products = 0, residuals = 0, scaled = 0;
  for (std::size_t i = 0; i < 5; ++i)
    squares += computed[i] * computed[i], products += computed[i] * visual[i];
  const double F = squares / products;
  for (std::size_t i = 0; i < 5; ++i) {
    residuals += (computed[i] - F * visual[i]) * (computed[i] - F * visual[i]);
    scaled += F * F * visual[i] * visual[i];
  }
  EXPECT_NEAR(Stress(computed, visual), 100 * std::sqrt(residuals / scaled), 1e-12);
  EXPECT_NEAR(Stress(computed, computed), 0.0, 1e-5);
  EXPECT_NEAR(Stress(std::vector<double>{1, 0}, std::vector<double>{0, 1}), 100.0, 1e-12);
  EXPECT_TRUE(IsUnset(Stress(std::vector<double>{1, 2}, std::vector<double>{0, 0})));
}

}  // namespace
}  // namespace vrx
