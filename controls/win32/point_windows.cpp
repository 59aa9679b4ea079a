#include "controls/win32/point_windows.h"

#include <array>
#include <oleacc.h>
#include <string>
#include <utility>

#include "pictures/texts.h"

namespace vrx::controls {
namespace {

constexpr int kMostPoints = 1'000'000;  // of one message; more is taken for a mistake

bool IsCount(int count, const void* elements) {
  return count >= 0 && count <= kMostPoints && (count == 0 || elements != nullptr);
}

template <class T>
std::vector<T> Copied(const T* elements, int count) {
  return count > 0 ? std::vector<T>(elements, elements + count) : std::vector<T>();
}

// Rows of one length that stand one behind the other. False for counts that cannot be.
bool CopyRows(const double* values, int rows, int columns, std::vector<std::vector<double>>& copies) {
  if (rows < 0 || columns < 0 || int64_t{rows} * columns > kMostPoints) return false;
  if (!IsCount(rows * columns, values)) return false;
  for (int row = 0; row < rows; ++row)
    copies.push_back(Copied(values + static_cast<std::ptrdiff_t>(row) * columns, columns));
  return true;
}

std::vector<CDblPoint> Points(const VRX_POINT* points, int count) {
  std::vector<CDblPoint> copies;
  for (int i = 0; i < count; ++i) copies.push_back({points[i].x, points[i].y});
  return copies;
}

std::vector<TrialPoint> Trials(const VRX_TRIAL* trials, int count) {
  std::vector<TrialPoint> copies;
  for (int i = 0; i < count; ++i) {
    const int verdict = std::clamp<int>(trials[i].verdict, kFail, kPass);
    copies.push_back({trials[i].x, trials[i].y, trials[i].lightness, static_cast<Verdict>(verdict),
                      ViewOf(trials[i].name)});
  }
  return copies;
}

// Data that were taken whole; what is refused leaves the picture as it was.
template <class DATA>
bool Become(DATA& own, DATA taken) {
  own = std::move(taken);
  return true;
}

CString NameOfTrial(const std::vector<TrialPoint>& trials, const Target& target) {
  if (static_cast<std::size_t>(target.index) >= trials.size()) return {};
  const TrialPoint& trial = trials[static_cast<std::size_t>(target.index)];
  CDblPolyline line;
  line.name = trial.name;
  line.Add({trial.x, trial.y});
  return PointName({&line, 1}, {});
}

bool CopyPolyline(const VRX_PLOT_DATA& data, const VRX_LINE& line, CDblPolyline& copy) {
  if (!IsCount(line.count, line.points)) return false;
  for (const CDblPoint& point : Points(line.points, line.count)) copy.Add(point);
  for (int i = 0; line.verdicts != nullptr && i < line.count; ++i) {
    copy.verdicts.Add(std::clamp<int>(line.verdicts[i], kFail, kPass));
  }
  copy.name = ViewOf(line.name);
  copy.paint = line.color == CLR_DEFAULT ? Paint(Role::kText) : Paint::Fixed(line.color);
  copy.dashed = (line.flags & VRX_LINE_DASHED) != 0;
  copy.marked = (line.flags & VRX_LINE_MARKED) != 0;
  if ((line.flags & VRX_LINE_NO_LINE) != 0) copy.width = 0;
  copy.xRange = {data.xLower, data.xUpper};
  copy.yRange = {data.yLower, data.yUpper};
  copy.xHeading = ViewOf(data.xHeading);
  copy.yHeading = ViewOf(data.yHeading);
  return true;
}

}  // namespace

// Points ------------------------------------------------------------------------------------------------------

void PointWindow::Draw(Picture& picture, Rect box, const Look& look) {
  picture.Rectangle(box, Role::kPaper);
  DrawData(picture, box.Inset(4 * look.scale), look);
  if (!HasFocus()) return;
  MarkCurrent(picture, current_, look);
  picture.Frame(box, Role::kText);
}

const std::vector<Target>& PointWindow::Targets() {
  if (!areTargetsCurrent_) {
    Picture picture;
    const RECT client = ClientRect();
    const Look look = ScreenLook();
    const Rect box{0, 0, static_cast<double>(client.right), static_cast<double>(client.bottom)};
    DrawData(picture, box.Inset(4 * look.scale), look);
    targets_ = picture.Targets();
    areTargetsCurrent_ = true;
  }
  return targets_;
}

void PointWindow::Renew() {
  areTargetsCurrent_ = false;
  current_ = -1;
  ShowTip(-1);
  Invalidate();
}

bool PointWindow::Go(int32_t point, bool isByUser) {
  if (point < -1 || point >= PartCount()) return false;
  if (point == current_) return true;
  current_ = point;
  Invalidate();
  if (point >= 0) Tell(EVENT_OBJECT_FOCUS, point);
  Tell(EVENT_OBJECT_VALUECHANGE, -1);
  if (!isByUser) return true;
  VRX_POINT_NOTIFY notify{};
  notify.point = point;
  notify.line = point < 0 ? -1 : Targets()[static_cast<std::size_t>(point)].line;
  notify.index = point < 0 ? -1 : Targets()[static_cast<std::size_t>(point)].index;
  SendNotify(notify.header, VRXN_POINT);
  return true;
}

bool PointWindow::Press(WPARAM key) {
  const int32_t count = PartCount();
  if (count == 0) return false;
  switch (key) {
    case VK_LEFT:
    case VK_UP:
      Go(current_ < 0 ? count - 1 : std::max(current_ - 1, 0), true);
      return true;
    case VK_RIGHT:
    case VK_DOWN:
      Go(std::min(current_ + 1, count - 1), true);
      return true;
    case VK_HOME:
      Go(0, true);
      return true;
    case VK_END:
      Go(count - 1, true);
      return true;
    case VK_ESCAPE:
      Go(-1, true);
      return true;
    default:
      return false;
  }
}

// Where a point is drawn in the coordinates of the window, in which x counts from the right where it is turned around.
POINT PointWindow::PlaceOf(int32_t point) {
  const CDblPoint at = Targets()[static_cast<std::size_t>(point)].at;
  const auto x = static_cast<LONG>(at.x + 0.5), y = static_cast<LONG>(at.y + 0.5);
  return {IsRightToLeft() ? ClientRect().right - x : x, y};
}

int32_t PointWindow::PartAt(POINT point) {
  const Look look = ScreenLook();
  const LONG x = IsRightToLeft() ? ClientRect().right - point.x : point.x;
  Picture picture;
  for (const Target& target : Targets()) picture.AddTarget(target);
  return picture.TargetAt({static_cast<double>(x), static_cast<double>(point.y)}, 8 * look.scale);
}

RECT PointWindow::PartRect(int32_t part) {
  const POINT at = PlaceOf(part);
  return {at.x - 4, at.y - 4, at.x + 5, at.y + 5};
}

// The value of a point beside the mouse; -1: none. The system shows the tip after its usual time.
void PointWindow::ShowTip(int32_t point) {
  if (point == pointed_) return;
  pointed_ = point;
  TTTOOLINFOW tool{};
  tool.cbSize = TTTOOLINFOW_V1_SIZE;
  tool.uFlags = TTF_IDISHWND | TTF_SUBCLASS;
  tool.hwnd = window_;
  tool.uId = reinterpret_cast<UINT_PTR>(window_);
  std::wstring text = point < 0 ? std::wstring() : SystemText(PartName(point));
  tool.lpszText = text.data();
  if (tip_ == nullptr) {
    if (point < 0) return;
    tip_ = ::CreateWindowExW(WS_EX_TOPMOST, TOOLTIPS_CLASSW, nullptr, WS_POPUP | TTS_NOPREFIX | TTS_ALWAYSTIP,
                             CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, window_, nullptr,
                             nullptr, nullptr);
    ::SendMessageW(tip_, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
    return;
  }
  ::SendMessageW(tip_, TTM_POP, 0, 0);
  ::SendMessageW(tip_, TTM_UPDATETIPTEXTW, 0, reinterpret_cast<LPARAM>(&tool));
}

LRESULT PointWindow::Handle(UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case VRXDM_SET:
      if (!Take(lParam)) return 0;
      Renew();
      return 1;
    case VRXDM_GETCURRENT:
      return current_;
    case VRXDM_SETCURRENT:
      return Go(static_cast<int32_t>(wParam), false) ? 1 : 0;
    case VRXDM_GETCOUNT:
      return PartCount();
    case VRXDM_GETPOINT: {
      const auto point = static_cast<int32_t>(wParam);
      if (point < 0 || point >= PartCount() || lParam == 0) return 0;
      *reinterpret_cast<POINT*>(lParam) = PlaceOf(point);
      return 1;
    }
    case WM_GETDLGCODE:
      return DLGC_WANTARROWS | (IsEscape(lParam) && current_ >= 0 ? DLGC_WANTMESSAGE : 0);
    case WM_KEYDOWN:
      if (Press(wParam)) return 0;
      break;
    case WM_MOUSEMOVE:
      ShowTip(PartAt({GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)}));
      break;
    case WM_LBUTTONDOWN:
      ::SetFocus(window_);
      Go(PartAt({GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)}), true);
      return 0;
    default:
      break;
  }
  return DrawnWindow::Handle(message, wParam, lParam);
}

long PointWindow::AccessibleRole() const {
  return ROLE_SYSTEM_CHART;
}
long PointWindow::PartRole() const {
  return ROLE_SYSTEM_GRAPHIC;
}
CString PointWindow::PartName(int32_t part) {
  return NameOf(Targets()[static_cast<std::size_t>(part)]);
}
long PointWindow::PartState(int32_t part) {
  return STATE_SYSTEM_FOCUSABLE | (part == current_ && HasFocus() ? STATE_SYSTEM_FOCUSED : 0);
}

// The kinds ---------------------------------------------------------------------------------------------------

std::optional<std::vector<CDblPolyline>> CopyPolylines(const VRX_PLOT_DATA* data) {
  if (data == nullptr || data->size != sizeof *data || !IsCount(data->lineCount, data->lines))
    return std::nullopt;
  std::vector<CDblPolyline> lines(static_cast<std::size_t>(data->lineCount));
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (!CopyPolyline(*data, data->lines[i], lines[i])) return std::nullopt;
  }
  return lines;
}

bool PlotWindow::Take(LPARAM lParam) {
  if (lParam == 0) return Become(lines_, {});
  auto lines = CopyPolylines(reinterpret_cast<const VRX_PLOT_DATA*>(lParam));
  return lines && Become(lines_, std::move(*lines));
}
void PlotWindow::DrawData(Picture& picture, Rect box, const Look& look) {
  DrawPolylines(picture, box, lines_, look);
}
CString PlotWindow::NameOf(const Target& target) {
  return PointName(lines_, target);
}

bool PlaneWindow::Take(LPARAM lParam) {
  if (lParam == 0) return Become(plane_, {});
  const auto* data = DataOf<VRX_PLANE_DATA>(lParam);
  if (data == nullptr || !IsCount(data->limitCount, data->limit) ||
      !IsCount(data->warningCount, data->warning) || !IsCount(data->trialCount, data->trials)) {
    return false;
  }
  DifferencePlane plane;
  plane.xHeading = ViewOf(data->xHeading);
  plane.yHeading = ViewOf(data->yHeading);
  plane.limit = Points(data->limit, data->limitCount);
  plane.warning = Points(data->warning, data->warningCount);
  plane.trials = Trials(data->trials, data->trialCount);
  plane.reach = IsShown(data->reach) ? data->reach : 0;
  return Become(plane_, std::move(plane));
}
void PlaneWindow::DrawData(Picture& picture, Rect box, const Look& look) {
  DrawDifferencePlane(picture, box, plane_, look);
}
CString PlaneWindow::NameOf(const Target& target) {
  return NameOfTrial(plane_.trials, target);
}

bool LightnessWindow::Take(LPARAM lParam) {
  if (lParam == 0) return Become(bar_, {});
  const auto* data = DataOf<VRX_LIGHTNESS_DATA>(lParam);
  if (data == nullptr || !IsCount(data->trialCount, data->trials)) return false;
  LightnessBar bar;
  bar.heading = ViewOf(data->heading);
  bar.limit = {data->lower, data->upper};
  bar.warning = {data->warningLower, data->warningUpper};
  bar.trials = Trials(data->trials, data->trialCount);
  for (TrialPoint& trial : bar.trials) trial.x = 0, trial.y = trial.lightness;
  bar.reach = IsShown(data->reach) ? data->reach : 0;
  return Become(bar_, std::move(bar));
}
void LightnessWindow::DrawData(Picture& picture, Rect box, const Look& look) {
  DrawLightnessBar(picture, box, bar_, look);
}
CString LightnessWindow::NameOf(const Target& target) {
  return NameOfTrial(bar_.trials, target);
}

bool CurvesWindow::Take(LPARAM lParam) {
  if (lParam == 0) return Become(data_, {});
  const auto* data = DataOf<VRX_CURVES_DATA>(lParam);
  if (data == nullptr || !(data->step > 0)) return false;
  CurvesData copy;
  copy.first = data->first;
  copy.step = data->step;
  copy.withDifference = (data->flags & VRX_WITH_DIFFERENCE) != 0;
  return CopyRows(data->values, data->curveCount, data->sampleCount, copy.curves) &&
         Become(data_, std::move(copy));
}
void CurvesWindow::DrawData(Picture& picture, Rect box, const Look& look) {
  DrawCurves(picture, box, data_, look);
}
CString CurvesWindow::NameOf(const Target& target) {
  const std::vector<CDblPolyline> lines = CurveLines(data_);
  const auto count = static_cast<int32_t>(lines.size());
  if (target.line < count) return PointName(lines, target);
  return PointName(CurveDifferences(data_), {target.at, target.line - count, target.index});
}

bool AnglesWindow::Take(LPARAM lParam) {
  if (lParam == 0) return Become(data_, {});
  const auto* data = DataOf<VRX_ANGLES_DATA>(lParam);
  if (data == nullptr || !IsCount(data->angleCount, data->angles)) return false;
  std::vector<std::vector<double>> series;
  if (!CopyRows(data->values, data->seriesCount, data->angleCount, series)) return false;
  ProfileData copy;
  copy.heading = ViewOf(data->heading);
  copy.placeHeading = ChartText(ControlText::kAngle);
  copy.places = Copied(data->angles, data->angleCount);
  std::vector<double> limits;
  if (data->limits != nullptr) limits = Copied(data->limits, data->angleCount);
  for (const std::vector<double>& values : series)
    copy.trials.push_back({{}, Graded(values, limits, data->warningFactor)});
  return Become(data_, std::move(copy));
}
void AnglesWindow::DrawData(Picture& picture, Rect box, const Look& look) {
  DrawProfile(picture, box, data_, look);
}
CString AnglesWindow::NameOf(const Target& target) {
  return PointName(ProfileLines(data_), target);
}

bool TrendWindow::Take(LPARAM lParam) {
  if (lParam == 0) return Become(data_, {});
  const auto* data = DataOf<VRX_TREND_DATA>(lParam);
  if (data == nullptr || !IsCount(data->count, data->totals)) return false;
  TrendData copy;
  copy.heading = ViewOf(data->heading);
  copy.series.push_back(
      {{}, Graded(Copied(data->totals, data->count), std::array{data->limit}, data->warningFactor)});
  return Become(data_, std::move(copy));
}
void TrendWindow::DrawData(Picture& picture, Rect box, const Look& look) {
  DrawTrend(picture, box, data_, look);
}
CString TrendWindow::NameOf(const Target& target) {
  return PointName(TrendLines(data_), target);
}

}  // namespace vrx::controls
