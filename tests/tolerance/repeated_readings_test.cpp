// Student's t against the printed table; readings needed by hand.

#include <array>
#include <cmath>
#include <cstdint>

#include <gtest/gtest.h>

#include <vrxmath/foundation/numbers.h>
#include <vrxmath/tolerance/repeated_readings.h>

namespace vrx {
namespace {

// NIST/SEMATECH e-Handbook of Statistical Methods, 1.3.6.7.2: critical values, here of both sides together.
TEST(StudentT, IsThePrintedTable) {
  const struct {
    double certainty;
    std::int64_t degrees;
    double t;
  } kRows[] = {
      {0.90, 1, 6.314},  {0.95, 1, 12.706}, {0.99, 1, 63.657},  {0.95, 2, 4.303},         {0.95, 3, 3.182},
      {0.95, 4, 2.776},  {0.99, 5, 4.032},  {0.80, 7, 1.415},   {0.95, 10, 2.228},        {0.998, 9, 4.297},
      {0.95, 30, 2.042}, {0.99, 61, 2.659}, {0.95, 100, 1.984}, {0.95, 1'000'000, 1.960},
  };
  for (const auto& row : kRows)
    EXPECT_NEAR(StudentT(row.certainty, row.degrees), row.t, 6e-4) << row.certainty << ' ' << row.degrees;
  EXPECT_TRUE(IsUnset(StudentT(1.0, 4)) && IsUnset(StudentT(0.0, 4)) && IsUnset(StudentT(0.95, 0)));
}

// Deviations and ranges by hand, distances from the mean that is given.
TEST(ReadingStatistics, ByHand) {
  const std::array<double, 3> readings[] = {{50, 1, 0}, {52, 1, 0}, {54, 4, 0}};
  const ReadingStatistics got = StatisticsOfReadings(readings, {52, 2, 0});
  EXPECT_EQ(got.stats.GetSetting(), 3);
  EXPECT_DOUBLE_EQ(got.stats.First(0), 2.0);
  EXPECT_NEAR(got.stats.First(1), std::sqrt(3.0), 1e-7);  // kept in single precision
  EXPECT_EQ(got.stats.First(2), 0.0);
  EXPECT_DOUBLE_EQ(got.stats.Second(0), 4.0);
  EXPECT_DOUBLE_EQ(got.stats.Second(1), 3.0);
  EXPECT_NEAR(got.Deviation(), std::sqrt(4.0 + 3.0), 1e-7);
  EXPECT_NEAR(got.meanDifference, (std::sqrt(5.0) + 1 + std::sqrt(8.0)) / 3, 1e-15);
  EXPECT_DOUBLE_EQ(got.largestDifference, std::sqrt(8.0));
  const ReadingStatistics one = StatisticsOfReadings({readings, 1}, readings[0]);
  EXPECT_EQ(one.Deviation() + one.largestDifference, 0.0);
  EXPECT_TRUE(one.outliers.empty());
}

TEST(ReadingsNeeded, ByHand) {
  EXPECT_EQ(ReadingsNeeded(0.3, 5, 0.2, 0.95), 18);  // (2.776 * 0.3 / 0.2)^2 = 17.3
  EXPECT_EQ(ReadingsNeeded(0.3, 31, 0.2, 0.95),
            10);  // (2.042 * 1.5)^2 = 9.4: more readings, a surer deviation
  EXPECT_EQ(ReadingsNeeded(0.0, 5, 0.2, 0.95), 1);
  EXPECT_EQ(ReadingsNeeded(0.3, 1, 0.2, 0.95), 0);  // nothing is known of the scatter
  EXPECT_EQ(ReadingsNeeded(0.3, 5, 0.0, 0.95), 0);
  EXPECT_EQ(ReadingsNeeded(1e9, 5, 0.2, 0.95), 0);
  EXPECT_NEAR(UncertaintyOfMean(0.3, 5, 9, 0.95), 2.7764 * 0.3 / 3, 1e-4);
}

}  // namespace
}  // namespace vrx
