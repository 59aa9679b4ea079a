#include <cmath>
#include <gtest/gtest.h>

#include <vrxmath/tolerance/averaging_stats.h>

#include "tests/testing/archives.h"
#include "tests/testing/messages.h"

namespace vrx {
namespace {

TEST(AveragingStats, SettersCap) {
  const double rows[][2] = {
      {600.0, 499.99}, {499.99, 499.99}, {499.98, 499.98}, {-3.0, -3.0}, {std::nan(""), 499.99}};
  for (const auto& [given, stored] : rows) {
    CAveragingStats stats;
    stats.SetFirst(0, given);
    stats.SetSecond(1, given);
    EXPECT_EQ(stats.First(0), stored);
    EXPECT_EQ(stats.Second(1), stored);
    EXPECT_EQ(stats.First(4), stored) << "the second statistic of coordinate 1";
  }
  CAveragingStats stats;
  test::MessageRecorder messages;
  EXPECT_EQ(stats.Second(2147483647), 0.0);
  EXPECT_EQ(messages.Take(), test::IndexErrors());
  stats.SetSecond(2147483647, 1.0);
  EXPECT_EQ(messages.Take(), test::IndexErrors());
  stats.SetFirst(1, 0.3);
  EXPECT_DOUBLE_EQ(stats.FirstSquared(1), 0.09);
}

TEST(AveragingStats, ArchiveLeavesTheSettingAlone) {
  CAveragingStats stats, target;
  stats.SetSecond(2, 4.5);
  stats.SetSetting(7);
  target.SetSetting(3);
  test::ExpectRoundTripAndTruncations(stats, target);
  test::Load(target, test::Stored(stats));
  EXPECT_EQ(target.GetSetting(), 3);
  CDoubleArray1 five;
  five.SetSize(5);
  EXPECT_EQ(test::ArchiveFailure([&] { test::Load(target, test::Stored(five)); }),
            CArchiveException::kBadFormat);
  EXPECT_EQ(target.GetSize(), 6);
}

}  // namespace
}  // namespace vrx
