// Controls over classes of the system's: number fields over the edit field, the tab control with disabled tabs.

#ifndef CONTROLS_WIN32_SYSTEM_WINDOWS_H_
#define CONTROLS_WIN32_SYSTEM_WINDOWS_H_

#include <optional>
#include <vector>

#include <vrxmath/foundation/numbers.h>
#include <vrxmath/foundation/value_range.h>

#include "controls/win32/accessible.h"

namespace vrx::controls {

/// A window over a class of the system's.
class SystemWindow : public AccessibleWindow {
 protected:
  LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam) override;
  LRESULT Default(UINT message, WPARAM wParam, LPARAM lParam) override;
  /// The procedure of the system's class.
  [[nodiscard]] virtual WNDPROC Below() const = 0;
  /// Handles changes of the font: creation, WM_SETFONT, the resolution, themes. True when the message was one of them.
  bool HandleFont(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result);
};

/// An edit field that holds a number, or nothing, which is the unset value.
class NumericEditWindow : public SystemWindow {
 protected:
  LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam) override;
  [[nodiscard]] WNDPROC Below() const override;
  [[nodiscard]] long AccessibleRole() const override;
  [[nodiscard]] CString AccessibleName() override;
  [[nodiscard]] CString AccessibleValue() override;
  [[nodiscard]] virtual bool HasArrows() const { return false; }
  bool Step(int32_t steps);
  [[nodiscard]] Look LookOfField() const;
  [[nodiscard]] double ArrowsWidth(const Look& look) const { return HasArrows() ? 16 * look.scale : 0; }

 private:
  LRESULT TakeRange(LPARAM lParam);
  LRESULT Type(WPARAM unit, LPARAM lParam);
  LRESULT Paste();
  LRESULT Wheel(int delta);
  bool PressKey(WPARAM key);
  bool Accept(double value, bool isByUser);
  void Refuse();
  void Finish();
  void SetMargins();
  // Letters are wider than digits.
  [[nodiscard]] double UnitWidth(const Look& look) const {
    return look.TextWidth(unit_) * 1.5 + 4 * look.scale;
  }
  void Paint(HDC device);
  void PaintWhole(HDC device);
  LRESULT HandlePainting(UINT message, WPARAM wParam);
  [[nodiscard]] CString Text() const { return TextOfWindow(window_); }
  [[nodiscard]] std::optional<double> Value() const;

  CValueRange range_;
  CString unit_;
  double value_ = kUnset;  // the last one that was set or accepted
  int32_t wheelRest_ = 0;
  int32_t repeats_ = 0;
};

/// The same with two arrows, which the mouse may hold down.
class ScrollEditWindow final : public NumericEditWindow {
  LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam) override;
  WNDPROC Below() const override;
  bool HasArrows() const override { return true; }
  [[nodiscard]] int32_t ArrowAt(POINT point) const;
  int32_t held_ = 0;  // +1, -1: the arrow under the pressed button
  int32_t repeats_ = 0;
};

/// Read aloud by an object of its own: the system's does not know of disabled tabs.
class TabWindow final : public SystemWindow {
  LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam) override;
  [[nodiscard]] WNDPROC Below() const override;
  [[nodiscard]] std::vector<uint8_t> Enabled();
  [[nodiscard]] int32_t Current() { return static_cast<int32_t>(Default(TCM_GETCURSEL, 0, 0)); }
  bool Enable(WPARAM tab, bool isEnabled);
  bool Go(int32_t tab);
  bool PressKey(WPARAM key);
  void PaintDisabled(HDC device);
  LRESULT Paint(HDC given);
  LRESULT HandleTabs(UINT message, WPARAM wParam, LPARAM lParam);

  [[nodiscard]] long AccessibleRole() const override;
  [[nodiscard]] CString AccessibleValue() override { return PartName(Current()); }
  [[nodiscard]] int32_t PartCount() override { return static_cast<int32_t>(Enabled().size()); }
  [[nodiscard]] long PartRole() const override;
  [[nodiscard]] CString PartName(int32_t part) override;
  [[nodiscard]] long PartState(int32_t part) override;
  [[nodiscard]] RECT PartRect(int32_t part) override;
  [[nodiscard]] int32_t FocusedPart() override { return Current(); }
  [[nodiscard]] int32_t PartAt(POINT point) override;
  void SelectPart(int32_t part) override;

  std::vector<uint8_t> disabled_;  // per tab; those beyond are enabled
};

}  // namespace vrx::controls

#endif  // CONTROLS_WIN32_SYSTEM_WINDOWS_H_
