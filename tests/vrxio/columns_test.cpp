// Files of limits and of colour values by column: which row applies, and what is refused at which place.

#include <vrxio/csv/tolerance_table.h>

#include <array>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <vrxio/csv/value_columns.h>
#include <vrxio/measurement/names.h>
#include <vrxio/text/input_error.h>

namespace {

using namespace vrx::io;

template <class TABLE>
TABLE TableOf(const std::string& content, const LimitScope& scope = {}) {
  std::istringstream stream(content);
  CsvReader csv(stream, "f");
  TABLE table;
  table.Load(csv, scope);
  return table;
}

std::pair<double, double> EndsOf(const vrx::Interval& limits) {
  return {limits.lower, limits.upper};
}

constexpr const char* kBox = "plus0,minus0,plus1,minus1,plus2,minus2,total";

TEST(LimitTable, TheRowThatSaysMostApplies) {
  // From the row that names everything to the one that names nothing; the total tells them apart.
  const std::array<const char*, 8> kKeys = {"s,15deg,D65", "s,15deg,", "s,,D65", "s,,",
                                            ",15deg,D65",  ",15deg,",  ",,D65",  ",,"};
  const auto find = [](const BoxTable& table, const char* standard, int32_t geometry,
                       vrx::vrxIlluminant light) {
    const vrx::CBoxTolData* const box = table.Find(standard, geometry, light);
    return box != nullptr ? (*box)[vrx::CBoxTolData::kTotal] : -1;
  };
  // Without the rows before it each is the one that applies, in whatever order they stand.
  for (std::size_t first = 0; first < kKeys.size(); ++first) {
    std::string rows;
    for (std::size_t i = first; i < kKeys.size(); ++i) {
      const std::string row = std::string(kKeys[i]) + ",1,1,1,1,1,1," + std::to_string(i) + "\n";
      rows = i % 2 == 0 ? rows + row : row + rows;
    }
    const auto table = TableOf<BoxTable>(std::string("Standard,GEOMETRY,illuminant,") + kBox + "\n" + rows);
    EXPECT_EQ(find(table, "s", 4, vrx::vrxIllumD65), static_cast<double>(first));
    if (first > 0) continue;
    EXPECT_EQ(find(table, "s", 4, vrx::vrxIllumA), 1);
    EXPECT_EQ(find(table, "s", 5, vrx::vrxIllumD65), 2);
    EXPECT_EQ(find(table, "s", kNoGeometry, vrx::vrxIllumA), 3);
    EXPECT_EQ(find(table, "t", 4, vrx::vrxIllumD65), 4);
    EXPECT_EQ(find(table, "S", 4, vrx::vrxIllumA), 5);
    EXPECT_EQ(find(table, "t", 5, vrx::vrxIllumD65), 6);
    EXPECT_EQ(find(table, "t", 5, vrx::vrxIllumA), 7);
  }
  const auto one = TableOf<BoxTable>(std::string("geometry,") + kBox + "\nSCI,1,1,1,1,1,1,9\n");
  EXPECT_EQ(find(one, "s", 12, vrx::vrxIllumA), 9);
  EXPECT_EQ(find(one, "s", 13, vrx::vrxIllumA), -1);
  EXPECT_TRUE(BoxTable().IsEmpty());
  EXPECT_FALSE(one.IsEmpty());
}

// A row that nothing is judged by is mostly a misspelt standard, or a light that is not asked for: the user is told of it.
TEST(LimitTable, RowsThatWereNeverGivenAreTold) {
  using Texts = std::vector<std::string>;
  const auto table = TableOf<BoxTable>(std::string("standard,geometry,illuminant,") + kBox +
                                       "\np02,SCI,D65,1,1,1,1,1,1,1\n,,A,2,2,2,2,2,2,2\np01,,,3,3,3,3,3,3,3\n"
                                       ",,,4,4,4,4,4,4,4\np01,SCE,,5,5,5,5,5,5,5\n,SCE,D65,6,6,6,6,6,6,6\n");
  EXPECT_EQ(table.Size(), 6U);
  const Texts all{"line 2 (standard p02, SCI, D65)", "line 3 (A)", "line 4 (standard p01)",
                  "line 6 (standard p01, SCE)", "line 7 (SCE, D65)"};
  EXPECT_EQ(table.UnusedRows(), all);
  const struct {
    const char* standard;
    int32_t geometry;
    vrx::vrxIlluminant light;
    double total;
    std::size_t unused;
  } kQueries[] = {
      {"p03", 12, vrx::vrxIllumD65, 4, 5},  // the row for all has no words, and is never among them
      {"p02", 13, vrx::vrxIllumA, 2, 4},    // no row of its own fits: those of all do
      {"p02", 13, vrx::vrxIllumD65, 6, 3},
      {"p01", 12, vrx::vrxIllumD65, 3, 2},  // its own for all goes before one for all that says more
      {"p01", 13, vrx::vrxIllumD65, 5, 1},
      {"p01", 13, vrx::vrxIllumA, 5, 1},
  };
  for (const auto& query : kQueries) {
    const vrx::CBoxTolData* const box = table.Find(query.standard, query.geometry, query.light);
    ASSERT_NE(box, nullptr) << query.total;
    EXPECT_EQ((*box)[vrx::CBoxTolData::kTotal], query.total);
    EXPECT_EQ(table.UnusedRows().size(), query.unused) << query.total;
  }
  EXPECT_EQ(table.UnusedRows(), Texts{all[0]});
}

TEST(LimitTable, RowsThatAreAddedReplaceTheirEqual) {
  BoxTable table;
  const auto add = [&table](const char* standard, int32_t geometry, int32_t illuminant, double limit) {
    table.Add(standard, {geometry, illuminant, BoxFromNumbers({limit})});
  };
  add("s", kNoGeometry, -1, 1);
  add("s", 12, vrx::vrxIllumA, 2);
  add("", 12, vrx::vrxIllumA, 3);
  add("s", 12, vrx::vrxIllumA, 4);  // in the place of the second
  EXPECT_EQ(table.Size(), 3U);
  std::ostringstream rows;
  for (const auto& row : table.RowsOf("s")) {
    rows << row.geometry << ' ' << row.illuminant << ' ' << row.limits[vrx::CBoxTolData::kTotal] << ", ";
  }
  EXPECT_EQ(rows.str(), "-1 -1 1, 12 0 4, ");
  EXPECT_EQ(table.RowsOf("").size(), 1U);
  EXPECT_TRUE(table.RowsOf("t").empty());
  // They stand in no line, and several of them are told as several.
  using Texts = std::vector<std::string>;
  EXPECT_EQ(table.UnusedRows(), (Texts{"SCI, A", "standard s", "standard s, SCI, A"}));
  EXPECT_EQ(table.UnusedRowsOfUsed(), Texts());
  table.Find("s", 13, vrx::vrxIllumA);
  EXPECT_EQ(table.UnusedRowsOfUsed(), Texts{"standard s, SCI, A"});
}

TEST(LimitTable, EachColumnIsItsLimit) {
  const auto boxes = TableOf<BoxTable>("total,minus2,plus2,minus1,plus1,minus0,plus0\n7,6,5,4,3,2,1\n");
  const vrx::CBoxTolData* const box = boxes.Find("", 0, vrx::vrxIllumA);
  ASSERT_NE(box, nullptr);
  EXPECT_EQ(EndsOf(box->Limits(0)), std::pair(-2.0, 1.0));
  EXPECT_EQ(EndsOf(box->Limits(1)), std::pair(-4.0, 3.0));
  EXPECT_EQ(EndsOf(box->Limits(2)), std::pair(-6.0, 5.0));
  const auto ellipses = TableOf<EllipseTable>(
      "factor,total,angle,minor,major,lightness,centreB,centreA,centreL\n2,3,90,1,4,5,0.3,0.2,0.1\n");
  const vrx::CEllipseData* const ellipse = ellipses.Find("", 0, vrx::vrxIllumA);
  ASSERT_NE(ellipse, nullptr);
  // At 90 degrees the major semi-axis of 4 lies along b*, the minor one of 1 along a*.
  const struct {
    double dL, da, db, value;
  } kPoints[] = {{0.1, 0.2, 0.3, 0}, {5.1, 0.2, 0.3, 1},  {0.1, 1.2, 0.3, 1},
                 {0.1, 0.2, 4.3, 1}, {0.1, -1.8, 0.3, 2}, {0.1, 0.2, -1.7, 0.5}};
  for (const auto& row : kPoints) {
    EXPECT_NEAR(ellipse->Value(vrx::Difference{row.dL, row.da, row.db, 0, 0, 0, 0}), row.value, 1e-12);
  }
}

TEST(LimitTable, RefusesWithPlaceAndReason) {
  const std::string kHead = std::string(kBox) + "\n";
  const std::pair<std::string, const char*> kFaults[] = {
      {"gloss," + kHead + "1,1,1,1,1,1,1,1\n", "f, line 1, column 1 (gloss): unknown column in a tolerance"},
      {"total," + kHead, "f, line 1, column 8 (total): the column appears twice"},
      {"plus0,minus0,plus1,minus1,plus2,total\n1,1,1,1,1,1\n", "f, line 1: there is no column minus2"},
      {"geometry," + kHead + "SCI,1,1,1,1,1,1,1\n16deg,1,1,1,1,1,1,1\n",
       "f, line 3, column 1 (geometry): unknown geometry \"16deg\""},
      {"illuminant," + kHead + "D66,1,1,1,1,1,1,1\n",
       "f, line 2, column 1 (illuminant): unknown illuminant \"D66\""},
      {"system," + kHead + "cmc,1,1,1,1,1,1,1\n",
       "f, line 2, column 1 (system): the limits are for another system"},
      {"observer," + kHead + "2,1,1,1,1,1,1,1\n",
       "f, line 2, column 1 (observer): the limits are for another"},
      {kHead + "1,1,-1,0.5,1,1,1\n", "f, line 2: the plus and minus limits of a component cross"},
      {kHead + "1,1,1,1,1,-1.5,1\n", "f, line 2: the plus and minus limits of a component cross"},
      {kHead + "1,1,1,1,1,1,-0.1\n", "f, line 2: the limit of the total difference is negative"},
      {kHead + "1,1,1,1,1,1,x\n", "f, line 2, column 7 (total): \"x\" is not a number"},
      {kHead + "1,1,1,1,1,1,1\n1,1,1,1,1,1,2\n", "f, line 3: an earlier row is for the same"},
  };
  for (const auto& [content, message] : kFaults) {
    try {
      TableOf<BoxTable>(content);
      ADD_FAILURE() << "not refused: " << content;
    } catch (const InputError& error) {
      EXPECT_NE(std::string(error.what()).find(message), std::string::npos) << error.what();
    }
  }
  // An empty field holds for all, limits that meet leave one value, and a total of 0 is a limit.
  const std::string kRow = ",lab,,1,-1,0,0,0,0,0\n";
  EXPECT_FALSE(TableOf<BoxTable>("illuminant,system,observer," + kHead + kRow).IsEmpty());
  const LimitScope cmc{vrx::vrxSystemCmc, vrx::kObserver2};
  EXPECT_FALSE(TableOf<BoxTable>("system,observer," + kHead + "cmc,2,1,1,1,1,1,1,1\n", cmc).IsEmpty());
  for (const char* axes : {"0,1,1", "1,0,1", "1,1,0", "1,-1,1"}) {
    const std::string content = "lightness,major,minor,centreL,centreA,centreB,angle,total,factor\n" +
                                std::string(axes) + ",0,0,0,0,1,1\n";
    EXPECT_THROW(TableOf<EllipseTable>(content), InputError) << axes;
  }
}

TEST(LimitTable, BoxesOfNumbers) {
  for (const double limit : BoxFromNumbers({0.7})) EXPECT_EQ(limit, 0.7);
  EXPECT_EQ(EndsOf(BoxFromNumbers({1, 2, 3, 4, 5, 6, 7}).Limits(1)), std::pair(-4.0, 3.0));
  const std::vector<double> kRefused[] = {
      {}, {1, 2}, {1, 2, 3, 4, 5, 6}, {-1}, {1, 1, 1, 1, -2, 1, 1}, {1, 1, 1, 1, 1, 1, -1}};
  for (const std::vector<double>& numbers : kRefused) {
    EXPECT_THROW(BoxFromNumbers(numbers), InputError) << numbers.size();
  }
}

TEST(ValueRows, ColumnsInEverySpellingAndOrder) {
  const std::vector<std::string_view> kNames = {"L1", "a1", "dL", "C"};
  const auto read = [&](const std::string& content) {
    std::istringstream stream(content);
    CsvReader csv(stream, "f");
    ValueRows rows(csv, kNames, 2);
    std::ostringstream text;
    while (rows.Next()) {
      text << rows.Id() << ':';
      for (const double value : rows.Values()) text << ' ' << value;
      text << '\n';
    }
    return text.str();
  };
  const std::pair<const char*, const char*> kGood[] = {
      {"L1,a1\n1,2\n3,4\n", "1: 1 2 0 0\n2: 3 4 0 0\n"},
      {"a1,id,L1\n2,x,1\n", "x: 1 2 0 0\n"},
      {"DL* (D65),a_1,L*1,C*\n3,2,1,4\n", "1: 1 2 3 4\n"},
      {"\xCE\x94L*,L_1,a 1\n3,1,2\n", "1: 1 2 3 0\n"},
      {"dE2000,L1,RGB_R,a1,dE2000\nx,1,,2,y\n", "1: 1 2 0 0\n"}};
  for (const auto& [content, rows] : kGood) EXPECT_EQ(read(content), rows) << content;
  const std::pair<const char*, const char*> kFaults[] = {
      {"L1\n1\n", "f, line 1: there is no column a1"},
      {"L1,a1,L2\n1,2,3\n", "f, line 1, column 3 (L2): unknown column in this file"},
      {"L1,a1,L*1\n1,2,3\n", "f, line 1, column 3 (L*1): the column appears twice"},
      {"id,L1,a1,sample\nx,1,2,y\n", "f, line 1, column 4 (sample): the column appears twice"},
      {"L1,a1\n", "f: there is no row"},
      {"id,L1,a1\nx,1,2\n,1,2\n", "f, line 3, column 1 (id): the id is empty"},
      {"L1,a1\n1,2\n1,-\n", "f, line 3, column 2 (a1): \"-\" is not a number"},
      {"L1,a1\n1,2,3\n", "f, line 2: the row is long"}};
  for (const auto& [content, message] : kFaults) {
    try {
      read(content);
      ADD_FAILURE() << "not refused: " << content;
    } catch (const InputError& error) {
      EXPECT_NE(std::string(error.what()).find(message), std::string::npos) << error.what();
    }
  }
  EXPECT_TRUE(HasColumns({"x", "L*_1 (10)"}, {"L1"}));
  EXPECT_FALSE(HasColumns({"L1"}, {"L1", "a1"}));
  EXPECT_FALSE(HasColumns({"l1"}, {"L1"}));
  EXPECT_FALSE(HasColumns({"Density"}, {"density"}));  // D is a difference before a component only
}

}  // namespace
