#include "controls_gallery.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>

#include <vrxmath/colorimetry/color_differences.h>
#include <vrxmath/colorimetry/color_spaces.h>
#include <vrxmath/foundation/list_data.h>

namespace gallery {
namespace {

using namespace vrx;

// The charts ------------------------------------------------------------------------------------------------------

struct Sample {
  std::string name;
  CReflData curve;
  CColorValues color;
};

// The samples of a chart on the library's grid: `step` columns for 10 nm from 380 nm on; beyond the ends the last value.
std::vector<Sample> ReadChart(const std::wstring& path, std::size_t step) {
  std::vector<Sample> samples;
  std::ifstream file(path.c_str());
  std::string line;
  std::getline(file, line);
  while (std::getline(file, line)) {
    std::istringstream fields(line);
    std::string id, field;
    Sample sample;
    std::getline(fields, id, ',');
    std::getline(fields, sample.name, ',');
    std::vector<double> values;
    while (std::getline(fields, field, ',')) values.push_back(std::strtod(field.c_str(), nullptr));
    if (values.empty()) break;
    for (int32_t i = 0; i < kWavelengths; ++i) {
      const auto column = static_cast<std::size_t>(std::max(i - 2, 0)) * step;
      sample.curve[i] = values[std::min(column, values.size() - 1)];
    }
    sample.curve.Tristimulus(vrxIllumD65, kObserver10, sample.color.tristimulus);
    FillCoordinates(vrxSystemCmc, vrxIllumD65, kObserver10, sample.color);
    samples.push_back(sample);
  }
  return samples;
}

constexpr double kWarningFactor = 0.75;
constexpr std::size_t kShown = 14;  // red

// Two charts, one as standards and one as trials, judged by CMC(2:1).
struct Charts {
  std::vector<Sample> standards, trials;
  std::vector<CDeltaValues> differences;
  std::vector<double> totals;
  std::vector<std::wstring> names;
  CEllipseData ellipse;  // of the sample that is shown, by which all are judged
  std::vector<VRX_TRIAL> points;

  explicit Charts(const std::wstring& folder)
      : standards(ReadChart(folder + L"/chart_ohta.csv", 2)),
        trials(ReadChart(folder + L"/chart_average.csv", 1)) {
    CDifferenceSettings settings = DefaultSettings(vrxSystemCmc);
    const std::size_t count = std::min(standards.size(), trials.size());
    for (std::size_t i = 0; i < count; ++i) {
      CDeltaValues delta;
      ComputeDifference(settings, vrxIllumD65, kObserver10, standards[i].color, trials[i].color, 45.0, delta);
      differences.push_back(delta);
      totals.push_back(delta[CDeltaValues::kTotal]);
      names.emplace_back(standards[i].name.begin(), standards[i].name.end());
    }
    if (count <= kShown) return;
    ellipse = EllipseForStandard(standards[kShown].color.lab, settings);
    for (std::size_t i = 0; i < count; ++i) {
      const Verdict verdict = ellipse.Judge(differences[i], kWarningFactor);
      points.push_back(controls::TrialOf(differences[i], verdict, names[i].c_str()));
    }
  }
};

CString Name(const Sample& sample) {
  return CString::FromUtf8(sample.name);
}

// The window ------------------------------------------------------------------------------------------------------

// Rows of the layout at 96 dots per inch.
class Places {
 public:
  explicit Places(int dpi) : dpi_(dpi) {}
  RECT At(int left, int top, int width, int height) const {
    const auto scaled = [this](int value) { return ::MulDiv(value, dpi_, 96); };
    return {scaled(left), scaled(top), scaled(left + width), scaled(top + height)};
  }

 private:
  int dpi_;
};

void MakeLists(Gallery& g, const Places& at) {
  using namespace controls;
  g.checks = CheckList::Create(g.window, 101, at.At(10, 10, 180, 150));
  g.from = DragList::Create(g.window, 102, at.At(200, 10, 130, 150));
  g.to = DragList::Create(g.window, 103, at.At(340, 10, 130, 150));
  g.colors = ColorList::Create(g.window, 104, at.At(480, 10, 220, 150));
  g.tree = Tree::Create(g.window, 105, at.At(710, 10, 220, 150));
  g.exchange = ExchangeList::Create(g.window, 106, at.At(10, 170, 400, 140));
  g.editor = ListEditor::Create(g.window, 107, at.At(420, 170, 280, 140));
  g.combo = Combo::Create(g.window, 108, at.At(710, 170, 220, 24));
  g.number = NumericEdit::Create(g.window, 109, at.At(710, 203, 105, 21));
  g.scroll = ScrollEdit::Create(g.window, 110, at.At(825, 203, 105, 21));
  g.tabs = Tabs::Create(g.window, 111, at.At(710, 236, 220, 40));
  g.progress = ProgressBar::Create(g.window, 112, at.At(710, 286, 220, 24));
}

void MakePictures(Gallery& g, const Places& at) {
  using namespace controls;
  g.plane = Plane::Create(g.window, 113, at.At(10, 320, 260, 280));
  g.lightness = LightnessBarControl::Create(g.window, 114, at.At(276, 320, 74, 280));
  g.curves = Curves::Create(g.window, 115, at.At(356, 320, 320, 280));
  g.split = SwatchPairControl::Create(g.window, 116, at.At(682, 320, 120, 90));
  g.framed = SwatchPairControl::Create(g.window, 117, at.At(810, 320, 120, 90));
  g.picture = PictureFrame::Create(g.window, 118, at.At(682, 420, 120, 180));
  g.plot = Plot::Create(g.window, 119, at.At(810, 420, 120, 180));
  g.angles = AnglePlot::Create(g.window, 120, at.At(10, 610, 340, 160));
  g.trend = Trend::Create(g.window, 121, at.At(356, 610, 574, 160));
}

void FillLists(Gallery& g, const Charts& charts) {
  CListDataArray list;
  for (std::size_t i = 0; i < charts.standards.size(); ++i) {
    list.Add({static_cast<uint32_t>(100 + i), Name(charts.standards[i])});
  }
  for (ListBox* target : {static_cast<ListBox*>(&g.checks), static_cast<ListBox*>(&g.from),
                          static_cast<ListBox*>(&g.exchange), static_cast<ListBox*>(&g.editor)}) {
    list.FillList(*target);
  }
  for (const int32_t row : {0, 2, 3}) g.checks.SetCheck(row, VRX_CHECK_ON);
  g.checks.SetCheck(4, VRX_CHECK_MIXED);
  g.checks.Enable(5, false);
  const std::array chosen = {18, 19, 23};
  g.exchange.SetChosen(chosen);
  for (std::size_t i = 0; i < charts.differences.size(); ++i) {
    const auto row = static_cast<int32_t>(i);
    g.colors.AddString(Name(charts.standards[i]));
    g.colors.SetColors(row, charts.standards[i].color.tristimulus, &charts.trials[i].color.tristimulus,
                       vrxIllumD65, kObserver10);
  }
  const int32_t paints = g.tree.Add(-1, u"chart"), greys = g.tree.Add(-1, u"greys");
  for (int32_t i = 0; i < 24; ++i) {
    const int32_t parent = i < 18 ? paints : greys;
    (void)g.tree.Add(parent, list[i].text, list[i].id);
  }
  g.tree.Expand(greys);
  g.tree.Select(greys + 19, true);
  g.tree.Select(greys + 21, true);
}

void FillFields(Gallery& g, const Charts& charts) {
  const std::array columns = {110};
  g.combo.SetColumns(columns);
  for (const Sample& sample : charts.standards) {
    CString text = Name(sample);
    text += u"\t";
    text += CString::FromUtf8(std::to_string(sample.color.lab[CLabValues::kL]).substr(0, 5));
    g.combo.AddString(text);
  }
  g.combo.Select(14);
  const CDifferenceSettings settings = DefaultSettings(vrxSystemCmc);
  g.number.SetRange(ToleranceRange(settings, 3), u"\u0394E");
  g.number.SetValue(1.5);
  g.scroll.SetRange({0, 100, 0.5, 10, 1}, u"%");
  g.scroll.SetValue(12.5);
  for (const WideChar* text : {u"Colour", u"Gloss", u"Texture"}) g.tabs.Add(text);
  g.tabs.Enable(1, false);
  g.progress.Set({sizeof(VRX_PROGRESS_DATA), kWarning, 0, 24, 15, 9, nullptr});
}

// A gradient as a host's own picture.
HBITMAP MakeBitmap() {
  constexpr int kSide = 64;
  static std::array<uint32_t, kSide * kSide> bits;
  for (std::size_t i = 0; i < bits.size(); ++i) {
    const auto x = static_cast<uint32_t>(i % kSide), y = static_cast<uint32_t>(i / kSide);
    bits[i] = x * 4 << 16 | y * 4 << 8 | 128;
  }
  return ::CreateBitmap(kSide, kSide, 1, 32, bits.data());
}

void FillPictures(Gallery& g, const Charts& charts) {
  const Sample &standard = charts.standards[kShown], &trial = charts.trials[kShown];
  g.plane.Set(charts.points, charts.ellipse, kWarningFactor);
  const double lightness = charts.ellipse[CEllipseData::kLightnessAxis];
  g.lightness.Set(charts.points, {-lightness, lightness}, kWarningFactor);
  g.curves.Set(std::array{standard.curve, trial.curve});
  g.split.Set(standard.color.tristimulus, &trial.color.tristimulus, vrxIllumD65, kObserver10, false,
              u"standard", u"trial");
  const CTrisValues beyond(20, 40, 3);  // a green that no display shows
  g.framed.Set(standard.color.tristimulus, &beyond, vrxIllumD65, kObserver10, true);
  g.picture.SetBitmap(MakeBitmap(), VRX_PICTURE_FIT);
  CDblPolyline greys;
  greys.name = u"greys";
  greys.marked = true;
  greys.xRange = greys.yRange = {0, 100};
  greys.xHeading = u"L*";
  greys.yHeading = u"L* of the trial";
  for (std::size_t i = 18; i < 24; ++i) {
    greys.Add({charts.standards[i].color.lab[CLabValues::kL], charts.trials[i].color.lab[CLabValues::kL]});
  }
  g.plot.Set({&greys, 1});
  CAngles angles;
  angles.SetCodes(5);
  const std::array<double, 5> values = {charts.totals[0], charts.totals[1], charts.totals[2],
                                        charts.totals[3], charts.totals[4]};
  const std::array<double, 5> limits = {2, 2, 1.8, 1.6, 1.5};
  g.angles.Set(angles, values, limits, kWarningFactor, u"\u0394E CMC(2:1)");
  g.trend.Set(charts.totals, 2.5, kWarningFactor, u"\u0394E CMC(2:1)");
}

LRESULT CALLBACK GalleryProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == WM_DESTROY) ::PostQuitMessage(0);
  return ::DefWindowProcW(window, message, wParam, lParam);
}

BOOL CALLBACK SetDpi(HWND child, LPARAM dpi) {
  wchar_t name[8] = L"";
  ::GetClassNameW(child, name, static_cast<int>(std::size(name)));
  if (std::wcsncmp(name, L"Vrx", 3) == 0) ::SendMessageW(child, VRXM_SETDPI, static_cast<WPARAM>(dpi), 0);
  return TRUE;
}

}  // namespace

Gallery Open(const wchar_t* folder, int dpi, DWORD exStyle) {
  Gallery g;
  const Charts charts(folder);
  if (charts.totals.size() < 24 || !VrxRegisterControls(nullptr)) return g;
  WNDCLASSW description{};
  description.lpfnWndProc = GalleryProc;
  description.hInstance = ::GetModuleHandleW(nullptr);
  description.hCursor = ::LoadCursorW(nullptr, reinterpret_cast<LPCWSTR>(IDC_ARROW));
  description.hbrBackground = reinterpret_cast<HBRUSH>(static_cast<INT_PTR>(COLOR_BTNFACE + 1));
  description.lpszClassName = L"VrxGallery";
  ::RegisterClassW(&description);
  const Places at(dpi);
  RECT size = at.At(0, 0, 940, 780);
  ::AdjustWindowRectEx(&size, WS_OVERLAPPEDWINDOW, FALSE, exStyle);
  g.window = ::CreateWindowExW(exStyle | WS_EX_CONTROLPARENT, L"VrxGallery", L"Controls",
                               WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN, 0, 0, size.right - size.left,
                               size.bottom - size.top, nullptr, nullptr, description.hInstance, nullptr);
  MakeLists(g, at);
  MakePictures(g, at);
  ::EnumChildWindows(g.window, SetDpi, dpi);
  FillLists(g, charts);
  FillFields(g, charts);
  FillPictures(g, charts);
  ::ShowWindow(g.window, SW_SHOW);
  ::UpdateWindow(g.window);
  return g;
}

void Dispatch(MSG& message) {
  if (::IsDialogMessageW(::GetAncestor(message.hwnd, GA_ROOT), &message)) return;
  ::TranslateMessage(&message);
  ::DispatchMessageW(&message);
}

void HandleMessages() {
  MSG message{};
  while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
    if (message.message == WM_QUIT) continue;
    Dispatch(message);
  }
}

bool SaveScreenshot(HWND window, const wchar_t* path) {
  RECT client{};
  ::GetClientRect(window, &client);
  const HDC source = ::GetDC(window), memory = ::CreateCompatibleDC(source);
  ::SetLayout(source, 0);  // a window from right to left would be turned around again
  BITMAPINFO info{};
  info.bmiHeader = {sizeof info.bmiHeader, client.right, client.bottom, 1, 24, BI_RGB, 0, 0, 0, 0, 0};
  void* bits = nullptr;
  const HBITMAP bitmap = ::CreateDIBSection(source, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
  const HGDIOBJ old = ::SelectObject(memory, bitmap);
  ::BitBlt(memory, 0, 0, client.right, client.bottom, source, 0, 0, SRCCOPY);
  ::GdiFlush();
  const DWORD bytes = static_cast<DWORD>((client.right * 3 + 3) / 4 * 4 * client.bottom);
  BITMAPFILEHEADER header{};
  header.bfType = 0x4D42;
  header.bfOffBits = sizeof header + sizeof info.bmiHeader;
  header.bfSize = header.bfOffBits + bytes;
  std::ofstream file(path, std::ios::binary);
  file.write(reinterpret_cast<const char*>(&header), sizeof header);
  file.write(reinterpret_cast<const char*>(&info.bmiHeader), sizeof info.bmiHeader);
  if (bits != nullptr) file.write(static_cast<const char*>(bits), bytes);
  ::SelectObject(memory, old);
  ::DeleteObject(bitmap);
  ::DeleteDC(memory);
  ::ReleaseDC(window, source);
  return bits != nullptr && file.good();
}

}  // namespace gallery
