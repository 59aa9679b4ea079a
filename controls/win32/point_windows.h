// Pictures of data in windows: their points can be gone to by mouse and keys, and are read aloud.

#ifndef CONTROLS_WIN32_POINT_WINDOWS_H_
#define CONTROLS_WIN32_POINT_WINDOWS_H_

#include <algorithm>
#include <optional>
#include <vector>

#include "controls/win32/drawn_window.h"
#include "pictures/curves.h"
#include "pictures/plane.h"
#include "pictures/totals.h"

namespace vrx::controls {

class PointWindow : public DrawnWindow {
 protected:
  /// Takes the structure of VRXDM_SET; null means nothing. False when it is refused.
  virtual bool Take(LPARAM lParam) = 0;
  virtual void DrawData(Picture& picture, Rect box, const Look& look) = 0;
  [[nodiscard]] virtual CString NameOf(const Target& target) = 0;

  LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam) override;
  void Draw(Picture& picture, Rect box, const Look& look) override;
  void Relayout() override { areTargetsCurrent_ = false; }

  [[nodiscard]] long AccessibleRole() const override;
  [[nodiscard]] CString AccessibleValue() override { return current_ < 0 ? CString() : PartName(current_); }
  [[nodiscard]] int32_t PartCount() override { return static_cast<int32_t>(Targets().size()); }
  [[nodiscard]] long PartRole() const override;
  [[nodiscard]] CString PartName(int32_t part) override;
  [[nodiscard]] long PartState(int32_t part) override;
  [[nodiscard]] RECT PartRect(int32_t part) override;
  [[nodiscard]] int32_t FocusedPart() override { return current_; }
  [[nodiscard]] int32_t PartAt(POINT point) override;
  void SelectPart(int32_t part) override { Go(part, true); }

 private:
  const std::vector<Target>& Targets();
  void Renew();
  bool Go(int32_t point, bool isByUser);
  bool Press(WPARAM key);
  POINT PlaceOf(int32_t point);
  void ShowTip(int32_t point);

  int32_t current_ = -1;
  int32_t pointed_ = -1;  // the point whose value the tip says
  HWND tip_ = nullptr;    // goes with the window, which owns it
  bool areTargetsCurrent_ = false;
  std::vector<Target> targets_;
};

/// The lines of a structure from outside; none where it is refused.
std::optional<std::vector<CDblPolyline>> CopyPolylines(const VRX_PLOT_DATA* data);

/// Declares a kind of picture: its data and the three functions that know them.
#define VRX_POINT_WINDOW(name, type, member)                              \
  class name final : public PointWindow {                                 \
    bool Take(LPARAM lParam) override;                                    \
    void DrawData(Picture& picture, Rect box, const Look& look) override; \
    CString NameOf(const Target& target) override;                        \
    type member;                                                          \
  }
VRX_POINT_WINDOW(PlotWindow, std::vector<CDblPolyline>, lines_);
VRX_POINT_WINDOW(PlaneWindow, DifferencePlane, plane_);
VRX_POINT_WINDOW(LightnessWindow, LightnessBar, bar_);
VRX_POINT_WINDOW(CurvesWindow, CurvesData, data_);
VRX_POINT_WINDOW(AnglesWindow, ProfileData, data_);
VRX_POINT_WINDOW(TrendWindow, TrendData, data_);
#undef VRX_POINT_WINDOW

}  // namespace vrx::controls

#endif  // CONTROLS_WIN32_POINT_WINDOWS_H_
