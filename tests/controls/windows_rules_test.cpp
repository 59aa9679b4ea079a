// Rules that hold for every class of controls: a row for each.

#include <array>
#include <oleacc.h>
#include <string>

#include "gallery_fixture.h"

namespace vrx::controls {
namespace {

std::wstring ClassOf(HWND window) {
  wchar_t name[32] = L"";
  ::GetClassNameW(window, name, static_cast<int>(std::size(name)));
  return name;
}

// Names, values and parts as a screen reader asks for them.
class Reader {
 public:
  explicit Reader(HWND window) {
    void* object = nullptr;
    ::AccessibleObjectFromWindow(window, static_cast<DWORD>(OBJID_CLIENT), IID_IAccessible, &object);
    object_ = static_cast<IAccessible*>(object);
  }
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;
  ~Reader() {
    if (object_ != nullptr) object_->Release();
  }
  IAccessible* operator->() const { return object_; }

  // `part` 0: the control.
  std::wstring Name(LONG part = 0) const { return Text(&IAccessible::get_accName, part); }
  std::wstring Value(LONG part = 0) const { return Text(&IAccessible::get_accValue, part); }
  LONG Role(LONG part = 0) const { return Number(&IAccessible::get_accRole, part); }
  LONG State(LONG part = 0) const { return Number(&IAccessible::get_accState, part); }
  LONG Count() const {
    LONG count = -1;
    return SUCCEEDED(object_->get_accChildCount(&count)) ? count : -1;
  }
  static VARIANT Child(LONG part) {
    VARIANT child{};
    child.vt = VT_I4;
    child.lVal = part;
    return child;
  }

 private:
  template <class GET>
  std::wstring Text(GET get, LONG part) const {
    BSTR text = nullptr;
    if (FAILED((object_->*get)(Child(part), &text)) || text == nullptr) return {};
    std::wstring copy(text);
    ::SysFreeString(text);
    return copy;
  }
  template <class GET>
  LONG Number(GET get, LONG part) const {
    VARIANT number{};
    return SUCCEEDED((object_->*get)(Child(part), &number)) && number.vt == VT_I4 ? number.lVal : -1;
  }
  IAccessible* object_;
};

TEST_F(Controls, AreReadAloud) {
  g.checks.Select(3);
  g.from.Select(1);
  g.colors.Select(2);
  g.editor.Select(1);
  for (const HWND picture : {g.plot.Handle(), g.plane.Handle(), g.lightness.Handle(), g.curves.Handle(),
                             g.angles.Handle(), g.trend.Handle()})
    ::SendMessageW(picture, VRXDM_SETCURRENT, 0, 0);
  const struct {
    const Control& control;
    LONG role;
    const wchar_t* value;  // how it begins
    LONG count;            // of parts; -1: windows
    const wchar_t* part;   // how the name of the second one begins
  } rows[] = {
      {g.checks, ROLE_SYSTEM_LIST, L"foliage", 24, L"light skin"},
      {g.from, ROLE_SYSTEM_LIST, L"light skin", 24, L"light skin"},
      {g.colors, ROLE_SYSTEM_LIST, L"blue sky", 24, L"light skin"},
      {g.exchange, ROLE_SYSTEM_GROUPING, L"white 9.5 (.05 D); neutral 8 (.23 D); black 2", -1, L""},
      {g.editor, ROLE_SYSTEM_GROUPING, L"light skin", -1, L""},
      {g.tree, ROLE_SYSTEM_OUTLINE, L"", 8, L"greys"},
      {g.combo, ROLE_SYSTEM_GROUPING, L"red\t40.", -1, L""},
      {g.number, ROLE_SYSTEM_TEXT, L"1.50 \u0394E", 0, L""},
      {g.scroll, ROLE_SYSTEM_SPINBUTTON, L"12.5 %", 0, L""},
      {g.tabs, ROLE_SYSTEM_PAGETABLIST, L"Colour", 3, L"Gloss"},
      {g.picture, ROLE_SYSTEM_GRAPHIC, L"", 0, L""},
      {g.progress, ROLE_SYSTEM_PROGRESSBAR, L"62 %  0:09 left", 0, L""},
      {g.split, ROLE_SYSTEM_GRAPHIC, L"standard; trial", 0, L""},
      {g.framed, ROLE_SYSTEM_GRAPHIC, L"; , not shown truly", 0, L""},
      {g.plot, ROLE_SYSTEM_CHART, L"greys: ", 6, L"greys: "},
      {g.plane, ROLE_SYSTEM_CHART, L"dark skin: ", 24, L"light skin: "},
      {g.lightness, ROLE_SYSTEM_CHART, L"dark skin: ", 24, L"light skin: "},
      {g.curves, ROLE_SYSTEM_CHART, L"Standard: 360.00; ", 120, L"Standard: 370.00; "},
      {g.angles, ROLE_SYSTEM_CHART, L"\u0394E CMC(2:1): 15.00; ", 15, L"\u0394E CMC(2:1): 20.00; "},
      {g.trend, ROLE_SYSTEM_CHART, L"\u0394E CMC(2:1): 1.00; ", 24, L"\u0394E CMC(2:1): 2.00; "},
  };
  for (const auto& row : rows) {
    const HWND window = row.control.Handle();
    SCOPED_TRACE(testing::Message() << ClassOf(window).c_str());
    const bool isField = row.role == ROLE_SYSTEM_TEXT || row.role == ROLE_SYSTEM_SPINBUTTON;
    if (!isField) ::SetWindowTextW(window, L"the name");
    const Reader reader(window);
    if (!isField) {
      EXPECT_EQ(reader.Name(), L"the name");
    }
    EXPECT_EQ(reader.Role(), row.role);
    EXPECT_EQ(reader.Value().substr(0, std::wcslen(row.value)), row.value);
    if (row.count >= 0) {
      EXPECT_EQ(reader.Count(), row.count);
    }
    EXPECT_EQ(reader.Name(2).substr(0, std::wcslen(row.part)), row.part);
    EXPECT_EQ(reader.Name(row.count + 1), row.count < 0 ? L"the name" : L"");
  }
  // A field is named after the text before it, the lists of an exchange list by what they hold, others after their control.
  ::CreateWindowExW(0, L"STATIC", L"Limit", WS_CHILD | WS_VISIBLE, 0, 0, 9, 9, g.window, nullptr, nullptr,
                    nullptr);
  const NumericEdit labelled = NumericEdit::Create(g.window, 300, {0, 0, 50, 20});
  EXPECT_EQ(Reader(labelled.Handle()).Name(), L"Limit");
  EXPECT_EQ(Reader(::GetDlgItem(g.exchange.Handle(), 1)).Name(), L"Available");
  EXPECT_EQ(Reader(::GetDlgItem(g.exchange.Handle(), 2)).Name(), L"Chosen");
  EXPECT_EQ(Reader(::GetDlgItem(g.editor.Handle(), 1)).Name(), L"the name");
  const HWND label = ::GetWindow(::GetDlgItem(g.combo.Handle(), 1), GW_HWNDPREV);
  EXPECT_EQ(ClassOf(label), L"Static");
  EXPECT_EQ(Reader(label).Name(), L"the name");
}

TEST_F(Controls, TellTheStatesAndPlacesOfTheirParts) {
  const Reader checks(g.checks.Handle()), tree(g.tree.Handle()), tabs(g.tabs.Handle()), plot(g.plot.Handle());
  const struct {
    const Reader& reader;
    LONG part, set, clear;  // states
  } rows[] = {
      {checks, 1, STATE_SYSTEM_CHECKED, STATE_SYSTEM_SELECTED | STATE_SYSTEM_OFFSCREEN},
      {checks, 5, STATE_SYSTEM_MIXED, STATE_SYSTEM_CHECKED},
      {checks, 6, STATE_SYSTEM_UNAVAILABLE, STATE_SYSTEM_CHECKED},
      {checks, 24, STATE_SYSTEM_OFFSCREEN, STATE_SYSTEM_UNAVAILABLE},
      {tree, 1, STATE_SYSTEM_COLLAPSED, STATE_SYSTEM_EXPANDED},
      {tree, 2, STATE_SYSTEM_EXPANDED, STATE_SYSTEM_SELECTED},
      {tree, 3, STATE_SYSTEM_SELECTED, STATE_SYSTEM_EXPANDED | STATE_SYSTEM_COLLAPSED},
      {tabs, 1, STATE_SYSTEM_SELECTED, STATE_SYSTEM_UNAVAILABLE},
      {tabs, 2, STATE_SYSTEM_UNAVAILABLE, STATE_SYSTEM_SELECTABLE},
  };
  for (const auto& row : rows)
    EXPECT_EQ(row.reader.State(row.part) & (row.set | row.clear), row.set) << row.part;
  // A hit at the place of a part is the part; selecting one goes to it, but not to a disabled tab.
  for (const Reader* reader : {&checks, &tree, &tabs, &plot}) {
    long left = 0, top = 0, width = 0, height = 0;
    (*reader)->accLocation(&left, &top, &width, &height, Reader::Child(3));
    VARIANT hit{};
    (*reader)->accHitTest(left + width / 2, top + height / 2, &hit);
    EXPECT_EQ(hit.lVal, 3);
    (*reader)->accSelect(SELFLAG_TAKESELECTION, Reader::Child(3));
    VARIANT focus{};
    (*reader)->get_accFocus(&focus);
    EXPECT_EQ(focus.lVal, 3);
    VARIANT end{};
    EXPECT_EQ((*reader)->accNavigate(NAVDIR_NEXT, Reader::Child(reader->Count()), &end), S_FALSE);
    EXPECT_EQ((*reader)->accNavigate(NAVDIR_PREVIOUS, Reader::Child(3), &end), S_OK);
    EXPECT_EQ(end.lVal, 2);
  }
  // Selecting is the default action, which a control as a whole has not.
  BSTR action = nullptr;
  EXPECT_EQ(plot->get_accDefaultAction(Reader::Child(2), &action), S_OK);
  EXPECT_STREQ(action, L"Select");
  ::SysFreeString(action);
  EXPECT_EQ(plot->accDoDefaultAction(Reader::Child(2)), S_OK);
  VARIANT now{};
  plot->get_accFocus(&now);
  EXPECT_EQ(now.lVal, 2);
  EXPECT_EQ(plot->accDoDefaultAction(Reader::Child(0)), DISP_E_MEMBERNOTFOUND);
  EXPECT_EQ(plot->accDoDefaultAction(Reader::Child(99)), E_INVALIDARG);
  tabs->accSelect(SELFLAG_TAKESELECTION, Reader::Child(2));
  EXPECT_EQ(g.tabs.Current(), 2);
  // The object outlives its window.
  ::DestroyWindow(g.plot.Handle());
  EXPECT_EQ(plot.Count(), -1);
}

// Nothing is erased before it is painted, which would be seen as a flicker; controls that are made of others erase what is
// between these.
TEST_F(Controls, AreNotErased) {
  for (const HWND window : Windows()) {
    SCOPED_TRACE(testing::Message() << ClassOf(window).c_str());
    if (::GetWindow(window, GW_CHILD) != nullptr) {
      EXPECT_NE(::GetWindowLongPtrW(window, GWL_STYLE) & WS_CLIPCHILDREN, 0);
      continue;
    }
    const HDC device = ::CreateCompatibleDC(nullptr);
    const HBITMAP bitmap = ::CreateBitmap(8, 8, 1, 32, nullptr);
    const HGDIOBJ old = ::SelectObject(device, bitmap);
    ::SetPixel(device, 4, 4, RGB(1, 2, 3));
    EXPECT_NE(::SendMessageW(window, WM_ERASEBKGND, reinterpret_cast<WPARAM>(device), 0), 0);
    EXPECT_EQ(::GetPixel(device, 4, 4), RGB(1, 2, 3));
    ::SelectObject(device, old);
    ::DeleteObject(bitmap);
    ::DeleteDC(device);
  }
}

// Nothing is painted between WM_SETREDRAW off and on, whatever the host does meanwhile.
TEST_F(Controls, WaitForRedraw) {
  g.to.AddString(u"one");
  for (const HWND window : Windows()) {
    SCOPED_TRACE(testing::Message() << ClassOf(window).c_str());
    const std::map<COLORREF, int> before = ColorsOf(window);
    ::SendMessageW(window, WM_SETREDRAW, FALSE, 0);
    ::SendMessageW(window, VRXM_SETDPI, 192, 0);
    ::InvalidateRect(window, nullptr, TRUE);
    gallery::HandleMessages();
    EXPECT_TRUE(ColorsOf(window) == before);
    ::SendMessageW(window, WM_SETREDRAW, TRUE, 0);
    ::RedrawWindow(window, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN | RDW_UPDATENOW);
    const bool isPicture = window == g.picture.Handle();  // the one that has no text
    EXPECT_EQ(ColorsOf(window) == before, isPicture);
  }
}

// A dark theme in which each of the system's colours is one that nothing else has.
TEST_F(Controls, FollowThemes) {
  std::array<INT, 31> elements{};
  std::array<COLORREF, 31> old{}, fresh{};
  for (std::size_t i = 0; i < elements.size(); ++i) {
    elements[i] = static_cast<INT>(i);
    old[i] = ::GetSysColor(elements[i]);
    fresh[i] = RGB(10 + i, 0, 90 + i);
  }
  for (const INT bright : {COLOR_WINDOWTEXT, COLOR_BTNTEXT, COLOR_HIGHLIGHTTEXT, COLOR_GRAYTEXT})
    fresh[static_cast<std::size_t>(bright)] = RGB(255, 255, 200 + bright);
  ::SetSysColors(static_cast<int>(elements.size()), elements.data(), fresh.data());
  for (const HWND window : Windows()) {
    SCOPED_TRACE(testing::Message() << ClassOf(window).c_str());
    for (const int message : {WM_SYSCOLORCHANGE, WM_THEMECHANGED, WM_SETTINGCHANGE})
      ::SendMessageW(window, static_cast<UINT>(message), 0, 0);
    gallery::HandleMessages();
    // Buttons and tabs are the system's, which may draw them from a theme's pictures.
    const HWND list = ::GetDlgItem(window, 1);
    const std::map<COLORREF, int> colors = ColorsOf(list != nullptr ? list : window);
    int ofTheTheme = 0, ofTheOld = 0, all = 0;
    for (const auto& [color, count] : colors) {
      all += count;
      if (std::ranges::find(fresh, color) != fresh.end()) ofTheTheme += count;
      if (std::ranges::find(old, color) != old.end()) ofTheOld += count;
    }
    // Samples and pictures keep their colours; the tabs are a system's. What else is of no theme are the edges of letters.
    const std::wstring name = ClassOf(window);
    const bool isSample = name == VRX_SWATCH || name == VRX_PICTURE, isTab = name == VRX_TAB;
    EXPECT_GE(ofTheTheme, isSample ? 0 : isTab ? all / 10 : all / 2);
    EXPECT_LE(ofTheOld, isSample || isTab ? all : 0);
  }
  ::SetSysColors(static_cast<int>(elements.size()), elements.data(), old.data());
}

TEST_F(Controls, HaveTheSizeOfTheirResolution) {
  const auto heightOf = [](HWND window) {
    LOGFONTW font{};
    ::GetObjectW(reinterpret_cast<HFONT>(::SendMessageW(window, WM_GETFONT, 0, 0)), sizeof font, &font);
    return font.lfHeight;
  };
  const auto sizes = [this] {
    RECT tab{}, line{}, row{};
    g.tabs.Send(TCM_GETITEMRECT, 0, &tab);
    g.scroll.Send(EM_GETRECT, 0, &line);
    g.tree.Send(VRXTM_GETROWRECT, 1, &row);
    return std::array<LONG, 6>{
        tab.bottom - tab.top,
        line.bottom - line.top,
        row.bottom - row.top,
        static_cast<LONG>(g.checks.Send(LB_GETITEMHEIGHT)),
        static_cast<LONG>(::SendDlgItemMessageW(g.exchange.Handle(), 2, LB_GETITEMHEIGHT, 0, 0)),
        static_cast<LONG>(g.combo.Send(CB_GETITEMHEIGHT, 0))};
  };
  // Two of the system's own classes keep within their windows.
  for (const Control* control :
       {static_cast<const Control*>(&g.tabs), static_cast<const Control*>(&g.scroll)})
    ::SetWindowPos(control->Handle(), nullptr, 0, 0, 600, 400, SWP_NOMOVE | SWP_NOZORDER);
  const std::vector<HWND> windows = Windows();
  const LONG height = heightOf(windows.front());
  const std::array<LONG, 6> base = sizes();
  for (const int dpi : {96, 120, 144, 192}) {
    for (const HWND window : windows) {
      EXPECT_EQ(::SendMessageW(window, VRXM_SETDPI, static_cast<WPARAM>(dpi), 0), 1);
      EXPECT_EQ(heightOf(window), ::MulDiv(height, dpi, 96)) << ClassOf(window).c_str() << dpi;
      EXPECT_EQ(::SendMessageW(window, VRXM_SETDPI, 95, 0), 0);
      EXPECT_EQ(::SendMessageW(window, VRXM_SETDPI, VRX_MOST_DPI + 1, 0), 0);
    }
    const std::array<LONG, 6> scaled = sizes();
    for (std::size_t i = 0; i < base.size(); ++i)
      EXPECT_NEAR(static_cast<double>(scaled[i]), base[i] * dpi / 96.0, dpi / 24.0) << dpi << " dpi, " << i;
  }
  // The user's own size of text, once the resolution is the screen's again. What the host sets comes before it.
  NONCLIENTMETRICSW metrics{};
  metrics.cbSize = sizeof metrics;
  ::SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0);
  NONCLIENTMETRICSW larger = metrics;
  larger.lfMessageFont.lfHeight = 2 * metrics.lfMessageFont.lfHeight;
  ::SystemParametersInfoW(SPI_SETNONCLIENTMETRICS, sizeof larger, &larger, 0);
  const HFONT own = ::CreateFontIndirectW(&metrics.lfCaptionFont);
  for (const HWND window : windows) {
    ::SendMessageW(window, VRXM_SETDPI, 0, 0);
    ::SendMessageW(window, WM_SETTINGCHANGE, SPI_SETNONCLIENTMETRICS, 0);
    EXPECT_EQ(heightOf(window), 2 * height) << ClassOf(window).c_str();
    ::SendMessageW(window, WM_SETFONT, reinterpret_cast<WPARAM>(own), TRUE);
    EXPECT_EQ(reinterpret_cast<HFONT>(::SendMessageW(window, WM_GETFONT, 0, 0)), own);
  }
  ::SystemParametersInfoW(SPI_SETNONCLIENTMETRICS, sizeof metrics, &metrics, 0);
}

TEST_F(Controls, HoldAHundredThousandEntries) {
  constexpr int kMany = 100'000;
  const ListControl* lists[] = {&g.checks, &g.to, &g.colors};
  for (const ListControl* list : lists) {
    asked = 0;
    list->SetVirtualCount(kMany);
    PixelAt(list->Handle(), {1, 1});
    ::SetFocus(list->Handle());
    Press(VK_END);
    Press(VK_PRIOR);
    PixelAt(list->Handle(), {1, 1});
    EXPECT_EQ(list->Text(kMany - 1), L"row 99999");
    EXPECT_GT(list->Send(LB_GETTOPINDEX), kMany - 100);
    EXPECT_EQ(Reader(list->Handle()).Name(kMany), L"row 99999");
    EXPECT_GT(asked, 10);
    EXPECT_LT(asked, 200);
    EXPECT_EQ(list->Send(LB_ADDSTRING, 0, L"more"), LB_ERR);
  }
  EXPECT_EQ(g.editor.Send(LB_SETCOUNT, kMany), LB_ERR);  // it edits texts that it holds
  const int32_t paints = g.tree.Add(-1, u"many");
  for (int i = 0; i < kMany; ++i) (void)g.tree.Add(paints, u"node");
  g.tree.Expand(paints);
  ::SetFocus(g.tree.Handle());
  Press(VK_END);
  EXPECT_EQ(g.tree.Send(VRXTM_GETCURRENT), paints + kMany);
}

TEST_F(Controls, KeepNoHandles) {
  // Objects are counted: one more is one more.
  const int before = CountGdiObjects();
  const HBRUSH brush = ::CreateSolidBrush(RGB(1, 2, 3));
  EXPECT_EQ(CountGdiObjects(), before + 1);
  ::DeleteObject(brush);
  const auto paint = [](HWND window, int times) {
    for (int i = 0; i < times; ++i)
      ::RedrawWindow(window, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_UPDATENOW | RDW_ALLCHILDREN);
    return CountGdiObjects();
  };
  ASSERT_EQ(Windows().size(), 21U);
  for (const HWND window : Windows()) {
    // More than 10,000 in all; of those that are made of others fewer, since buttons are slow.
    const int times = ::GetWindow(window, GW_CHILD) != nullptr ? 100 : 550;
    const int few = paint(window, 3);
    EXPECT_EQ(paint(window, times), few) << ClassOf(window).c_str();
  }
  // Nor do they leave any when they go, with their fonts of another resolution.
  for (int i = 0; i < 2; ++i) {
    const int open = CountGdiObjects();
    const Gallery other = OpenGallery(144);
    ::DestroyWindow(other.window);
    if (i > 0) {  // the bitmap of the gallery's own picture
      EXPECT_LE(CountGdiObjects(), open + 1);
    }
  }
}

}  // namespace
}  // namespace vrx::controls
