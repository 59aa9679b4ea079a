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

TEST(Resources, TablesAreFoundByTypeAndName) {
  EXPECT_EQ(FindBinaryResource("PWD", "ILL25_10").size(), 984u);
  EXPECT_TRUE(FindBinaryResource("PWD", "ILL26_02").empty());
  EXPECT_TRUE(FindBinaryResource("pwd", "ILL00_02").empty());
}

}  // namespace
}  // namespace vrx
