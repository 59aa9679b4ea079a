#include <gtest/gtest.h>

#include <vrxmath/platform/resources.h>

namespace vrx {
namespace {

TEST(Resources, StringsAreFoundByNumberAndMissingOnesAreEmpty) {
  EXPECT_EQ(FindString(256), u"Index out of bounds in CArrayVarex");
  EXPECT_EQ(FindString(338), u"D65|Daylight 6500\u00B0 Kelvin");
  EXPECT_TRUE(FindString(0).empty());
  EXPECT_TRUE(FindString(255).empty());
  EXPECT_TRUE(FindString(0xFFFFFFFF).empty());
}

TEST(Resources, EveryWeightingTableIs984Bytes) {
  for (int illuminant = 0; illuminant <= 25; ++illuminant) {
    for (const char* observer : {"02", "10"}) {
      char name[24];
      std::snprintf(name, sizeof name, "ILL%02d_%s", illuminant, observer);
      EXPECT_EQ(FindResource("PWD", name).size(), 984u) << name;
    }
  }
  EXPECT_TRUE(FindResource("PWD", "ILL26_02").empty());
  EXPECT_TRUE(FindResource("pwd", "ILL00_02").empty());
}

}  // namespace
}  // namespace vrx
