// The controls used by the mouse and the keyboard of the system.

#include <array>
#include <cstring>
#include <string>

#include <vrxmath/platform/locale.h>

#include "gallery_fixture.h"

namespace vrx::controls {
namespace {

void PressKeys(std::initializer_list<WORD> keys) {
  for (const WORD key : keys) Press(key);
}

double ValueOf(const NumericEdit& edit) {
  double number = 0;
  return edit.GetValue(number) ? number : -1;
}

void Copy(HWND owner, const wchar_t* text) {
  const std::size_t bytes = (std::wcslen(text) + 1) * sizeof(wchar_t);
  const HGLOBAL block = ::GlobalAlloc(GMEM_MOVEABLE, bytes);
  std::memcpy(::GlobalLock(block), text, bytes);
  ::GlobalUnlock(block);
  ::OpenClipboard(owner);
  ::EmptyClipboard();
  ::SetClipboardData(CF_UNICODETEXT, block);
  ::CloseClipboard();
}

// The tab key goes where a user of dialogs expects it, into the parts of controls that are made of others, and to nothing
// that only shows something.
TEST_F(Controls, TakeTheFocusInTheirOrder) {
  const auto part = [](const Control& control, int id) { return ::GetDlgItem(control.Handle(), id); };
  const HWND order[] = {
      g.checks.Handle(),    g.from.Handle(),      g.to.Handle(),        g.colors.Handle(),
      g.tree.Handle(),      part(g.exchange, 1),  part(g.exchange, 10), part(g.exchange, 11),
      part(g.exchange, 12), part(g.exchange, 13), part(g.exchange, 2),  part(g.editor, 1),
      part(g.editor, 10),   part(g.editor, 11),   part(g.editor, 12),   part(g.editor, 13),
      part(g.combo, 1),     g.number.Handle(),    g.scroll.Handle(),    g.tabs.Handle(),
      g.plane.Handle(),     g.lightness.Handle(), g.curves.Handle(),    g.plot.Handle(),
      g.angles.Handle(),    g.trend.Handle()};
  ::SetFocus(order[0]);
  for (std::size_t i = 1; i < std::size(order); ++i) {
    Press(VK_TAB);
    EXPECT_EQ(::GetFocus(), order[i]) << i;
  }
  Press(VK_TAB);
  EXPECT_EQ(::GetFocus(), order[0]);
  // A control that is made of others gives the focus to its first part; disabled, none of them takes it.
  ::SetFocus(g.exchange.Handle());
  EXPECT_EQ(::GetFocus(), order[5]);
  for (const Control* control :
       {static_cast<const Control*>(&g.exchange), static_cast<const Control*>(&g.editor)})
    ::EnableWindow(control->Handle(), FALSE);
  ::SetFocus(order[4]);
  Press(VK_TAB);
  EXPECT_EQ(::GetFocus(), part(g.combo, 1));
  EXPECT_FALSE(::IsWindowEnabled(part(g.editor, 12)));
}

TEST_F(Controls, ChecksAreSetByMouseAndSpace) {
  const HWND checks = g.checks.Handle();
  const struct {
    int row, before, after;
  } rows[] = {{0, VRX_CHECK_ON, VRX_CHECK_OFF},
              {1, VRX_CHECK_OFF, VRX_CHECK_ON},
              {4, VRX_CHECK_MIXED, VRX_CHECK_ON},
              {5, VRX_CHECK_OFF, VRX_CHECK_OFF}};  // disabled
  for (const auto& row : rows) {
    ASSERT_EQ(g.checks.Check(row.row), row.before);
    commands.clear();
    const bool isDone = ClickByMouse(checks, RowPoint(g.checks, row.row, 8),
                                     [&] { return g.checks.Check(row.row) == row.after; });
    EXPECT_TRUE(isDone) << row.row;
    EXPECT_EQ(WasTold(VRXLN_CHECK), row.before != row.after);
  }
  EXPECT_TRUE(ClickByMouse(checks, RowPoint(g.checks, 2), [&] { return g.checks.Current() == 2; }));
  EXPECT_EQ(g.checks.Check(2), VRX_CHECK_ON);  // on the text: goes there
  PressKeys({VK_SPACE, VK_DOWN, VK_SPACE});
  EXPECT_EQ(g.checks.Check(2), VRX_CHECK_OFF);
  EXPECT_EQ(g.checks.Check(3), VRX_CHECK_OFF);
}

TEST_F(Controls, EntriesAreDraggedByTheMouse) {
  const HWND from = g.from.Handle(), to = g.to.Handle();
  // Within the list: the first entry between the third and the fourth. Escape leaves all where it is.
  const POINT gap{40, RowPoint(g.from, 3).y - 7};
  DragByMouse(
      from, RowPoint(g.from, 0), from, gap, [] { return true; }, false);
  EXPECT_EQ(g.from.Data(0), 100U);
  EXPECT_FALSE(WasTold(VRXLN_REORDER));
  EXPECT_TRUE(DragByMouse(from, RowPoint(g.from, 0), from, gap, [&] { return WasTold(VRXLN_REORDER); }));
  EXPECT_EQ(g.from.Data(2), 100U);
  EXPECT_EQ(g.from.Data(0), 101U);
  // Two entries to the other list, which the mouse takes with the second one.
  g.from.Send(LB_SETSEL, FALSE, -1);
  g.from.Send(LB_SETSEL, TRUE, LPARAM{0});
  g.from.Send(LB_SETSEL, TRUE, 2);
  EXPECT_TRUE(DragByMouse(from, RowPoint(g.from, 2), to, {40, 30}, [&] { return g.to.Count() == 2; }));
  EXPECT_EQ(g.to.Data(0), 101U);
  EXPECT_EQ(g.to.Data(1), 100U);
  EXPECT_EQ(g.to.Selected(), (std::vector<int>{0, 1}));
  EXPECT_EQ(g.from.Count(), 22);
  EXPECT_TRUE(WasTold(VRXLN_RECEIVE));
  // Nowhere else: another kind of list does not take them.
  DragByMouse(to, RowPoint(g.to, 0), g.checks.Handle(), {40, 30}, [] { return true; });
  EXPECT_EQ(g.to.Count(), 2);
  EXPECT_EQ(g.checks.Count(), 24);
  // Alt with the arrows does the same, up to the ends.
  ::SetFocus(to);
  g.to.Select(1);
  for (int i = 0; i < 2; ++i) Press(VK_UP, {VK_MENU});
  EXPECT_EQ(g.to.Data(0), 100U);
}

TEST_F(Controls, EntriesAreExchanged) {
  const HWND available = ::GetDlgItem(g.exchange.Handle(), 1), chosen = ::GetDlgItem(g.exchange.Handle(), 2);
  // Whether it became what it should; if not it is put back for the next try.
  const auto is = [this](const std::vector<int>& expected) {
    return [this, expected, before = g.exchange.Chosen()] {
      return g.exchange.Chosen() == expected || (g.exchange.SetChosen(before) && false);
    };
  };
  const ListControl left(available), right(chosen);
  EXPECT_TRUE(ClickByMouse(available, RowPoint(left, 1), is({18, 19, 23, 1}), 2));
  EXPECT_TRUE(DragByMouse(chosen, RowPoint(right, 3), chosen, {40, 2}, is({1, 18, 19, 23})));
  EXPECT_TRUE(DragByMouse(chosen, RowPoint(right, 1), available, {40, 60}, is({1, 19, 23})));
  EXPECT_EQ(left.Data(17), 18U);  // the left side keeps its own order
  EXPECT_TRUE(WasTold(VRXXN_CHANGE));
  // By keys alone: the second of the left ones; then the last one two places up.
  ::SetFocus(available);
  PressKeys({VK_HOME, VK_DOWN, VK_TAB, VK_SPACE});
  EXPECT_EQ(g.exchange.Chosen(), (std::vector<int>{1, 19, 23, 2}));
  ::SetFocus(chosen);
  PressKeys({VK_END});
  ::SetFocus(::GetDlgItem(g.exchange.Handle(), 12));
  PressKeys({VK_SPACE, VK_SPACE});
  EXPECT_EQ(g.exchange.Chosen(), (std::vector<int>{1, 2, 19, 23}));
  EXPECT_EQ(g.exchange.Send(LB_DELETESTRING, 0), LB_ERR);
}

TEST_F(Controls, EntriesAreEditedByKeys) {
  const HWND list = ::GetDlgItem(g.editor.Handle(), 1);
  g.editor.Select(1);
  ::SetFocus(list);
  const struct {
    const wchar_t* what;
    std::vector<WORD> keys;
    int row, count;
    const wchar_t* text;
    bool isTold;
  } rows[] = {
      {L"F2, a letter and Enter", {VK_F2, 'Q', VK_RETURN}, 1, 24, L"q", true},
      {L"Escape drops the text", {VK_F2, 'W', VK_ESCAPE}, 1, 24, L"q", false},
      {L"the end of the text", {VK_F2, VK_END, 'X', VK_RETURN}, 1, 24, L"qx", true},
      {L"leaving the field takes it", {VK_F2, 'Y', VK_TAB}, 1, 24, L"y", true},
      {L"an empty text changes nothing", {VK_F2, VK_DELETE, VK_RETURN}, 1, 24, L"y", false},
      {L"Insert", {VK_INSERT, 'N', VK_RETURN}, 2, 25, L"n", true},
      {L"Delete", {VK_DELETE}, 2, 24, L"blue sky", true},
      {L"Insert without a text", {VK_INSERT, VK_RETURN}, 2, 24, L"blue sky", false},
      {L"Insert and Escape", {VK_INSERT, 'Z', VK_ESCAPE}, 2, 24, L"blue sky", false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << row.what);
    ::SetFocus(list);
    commands.clear();
    for (const WORD key : row.keys) Press(key);
    EXPECT_EQ(WasTold(VRXEN_CHANGE), row.isTold);
    EXPECT_EQ(g.editor.Text(row.row), row.text);
    EXPECT_EQ(g.editor.Count(), row.count);
  }
  EXPECT_EQ(g.editor.Data(1), 101U);  // that of the host stays with the entry
  EXPECT_EQ(g.editor.BeginEdit(24), nullptr);
  EXPECT_EQ(g.editor.Current(), 2);
  EXPECT_TRUE(ClickByMouse(
      list, RowPoint(g.editor, 4), [&] { return TextOf(::GetFocus()) == L"blue flower"; }, 2));
}

TEST_F(Controls, TreesAreWalkedByKeys) {
  const auto nodes = [](std::initializer_list<int> list) { return std::vector<int>(list); };
  ::SetFocus(g.tree.Handle());
  const struct {
    WORD key, held;
    int current;
    std::vector<int> selected;
  } rows[] = {
      {VK_HOME, 0, 0, nodes({0})},
      {VK_RIGHT, 0, 0, nodes({0})},  // opens it
      {VK_RIGHT, 0, 2, nodes({2})},
      {VK_DOWN, VK_SHIFT, 3, nodes({2, 3})},
      {VK_DOWN, VK_SHIFT, 4, nodes({2, 3, 4})},
      {VK_UP, VK_SHIFT, 3, nodes({2, 3})},
      {VK_DOWN, VK_CONTROL, 4, nodes({2, 3})},
      {VK_DOWN, VK_CONTROL, 5, nodes({2, 3})},
      {VK_SPACE, VK_CONTROL, 5, nodes({2, 3, 5})},
      {VK_LEFT, 0, 0, nodes({0})},
      {VK_SUBTRACT, 0, 0, nodes({0})},  // closes it
      {VK_DOWN, 0, 1, nodes({1})},
      {VK_DOWN, 0, 20, nodes({20})},
      {VK_END, VK_SHIFT, 25, nodes({20, 21, 22, 23, 24, 25})},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.key);
    if (row.held != 0)
      Press(row.key, {row.held});
    else
      Press(row.key);
    EXPECT_EQ(g.tree.Send(VRXTM_GETCURRENT), row.current);
    EXPECT_EQ(g.tree.Selected(), row.selected);
  }
  EXPECT_EQ(g.tree.Send(VRXTM_ISEXPANDED, 0), 0);
  EXPECT_TRUE(WasTold(VRXTN_EXPAND));
  RECT box{};
  g.tree.Send(VRXTM_GETROWRECT, 0, &box);
  EXPECT_TRUE(ClickByMouse(g.tree.Handle(), {box.bottom / 2, box.bottom / 2},
                           [&] { return g.tree.Send(VRXTM_ISEXPANDED, 0) == 1; }));
}

TEST_F(Controls, ComboBoxDropsAndPicks) {
  const HWND combo = ::GetDlgItem(g.combo.Handle(), 1);
  RECT client{};
  ::GetClientRect(combo, &client);
  COMBOBOXINFO info{};
  info.cbSize = sizeof info;
  ASSERT_TRUE(::GetComboBoxInfo(combo, &info));
  const POINT button{client.right - 8, client.bottom / 2};
  EXPECT_TRUE(ClickByMouse(combo, button, [&] { return g.combo.Send(CB_GETDROPPEDSTATE) != 0; }));
  EXPECT_TRUE(WasTold(CBN_DROPDOWN));
  const int top = static_cast<int>(g.combo.Send(CB_GETTOPINDEX));
  // In the second of the columns: ink of the row's number, none left of it.
  RECT row{};
  ::SendMessageW(info.hwndList, LB_GETITEMRECT, static_cast<WPARAM>(top + 1), reinterpret_cast<LPARAM>(&row));
  const COLORREF ink = ::GetSysColor(COLOR_WINDOWTEXT);
  EXPECT_GT(CountPixels(info.hwndList, {112, row.top, 150, row.bottom}, ink), 3);
  EXPECT_EQ(CountPixels(info.hwndList, {104, row.top, 112, row.bottom}, ink), 0);
  EXPECT_TRUE(ClickByMouse(info.hwndList, {30, (row.top + row.bottom) / 2}, [&] {
    const bool isPicked = g.combo.Current() == top + 1;
    if (!isPicked) g.combo.Send(CB_SHOWDROPDOWN, TRUE);  // a click that went astray closed it
    return isPicked;
  }));
  EXPECT_TRUE(WasTold(CBN_SELCHANGE));
  EXPECT_EQ(g.combo.Send(CB_GETDROPPEDSTATE), 0);
  // By keys: F4 opens, Escape leaves the choice, Enter takes it.
  ::SetFocus(combo);
  PressKeys({VK_F4, VK_DOWN, VK_RETURN});
  EXPECT_EQ(g.combo.Current(), top + 2);
  EXPECT_EQ(g.combo.Send(CB_GETDROPPEDSTATE), 0);
  PressKeys({VK_HOME});
  EXPECT_EQ(g.combo.Current(), 0);
}

TEST_F(Controls, NumbersAreTyped) {
  ::SetFocus(g.number.Handle());
  const struct {
    std::vector<WORD> keys;
    const wchar_t* text;
    double value;
    bool isRefused;
  } rows[] = {
      {{'2', VK_OEM_PERIOD, '5'}, L"2.5", 2.5, false},
      {{'2', VK_OEM_PERIOD, VK_OEM_PERIOD, '5'}, L"2.5", 2.5, true},
      {{'4', VK_RETURN}, L"4", 4, false},    // the key is the dialog's
      {{VK_OEM_MINUS, '1'}, L"1", 1, true},  // nothing below zero here
      {{'1', '2', VK_BACK}, L"1", 1, false},
      {{'7', VK_UP}, L"7.05", 7.05, false},
      {{'7', VK_DOWN}, L"6.95", 6.95, false},
      {{'0', VK_DOWN}, L"0.05", 0.05, false},  // the lower limit
      {{'A'}, L"0.05", 0.05, true},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    g.number.Send(EM_SETSEL, 0, LPARAM{-1});
    commands.clear();
    for (const WORD key : row.keys) Press(key);
    EXPECT_EQ(TextOf(g.number.Handle()), row.text);
    EXPECT_DOUBLE_EQ(ValueOf(g.number), row.value);
    EXPECT_EQ(WasTold(VRXNN_REFUSED), row.isRefused);
  }
  // Ctrl+V; what is refused leaves the number.
  const struct {
    const wchar_t *pasted, *text;
  } texts[] = {{L" 1.25 \u0394E\r\n", L"1.25"},
               {L"1.25 kg", L"1.25"},
               {L"900", L"1.25"},
               {L"3,4", L"1.25"},
               {L"", L"1.25"},
               {L"-1", L"1.25"},
               {L"1e1", L"1.25"},
               {L"\t2\t", L"2.00"}};
  for (const auto& row : texts) {
    Copy(g.window, row.pasted);
    commands.clear();
    Type(L"\x16");
    EXPECT_EQ(TextOf(g.number.Handle()), row.text) << row.pasted;
  }
  // The user's decimal separator.
  LocaleConventions comma;
  comma.decimalSeparator = u",";
  const FixedLocale locale(comma);
  SetLocale(&locale);
  commands.clear();
  g.number.Send(EM_SETSEL, 0, LPARAM{-1});
  PressKeys({'3', VK_OEM_PERIOD, VK_OEM_COMMA, '5', VK_UP});
  SetLocale(nullptr);
  EXPECT_TRUE(WasTold(VRXNN_REFUSED));
  EXPECT_EQ(TextOf(g.number.Handle()), L"3,55");
  // Nothing is the unset value.
  g.number.Send(EM_SETSEL, 0, LPARAM{-1});
  PressKeys({VK_DELETE, VK_TAB});
  EXPECT_EQ(TextOf(g.number.Handle()), L"");
  EXPECT_TRUE(IsUnset(ValueOf(g.number)));
}

TEST_F(Controls, NumbersAreScrolled) {
  const HWND scroll = g.scroll.Handle();
  RECT client{};
  ::GetClientRect(scroll, &client);
  // The unit and the arrows are there.
  const LONG arrows = client.right - 16;
  EXPECT_GT(CountPixels(scroll, {arrows, 0, client.right, client.bottom}, ::GetSysColor(COLOR_BTNTEXT)), 8);
  EXPECT_LT(CountPixels(scroll, {arrows - 20, 0, arrows, client.bottom}, ::GetSysColor(COLOR_WINDOW)),
            20 * client.bottom - 15);
  const auto clickUntil = [&](POINT point, double value) {
    return ClickByMouse(scroll, point, [&] { return ValueOf(g.scroll) == value; });
  };
  EXPECT_TRUE(clickUntil({client.right - 6, 4}, 13));
  EXPECT_TRUE(clickUntil({client.right - 6, client.bottom - 4}, 12.5));
  EXPECT_EQ(::GetFocus(), scroll);
  commands.clear();
  TurnWheel(2 * WHEEL_DELTA);
  EXPECT_DOUBLE_EQ(ValueOf(g.scroll), 13.5);
  EXPECT_TRUE(WasTold(VRXNN_VALUE));
  TurnWheel(-WHEEL_DELTA / 2);
  EXPECT_DOUBLE_EQ(ValueOf(g.scroll), 13.5);  // half a notch
  TurnWheel(-WHEEL_DELTA / 2);
  EXPECT_DOUBLE_EQ(ValueOf(g.scroll), 13);
  // Held down: every step is an event of the timer, ten of one increment and then of five; another key begins anew.
  SendMouse(scroll, WM_LBUTTONDOWN, MK_LBUTTON, {client.right - 6, 4});
  for (int i = 0; i < 12; ++i) g.scroll.Send(WM_TIMER, 1);
  SendMouse(scroll, WM_LBUTTONUP, 0, {client.right - 6, 4});
  EXPECT_DOUBLE_EQ(ValueOf(g.scroll), 13 + 0.5 * (1 + 10 + 2 * 5));
  g.scroll.Send(WM_TIMER, 1);
  EXPECT_DOUBLE_EQ(ValueOf(g.scroll), 23.5);
  // Not past the limit, and not at all in a field that is only read.
  for (int i = 0; i < 60; ++i) g.scroll.Send(VRXNM_STEP, 20);
  EXPECT_DOUBLE_EQ(ValueOf(g.scroll), 100);
  EXPECT_EQ(g.scroll.Send(VRXNM_STEP, 1), 0);
  g.scroll.Send(EM_SETREADONLY, TRUE);
  TurnWheel(-WHEEL_DELTA);
  PressKeys({VK_DOWN});
  Click(scroll, {client.right - 6, client.bottom - 4});
  Copy(g.window, L"5");
  g.scroll.Send(WM_PASTE);
  EXPECT_DOUBLE_EQ(ValueOf(g.scroll), 100);
}

TEST_F(Controls, DisabledTabsAreSkipped) {
  const HWND tabs = g.tabs.Handle();
  const auto ink = [&](int tab) {
    RECT box{};
    g.tabs.Send(TCM_GETITEMRECT, static_cast<WPARAM>(tab), &box);
    return CountPixels(tabs, box, ::GetSysColor(COLOR_BTNTEXT));
  };
  EXPECT_EQ(ink(1), 0);
  EXPECT_GT(ink(2), 0);
  EXPECT_TRUE(ClickByMouse(tabs, TabPoint(2), [&] { return g.tabs.Current() == 2; }));
  const std::map<COLORREF, int> before = ColorsOf(tabs);
  for (const int times : {1, 2}) {
    ClickByMouse(
        tabs, TabPoint(1), [] { return true; }, times);
    EXPECT_EQ(g.tabs.Current(), 2);
  }
  EXPECT_TRUE(ColorsOf(tabs) == before);  // nor does it light up under the mouse
  ::SetFocus(tabs);
  const struct {
    WORD key;
    int tab;
  } rows[] = {{VK_RIGHT, 2}, {VK_LEFT, 0}, {VK_LEFT, 0}, {VK_RIGHT, 2}, {VK_HOME, 0}, {VK_END, 2}};
  for (const auto& row : rows) {
    Press(row.key);
    EXPECT_EQ(g.tabs.Current(), row.tab) << row.key;
  }
  g.tabs.Enable(2, false);
  EXPECT_EQ(g.tabs.Current(), 0);
  g.tabs.Enable(1, true);
  EXPECT_TRUE(ClickByMouse(tabs, TabPoint(1), [&] { return g.tabs.Current() == 1; }));
  // The mark moves with its tab.
  TCITEMW item{};
  g.tabs.Send(TCM_INSERTITEMW, 0, &item);
  EXPECT_EQ(g.tabs.Send(VRXBM_ISTABENABLED, 2), 1);
  EXPECT_EQ(g.tabs.Send(VRXBM_ISTABENABLED, 3), 0);
  g.tabs.Send(TCM_DELETEITEM, 0);
  EXPECT_EQ(g.tabs.Send(VRXBM_ISTABENABLED, 2), 0);
  g.tabs.Enable(0, false);
  g.tabs.Enable(1, false);
  EXPECT_EQ(g.tabs.Current(), 1);  // where all are disabled the tab stays
}

}  // namespace
}  // namespace vrx::controls
