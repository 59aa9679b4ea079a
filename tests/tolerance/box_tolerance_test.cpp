#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <vector>

#include <vrxmath/tolerance/box_tolerance.h>

#include "tests/testing/archives.h"
#include "tests/testing/colors.h"

namespace vrx {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

using test::MakeDelta;

CBoxTolData MakeBox(std::vector<double> limits) {
  CBoxTolData box;
  for (int i = 0; i < 7; ++i) box[i] = limits[static_cast<std::size_t>(i)];
  return box;
}

TEST(JudgeTotal, BothLimitsAreInclusiveAndNaNPassesTheRecordAlone) {
  struct Row {
    double value, factor;
    Verdict verdict;
  };
  const Row rows[] = {{1.5, 1.0, kPass},          {1.5, 0.8, kWarning},    {1.5 * 0.75, 0.75, kPass},
                      {1.125001, 0.75, kWarning}, {1.5000001, 1.0, kFail}, {kNaN, 0.75, kPass}};
  for (const Row& row : rows)
    EXPECT_EQ(CBoxTolData().JudgeTotal(row.value, row.factor), row.verdict) << row.value;
  EXPECT_EQ(GradeTotal(3.0, kNaN, 1.0), kFail);
  EXPECT_EQ(GradeTotal(kNaN, 3.0, 1.0), kFail);
  EXPECT_EQ(GradeTotal(3.0, HUGE_VAL, 0.0), kPass);
}

TEST(BoxTest, EveryEdgeIsInclusiveAtFullScale) {
  // Odd limits, whose recomputed edges would miss their last bit.
  const CBoxTolData box = MakeBox({0.1, 0.7, 0.3, 1.1, 2.3, 0.9, 5.0});
  for (int dimension = 0; dimension < 3; ++dimension) {
    for (const double side : {1.0, -1.0}) {
      const double edge = side > 0 ? box[2 * dimension] : -box[2 * dimension + 1];
      CDeltaValues delta = MakeDelta(0, 0, 0);
      delta[dimension] = edge;
      EXPECT_TRUE(box.Accepts(delta, 1.0)) << dimension << ' ' << side;
      EXPECT_TRUE(box.Accepts(delta, 1.0 + 1e-16)) << dimension << ' ' << side;
      delta[dimension] = std::nextafter(edge, side * 100.0);
      EXPECT_FALSE(box.Accepts(delta, 1.0)) << dimension << ' ' << side;
      delta[dimension] = kNaN;
      EXPECT_FALSE(box.Accepts(delta, 1.0)) << dimension;
    }
  }
}

TEST(BoxTest, ScalesAboutTheCentreOfEachAxis) {
  const Interval half = ScaledAboutCentre({-1.0, 3.0}, 0.5);
  EXPECT_EQ(half.lower, 0.0);
  EXPECT_EQ(half.upper, 2.0);
  const CBoxTolData box = MakeBox({3, 1, 3, 1, 3, 1, 5});
  EXPECT_TRUE(box.Accepts(MakeDelta(2, 0, 1), 0.5));
  EXPECT_FALSE(box.Accepts(MakeDelta(-0.01, 1, 1), 0.5));
}

TEST(BoxTest, HueSectors) {
  struct Row {
    double start, end, hue;
    bool inside;
  };
  const Row rows[] = {{5.5, 0.5, 6.0, true},     {5.5, 0.5, 0.2, true},  {5.5, 0.5, 3.0, false},
                      {1.0, 1.0, 4.0, true},     {1.0, 2.0, 1.0, true},  {1.0, 2.0, 2.0, true},
                      {1.0, 2.0, 2.0001, false}, {5.5, 0.5, 5.5, true},  {5.5, 0.5, 0.5, true},
                      {5.5, 0.5, 6.284, false},  {1.0, 2.0, kNaN, false}};
  for (const Row& row : rows) {
    EXPECT_EQ(HueInSector(row.hue, row.start, row.end), row.inside)
        << row.start << ' ' << row.end << ' ' << row.hue;
    EXPECT_EQ(CBoxTolData().AcceptsInSector(1.5, -1.5, 1.0, row.start, row.end, row.hue), row.inside);
  }
  EXPECT_FALSE(CBoxTolData().AcceptsInSector(1.6, 0.0, 1.0, 0.0, 0.0, 1.0));
  EXPECT_FALSE(CBoxTolData().AcceptsInSector(0.0, 1.2, 0.75, 0.0, 0.0, 1.0));
}

TEST(BoxTolerance, EditingOperations) {
  CBoxTolData box;
  box.OffsetBy(0.5, 0.0, -0.25);
  EXPECT_EQ(box, MakeBox({2.0, 1.0, 1.5, 1.5, 1.25, 1.75, 1.5}));
  box.SetTolerance(1, 4.0, 3.0);
  box.SetTolerance(7, 2.5, 9.0);
  EXPECT_EQ(box, MakeBox({2.0, 1.0, 4.0, 3.0, 1.25, 1.75, 2.5}));
  double upper, lower;
  box.GetDimension0(upper, lower);
  EXPECT_EQ(upper, 2.0);
  EXPECT_EQ(lower, -1.0);
  EXPECT_EQ(box.LargestLimit(false), 4.0);
  EXPECT_EQ(box.LargestLimit(true), 20.0);
  EXPECT_EQ(MakeBox({1, 1, 1, 1, 1, 2, 9}).LargestLimit(false), 2.0);
}

TEST(BoxTolerance, IntegerFormRoundsHalfAwayFromZero) {
  struct Row {
    double value;
    int system;
    int whole;
  };
  const Row rows[] = {
      {1.234, 0, 123}, {-1.235, 0, -124}, {1.25, 7, 13}, {1e300, 0, 2147483647}, {-1e300, 0, -2147483647 - 1},
      {kNaN, 0, 0}};
  for (const Row& row : rows) {
    CBoxTolData box;
    box[2] = row.value;
    EXPECT_EQ(box.GetInteger(2, DefaultSettings(row.system)), row.whole) << row.value;
  }
  CBoxTolData box;
  box.SetFromInteger(3, 150, DefaultSettings(0));
  EXPECT_EQ(box[3], 1.5);
  box.SetFromInteger(3, 150, DefaultSettings(7));
  EXPECT_EQ(box[3], 15.0);
}

TEST(BoxTolerance, ClampsToTheRangesOfTheSystem) {
  struct Row {
    int system;
    int index;
    double given, clamped;
  };
  const Row rows[] = {{0, 0, -100.0, -80.0}, {7, 0, -100.0, -100.0}, {7, 5, 5000.0, 999.9},
                      {0, 6, 0.0, 0.05},     {7, 6, 100.0, 80.0},    {1, 3, 80.0, 80.0}};
  for (const Row& row : rows) {
    CBoxTolData box;
    box[row.index] = row.given;
    box.ClampToRanges(DefaultSettings(row.system));
    EXPECT_EQ(box[row.index], row.clamped) << row.system << ' ' << row.index;
  }
}

TEST(BoxTolerance, TableLevels) {
  CBoxTolStd4 table;
  table.SetSize(2);
  table.SetAngleCount(5);
  ASSERT_EQ(table[1].GetSize(), 5);
  ASSERT_EQ(table[1][4].GetSize(), 3);
  EXPECT_EQ(table[1][4][2][6], 1.5);
}

TEST(BoxTolerance, ArchiveIsSevenDoubles) {
  const test::ValuesForm<CBoxTolData> form{MakeBox({1, 2, 3, 4, 5, 6, 7})};
  const test::Bytes bytes = test::Stored(form);
  ASSERT_EQ(bytes.size(), 56u);
  EXPECT_EQ(test::Bytes(bytes.begin(), bytes.begin() + 8), test::MakeBytes({0, 0, 0, 0, 0, 0, 0xF0, 0x3F}));
  test::ExpectRoundTripAndTruncations(form);
}

TEST(BlockCode, CellsAndEdges) {
  CBlockSizeData blocks;
  CColorValues standard, sample;
  standard.tristimulus.Fill(20.0);
  sample.tristimulus.Fill(20.0);
  standard.lab.Fill(0.0);
  const auto code = [&](double dL, double da, double db) {
    sample.lab.Fill(0.0);
    sample.lab[0] = dL, sample.lab[1] = da, sample.lab[2] = db;
    return BlockCode(blocks, standard, sample, vrxIllumD65, 1);
  };
  EXPECT_EQ(code(0, 0, 0), 0x555);
  EXPECT_EQ(code(-4.51, 4.51, 0), 0x0A5);
  EXPECT_EQ(code(-4.5, 4.5, -0.5), 0x1A5);  // an edge belongs to the cell above it
  EXPECT_EQ(code(0.5, -0.51, 100), 0x64A);
  blocks[0] = 2.0;
  EXPECT_EQ(code(0.99, 0, 0), 0x555);
  EXPECT_EQ(code(1.0, 0, 0), 0x655);
  EXPECT_EQ(BlockCode(blocks, CColorValues(), sample, vrxIllumD65, 1), kUnset);
}

}  // namespace
}  // namespace vrx
