// Groups of shades: complete linkage by its definition, and what the groups of a day are shown as.

#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>
#include <random>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <vrxmath/colorimetry/color_differences.h>
#include <vrxmath/judging/shade_groups.h>

namespace vrx {
namespace {

// In a group any two differ by no more than the limit; two groups that could be one are one.
TEST(ShadeGroups, NoTwoGroupsCouldBeOne) {
  std::mt19937 random(7);
  std::uniform_real_distribution<double> place(0, 10);
  for (int run = 0; run < 20; ++run) {
    std::vector<double> x(60);
    for (double& value : x) value = place(random);
    constexpr double kLimit = 1.3;
    const auto distance = [&x](std::size_t a, std::size_t b) { return std::fabs(x[a] - x[b]); };
    const std::vector<std::size_t> groups = GroupsByCompleteLinkage(x.size(), kLimit, distance);
    std::map<std::pair<std::size_t, std::size_t>, double> farthest;
    for (std::size_t a = 0; a < x.size(); ++a) {
      for (std::size_t b = 0; b < x.size(); ++b) {
        double& between = farthest[{groups[a], groups[b]}];
        between = std::max(between, distance(a, b));
      }
    }
    for (const auto& [pair, between] : farthest)
      EXPECT_EQ(between <= kLimit, pair.first == pair.second) << pair.first << " " << pair.second;
  }
}

TEST(ShadeGroups, TheLargestFirstInTheOrderOfThings) {
  const double kPlaces[] = {9.0, 0.0, 5.0, 5.2, 5.4, 0.3, std::nan("")};
  std::vector<std::size_t> order(std::size(kPlaces));
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::ranges::sort(order, [&](std::size_t a, std::size_t b) { return kPlaces[a] < kPlaces[b]; });
  const auto groups = ShadeGroups(
      order, 0.5, [&](std::size_t a, std::size_t b) { return std::fabs(kPlaces[a] - kPlaces[b]); });
  // What has no distance is alone; of groups of one the earlier thing of the order goes first.
  ASSERT_EQ(groups.size(), 4U);
  EXPECT_EQ(groups[0], (std::vector<std::size_t>{2, 3, 4}));
  EXPECT_EQ(groups[1], (std::vector<std::size_t>{1, 5}));
  EXPECT_EQ(groups[2].size() + groups[3].size(), 2U);
  EXPECT_TRUE(ShadeGroups({}, 0.5, [](std::size_t, std::size_t) { return 0.0; }).empty());
}

// CMC weighs by the standard's chroma and lightness: grey to colour is not colour to grey.
TEST(ShadeGroups, ADifferenceFromEitherSide) {
  const CDifferenceSettings cmc = DefaultSettings(vrxSystemCmc), lab = DefaultSettings(vrxSystemLab);
  const Color grey{{20, 20, 20}, {52, 1, 1, std::sqrt(2.0), 45}},
      red{{25, 20, 10}, {52, 40, 20, std::hypot(40.0, 20.0), 26.565}};
  const double there = ComputeDifference(cmc, grey, red, 45).dE,
               back = ComputeDifference(cmc, red, grey, 45).dE;
  ASSERT_GT(there, 1.2 * back);
  EXPECT_EQ(DifferenceEitherWay(cmc, grey, red, 45), there);
  EXPECT_EQ(DifferenceEitherWay(cmc, red, grey, 45), there);
  EXPECT_DOUBLE_EQ(DifferenceEitherWay(lab, red, grey, 45), std::hypot(39.0, 19.0));
}

}  // namespace
}  // namespace vrx
