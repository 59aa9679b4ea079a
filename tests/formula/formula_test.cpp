#include <gtest/gtest.h>
#include <initializer_list>

#include <vrxmath/formula/formula.h>
#include <vrxmath/formula/product_line.h>

#include "tests/testing/archives.h"
#include "tests/testing/messages.h"

namespace vrx {
namespace {

CDbFormulaElement Line(int32_t id, double amount, const WideChar* label = u"") {
  CDbFormulaElement line;
  line.componentId = id;
  line.amount = amount;
  line.label = label;
  return line;
}

CDbFormula Formula(std::initializer_list<CDbFormulaElement> lines) {
  CDbFormula formula;
  for (const CDbFormulaElement& line : lines) formula.Add(line);
  return formula;
}

TEST(Formula, ComparesAsASet) {
  const CDbFormulaElement A = Line(1, 0.5), B = Line(2, 0.5);
  struct Row {
    const char* label;
    CDbFormula a, b;
    bool equal;
  };
  const Row rows[] = {
      {"empty", {}, {}, true},
      {"empty and not", {}, CDbFormula(1), false},
      {"defaults", CDbFormula(2), CDbFormula(2), true},
      {"order", Formula({A, B, A}), Formula({B, A, A}), true},
      {"duplicates need partners", Formula({A, A, B}), Formula({A, B, B}), false},
      {"the other way round", Formula({A, B, B}), Formula({A, A, B}), false},
      {"1e-17 apart", Formula({Line(1, 0.5)}), Formula({Line(1, 0.5 + 1e-17)}), true},
      {"1e-15 apart", Formula({Line(1, 0.5)}), Formula({Line(1, 0.5 + 1e-15)}), false},
      {"case of a label", Formula({Line(1, 0.5, u"a")}), Formula({Line(1, 0.5, u"A")}), false},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(row.a == row.b, row.equal) << row.label;
    EXPECT_EQ(row.b != row.a, !row.equal) << row.label;
  }
  CDbFormula longOne, reversed;
  for (int32_t i = 0; i < 300; ++i) {
    longOne.Add(Line(i / 2, 1.0));
    reversed.Add(Line((299 - i) / 2, 1.0));
  }
  EXPECT_TRUE(longOne == reversed) << "beyond the marks held in place";
  reversed[7].aux5 = 2.0;
  EXPECT_FALSE(longOne == reversed);
}

TEST(Formula, NumbersAndAmounts) {
  CDWordArray1 numbers;
  CDoubleArray1 amounts;
  for (const uint32_t id : {4u, 4294967295u}) numbers.Add(id);
  for (const double amount : {0.25, 0.75}) amounts.Add(amount);
  CDbFormula formula = Formula({Line(9, 9.0, u"kept"), Line(1, 1.0), Line(2, 2.0)});
  formula.SetLines(numbers, amounts);
  ASSERT_EQ(formula.GetSize(), 2);
  EXPECT_TRUE(formula[0] == Line(4, 0.25, u"kept"));
  EXPECT_EQ(formula[1].componentId, -1);
  CDWordArray1 numbersBack;
  CDoubleArray1 amountsBack;
  formula.GetLines(numbersBack, amountsBack);
  EXPECT_TRUE(numbersBack == numbers);
  EXPECT_TRUE(amountsBack == amounts);
  test::MessageRecorder messages;
  amounts.SetSize(1);
  formula.SetLines(numbers, amounts);
  EXPECT_EQ(messages.Take(), test::IndexErrors());
  EXPECT_THROW(CDbFormula(-1), CInvalidArgException);
}

// The form with labels, for the archive checks.
struct Labelled {
  CDbFormula formula;
  void Serialize(CArchive& archive) { formula.SerializeWithLabels(archive); }
  bool operator==(const Labelled&) const = default;
};

TEST(Formula, ArchiveForms) {
  const CDbFormula plain = Formula({Line(7, 0.5), Line(-1, 2.0)});
  test::ExpectRoundTripAndTruncations(plain, Formula({Line(1, 1.0, u"old")}));
  EXPECT_EQ(test::Stored(plain).size(), 2u + 2 * 56);

  CDbFormula labelled = Formula({Line(7, 1.0, u"x")});
  const test::Bytes bytes = test::Stored(labelled);
  EXPECT_EQ(test::Bytes(bytes.begin(), bytes.begin() + 18),
            test::MakeBytes({1, 0, 7, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xF0, 0x3F}));
  test::Bytes withHandle = bytes;
  withHandle[7] = std::byte{0xAB};  // what other writers left there means nothing
  test::Load(labelled, withHandle);
  EXPECT_TRUE(labelled == Formula({Line(7, 1.0)})) << "the label does not survive";
  test::ExpectRoundTripAndTruncations(Labelled{Formula({Line(7, 1.0, u"x"), Line(8, 2.0)})});

  test::ExpectHostileCountsRefused(labelled);
  test::ExpectRoundTripAndTruncations(CDbNames{3, u"Sky", u"Wall paint"});
}

TEST(ProductLine, ArchiveForm) {
  CProductLineData line;
  CColorantSystemData system;
  system.name = u"Interior";
  system.colorants.SetSize(1);
  line.Add(system);
  line.Add(CColorantSystemData());
  line.pickLists[1].Add({4, u"Matte"});
  test::ExpectRoundTripAndTruncations(line);
  CProductLineData other = line;
  other.pickLists[2].Add({4, u"Matte"});
  EXPECT_FALSE(other == line);
  EXPECT_EQ(test::ArchiveFailure([&] { test::Load(line, test::Stored(system)); }),
            CArchiveException::kBadFormat);
}

}  // namespace
}  // namespace vrx
