// The parts of lists, trees, fields and tabs that need no window.

#include <gtest/gtest.h>
#include <random>
#include <set>
#include <string>
#include <vector>

#include <vrxmath/platform/locale.h>

#include "controls/layout/list_model.h"
#include "controls/layout/list_rows.h"
#include "controls/layout/number_field.h"
#include "controls/layout/tree_model.h"

namespace vrx::controls {
namespace {

using Rows = std::vector<int32_t>;

// Random changes, against a plain set of numbers.
TEST(RowSet, IsASet) {
  std::mt19937 random(1);
  RowSet rows;
  std::set<int32_t> model;
  for (int step = 0; step < 4000; ++step) {
    const auto a = static_cast<int32_t>(random() % 60), b = static_cast<int32_t>(random() % 60);
    const auto shifted = [&](int32_t from, int32_t by) {
      std::set<int32_t> moved;
      for (const int32_t row : model) moved.insert(row >= from ? row + by : row);
      model = moved;
    };
    switch (random() % 5) {
      case 0:
        rows.InsertRow(a), shifted(a, 1);
        break;
      case 1:
        rows.RemoveRow(a), model.erase(a), shifted(a, -1);
        break;
      default: {
        const bool isMember = random() % 2 == 0;
        rows.Set(a, b, isMember);
        for (int32_t row = std::min(a, b); row <= std::max(a, b); ++row) {
          if (isMember)
            model.insert(row);
          else
            model.erase(row);
        }
      }
    }
    ASSERT_EQ(rows.Rows(), Rows(model.begin(), model.end())) << "step " << step;
    ASSERT_EQ(rows.Contains(a), model.contains(a));
    ASSERT_EQ(rows.Count(), static_cast<int32_t>(model.size()));
    for (std::size_t i = 1; i < rows.Runs().size(); ++i)  // runs that touch are one
      ASSERT_GT(rows.Runs()[i].first, rows.Runs()[i - 1].last + 1);
  }
}

// Keys and clicks in a list of 100 rows of which 10 are in view, as system list boxes answer them.
TEST(ListState, SelectsAsSystemLists) {
  // Each step: a letter (u d U D H E keys, s space, a digit: click on that row), ^ before it with Ctrl, + with Shift.
  const struct {
    bool multiple;
    const char* steps;
    Rows selected;
    int32_t current, top;
  } rows[] = {
      {false, "3", {3}, 3, 0},
      {false, "3+7", {7}, 7, 0},
      {false, "3u", {2}, 2, 0},
      {false, "0u", {0}, 0, 0},
      {false, "d", {0}, 0, 0},
      {false, "0E", {99}, 99, 90},
      {false, "0EH", {0}, 0, 0},
      {false, "0DD", {18}, 18, 9},
      {false, "0DDU", {9}, 9, 9},
      {true, "2+5", {2, 3, 4, 5}, 5, 0},
      {true, "2+5+1", {1, 2}, 1, 0},
      {true, "2^5", {2, 5}, 5, 0},
      {true, "2^5^2", {5}, 2, 0},
      {true, "2^5+7", {5, 6, 7}, 7, 0},
      {true, "2^5^+7", {2, 5, 6, 7}, 7, 0},
      {true, "2^d^d^s", {2, 4}, 4, 0},
      {true, "2+d+d", {2, 3, 4}, 4, 0},
      {true, "2+d+dd", {5}, 5, 0},
      {true, "2^d^ds", {2, 4}, 4, 0},
  };
  for (const auto& row : rows) {
    ListState list;
    list.multiple = row.multiple;
    list.SetCount(100);
    list.SetHeights(10, 105);
    bool shift = false, control = false;
    for (const char step : std::string(row.steps)) {
      static const std::string kKeys = "udUDHE";
      if (step == '+')
        shift = true;
      else if (step == '^')
        control = true;
      else if (step == 's')
        list.Space(control);
      else if (kKeys.find(step) == std::string::npos)
        list.Click(step - '0', shift, control);
      else
        list.Press(static_cast<ListKey>(kKeys.find(step)), shift, control);
      if (step != '+' && step != '^') shift = control = false;
    }
    EXPECT_EQ(list.Selected().Rows(), row.selected) << row.steps;
    EXPECT_EQ(list.Current(), row.current) << row.steps;
    EXPECT_EQ(list.Top(), row.top) << row.steps;
  }
}

TEST(ListState, KeepsToItsRows) {
  ListState list;
  list.multiple = true;
  list.SetCount(2'000'000'000);
  list.SetHeights(10, 100);
  list.SetSelected(0, INT32_MAX, true);
  EXPECT_EQ(list.Selected().Runs().size(), 1U);
  list.ScrollTo(INT32_MAX);
  EXPECT_EQ(list.RowAt(99), 1'999'999'999);
  EXPECT_EQ(list.GapAt(INT32_MAX / 2), 2'000'000'000);
  list.SetCount(3);
  EXPECT_EQ(list.Selected().Rows(), (Rows{0, 1, 2}));
  EXPECT_EQ(list.Top(), 0);
  EXPECT_EQ(list.RowAt(30), -1);
  EXPECT_EQ(list.RowAt(-1), -1);
  EXPECT_EQ(list.GapAt(14), 1);
  EXPECT_EQ(list.GapAt(15), 2);
  list.Select(1);
  list.InsertRow(0);
  EXPECT_EQ(list.Current(), 2);
  list.RemoveRow(3);
  list.RemoveRow(2);
  EXPECT_EQ(list.Current(), 1);
  EXPECT_EQ(list.Selected().Count(), 0);
  list.SetCount(0);
  EXPECT_FALSE(list.Press(ListKey::kEnd, false, false));
  EXPECT_FALSE(list.Click(0, false, false));
}

TEST(Drag, ReordersAndExchanges) {
  const struct {
    int32_t count;
    Rows rows;
    int32_t before;
    Rows order;
  } drags[] = {
      {4, {0}, 4, {1, 2, 3, 0}}, {4, {3}, 0, {3, 0, 1, 2}},       {4, {1, 2}, 4, {0, 3, 1, 2}},
      {4, {1}, 1, {0, 1, 2, 3}}, {5, {0, 4}, 2, {1, 0, 4, 2, 3}}, {4, {1}, 2, {0, 1, 2, 3}},
  };
  for (const auto& drag : drags) EXPECT_EQ(OrderAfterDrag(drag.count, drag.rows, drag.before), drag.order);

  const struct {
    Rows rows;
    int32_t step, gap;
  } steps[] = {{{0}, -1, -1},   {{2}, -1, 1},   {{2}, 1, 4}, {{3}, 1, -1},
               {{0, 2}, -1, 0}, {{1, 3}, 1, 4}, {{}, 1, -1}};
  for (const auto& step : steps) EXPECT_EQ(GapOfStep(4, step.rows, step.step), step.gap);

  ExchangeState lists;
  lists.Reset(5);
  lists.Choose(Rows{1, 3}, 0);
  lists.Choose(Rows{2}, 1);  // entry 4, between the two
  EXPECT_EQ(lists.Chosen(), (Rows{1, 4, 3}));
  EXPECT_EQ(lists.Available(), (Rows{0, 2}));
  lists.Reorder(Rows{2}, 0);
  EXPECT_EQ(lists.Chosen(), (Rows{3, 1, 4}));
  lists.Return(Rows{0, 2});
  EXPECT_EQ(lists.Chosen(), (Rows{1}));
  EXPECT_EQ(lists.Available(), (Rows{0, 2, 3, 4}));
  EXPECT_FALSE(lists.SetChosen(Rows{0, 0}));
  EXPECT_FALSE(lists.SetChosen(Rows{5}));
  lists.Choose(Rows{9, -1}, 7);
  EXPECT_EQ(lists.Chosen(), (Rows{1}));
}

TEST(Tree, ShowsWhatIsExpanded) {
  TreeModel tree;
  const int32_t paints = tree.Add(TreeModel::kRoot, u"paints", 1);
  const int32_t inks = tree.Add(TreeModel::kRoot, u"inks", 2);
  const int32_t acrylic = tree.Add(paints, u"acrylic", 3);
  const int32_t red = tree.Add(acrylic, u"red", 4);
  tree.Add(paints, u"oil", 5);
  EXPECT_EQ(tree.Add(17, u"lost", 6), -1);
  EXPECT_EQ(tree.Rows(), (Rows{paints, inks}));
  EXPECT_FALSE(tree.Expand(inks, true));
  EXPECT_TRUE(tree.Expand(acrylic, true));
  EXPECT_EQ(tree.RowOf(red), -1);
  EXPECT_TRUE(tree.Expand(paints, true));
  EXPECT_EQ(tree.Rows(), (Rows{paints, acrylic, red, 4, inks}));
  EXPECT_EQ(tree.At(red).level, 2);
  // The parts of a tree's row: 20 pixels for each level and for the expander.
  RowLayout layout({1, 16, 7}, true);
  RowLook row;
  row.level = 2;
  row.expander = Expander::kOpen;
  EXPECT_EQ(layout.PartAt(row, 39), RowPart::kText);
  EXPECT_EQ(layout.PartAt(row, 40), RowPart::kExpander);
  EXPECT_EQ(layout.PartAt(row, 60), RowPart::kText);
}

TEST(NumberField, TakesWhatTheUserCanMean) {
  LocaleConventions german;
  german.decimalSeparator = u",";
  german.groupSeparator = u".";
  const FixedLocale locale(german);
  SetLocale(&locale);
  const CValueRange range{-10, 200, 0.5, 100, 2};
  const CValueRange positive{0, 200, 0.5, 100, 2};
  const struct {
    const char16_t* text;
    bool mayBecome, mayBecomePositive;
    double pasted;  // kUnset: refused
  } texts[] = {
      {u"", true, true, kUnset},        {u"-", true, false, kUnset},
      {u"12", true, true, 12},          {u"12,", true, true, 12},
      {u",", true, true, kUnset},       {u"12,5", true, true, 12.5},
      {u"12.5", false, false, kUnset},  {u"1e3", false, false, kUnset},
      {u"1,2,3", false, false, kUnset}, {u" 12,5 g\r\n", false, false, 12.5},
      {u"12 kg", false, false, kUnset}, {u"500", true, true, kUnset},
      {u"-5", true, false, -5},         {u"\u22125", true, false, -5},
      {u"g", false, false, kUnset},
  };
  for (const auto& row : texts) {
    EXPECT_EQ(MayBecomeNumber(row.text, range), row.mayBecome) << CString(row.text).ToUtf8();
    EXPECT_EQ(MayBecomeNumber(row.text, positive), row.mayBecomePositive) << CString(row.text).ToUtf8();
    EXPECT_EQ(PastedNumber(row.text, range, u"g").value_or(kUnset), row.pasted) << CString(row.text).ToUtf8();
  }
  SetLocale(nullptr);
}

TEST(NumberField, WheelsAndTabs) {
  int32_t rest = 0;
  const struct {
    int32_t delta, steps;
  } turns[] = {{120, 1}, {-240, -2}, {50, 0}, {50, 0}, {50, 1}, {-100, 0}, {-20, -1}};
  for (const auto& turn : turns) EXPECT_EQ(WheelSteps(turn.delta, rest), turn.steps) << turn.delta;
  int32_t sum = 0;
  for (int32_t i = 0; i < 40; ++i) sum += StepsWhenHeld(i);
  EXPECT_EQ(sum, 10 * 1 + 20 * 5 + 10 * 20);

  const std::vector<uint8_t> tabs = {0, 1, 0, 0, 1, 0};
  const struct {
    int32_t from, step;
    bool around;
    int32_t to;
  } ways[] = {{1, 1, false, 4}, {4, 1, false, -1}, {4, 1, true, 1},
              {1, -1, true, 4}, {-1, 1, false, 1}, {6, -1, false, 4}};
  for (const auto& way : ways) EXPECT_EQ(NextEnabledTab(tabs, way.from, way.step, way.around), way.to);
  EXPECT_EQ(NextEnabledTab(std::vector<uint8_t>{0, 0}, 0, 1, true), -1);
}

}  // namespace
}  // namespace vrx::controls
