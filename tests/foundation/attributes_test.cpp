#include <cmath>
#include <gtest/gtest.h>

#include <vrxmath/foundation/angles.h>
#include <vrxmath/foundation/attributes.h>
#include <vrxmath/foundation/cmc_factors.h>
#include <vrxmath/foundation/sort_double.h>

#include "tests/testing/archives.h"

namespace vrx {
namespace {

CAttribute TextAttribute(int32_t id, const WideChar* text) {
  CAttribute attribute;
  attribute.SetId(id);
  attribute.SetText(text);
  return attribute;
}

CAttribute NumberAttribute(int32_t id, double number, uint8_t type = 0) {
  CAttribute attribute;
  attribute.SetId(id);
  attribute.SetType(type);
  attribute.SetNumber(number);
  return attribute;
}

TEST(Attributes, EqualityIsExact) {
  struct Row {
    const char* label;
    CAttribute a, b;
    bool equal;
  };
  const Row rows[] = {
      {"same text", TextAttribute(1, u"Gloss"), TextAttribute(1, u"Gloss"), true},
      {"case counts", TextAttribute(1, u"Gloss"), TextAttribute(1, u"gloss"), false},
      {"id counts", TextAttribute(1, u"Gloss"), TextAttribute(2, u"Gloss"), false},
      {"no tolerance", NumberAttribute(1, 0.1 + 0.2), NumberAttribute(1, 0.3), false},
      {"type counts even for the same value", NumberAttribute(1, 0.3, 0), NumberAttribute(1, 0.3, 1), false},
      {"new ones", CAttribute(), CAttribute(), true},
  };
  for (const Row& row : rows) EXPECT_EQ(row.a == row.b, row.equal) << row.label;
}

TEST(Attributes, AssignmentTakesTheValueThatTheTypeNames) {
  CAttribute target = NumberAttribute(7, 4.5);
  target = TextAttribute(8, u"Matte");
  EXPECT_TRUE(target == TextAttribute(8, u"Matte"));
  EXPECT_EQ(target.GetNumber(), 4.5);
}

TEST(Attributes, LabelsAreFoundByIdAndFillAList) {
  CAttributeLabelArray labels;
  labels.Add({3, 0, u"Gloss"});
  labels.Add({5, 1, u"Lot"});
  labels.Add({5, 1, u"Batch"});
  EXPECT_TRUE(labels.TextOf(5) == u"Lot");
  EXPECT_TRUE(labels.TextOf(99) == u"Gloss");
  MemoryListBox list;
  list.AddString(u"old");
  EXPECT_EQ(labels.FillList(list), 0);
  ASSERT_EQ(list.Entries().GetSize(), 3);
  EXPECT_TRUE(list.Entries()[1] == (CListData{5, u"Lot"}));
  MemoryListBox full(2);
  EXPECT_EQ(labels.FillList(full), ListBox::kErrorSpace);
  EXPECT_EQ(full.Entries().GetSize(), 2);
}

TEST(Attributes, ArchiveForms) {
  const auto old = test::ListOf<CAttributeArray>(NumberAttribute(9, 1.0));
  test::ExpectRoundTripAndTruncations(TextAttribute(1, u"Gloss"), NumberAttribute(9, 1.0));
  test::ExpectRoundTripAndTruncations(test::ListOf<CAttributeArray>(NumberAttribute(2, -0.5)), old);
  test::ExpectRoundTripAndTruncations(CAttributeLabel{3, 1, u"Lot"});
  test::ExpectHostileCountsRefused(old);
}

TEST(SmallRecords, SortKeepsThePlaceAndArchiveKeepsTheRest) {
  CSortDoubleArray values;
  values.Add({2.0, 0});
  values.Add({std::nan(""), 1});
  values.Add({1.0, 2});
  values.Add({2.0, 3});
  SortByValue(values);
  const int32_t expected[] = {2, 0, 3, 1};
  for (int32_t i = 0; i < 4; ++i) EXPECT_EQ(values[i].index, expected[i]) << i;

  test::ExpectRoundTripAndTruncations(
      test::ListOf<CSortDoubleArray>(CSortDouble{2.0, 0}, CSortDouble{-1.0, 7}));
  test::ExpectRoundTripAndTruncations(CSortDouble{2.0, 0});
  test::ExpectRoundTripAndTruncations(CAngleWeight{11, 0.25});
  test::ExpectRoundTripAndTruncations(CCmcFactorData{1.5, 1.25, 0.75, 2.5});
}

}  // namespace
}  // namespace vrx
