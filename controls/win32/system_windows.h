// Controls over classes of the system's: number fields over the edit field, the tab control with disabled tabs.

#ifndef CONTROLS_WIN32_SYSTEM_WINDOWS_H_
#define CONTROLS_WIN32_SYSTEM_WINDOWS_H_

#include <optional>
#include <vector>

#include <vrxmath/foundation/numbers.h>
#include <vrxmath/foundation/value_range.h>

#include "controls/win32/window.h"

namespace vrx::controls {

/// An edit field that holds a number, or nothing, which is the unset value.
class NumericEditWindow : public Window {
 protected:
  LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam) override;
  LRESULT Default(UINT message, WPARAM wParam, LPARAM lParam) override;
  [[nodiscard]] virtual WNDPROC Below() const;
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
  [[nodiscard]] CString Text() const;
  [[nodiscard]] std::optional<double> Value() const;

  Font font_;
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

class TabWindow final : public Window {
  LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam) override;
  LRESULT Default(UINT message, WPARAM wParam, LPARAM lParam) override;
  [[nodiscard]] std::vector<uint8_t> Enabled();
  bool Go(int32_t tab);
  bool PressKey(WPARAM key);
  void PaintDisabled(HDC device);
  LRESULT Paint(HDC given);
  Font font_;
  std::vector<uint8_t> disabled_;  // per tab; those beyond are enabled
};

}  // namespace vrx::controls

#endif  // CONTROLS_WIN32_SYSTEM_WINDOWS_H_
