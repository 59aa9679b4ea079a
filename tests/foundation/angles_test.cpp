#include <gtest/gtest.h>
#include <map>
#include <span>
#include <vector>

#include <vrxmath/foundation/angles.h>

#include "tests/testing/archives.h"

namespace vrx {
namespace {

CAngles MakeAngles(std::vector<uint8_t> codes) {
  CAngles angles;
  angles.SetCodes(codes);
  return angles;
}

std::vector<int> AsInts(const CByteArray1& bytes) {
  return {bytes.begin(), bytes.end()};
}

// The codes are persistent: 45 degrees except for the geometries that name another angle.
TEST(Angles, OfEveryCode) {
  const std::map<int, double> others = {{4, 15},   {5, 20},   {6, 22.5}, {7, 25},   {9, 72.5},
                                        {10, 75},  {11, 110}, {25, 0},   {40, 105}, {41, -15},
                                        {46, -45}, {47, -30}, {48, 80}};
  for (int code = 0; code <= 255; ++code) {
    const auto other = others.find(code);
    EXPECT_EQ(AngleOfCode(static_cast<uint8_t>(code)), other == others.end() ? 45.0 : other->second) << code;
  }
}

TEST(Angles, SortsByAngleAndKeepsTheOrderOfEquals) {
  const CAngles angles = MakeAngles({9, 4, 48});
  EXPECT_EQ(AsInts(angles.SortOrder()), (std::vector<int>{1, 0, 2}));
  EXPECT_EQ(AsInts(angles.Rank()), (std::vector<int>{1, 0, 2}));
  EXPECT_EQ(AsInts(MakeAngles({0, 8}).SortOrder()), (std::vector<int>{0, 1}));
}

TEST(Angles, NearestAngleIsTheFirstOfEquals) {
  EXPECT_EQ(MakeAngles({6, 7}).NearestTo(23.75), 0);
  EXPECT_EQ(MakeAngles({7, 6}).NearestTo(23.75), 0);
  EXPECT_EQ(MakeAngles({4, 11, 46}).NearestTo(-44.0), 2);
  EXPECT_EQ(CAngles().NearestTo(45.0), 0);
}

TEST(Angles, TranslateFindsTheNearestPositionOfTheOtherList) {
  const CAngles five = MakeAngles({11, 4, 7, 8, 10});  // 110, 15, 25, 45, 75
  const CAngles three = MakeAngles({7, 10, 8});        // 25, 75, 45
  EXPECT_EQ(three.Translate(five, 4), 1 + 1);          // 110 is nearest to 75, the last of three
  EXPECT_EQ(three.Translate(five, 0), 0);              // 15 -> 25
  EXPECT_EQ(three.Translate(five, 5), kCurrentAngle);
  EXPECT_EQ(MakeAngles({0}).Translate(five, 1), kCurrentAngle);
}

TEST(Angles, SelectionTexts) {
  struct Row {
    const WideChar* text;
    std::vector<bool> selected;
    int current;
  };
  const Row rows[] = {
      {u"", {true, true, true}, 0},          {u"0,1", {false, true, true}, 1},
      {u"0,0,0", {true, false, false}, 0},   {u"0,0,1", {false, false, true}, 2},
      {u"1,0,0,1", {true, false, false}, 0},
  };
  for (const Row& row : rows) {
    CAngles angles = MakeAngles({4, 5, 7});
    angles.SelectFromText(row.text);
    for (int i = 0; i < 3; ++i) {
      EXPECT_EQ(angles.IsSelected(i), row.selected[static_cast<std::size_t>(i)])
          << CString(row.text).ToUtf8() << i;
    }
    EXPECT_EQ(angles.GetCurrent(), row.current) << CString(row.text).ToUtf8();
  }
}

TEST(Angles, InstrumentListsReplaceOnlyWhatTheyContain) {
  struct Row {
    std::vector<uint8_t> old, instrument, expected;
  };
  const Row rows[] = {
      {{26, 27}, {0}, {26, 27, 28, 29, 30}},  // a background list becomes its whole family
      {{31}, {0}, {31, 32, 33, 34, 35}},      //
      {{0}, {1}, {0}},                        // one code never replaces another
      {{4, 7}, {4, 7, 8}, {4, 7, 8}},         //
      {{4, 7}, {4, 8}, {4, 7}},               // 25 degrees would be lost
  };
  for (const Row& row : rows) {
    CAngles angles = MakeAngles(row.old);
    EXPECT_EQ(angles.ReplaceForInstrument(row.instrument), row.old != row.expected);
    EXPECT_EQ(std::vector<uint8_t>(angles.Codes().begin(), angles.Codes().end()), row.expected);
  }
}

TEST(Angles, FilterTexts) {
  const std::string base = "(Angle BETWEEN 0 AND 3 OR Angle = 8)";
  EXPECT_EQ(BaseAngleFilter().ToUtf8(), base);
  EXPECT_EQ(SphereAngleFilter(true).ToUtf8(), "(" + base + " OR Angle = 12 OR Angle = 14)");
  EXPECT_EQ(SphereAngleFilter(false).ToUtf8(), "(" + base + " OR Angle = 13 OR Angle = 15)");
  const int partners[][2] = {{12, 14}, {13, 15}, {14, 12}, {15, 13}, {16, 12}, {17, 13}, {18, 12}, {19, 13}};
  for (const auto& [code, partner] : partners) {
    EXPECT_EQ(
        AngleFilter(static_cast<uint8_t>(code)).ToUtf8(),
        "(" + base + " OR Angle = " + std::to_string(code) + " OR Angle = " + std::to_string(partner) + ")");
  }
  EXPECT_EQ(AngleFilter(4).ToUtf8(), "(" + base + " OR Angle = 4)");
}

TEST(Angles, NamesAndFamilies) {
  EXPECT_EQ(MakeAngles({41, 40}).NameAt(0).ToUtf8(), "-15\u00B0");
  EXPECT_EQ(MakeAngles({41, 40}).NameAt(kCurrentAngle).ToUtf8(), "-15\u00B0");
  EXPECT_TRUE(MakeAngles({12}).NameAt(0).IsEmpty());
  EXPECT_TRUE(MakeAngles({4, 12}).IsMultiAngle());
  for (const uint8_t code : std::vector<uint8_t>{12, 19, 42, 45, 20, 24, 26, 30, 31, 35, 37, 39}) {
    EXPECT_FALSE(MakeAngles({code, 4}).IsMultiAngle()) << int{code};
  }
  for (const uint8_t code : std::vector<uint8_t>{11, 25, 36, 40, 41, 46}) {
    EXPECT_TRUE(MakeAngles({code, 4}).IsMultiAngle()) << int{code};
  }
}

TEST(Angles, TablesFollowTheGeometriesByAngle) {
  CDoubleArray1 table;
  table.SetSize(3);
  table[0] = 15.0, table[1] = 45.0, table[2] = 110.0;
  ResizeByNearestAngle(table, MakeAngles({11, 10, 5, 0}), MakeAngles({4, 8, 11}));
  EXPECT_EQ((std::vector<double>{table.begin(), table.end()}),
            (std::vector<double>{110.0, 45.0, 15.0, 45.0}));
}

TEST(Angles, ArchiveForm) {
  EXPECT_EQ(test::Stored(MakeAngles({9, 4})).size(), 6u);
  test::ExpectRoundTripAndTruncations(MakeAngles({9, 4, 48}));
  test::Bytes tooMany(300);
  tooMany[0] = tooMany[1] = std::byte{1};  // 257 codes
  CAngles angles = MakeAngles({4, 7});
  EXPECT_EQ(test::ArchiveFailure([&] { test::Load(angles, tooMany); }), CArchiveException::kBadFormat);
  angles.SetFlag(1, false);
  EXPECT_TRUE(angles.HasFlag(0) && !angles.HasFlag(1));
  EXPECT_FALSE(angles == MakeAngles({4, 7}));
}

}  // namespace
}  // namespace vrx
