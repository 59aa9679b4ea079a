// The parts of lists, trees, fields and tabs that need no window.

#include <algorithm>
#include <cmath>
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

// Every row that a list shows is at the place where it says that it is.
TEST(ListState, ShowsScrollsAndTellsChanges) {
  ListState list;
  list.SetCount(100);
  list.SetHeights(10, 59);  // five whole rows
  EXPECT_EQ(list.RowsInView(), 5);
  EXPECT_EQ(list.LastTop(), 95);
  const struct {
    int32_t show, top;
  } shows[] = {{4, 0}, {5, 1}, {3, 1}, {1, 1}, {0, 0}, {99, 95}, {95, 95}, {94, 94}, {100, 94}, {-1, 94}};
  for (const auto& step : shows) {
    list.Show(step.show);
    EXPECT_EQ(list.Top(), step.top) << step.show;
    for (int32_t row = 0; row < list.RowsInView(); ++row) {
      EXPECT_EQ(list.RowAt(10 * row), list.Top() + row);
      EXPECT_EQ(list.RowAt(10 * row + 9), list.Top() + row);
    }
  }
  list.SetHeights(10, 9);  // less than a row: one counts
  EXPECT_EQ(list.RowsInView(), 1);
  EXPECT_EQ(list.LastTop(), 99);
  EXPECT_TRUE(list.Press(ListKey::kPageDown, false, false));  // a page is one row at least
  EXPECT_EQ(list.Current(), 0);
  EXPECT_TRUE(list.Press(ListKey::kPageDown, false, false));
  EXPECT_EQ(list.Current(), 1);

  // Whether something changed.
  EXPECT_TRUE(list.Click(7, false, false));
  EXPECT_FALSE(list.Click(7, false, false));
  EXPECT_FALSE(list.Click(100, false, false));
  EXPECT_FALSE(list.Space(false));
  EXPECT_TRUE(list.Press(ListKey::kHome, false, false));
  EXPECT_FALSE(list.Press(ListKey::kUp, false, false));
  list.SetSelected(0, 0, false);
  EXPECT_TRUE(list.Space(false));
  list.Select(100);
  EXPECT_EQ(list.Current(), -1);
  EXPECT_EQ(list.Selected().Count(), 0);
  EXPECT_FALSE(list.Space(true));

  // A list of single selection takes the last of several rows.
  list.SetSelected(9, 6, true);
  EXPECT_EQ(list.Selected().Rows(), (Rows{9}));
  list.multiple = true;
  list.SetSelected(12, 98, true);
  list.SetSelected(-5, 96, false);
  EXPECT_EQ(list.Selected().Rows(), (Rows{97, 98}));
  list.SetSelected(120, 130, true);
  EXPECT_EQ(list.Selected().Count(), 2);
  // With Ctrl the current row moves alone, and a click on it alone may change what is selected: either is a change.
  list.SetCurrent(98);
  EXPECT_TRUE(list.Press(ListKey::kUp, false, true));
  EXPECT_EQ(list.Selected().Count(), 2);
  list.SetCurrent(98);
  EXPECT_TRUE(list.Click(98, false, false));
  EXPECT_EQ(list.Selected().Rows(), (Rows{98}));
  // The anchor moves with the rows before it; a current row that is removed leaves its place to the next one.
  list.SetCurrent(50);
  list.InsertRow(50);
  EXPECT_EQ(list.Current(), 51);
  EXPECT_TRUE(list.Press(ListKey::kDown, true, false));
  EXPECT_EQ(list.Selected().Rows(), (Rows{51, 52}));
  list.RemoveRow(0);
  EXPECT_EQ(list.Current(), 51);
  EXPECT_TRUE(list.Press(ListKey::kDown, true, false));
  EXPECT_EQ(list.Selected().Rows(), (Rows{50, 51, 52}));
  list.RemoveRow(52);
  EXPECT_EQ(list.Current(), 52);
  EXPECT_EQ(list.Selected().Rows(), (Rows{50, 51}));
  list.ScrollTo(1000);
  EXPECT_EQ(list.Top(), 98);
  list.SetCount(60);
  EXPECT_EQ(list.Top(), 59);
  list.SetCount(52);
  EXPECT_EQ(list.Current(), 51);
  EXPECT_EQ(list.Selected().Rows(), (Rows{50, 51}));
  list.SetCount(51);
  EXPECT_EQ(list.Current(), 50);
  EXPECT_EQ(list.Selected().Rows(), (Rows{50}));
}

// A step up and a step down with the gap that GapOfStep gives bring a block back to where it was.
TEST(Drag, StepsOfABlockGoThereAndBack) {
  constexpr int32_t kCount = 7;
  for (int32_t first = 0; first < kCount; ++first) {
    for (int32_t last = first; last < kCount - 1; ++last) {
      Rows block, moved;
      for (int32_t row = first; row <= last; ++row) block.push_back(row), moved.push_back(row + 1);
      const Rows down = OrderAfterDrag(kCount, block, GapOfStep(kCount, block, 1));
      EXPECT_EQ(down[static_cast<std::size_t>(first)], last + 1);
      const Rows up = OrderAfterDrag(kCount, moved, GapOfStep(kCount, moved, -1));
      for (std::size_t i = 0; i < down.size(); ++i) {
        EXPECT_EQ(down[static_cast<std::size_t>(up[i])], static_cast<int32_t>(i));
      }
    }
  }
}

// What can be clicked on lies where it is drawn.
TEST(RowLayout, PartsAreWhereTheyAreDrawn) {
  const Look look{2, 30, 14};
  EXPECT_EQ(RowLayout(look, false).Height(), 38);  // the text, and a margin of 2 x 2 pixels above and below
  for (const bool isTree : {false, true}) {
    RowLayout layout(look, isTree);
    for (const int32_t level : {0, 3}) {
      for (const Expander expander : {Expander::kNone, Expander::kClosed, Expander::kOpen}) {
        for (const CheckState check :
             {CheckState::kNone, CheckState::kOff, CheckState::kOn, CheckState::kMixed}) {
          RowLook row;
          row.text = u"name";
          row.level = level;
          row.expander = expander;
          row.check = check;
          row.standard = Swatch{0x112233, true};
          Picture picture;
          layout.Draw(picture, {100, 50, 700, 38}, row);
          double textLeft = 0, markCentre = -1, checkCentre = -1;
          int32_t polygons = 0, lines = 0;
          for (const Shape& shape : picture.Shapes()) {
            if (shape.kind == Shape::Kind::kText) textLeft = shape.box.left - 100;
            if (shape.kind == Shape::Kind::kRectangle && shape.stroke == Paint(Role::kFrame) &&
                checkCentre < 0 && shape.box.width == shape.box.height) {
              checkCentre = shape.box.Centre().x - 100;
              EXPECT_NEAR(shape.box.Centre().y, 69, 1);
            }
            lines += shape.kind == Shape::Kind::kLine ? 1 : 0;
            if (shape.kind != Shape::Kind::kPolygon) continue;
            ++polygons;
            markCentre = (std::min(shape.points[0].x, shape.points[2].x) + shape.points[1].x) / 2 - 100;
          }
          EXPECT_EQ(textLeft, layout.TextLeft(row));
          EXPECT_EQ(layout.PartAt(row, textLeft), RowPart::kText);
          EXPECT_EQ(polygons, isTree && expander != Expander::kNone ? 1 : 0);
          EXPECT_EQ(lines, check == CheckState::kOn ? 1 : 0);
          if (polygons > 0) {
            EXPECT_EQ(layout.PartAt(row, markCentre), RowPart::kExpander);
          }
          ASSERT_EQ(checkCentre >= 0, check != CheckState::kNone);
          if (checkCentre < 0) continue;
          EXPECT_EQ(layout.PartAt(row, checkCentre), RowPart::kCheck);
          EXPECT_EQ(layout.PartAt(row, checkCentre - 20),
                    isTree && expander != Expander::kNone ? RowPart::kExpander : RowPart::kText);
          EXPECT_EQ(layout.PartAt(row, checkCentre + 20), RowPart::kText);
        }
      }
    }
  }
}

TEST(RowLayout, ColumnsCoverTheRow) {
  RowLayout layout({1, 16, 7}, false);
  layout.columns = {100, 60};
  const auto textsOf = [&](const RowLook& row) {
    Picture picture;
    layout.Draw(picture, {10, 0, 300, 20}, row);
    std::string texts;
    for (const Shape& shape : picture.Shapes()) {
      if (shape.kind != Shape::Kind::kText) continue;
      texts += shape.text.ToUtf8() + '@' + std::to_string(std::lround(shape.box.left)) + '+' +
               std::to_string(std::lround(shape.box.width)) + ' ';
    }
    return texts;
  };
  RowLook row;
  row.text = u"a\tb\tc";
  EXPECT_EQ(textsOf(row), "a@13+95 b@113+55 c@173+135 ");
  row.text = u"a\t\tc";
  EXPECT_EQ(textsOf(row), "a@13+95 c@173+135 ");
  row.text = u"alone";
  EXPECT_EQ(textsOf(row), "alone@13+95 ");
  layout.columns = {};
  EXPECT_EQ(textsOf(row), "alone@13+295 ");
  // A bar of one colour takes two squares of a row's height, one of two colours four.
  row.standard = Swatch{};
  EXPECT_EQ(textsOf(row), "alone@53+255 ");
  row.trial = Swatch{};
  EXPECT_EQ(textsOf(row), "alone@93+215 ");

  const struct {
    bool enabled, selected;
    Role ink, paper;
  } rows[] = {{true, false, Role::kText, Role::kPaper},
              {true, true, Role::kSelectionText, Role::kSelection},
              {false, false, Role::kMuted, Role::kPaper}};
  for (const auto& look : rows) {
    RowLook plain;
    plain.text = u"x";
    plain.enabled = look.enabled;
    plain.selected = look.selected;
    Picture picture;
    layout.Draw(picture, {0, 0, 100, 20}, plain);
    EXPECT_EQ(picture.Shapes().front().fill, Paint(look.paper));
    EXPECT_EQ(picture.Shapes().back().fill, Paint(look.ink));
  }
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
