#include <gtest/gtest.h>

#include <vrxmath/foundation/units.h>

namespace vrx {
namespace {

TEST(Units, NamesOfTheFirstAndTheLastAndOfNoOther) {
  EXPECT_EQ(WeightUnitName(0).ToUtf8(), "Pounds");
  EXPECT_EQ(WeightUnitName(5).ToUtf8(), "Parts (Auto)");
  EXPECT_EQ(VolumeUnitName(0).ToUtf8(), "Gallons");
  EXPECT_EQ(VolumeUnitName(4), WeightUnitName(1)) << "ounces of either kind";
  EXPECT_FALSE(VolumeUnitName(24).IsEmpty());
  for (const int32_t none : {-1, 25}) EXPECT_TRUE(VolumeUnitName(none).IsEmpty()) << none;
  for (const int32_t none : {-1, 6}) EXPECT_TRUE(WeightUnitName(none).IsEmpty()) << none;
}

}  // namespace
}  // namespace vrx
