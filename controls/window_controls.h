// Window controls for hosts in C++: a thin class beside each window class, which takes the library's records.
//
// An object holds the handle of a window and nothing else: it may be made for a control of a dialog, copied and forgotten.
// Everything here is inline over messages (vrx_controls.h) and functions of the library.

#ifndef CONTROLS_WINDOW_CONTROLS_H_
#define CONTROLS_WINDOW_CONTROLS_H_

#include <span>
#include <string>
#include <vector>

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <vrxmath/colorimetry/color_records.h>
#include <vrxmath/colorimetry/display_color.h>
#include <vrxmath/foundation/angles.h>
#include <vrxmath/foundation/list_box.h>
#include <vrxmath/foundation/value_range.h>
#include <vrxmath/tolerance/box_tolerance.h>
#include <vrxmath/tolerance/ellipse_tolerance.h>

#include "controls/layout/dbl_polyline.h"
#include "controls/vrx_controls.h"

namespace vrx::controls {

/// A text of the library as one of the system, and a count as structures have it.
inline const wchar_t* Wide(const CString& text) {
  return reinterpret_cast<const wchar_t*>(text.CStr());
}
template <class ELEMENTS>
int CountOf(const ELEMENTS& elements) {
  return static_cast<int>(elements.size());
}

/// A window that is a control.
class Control {
 public:
  Control() = default;
  explicit Control(HWND window) : window_(window) {}
  [[nodiscard]] HWND Handle() const { return window_; }

  /// Sends a message; a pointer goes as lParam.
  LRESULT Send(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) const {
    return ::SendMessageW(window_, message, wParam, lParam);
  }
  LRESULT Send(UINT message, WPARAM wParam, const void* data) const {
    return Send(message, wParam, reinterpret_cast<LPARAM>(data));
  }
  /// Dots per inch that the control is laid out for, 96 to 480; 0: the screen's.
  bool SetDpi(int dpi) const { return Send(VRXM_SETDPI, static_cast<WPARAM>(dpi)) != 0; }
  /// Draws the control into any device context; `box` in its units.
  bool Draw(HDC device, const RECT& box) const {
    return Send(VRXM_DRAW, reinterpret_cast<WPARAM>(device), &box) != 0;
  }

 protected:
  /// A visible child window of class `name` in `box`, which the tab key goes to or not. The handle is null where the class
  /// is not registered.
  static HWND Make(const wchar_t* name, HWND parent, int id, const RECT& box, DWORD style) {
    return ::CreateWindowExW(0, name, L"", WS_CHILD | WS_VISIBLE | style, box.left, box.top,
                             box.right - box.left, box.bottom - box.top, parent,
                             reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), nullptr, nullptr);
  }

 private:
  HWND window_ = nullptr;
};

/// The display colours of a standard and, where given, of a trial.
[[nodiscard]] inline VRX_SWATCH_COLORS SwatchColors(const CTrisValues& standard, const CTrisValues* trial,
                                                    vrxIlluminant illuminant, int32_t observer) {
  VRX_SWATCH_COLORS colors{};
  colors.size = sizeof colors;
  int32_t red = 0, green = 0, blue = 0;
  if (!XyzToDisplayRgb(illuminant, observer, standard, red, green, blue)) colors.flags |= VRX_STANDARD_OUT;
  colors.standard = RGB(red, green, blue);
  if (trial == nullptr) {
    colors.flags |= VRX_NO_TRIAL;
    return colors;
  }
  if (!XyzToDisplayRgb(illuminant, observer, *trial, red, green, blue)) colors.flags |= VRX_TRIAL_OUT;
  colors.trial = RGB(red, green, blue);
  return colors;
}

// Lists -------------------------------------------------------------------------------------------------------

/// A list or a combo box as the list that records fill (FillListBox and the `Fill...` functions): its refusals are those of
/// the control, and of a control that is gone. `RESET`, `ADD` and `DATA` are its messages.
template <UINT RESET, UINT ADD, UINT DATA>
class FillableControl : public Control, public ListBox {
 public:
  using Control::Control;
  int32_t ResetContent() override { return Answer(RESET, 0, 0); }
  int32_t AddString(WideView text) override {
    return Answer(ADD, 0, reinterpret_cast<LPARAM>(Wide(CString(text))));
  }
  int32_t SetItemData(int32_t index, uint32_t data) override {
    return Answer(DATA, static_cast<WPARAM>(index), static_cast<LPARAM>(data));
  }

 private:
  // A window that is gone refuses; the system would answer 0 for it.
  [[nodiscard]] int32_t Answer(UINT message, WPARAM wParam, LPARAM lParam) const {
    return ::IsWindow(Handle()) != FALSE ? static_cast<int32_t>(Send(message, wParam, lParam)) : LB_ERR;
  }
};

/// Any control that answers the messages of a list box, the system's own included.
class ListControl : public FillableControl<LB_RESETCONTENT, LB_ADDSTRING, LB_SETITEMDATA> {
 public:
  using FillableControl::FillableControl;
  [[nodiscard]] int32_t Count() const { return static_cast<int32_t>(Send(LB_GETCOUNT)); }
  /// The current entry; -1: none.
  [[nodiscard]] int32_t Current() const { return static_cast<int32_t>(Send(LB_GETCURSEL)); }
  void Select(int32_t row) const { Send(LB_SETCURSEL, static_cast<WPARAM>(row)); }
  [[nodiscard]] uint32_t Data(int32_t row) const {
    return static_cast<uint32_t>(Send(LB_GETITEMDATA, static_cast<WPARAM>(row)));
  }
  /// The text of an entry; empty where there is none.
  [[nodiscard]] std::wstring Text(int32_t row) const {
    const LRESULT length = Send(LB_GETTEXTLEN, static_cast<WPARAM>(row));
    if (length <= 0) return {};
    std::wstring text(static_cast<std::size_t>(length) + 1, 0);
    text.resize(static_cast<std::size_t>(Send(LB_GETTEXT, static_cast<WPARAM>(row), text.data())));
    return text;
  }
  [[nodiscard]] std::vector<int> Selected() const {
    std::vector<int> rows(static_cast<std::size_t>(std::max<LRESULT>(Send(LB_GETSELCOUNT), 0)));
    Send(LB_GETSELITEMS, rows.size(), rows.data());
    return rows;
  }
  /// Makes the list virtual: its parent is asked for each row that is shown (VRXN_GETROW).
  void SetVirtualCount(int32_t count) const { Send(LB_SETCOUNT, static_cast<WPARAM>(count)); }
  void Enable(int32_t row, bool enabled) const {
    Send(VRXLM_ENABLE, static_cast<WPARAM>(row), enabled ? 1 : 0);
  }
};

class CheckList : public ListControl {
 public:
  using ListControl::ListControl;
  static CheckList Create(HWND parent, int id, const RECT& box, DWORD style = WS_BORDER | WS_VSCROLL) {
    return CheckList(Make(VRX_CHECK_LIST, parent, id, box, WS_TABSTOP | style));
  }
  /// VRX_CHECK_...
  void SetCheck(int32_t row, int check) const { Send(VRXLM_SETCHECK, static_cast<WPARAM>(row), check); }
  [[nodiscard]] int Check(int32_t row) const {
    return static_cast<int>(Send(VRXLM_GETCHECK, static_cast<WPARAM>(row)));
  }
};

class DragList : public ListControl {
 public:
  using ListControl::ListControl;
  static DragList Create(HWND parent, int id, const RECT& box,
                         DWORD style = WS_BORDER | WS_VSCROLL | VRXLS_MULTIPLE) {
    return DragList(Make(VRX_DRAG_LIST, parent, id, box, WS_TABSTOP | style));
  }
  bool MoveSelected(int32_t gap) const { return Send(VRXLM_MOVE, static_cast<WPARAM>(gap)) != 0; }
};

class ColorList : public ListControl {
 public:
  using ListControl::ListControl;
  static ColorList Create(HWND parent, int id, const RECT& box, DWORD style = WS_BORDER | WS_VSCROLL) {
    return ColorList(Make(VRX_COLOR_LIST, parent, id, box, WS_TABSTOP | style));
  }
  /// The colours of an entry: of a standard and, where given, of a trial.
  bool SetColors(int32_t row, const CTrisValues& standard, const CTrisValues* trial, vrxIlluminant illuminant,
                 int32_t observer) const {
    const VRX_SWATCH_COLORS colors = SwatchColors(standard, trial, illuminant, observer);
    return Send(VRXLM_SETCOLORS, static_cast<WPARAM>(row), &colors) == 1;
  }
};

class ExchangeList : public ListControl {
 public:
  using ListControl::ListControl;
  static ExchangeList Create(HWND parent, int id, const RECT& box) {
    return ExchangeList(Make(VRX_EXCHANGE_LIST, parent, id, box, 0));
  }
  /// Entries by their place in the order of addition.
  bool SetChosen(std::span<const int> entries) const {
    return Send(VRXXM_SETCHOSEN, entries.size(), entries.data()) != 0;
  }
  [[nodiscard]] std::vector<int> Chosen() const {
    std::vector<int> entries(static_cast<std::size_t>(Send(VRXXM_GETCHOSEN)));
    Send(VRXXM_GETCHOSEN, entries.size(), entries.data());
    return entries;
  }
};

class ListEditor : public ListControl {
 public:
  using ListControl::ListControl;
  static ListEditor Create(HWND parent, int id, const RECT& box) {
    return ListEditor(Make(VRX_LIST_EDITOR, parent, id, box, 0));
  }
  /// The field on an entry; null where there is no such entry.
  [[nodiscard]] HWND BeginEdit(int32_t row) const {
    return reinterpret_cast<HWND>(Send(VRXEM_BEGINEDIT, static_cast<WPARAM>(row)));
  }
  bool EndEdit(bool isTaken) const { return Send(VRXEM_ENDEDIT, isTaken ? 1 : 0) != 0; }
};

class Tree : public Control {
 public:
  using Control::Control;
  static Tree Create(HWND parent, int id, const RECT& box, DWORD style = WS_BORDER | WS_VSCROLL) {
    return Tree(Make(VRX_TREE, parent, id, box, WS_TABSTOP | style));
  }
  /// The new node's number; -1 for a parent that does not exist. Parent -1: the first level.
  [[nodiscard]] int32_t Add(int32_t parent, const CString& text, uint32_t data = 0) const {
    const VRX_NODE node{sizeof node, parent, Wide(text), data};
    return static_cast<int32_t>(Send(VRXTM_ADD, 0, &node));
  }
  bool Expand(int32_t node, bool expanded = true) const {
    return Send(VRXTM_EXPAND, static_cast<WPARAM>(node), expanded ? 1 : 0) != 0;
  }
  void Select(int32_t node, bool selected) const {
    Send(VRXTM_SELECT, static_cast<WPARAM>(node), selected ? 1 : 0);
  }
  [[nodiscard]] std::vector<int> Selected() const {
    std::vector<int> nodes(static_cast<std::size_t>(Send(VRXTM_GETSELECTED)));
    Send(VRXTM_GETSELECTED, nodes.size(), nodes.data());
    return nodes;
  }
};

class Combo : public FillableControl<CB_RESETCONTENT, CB_ADDSTRING, CB_SETITEMDATA> {
 public:
  using FillableControl::FillableControl;
  static Combo Create(HWND parent, int id, const RECT& box) {
    return Combo(Make(VRX_COMBO, parent, id, box, 0));
  }
  /// Widths in 1/96 inch; the last column takes what is left.
  bool SetColumns(std::span<const int> widths) const {
    return Send(VRXCM_SETCOLUMNS, widths.size(), widths.data()) != 0;
  }
  [[nodiscard]] int32_t Current() const { return static_cast<int32_t>(Send(CB_GETCURSEL)); }
  void Select(int32_t row) const { Send(CB_SETCURSEL, static_cast<WPARAM>(row)); }
};

// Fields and tabs ---------------------------------------------------------------------------------------------

class NumericEdit : public Control {
 public:
  using Control::Control;
  static NumericEdit Create(HWND parent, int id, const RECT& box) {
    return NumericEdit(Make(VRX_NUMERIC_EDIT, parent, id, box, WS_TABSTOP | WS_BORDER | ES_AUTOHSCROLL));
  }
  /// A range of the library, as ToleranceRange gives it, and the unit behind the number.
  bool SetRange(const CValueRange& range, const CString& unit = {}) const {
    const VRX_NUMBER_RANGE data{sizeof data, range.decimals,  range.lower,
                                range.upper, range.increment, Wide(unit)};
    return Send(VRXNM_SETRANGE, 0, &data) != 0;
  }
  /// kUnset empties the field.
  void SetValue(double value) const { Send(VRXNM_SETVALUE, 0, &value); }
  /// False, and kUnset, for a text that is no number of the range. An empty field is kUnset and true.
  bool GetValue(double& value) const { return Send(VRXNM_GETVALUE, 0, &value) != 0; }
};

class ScrollEdit : public NumericEdit {
 public:
  using NumericEdit::NumericEdit;
  static ScrollEdit Create(HWND parent, int id, const RECT& box) {
    return ScrollEdit(Make(VRX_SCROLL_EDIT, parent, id, box, WS_TABSTOP | WS_BORDER | ES_AUTOHSCROLL));
  }
};

class Tabs : public Control {
 public:
  using Control::Control;
  static Tabs Create(HWND parent, int id, const RECT& box) {
    return Tabs(Make(VRX_TAB, parent, id, box, WS_TABSTOP | WS_CLIPSIBLINGS));
  }
  int32_t Add(const CString& text) const {
    TCITEMW item{};
    item.mask = TCIF_TEXT;
    std::wstring copy(Wide(text));
    item.pszText = copy.data();
    return static_cast<int32_t>(Send(TCM_INSERTITEMW, static_cast<WPARAM>(Send(TCM_GETITEMCOUNT)), &item));
  }
  bool Enable(int32_t tab, bool enabled) const {
    return Send(VRXBM_ENABLETAB, static_cast<WPARAM>(tab), enabled ? 1 : 0) != 0;
  }
  [[nodiscard]] int32_t Current() const { return static_cast<int32_t>(Send(TCM_GETCURSEL)); }
};

// Pictures ----------------------------------------------------------------------------------------------------

class PictureFrame : public Control {
 public:
  using Control::Control;
  static PictureFrame Create(HWND parent, int id, const RECT& box) {
    return PictureFrame(Make(VRX_PICTURE, parent, id, box, 0));
  }
  /// The bitmap stays the caller's and must live as long as it is shown. VRX_PICTURE_...
  bool SetBitmap(HBITMAP bitmap, int mode = VRX_PICTURE_FIT) const {
    return Send(VRXPM_SETBITMAP, static_cast<WPARAM>(mode), bitmap) != 0;
  }
};

class ProgressBar : public Control {
 public:
  using Control::Control;
  static ProgressBar Create(HWND parent, int id, const RECT& box) {
    return ProgressBar(Make(VRX_PROGRESS, parent, id, box, 0));
  }
  bool Set(const VRX_PROGRESS_DATA& data) const { return Send(VRXGM_SET, 0, &data) != 0; }
  void SetPosition(double position) const { Send(VRXGM_SETPOS, 0, &position); }
};

class SwatchPairControl : public Control {
 public:
  using Control::Control;
  static SwatchPairControl Create(HWND parent, int id, const RECT& box) {
    return SwatchPairControl(Make(VRX_SWATCH, parent, id, box, 0));
  }
  bool Set(const CTrisValues& standard, const CTrisValues* trial, vrxIlluminant illuminant, int32_t observer,
           bool framed = false, const CString& standardName = {}, const CString& trialName = {}) const {
    VRX_SWATCH_DATA data{SwatchColors(standard, trial, illuminant, observer), Wide(standardName),
                         Wide(trialName)};
    data.colors.size = sizeof data;
    if (framed) data.colors.flags |= VRX_FRAMED;
    return Send(VRXDM_SET, 0, &data) != 0;
  }
};

/// The part that all pictures of data share: the points that a user goes to.
template <class DATA>
class DataControl : public Control {
 public:
  using Control::Control;
  bool Set(const DATA& data) const { return Send(VRXDM_SET, 0, &data) != 0; }
  void Clear() const { Send(VRXDM_SET); }
  [[nodiscard]] int32_t PointCount() const { return static_cast<int32_t>(Send(VRXDM_GETCOUNT)); }
  [[nodiscard]] int32_t Current() const { return static_cast<int32_t>(Send(VRXDM_GETCURRENT)); }
};

/// Polylines over the axes that enclose all of them, as the structure of messages; ranges and headings are those of the first.
/// The structure points into this object and into the lines, which must live as long as it is used.
class PlotData {
 public:
  explicit PlotData(std::span<const CDblPolyline> lines) : points_(lines.size()) {
    for (std::size_t i = 0; i < lines.size(); ++i) {
      const CDblPolyline& line = lines[i];
      for (const CDblPoint& point : line) points_[i].push_back({point.x, point.y});
      const UINT flags = (line.dashed ? VRX_LINE_DASHED : 0U) | (line.marked ? VRX_LINE_MARKED : 0U) |
                         (line.width > 0 ? 0U : VRX_LINE_NO_LINE);
      const bool isJudged = line.verdicts.GetSize() == line.GetSize();
      lines_.push_back({points_[i].data(), CountOf(points_[i]), flags,
                        line.paint.IsFixed() ? line.paint.FixedColor() : CLR_DEFAULT, Wide(line.name),
                        isJudged ? line.verdicts.GetData() : nullptr});
    }
    data_ = {sizeof data_, CountOf(lines_), lines_.data(), 0, 0, 0, 0, L"", L""};
    if (lines.empty()) return;
    const CDblPolyline& first = lines.front();
    data_.xLower = first.xRange.lower, data_.xUpper = first.xRange.upper;
    data_.yLower = first.yRange.lower, data_.yUpper = first.yRange.upper;
    data_.xHeading = Wide(first.xHeading), data_.yHeading = Wide(first.yHeading);
  }
  PlotData(const PlotData&) = delete;
  PlotData& operator=(const PlotData&) = delete;
  [[nodiscard]] const VRX_PLOT_DATA& Get() const { return data_; }

 private:
  std::vector<std::vector<VRX_POINT>> points_;
  std::vector<VRX_LINE> lines_;
  VRX_PLOT_DATA data_{};
};

class Plot : public DataControl<VRX_PLOT_DATA> {
 public:
  using DataControl::DataControl;
  static Plot Create(HWND parent, int id, const RECT& box) {
    return Plot(Make(VRX_PLOT, parent, id, box, WS_TABSTOP));
  }
  bool Set(std::span<const CDblPolyline> lines) const { return DataControl::Set(PlotData(lines).Get()); }
  using DataControl::Set;
};

/// Draws polylines over axes into a rectangle of any device context, as Plot shows them in its window; `box` in the units of the
/// device, `dpi` dots per inch of them, 0: those of the device. False when nothing could be drawn.
inline bool DrawPolylines(HDC device, const RECT& box, std::span<const CDblPolyline> lines, int dpi = 0) {
  return VrxDrawPlot(device, &box, dpi, &PlotData(lines).Get()) != FALSE;
}

/// A trial of a plane or a lightness bar: components 0 to 2 of its difference, and its verdict.
[[nodiscard]] inline VRX_TRIAL TrialOf(const CDeltaValues& difference, Verdict verdict, const wchar_t* name) {
  return {difference[CDeltaValues::kA], difference[CDeltaValues::kB], difference[CDeltaValues::kL], verdict,
          name};
}

class Plane : public DataControl<VRX_PLANE_DATA> {
 public:
  using DataControl::DataControl;
  static Plane Create(HWND parent, int id, const RECT& box) {
    return Plane(Make(VRX_PLANE, parent, id, box, WS_TABSTOP));
  }

  /// Trials against an ellipsoid, whose warning band begins at `warningFactor` of it.
  bool Set(std::span<const VRX_TRIAL> trials, const CEllipseData& ellipse, double warningFactor) const {
    std::vector<VRX_POINT> limit;
    for (const PlanePoint& point : ellipse.Section(EllipsePlane::kAB)) limit.push_back({point.x, point.y});
    const VRX_POINT centre{ellipse[CEllipseData::kCentreA], ellipse[CEllipseData::kCentreB]};
    return Set(trials, limit, centre, warningFactor);
  }
  /// Trials against a box, which is scaled about its own centre.
  bool Set(std::span<const VRX_TRIAL> trials, const CBoxTolData& box, double warningFactor) const {
    const Interval x = box.Limits(1), y = box.Limits(2);
    const std::vector<VRX_POINT> limit = {
        {x.lower, y.lower}, {x.upper, y.lower}, {x.upper, y.upper}, {x.lower, y.upper}, {x.lower, y.lower}};
    return Set(trials, limit, {(x.lower + x.upper) / 2, (y.lower + y.upper) / 2}, warningFactor);
  }
  using DataControl::Set;

 private:
  bool Set(std::span<const VRX_TRIAL> trials, const std::vector<VRX_POINT>& limit, VRX_POINT centre,
           double warningFactor) const {
    std::vector<VRX_POINT> warning;
    for (const VRX_POINT& point : limit) {
      warning.push_back(
          {centre.x + (point.x - centre.x) * warningFactor, centre.y + (point.y - centre.y) * warningFactor});
    }
    VRX_PLANE_DATA data{};
    data.size = sizeof data;
    data.limitCount = data.warningCount = CountOf(limit);
    data.limit = limit.data();
    data.warning = warning.data();
    data.trialCount = CountOf(trials);
    data.trials = trials.data();
    data.xHeading = L"\u0394a*";
    data.yHeading = L"\u0394b*";
    return Set(data);
  }
};

class LightnessBarControl : public DataControl<VRX_LIGHTNESS_DATA> {
 public:
  using DataControl::DataControl;
  static LightnessBarControl Create(HWND parent, int id, const RECT& box) {
    return LightnessBarControl(Make(VRX_LIGHTNESS, parent, id, box, WS_TABSTOP));
  }
  bool Set(std::span<const VRX_TRIAL> trials, Interval limit, double warningFactor) const {
    const Interval warning = ScaledAboutCentre(limit, warningFactor);
    const VRX_LIGHTNESS_DATA data{sizeof data, CountOf(trials), trials.data(), limit.lower,
                                  limit.upper, warning.lower,   warning.upper, 0,
                                  L"\u0394L*"};
    return Set(data);
  }
  using DataControl::Set;
};

class Curves : public DataControl<VRX_CURVES_DATA> {
 public:
  using DataControl::DataControl;
  static Curves Create(HWND parent, int id, const RECT& box) {
    return Curves(Make(VRX_CURVES, parent, id, box, WS_TABSTOP));
  }
  /// The standard first, then its trials, on the library's grid. Samples may be unset.
  bool Set(std::span<const CReflData> curves, bool withDifference = true) const {
    std::vector<double> values;
    for (const CReflData& curve : curves) {
      for (int32_t i = 0; i < kWavelengths; ++i) values.push_back(curve[i]);
    }
    const VRX_CURVES_DATA data{
        sizeof data,  withDifference ? VRX_WITH_DIFFERENCE : 0U, kWavelengths, CountOf(curves), 360, 10,
        values.data()};
    return Set(data);
  }
  using DataControl::Set;
};

class AnglePlot : public DataControl<VRX_ANGLES_DATA> {
 public:
  using DataControl::DataControl;
  static AnglePlot Create(HWND parent, int id, const RECT& box) {
    return AnglePlot(Make(VRX_ANGLES, parent, id, box, WS_TABSTOP));
  }
  /// The geometries of a measurement set in the order of their angles, a value and a limit for each in stored order.
  bool Set(const CAngles& angles, std::span<const double> values, std::span<const double> limits,
           double warningFactor, const CString& heading) const {
    std::vector<double> degrees, sorted, sortedLimits;
    const auto count = static_cast<std::size_t>(angles.GetCount());
    if (values.size() != count || (!limits.empty() && limits.size() != count)) return false;
    for (int32_t position = 0; position < angles.GetCount(); ++position) {
      const int32_t index = angles.IndexAt(position);
      degrees.push_back(angles.GetAngle(index));
      sorted.push_back(values[static_cast<std::size_t>(index)]);
      if (!limits.empty()) sortedLimits.push_back(limits[static_cast<std::size_t>(index)]);
    }
    const VRX_ANGLES_DATA data{sizeof data,
                               static_cast<int>(count),
                               1,
                               degrees.data(),
                               sorted.data(),
                               limits.empty() ? nullptr : sortedLimits.data(),
                               warningFactor,
                               Wide(heading)};
    return Set(data);
  }
  using DataControl::Set;
};

class Trend : public DataControl<VRX_TREND_DATA> {
 public:
  using DataControl::DataControl;
  static Trend Create(HWND parent, int id, const RECT& box) {
    return Trend(Make(VRX_TREND, parent, id, box, WS_TABSTOP));
  }
  bool Set(std::span<const double> totals, double limit, double warningFactor, const CString& heading) const {
    const VRX_TREND_DATA data{sizeof data, CountOf(totals), totals.data(),
                              limit,       warningFactor,   Wide(heading)};
    return Set(data);
  }
  using DataControl::Set;
};

}  // namespace vrx::controls

#endif  // CONTROLS_WINDOW_CONTROLS_H_
