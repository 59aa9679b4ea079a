// The controls on a screen, driven by messages, the mouse and the keyboard.

#include <array>
#include <limits>
#include <string>
#include <tuple>

#include <vrxmath/foundation/attributes.h>
#include <vrxmath/foundation/list_data.h>

#include "c_host.h"
#include "gallery_fixture.h"
#include "tests/testing/messages.h"

namespace vrx::controls {
namespace {

// Windows on a desktop of their own: the one that is there may have no screen. Wine gives a desktop with a size one window of
// the X server, in which no window manager is waited for. The pointer of the X server is in its middle, outside of the gallery.
class OwnDesktop : public testing::Environment {
  void SetUp() override {
    constexpr wchar_t kSize[] = L"2400x1800";
    ::RegSetKeyValueW(HKEY_CURRENT_USER, L"Software\\Wine\\Explorer\\Desktops", L"vrx_controls", REG_SZ,
                      kSize, sizeof kSize);
    const HDESK desktop = ::CreateDesktopW(L"vrx_controls", nullptr, nullptr, 0, GENERIC_ALL, nullptr);
    ASSERT_NE(desktop, nullptr);
    ASSERT_TRUE(::SetThreadDesktop(desktop));
    ::CoInitialize(nullptr);
  }
};
[[maybe_unused]] const auto* const kDesktop = testing::AddGlobalTestEnvironment(new OwnDesktop);

// A list that has room for one entry.
LRESULT CALLBACK HasRoomForOne(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR, DWORD_PTR) {
  if (message == LB_ADDSTRING && ::SendMessageW(window, LB_GETCOUNT, 0, 0) == 1) return LB_ERRSPACE;
  return ::DefSubclassProc(window, message, wParam, lParam);
}

TEST_F(Controls, AreFilledByRecords) {
  CListDataArray list;
  CAttributeLabelArray labels;
  for (const auto& [id, text] : {std::pair{7, u"\u0416\u00DF"}, std::pair{9, u"second"}}) {
    list.Add({static_cast<uint32_t>(id), text});
    CAttributeLabel label;
    label.id = id;
    label.text = text;
    labels.Add(label);
  }
  for (ListBox* box :
       {static_cast<ListBox*>(&g.checks), static_cast<ListBox*>(&g.to), static_cast<ListBox*>(&g.exchange),
        static_cast<ListBox*>(&g.editor), static_cast<ListBox*>(&g.colors)}) {
    auto& control = dynamic_cast<ListControl&>(*box);
    for (const bool areLabels : {false, true}) {
      EXPECT_GE(areLabels ? labels.FillList(*box) : list.FillList(*box), 0);
      EXPECT_EQ(control.Count(), 2);
      EXPECT_EQ(control.Data(1), 9U);
      EXPECT_EQ(control.Text(0), L"\u0416\u00DF");
    }
    // Filling stops at the first refusal, and at a control that is gone.
    ::SetWindowSubclass(control.Handle(), HasRoomForOne, 1, 0);
    EXPECT_EQ(list.FillList(*box), LB_ERRSPACE);
    EXPECT_EQ(control.Count(), 1);
    ::DestroyWindow(control.Handle());
    EXPECT_EQ(list.FillList(*box), LB_ERR);
  }
  EXPECT_GE(list.FillList(g.combo), 0);
  EXPECT_EQ(g.combo.Send(CB_GETCOUNT), 2);
  EXPECT_EQ(g.combo.Send(CB_GETITEMDATA, 1), 9);
  // The system's own list box is one of them, too.
  ListControl own(
      ::CreateWindowExW(0, L"LISTBOX", L"", WS_CHILD, 0, 0, 9, 9, g.window, nullptr, nullptr, nullptr));
  EXPECT_GE(list.FillList(own), 0);
  EXPECT_EQ(own.Text(1), L"second");
}

TEST_F(Controls, ShowTheColoursOfTheirData) {
  RECT client{};
  ::GetClientRect(g.split.Handle(), &client);
  const int32_t red = 14;  // the sample that the gallery shows
  RECT row{};
  g.colors.Send(LB_SETTOPINDEX, red);
  g.colors.Send(LB_GETITEMRECT, red, &row);
  const LONG middle = (row.top + row.bottom) / 2, cell = row.bottom - row.top;
  const COLORREF standard = PixelAt(g.split.Handle(), {10, 10});
  const COLORREF trial = PixelAt(g.split.Handle(), {client.right - 10, 10});
  // Red by its published sRGB, 175 54 60 (D65, 2 degrees), in the neighbourhood that the 10 degree observer leaves.
  EXPECT_NEAR(GetRValue(standard), 175, 12);
  EXPECT_NEAR(GetGValue(standard), 54, 12);
  EXPECT_NEAR(GetBValue(standard), 60, 12);
  EXPECT_EQ(PixelAt(g.colors.Handle(), {cell, middle}), standard);
  EXPECT_EQ(PixelAt(g.colors.Handle(), {3 * cell, middle}), trial);
  EXPECT_EQ(PixelAt(g.framed.Handle(), {5, 5}), standard);
  EXPECT_EQ(PixelAt(g.framed.Handle(), {client.right / 4 * 3 - 3, client.bottom / 4 + 3}),
            RGB(255, 255, 255));  // out of gamut
  EXPECT_EQ(PixelAt(g.picture.Handle(), {2, 2}), ::GetSysColor(COLOR_BTNFACE));
  const COLORREF corner =
      PixelAt(g.picture.Handle(), {2, 32});  // of the gradient, which is fitted in the width
  EXPECT_LT(GetRValue(corner), 16);
  EXPECT_EQ(GetBValue(corner), 128);
}

TEST_F(Controls, PointsStandWhereTheyAreDrawn) {
  // Of every picture of data: the marks at the points have a verdict's or the text's colour, the mouse finds them, and keys go
  // through them.
  const struct {
    const Control& control;
    int count;
  } rows[] = {{g.plane, 24},         {g.lightness, 24}, {g.curves, 3 * 40},
              {g.angles, 5 + 5 + 5}, {g.trend, 24},     {g.plot, 6}};
  for (const auto& row : rows) {
    const HWND window = row.control.Handle();
    EXPECT_EQ(row.control.Send(VRXDM_GETCOUNT), row.count);
    POINT point{};
    ASSERT_EQ(row.control.Send(VRXDM_GETPOINT, 1, &point), 1);
    EXPECT_NE(PixelAt(window, point), ::GetSysColor(COLOR_WINDOW));
    points.clear();
    Click(window, point);
    EXPECT_GE(row.control.Send(VRXDM_GETCURRENT), 0);
    EXPECT_EQ(points.size(), 1U);
    EXPECT_EQ(::GetFocus(), window);
    Press(VK_HOME);
    Press(VK_RIGHT);
    EXPECT_EQ(row.control.Send(VRXDM_GETCURRENT), 1);
    Press(VK_END);
    Press(VK_RIGHT);
    EXPECT_EQ(row.control.Send(VRXDM_GETCURRENT), row.count - 1);
    Press(VK_ESCAPE);
    EXPECT_EQ(row.control.Send(VRXDM_GETCURRENT), -1);
    EXPECT_EQ(row.control.Send(VRXDM_SETCURRENT, static_cast<WPARAM>(row.count)), 0);
  }
}

TEST_F(Controls, ListsAreUsedByMouseAndKeys) {
  const HWND checks = g.checks.Handle();
  EXPECT_TRUE(ClickByMouse(checks, RowPoint(g.checks, 3), [&] { return g.checks.Current() == 3; }));
  EXPECT_TRUE(WasTold(LBN_SELCHANGE));
  Click(checks, RowPoint(g.checks, 1, 8));
  EXPECT_EQ(g.checks.Check(1), VRX_CHECK_ON);
  EXPECT_TRUE(WasTold(VRXLN_CHECK));
  Click(checks, RowPoint(g.checks, 5, 8));  // disabled
  EXPECT_EQ(g.checks.Check(5), VRX_CHECK_OFF);
  Press(VK_SPACE);  // on row 1, where the last mark was changed
  EXPECT_EQ(g.checks.Check(1), VRX_CHECK_OFF);
  Press(VK_END);
  EXPECT_EQ(g.checks.Current(), 23);
  Type(L"bluef");
  EXPECT_NE(g.checks.Text(g.checks.Current()), L"blue flower");
  g.checks.Send(WM_MOUSEWHEEL, MAKEWPARAM(0, 100 * WHEEL_DELTA));
  EXPECT_EQ(g.checks.Send(LB_GETTOPINDEX), 0);

  // Three rows to the other list, then one of them back between two, then up by keys.
  Click(g.from.Handle(), RowPoint(g.from, 1));
  Click(g.from.Handle(), RowPoint(g.from, 3), MK_SHIFT);
  Drag(g.from.Handle(), RowPoint(g.from, 2), g.to.Handle(), {40, 100});
  EXPECT_EQ(g.to.Count(), 3);
  EXPECT_EQ(g.from.Count(), 21);
  EXPECT_EQ(g.to.Data(0), 101U);
  EXPECT_TRUE(WasTold(VRXLN_RECEIVE));
  Click(g.to.Handle(), RowPoint(g.to, 0));
  Drag(g.to.Handle(), RowPoint(g.to, 0), g.from.Handle(), {40, RowPoint(g.from, 1).y - 8});
  EXPECT_EQ(g.from.Data(1), 101U);
  Click(g.to.Handle(), RowPoint(g.to, 1));
  Press(VK_UP, {VK_MENU});
  EXPECT_EQ(g.to.Data(0), 103U);
  Drag(g.to.Handle(), RowPoint(g.to, 0), g.to.Handle(), {40, 100});
  EXPECT_EQ(g.to.Data(1), 103U);
}

TEST_F(Controls, TreeSelectsSeveralNodes) {
  EXPECT_EQ(g.tree.Selected(), (std::vector<int>{20, 22}));
  RECT box{};
  ASSERT_EQ(g.tree.Send(VRXTM_GETROWRECT, 21, &box), 1);
  const LONG row = box.bottom - box.top;
  const auto at = [&](int node) {
    g.tree.Send(VRXTM_GETROWRECT, static_cast<WPARAM>(node), &box);
    return POINT{80, (box.top + box.bottom) / 2};
  };
  Click(g.tree.Handle(), at(21));
  Click(g.tree.Handle(), at(23), MK_CONTROL);
  EXPECT_EQ(g.tree.Selected(), (std::vector<int>{21, 23}));
  Click(g.tree.Handle(), at(25), MK_SHIFT);
  EXPECT_EQ(g.tree.Selected(), (std::vector<int>{23, 24, 25}));
  Click(g.tree.Handle(), {row / 2, at(1).y});  // the arrow of the greys
  EXPECT_EQ(g.tree.Send(VRXTM_ISEXPANDED, 1), 0);
  EXPECT_EQ(g.tree.Selected().size(), 3U);  // hidden, not forgotten
  EXPECT_EQ(g.tree.Send(VRXTM_GETROWRECT, 23, &box), 0);
  Press(VK_RIGHT);
  Press(VK_RIGHT);
  EXPECT_EQ(g.tree.Send(VRXTM_GETCURRENT), 20);
  Press(VK_LEFT);
  EXPECT_EQ(g.tree.Send(VRXTM_GETCURRENT), 1);
}

// A bitmap to draw on.
class Canvas {
 public:
  explicit Canvas(LONG width, LONG height) : area{0, 0, width, height} {
    const HDC screen = ::GetDC(nullptr);
    device = ::CreateCompatibleDC(screen);
    bitmap_ = ::CreateCompatibleBitmap(screen, width, height);
    ::SelectObject(device, bitmap_);
    ::ReleaseDC(nullptr, screen);
  }
  Canvas(const Canvas&) = delete;
  Canvas& operator=(const Canvas&) = delete;
  ~Canvas() {
    ::DeleteDC(device);
    ::DeleteObject(bitmap_);
  }
  const RECT area;
  HDC device;

 private:
  HBITMAP bitmap_;
};

bool HasNear(HDC device, POINT point, COLORREF color) {
  for (LONG y = point.y - 1; y <= point.y + 1; ++y) {
    for (LONG x = point.x - 1; x <= point.x + 1; ++x) {
      if (::GetPixel(device, x, y) == color) return true;
    }
  }
  return false;
}

// The same picture in a window, a bitmap, a metafile, and a bitmap as fine as a printer's page.
TEST_F(Controls, DrawOnAnyDevice) {
  const Control* pictures[] = {&g.plane, &g.lightness, &g.curves, &g.angles, &g.trend, &g.plot};
  for (const Control* picture : pictures) {
    RECT client{};
    ::GetClientRect(picture->Handle(), &client);
    const Canvas bitmap(client.right, client.bottom), played(client.right, client.bottom),
        fine(client.right * 25 / 4, client.bottom * 25 / 4);
    const HDC metafile = ::CreateEnhMetaFileW(nullptr, nullptr, nullptr, nullptr);
    EXPECT_TRUE(picture->Draw(bitmap.device, bitmap.area));
    EXPECT_TRUE(picture->Draw(metafile, client));
    const HENHMETAFILE file = ::CloseEnhMetaFile(metafile);
    ENHMETAHEADER header{};
    ::GetEnhMetaFileHeader(file, sizeof header, &header);
    const RECT bounds{header.rclBounds.left, header.rclBounds.top, header.rclBounds.right,
                      header.rclBounds.bottom};
    ::PlayEnhMetaFile(played.device, file, &bounds);
    ::DeleteEnhMetaFile(file);
    int missing = 0;
    std::vector<POINT> places(static_cast<std::size_t>(picture->Send(VRXDM_GETCOUNT)));
    for (std::size_t i = 0; i < places.size(); ++i) {
      picture->Send(VRXDM_GETPOINT, i, &places[i]);
      const COLORREF color = PixelAt(picture->Handle(), places[i]);
      EXPECT_EQ(::GetPixel(bitmap.device, places[i].x, places[i].y), color) << i;
      missing += HasNear(played.device, places[i], color) ? 0 : 1;  // its frame is measured in millimetres
    }
    // Where lines cross, which of them is on top of a pixel is the device's matter.
    EXPECT_LE(missing, picture == &g.curves ? 2 : 0);
    if (picture != &g.trend) continue;  // whose points stand apart
    EXPECT_TRUE(picture->SetDpi(600));
    EXPECT_TRUE(picture->Draw(fine.device, fine.area));
    EXPECT_TRUE(picture->SetDpi(96));
    for (const POINT& at : places) {
      EXPECT_EQ(::GetPixel(fine.device, at.x * 25 / 4, at.y * 25 / 4), PixelAt(picture->Handle(), at))
          << at.x;
    }
  }
  // Without a window every pixel is the same.
  CDblPolyline line;
  for (const double x : {1.0, 2.0, kUnset, 4.0, 5.0}) line.Add({x, x * x});
  line.marked = true;
  line.paint = controls::Paint::Fixed(RGB(10, 20, 200));
  line.yHeading = u"\u0394E";
  ASSERT_TRUE(g.plot.Set({&line, 1}));
  RECT client{};
  ::GetClientRect(g.plot.Handle(), &client);
  const Canvas canvas(client.right, client.bottom);
  EXPECT_TRUE(DrawPolylines(canvas.device, canvas.area, {&line, 1}));
  ::UpdateWindow(g.plot.Handle());
  const HDC shown = ::GetDC(g.plot.Handle());
  int different = 0, inked = 0;
  for (LONG y = 0; y < client.bottom; ++y) {
    for (LONG x = 0; x < client.right; ++x) {
      different += ::GetPixel(shown, x, y) == ::GetPixel(canvas.device, x, y) ? 0 : 1;
      inked += ::GetPixel(canvas.device, x, y) == RGB(10, 20, 200) ? 1 : 0;
    }
  }
  ::ReleaseDC(g.plot.Handle(), shown);
  EXPECT_EQ(different, 0);
  EXPECT_GT(inked, 100);
  VRX_PLOT_DATA none{};
  EXPECT_FALSE(VrxDrawPlot(canvas.device, &client, 0, &none));
  EXPECT_FALSE(VrxDrawPlot(canvas.device, nullptr, 0, &PlotData({}).Get()));
  EXPECT_FALSE(DrawPolylines(canvas.device, client, {}, -96));
}

TEST_F(Controls, FollowTheSystem) {
  // A theme: the paper changes with the system's colour.
  const INT element = COLOR_WINDOW;
  const COLORREF old = ::GetSysColor(COLOR_WINDOW), fresh = RGB(250, 240, 200);
  ::SetSysColors(1, &element, &fresh);
  for (const Control* control : {static_cast<const Control*>(&g.to), static_cast<const Control*>(&g.plane)}) {
    ::SendMessageW(control->Handle(), WM_SYSCOLORCHANGE, 0, 0);
    EXPECT_EQ(PixelAt(control->Handle(), {5, 5}), fresh);
  }
  ::SetSysColors(1, &element, &old);
  ::SendMessageW(g.to.Handle(), WM_SYSCOLORCHANGE, 0, 0);
  // No painting between WM_SETREDRAW off and on.
  g.to.Send(WM_SETREDRAW, FALSE);
  g.to.AddString(u"\u2588\u2588\u2588\u2588");
  g.to.Select(0);
  EXPECT_EQ(PixelAt(g.to.Handle(), {100, 8}), old);
  g.to.Send(WM_SETREDRAW, TRUE);
  ::InvalidateRect(g.to.Handle(), nullptr, FALSE);
  EXPECT_EQ(PixelAt(g.to.Handle(), {100, 8}), ::GetSysColor(COLOR_HIGHLIGHT));
  // The library's message goes through the hook, and the field works on with the range that stands in.
  const MessageRecorder recorder;
  CDifferenceSettings unknown;
  unknown.system = 99;
  EXPECT_TRUE(g.number.SetRange(ToleranceRange(unknown, 0)));
  EXPECT_EQ(const_cast<MessageRecorder&>(recorder).Take(), IndexErrors());
}

// What is refused leaves the picture as it was.
TEST_F(Controls, KeepTheirDataWhenOthersAreRefused) {
  const HWND pictures[] = {g.plot.Handle(),   g.plane.Handle(),  g.lightness.Handle(),
                           g.curves.Handle(), g.angles.Handle(), g.trend.Handle()};
  for (const HWND picture : pictures) {
    const LRESULT count = ::SendMessageW(picture, VRXDM_GETCOUNT, 0, 0);
    EXPECT_GT(count, 0);
    const UINT noSize[64] = {};
    EXPECT_EQ(::SendMessageW(picture, VRXDM_SET, 0, reinterpret_cast<LPARAM>(noSize)), 0);
    EXPECT_EQ(::SendMessageW(picture, VRXDM_GETCOUNT, 0, 0), count);
    EXPECT_EQ(::SendMessageW(picture, VRXDM_SET, 0, 0), 1);
    EXPECT_EQ(::SendMessageW(picture, VRXDM_GETCOUNT, 0, 0), 0);
  }
}

// A field takes no NaN or infinity, and holds what it shows.
TEST_F(Controls, NumbersAreWhatTheyShow) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const std::tuple<double, LRESULT, const wchar_t*, double> rows[] = {
      {1.2345, 1, L"1.23", 1.23},     {std::numeric_limits<double>::quiet_NaN(), 0, L"1.23", 1.23},
      {kInfinity, 0, L"1.23", 1.23},  {-kInfinity, 0, L"1.23", 1.23},
      {VRX_UNSET, 1, L"", VRX_UNSET}, {0.999, 1, L"1.00", 1}};
  for (const auto& [value, answer, text, held] : rows) {
    EXPECT_EQ(g.number.Send(VRXNM_SETVALUE, 0, &value), answer) << value;
    EXPECT_EQ(TextOf(g.number.Handle()), text);
    double got = 0;
    g.number.Send(VRXNM_GETVALUE, 0, &got);
    EXPECT_EQ(got, held);
  }
  // More decimals show no more of the number than there is.
  const VRX_NUMBER_RANGE finer{sizeof finer, 4, 0.05, 20, 0.05, nullptr};
  EXPECT_EQ(g.number.Send(VRXNM_SETRANGE, 0, &finer), 1);
  EXPECT_EQ(TextOf(g.number.Handle()), L"1.0000");
}

TEST_F(Controls, PointsSayTheirValues) {
  POINT point{};
  ASSERT_EQ(g.plot.Send(VRXDM_GETPOINT, 1, &point), 1);
  g.plot.Send(WM_MOUSEMOVE, 0, MAKELPARAM(point.x, point.y));
  HWND tip = nullptr;
  while ((tip = ::FindWindowExW(nullptr, tip, TOOLTIPS_CLASSW, nullptr)) != nullptr) {
    if (::GetWindow(tip, GW_OWNER) == ::GetAncestor(g.plot.Handle(), GA_ROOT)) break;
  }
  ASSERT_NE(tip, nullptr);
  const auto text = [&] {
    wchar_t shown[200] = L"";
    TTTOOLINFOW tool{};
    tool.cbSize = TTTOOLINFOW_V1_SIZE;
    tool.hwnd = g.plot.Handle();
    tool.uId = reinterpret_cast<UINT_PTR>(tool.hwnd);
    tool.lpszText = shown;
    ::SendMessageW(tip, TTM_GETTEXTW, std::size(shown), reinterpret_cast<LPARAM>(&tool));
    return std::wstring(shown);
  };
  EXPECT_EQ(text().substr(0, 7), L"greys: ");
  g.plot.Send(WM_MOUSEMOVE, 0, MAKELPARAM(1, 1));
  EXPECT_EQ(text(), L"");
}

TEST_F(Controls, RefuseWhatCannotBe) {
  EXPECT_EQ(ShowColorsFromC(g.split.Handle(), RGB(1, 2, 3), RGB(4, 5, 6)), 1);
  EXPECT_EQ(PixelAt(g.split.Handle(), {10, 10}), RGB(1, 2, 3));
  VRX_CURVES_DATA curves{sizeof curves, 0, 1 << 20, 1 << 20, 400, 10, nullptr};
  EXPECT_FALSE(g.curves.Set(curves));
  VRX_PLOT_DATA plot{};
  EXPECT_FALSE(g.plot.Set(plot));  // no size
  plot.size = sizeof plot;
  plot.lineCount = -1;
  EXPECT_FALSE(g.plot.Set(plot));
  EXPECT_EQ(g.tree.Add(77, u"lost"), -1);
  EXPECT_EQ(g.checks.Send(LB_DELETESTRING, 99), LB_ERR);
  EXPECT_EQ(g.checks.Send(VRXLM_SETCHECK, 0, 9), LB_ERR);
  EXPECT_EQ(g.checks.Send(LB_GETTEXT, 99), LB_ERR);
  EXPECT_FALSE(g.exchange.SetChosen(std::array{1, 1}));
  EXPECT_FALSE(g.number.SetRange({5, 1, 1, 1, 0}));
  EXPECT_FALSE(g.tabs.Enable(7, false));
  EXPECT_FALSE(g.plane.SetDpi(20));
}

TEST(Gallery, IsUsedFromRightToLeft) {
  const Gallery shown = OpenGallery(96, WS_EX_LAYOUTRTL);
  const HWND checks = shown.checks.Handle();
  // The mark stands on the right of the screen, where the mouse finds it.
  POINT mark{8, 8};
  RECT client{};
  ::GetClientRect(checks, &client);
  EXPECT_TRUE(ClickByMouse(checks, mark, [&] { return shown.checks.Check(0) == VRX_CHECK_OFF; }));
  POINT left{client.right, 8};
  ::MapWindowPoints(checks, nullptr, &mark, 1);
  ::MapWindowPoints(checks, nullptr, &left, 1);
  EXPECT_GT(mark.x, left.x + client.right / 2);
  // Arrows go where they point to.
  ::SetFocus(shown.tabs.Handle());
  Press(VK_LEFT);
  EXPECT_EQ(shown.tabs.Current(), 2);
  Press(VK_RIGHT);
  EXPECT_EQ(shown.tabs.Current(), 0);
  ::SetFocus(shown.tree.Handle());
  Press(VK_HOME);
  Press(VK_LEFT);
  EXPECT_EQ(shown.tree.Send(VRXTM_ISEXPANDED, 0), 1);
  // The text of the combo box begins at its edge, and the disabled tab is grey there, too.
  const HWND combo = ::GetDlgItem(shown.combo.Handle(), 1);
  EXPECT_GT(CountPixels(combo, {4, 2, 18, 20}, ::GetSysColor(COLOR_WINDOWTEXT)), 5);
  RECT tab{};
  for (const int disabled : {0, 1}) {
    shown.tabs.Send(TCM_GETITEMRECT, static_cast<WPARAM>(disabled), &tab);
    EXPECT_EQ(CountPixels(shown.tabs.Handle(), tab, ::GetSysColor(COLOR_BTNTEXT)) > 0, disabled == 0);
  }
  // Points are drawn as everywhere, and found by the mouse where they are.
  POINT point{};
  shown.trend.Send(VRXDM_GETPOINT, 3, &point);
  EXPECT_TRUE(ClickByMouse(shown.trend.Handle(), point, [&] { return shown.trend.Current() == 3; }));
  ::DestroyWindow(shown.window);
}

// The whole gallery at two resolutions and in both writing directions, kept as pictures to be looked at.
TEST(Gallery, IsLaidOutForEveryScreen) {
  MoveTo(nullptr, {2300, 1700});  // nothing lights up under the mouse
  for (const int dpi : {96, 144}) {
    for (const DWORD style : {DWORD{0}, DWORD{WS_EX_LAYOUTRTL}}) {
      const Gallery shown = OpenGallery(dpi, style);
      ASSERT_NE(shown.window, nullptr);
      ::UpdateWindow(shown.window);
      EXPECT_EQ(shown.checks.Send(LB_GETITEMHEIGHT) > 24, dpi == 144);
      // The mark of a checked row stands where the row begins: right of the middle when written from the right.
      RECT client{};
      ::GetClientRect(shown.checks.Handle(), &client);
      const LONG rowHeight = static_cast<LONG>(shown.checks.Send(LB_GETITEMHEIGHT));
      EXPECT_GT(CountPixels(shown.checks.Handle(), {4, 2, rowHeight - 4, rowHeight - 2},
                            ::GetSysColor(COLOR_WINDOWTEXT)),
                5);
      std::wstring path(VRX_PICTURES L"/gallery_");
      path += std::to_wstring(dpi) + (style != 0 ? L"_rtl.bmp" : L".bmp");
      EXPECT_TRUE(gallery::SaveScreenshot(shown.window, path.c_str()));
      ::DestroyWindow(shown.window);
    }
  }
}

}  // namespace
}  // namespace vrx::controls
