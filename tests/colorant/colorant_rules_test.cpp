#include <gtest/gtest.h>
#include <initializer_list>
#include <vector>

#include <vrxmath/colorant/colorant_rules.h>

#include "tests/testing/archives.h"

namespace vrx {
namespace {

CDWordArray1 Ids(std::initializer_list<uint32_t> ids) {
  CDWordArray1 array;
  for (const uint32_t id : ids) array.Add(id);
  return array;
}

CColorantRulesData Rules(std::initializer_list<CDWordArray1> rows) {
  CColorantRulesData rules;
  for (const CDWordArray1& row : rows) rules.AppendRow(row);
  return rules;
}

TEST(ColorantRules, Combinations) {
  const CColorantRulesData rules = Rules({Ids({}), Ids({1, 2}), Ids({7}), Ids({4, 4, 5})});
  struct Row {
    CDWordArray1 candidates;
    bool allowed;
  };
  const Row rows[] = {
      {Ids({2, 5, 1}), false}, {Ids({1, 5}), true}, {Ids({7}), true},  // a single one is always allowed
      {Ids({7, 3}), false},    {Ids({}), true},     {Ids({5, 4}), false}, {Ids({5, 5}), true},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(rules.IsAllowed(row.candidates), row.allowed) << row.candidates.GetSize();
  }
  EXPECT_TRUE(CColorantRulesData().IsAllowed(Ids({1, 2})));
}

TEST(ColorantRules, Rows) {
  CColorantRulesData rules;
  rules.SetRow(2, Ids({9, 8, 9}));
  EXPECT_EQ(rules.GetRules().GetSize(), 3);
  EXPECT_EQ(rules.LongestRow(), 3);
  EXPECT_EQ(rules.FindInRow(2, 9), 0);
  EXPECT_EQ(rules.FindInRow(2, 1), -1);
  EXPECT_THROW(rules.SetRow(-1, Ids({})), CInvalidArgException);
  const CWordArray1 present = rules.MembersPresent(2, Ids({1, 9, 7, 9}));
  EXPECT_EQ((std::vector<uint16_t>{present.begin(), present.end()}), (std::vector<uint16_t>{1, 1}));
  rules.AppendAll(rules);
  EXPECT_EQ(rules.GetRules().GetSize(), 6);
  EXPECT_FALSE(Rules({Ids({1, 2}), Ids({3})}) == Rules({Ids({3}), Ids({1, 2})}));
  EXPECT_FALSE(Rules({Ids({1, 2})}) == Rules({Ids({2, 1})}));
}

TEST(ColorantRules, ArchiveForm) {
  const CColorantRulesData rules = Rules({Ids({1, 2}), Ids({}), Ids({0xFFFF})});
  EXPECT_EQ(test::Stored(rules), test::MakeBytes({3, 0, 2, 0, 1, 0, 2, 0, 0, 0, 1, 0, 0xFF, 0xFF}));
  test::ExpectRoundTripAndTruncations(rules, Rules({Ids({5, 6})}));

  CColorantRulesData read;
  test::Load(read, test::Stored(Rules({Ids({65537})})));
  EXPECT_TRUE(read == Rules({Ids({1})})) << "only the low 16 bits survive";
  EXPECT_EQ(test::ArchiveFailure([&] {
              test::Load(read, test::MakeBytes({0xFF, 0xFF, 0, 0}));
            }),
            CArchiveException::kEndOfFile);

  CColorantRulesData tooMany;
  tooMany.SetRow(0xFFFF, Ids({}));
  EXPECT_THROW(test::Stored(tooMany), CInvalidArgException);
}

}  // namespace
}  // namespace vrx
